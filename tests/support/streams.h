// Ways of a dump into a reader: a file that has a path, a stream that gives a few bytes a time; and
// a place for what the grammar reader prints meanwhile.
#ifndef KESNCD_TESTS_SUPPORT_STREAMS_H_
#define KESNCD_TESTS_SUPPORT_STREAMS_H_

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace support {

/// A file in memory that has a path.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view text = {});
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string Path() const;
  std::string Text() const;

 private:
  int file_;
};

/// A stream that hands out its text in reads of one byte, two bytes, and so on up to seven. It
/// cannot seek.
class DrippingStream {
 public:
  explicit DrippingStream(std::string_view text);
  ~DrippingStream();
  DrippingStream(const DrippingStream&) = delete;
  DrippingStream& operator=(const DrippingStream&) = delete;

  operator std::FILE*() const { return file_; }

 private:
  static ssize_t Read(void* stream, char* to, std::size_t most);

  std::string_view text_;
  std::size_t step_ = 0;
  std::FILE* file_;
};

/// Swallows standard output and standard error while it lives.
class Quiet {
 public:
  Quiet();
  ~Quiet();
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;

 private:
  std::FILE* output_;
  std::FILE* error_;
};

}  // namespace support

#endif  // KESNCD_TESTS_SUPPORT_STREAMS_H_
