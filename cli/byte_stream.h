// Where a dump's bytes come from and where a rewritten dump goes: files, pipes, whatever
// decompresses.
#ifndef KESNCD_CLI_BYTE_STREAM_H_
#define KESNCD_CLI_BYTE_STREAM_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace kesncd_cli {

class ByteSource {
 public:
  ByteSource() = default;
  virtual ~ByteSource() = default;
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  /// Reads up to `most` bytes, at least one; 0 only at the end. Throws Failure with Unusable when
  /// the bytes cannot be had.
  virtual std::size_t Read(char* to, std::size_t most) = 0;
};

class ByteSink {
 public:
  ByteSink() = default;
  virtual ~ByteSink() = default;
  ByteSink(const ByteSink&) = delete;
  ByteSink& operator=(const ByteSink&) = delete;

  /// Takes all bytes or throws Failure with OutputFailed.
  virtual void Write(std::string_view bytes) = 0;
};

/// A file, read as it is.
class FileSource : public ByteSource {
 public:
  /// Throws Failure for what cannot be opened.
  explicit FileSource(const std::string& path);
  ~FileSource() override;

  std::size_t Read(char* to, std::size_t most) override;

 private:
  const std::string path_;
  const int file_;
};

}  // namespace kesncd_cli

#endif  // KESNCD_CLI_BYTE_STREAM_H_
