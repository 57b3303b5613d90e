// Files that close themselves.
#ifndef KESNCD_TEXT_FILE_H_
#define KESNCD_TEXT_FILE_H_

#include <cstdio>
#include <memory>
#include <string>

namespace orsa::kesncd {

struct FileCloser {
  void operator()(std::FILE* file) const { (void)std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file for reading; null when it cannot be opened.
inline File OpenForReading(const std::string& path) {
  return File(std::fopen(path.c_str(), "r"));
}

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_FILE_H_
