// Files that close themselves.
#ifndef KESNCD_TEXT_FILE_H_
#define KESNCD_TEXT_FILE_H_

#include <cstdio>
#include <memory>
#include <string>

namespace orsa::kesncd {

/// A file that was only read has nothing to lose on closing; errors of the reading itself are what
/// HasFailed and LineSource::Failed tell.
struct FileCloser {
  void operator()(std::FILE* file) const { (void)std::fclose(file); }
};
/// A stream that is owned here, other than the one that a host passes to a reader.
using File = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file for reading; null when it cannot be opened.
inline File OpenForReading(const std::string& path) {
  return File(std::fopen(path.c_str(), "r"));
}

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_FILE_H_
