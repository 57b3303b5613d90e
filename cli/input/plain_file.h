// A dump in a file that jobs on several machines read in parts.
#ifndef KESNCD_CLI_INPUT_PLAIN_FILE_H_
#define KESNCD_CLI_INPUT_PLAIN_FILE_H_

#include <cstdint>
#include <string>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

class PlainFile : public ByteFile {
 public:
  /// Throws Failure with Unusable for what cannot be read in parts: a pipe, a packed dump, a
  /// database.
  explicit PlainFile(const std::string& path);

  std::uint64_t size() const override { return file_.size(); }
  std::size_t ReadAt(std::uint64_t offset, char* to, std::size_t most) override {
    return file_.ReadAt(offset, to, most);
  }
  /// A number made of places all over the file: the same for the same dump on every machine, and
  /// hardly ever for another.
  std::uint64_t Sample();

 private:
  FileSource file_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_PLAIN_FILE_H_
