// Where a dump's bytes come from and where a rewritten dump goes: files, pipes, whatever
// decompresses.
#ifndef KESNCD_TEXT_BYTE_STREAM_H_
#define KESNCD_TEXT_BYTE_STREAM_H_

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace orsa::kesncd {

/// Bytes in order, each of them once. For one thread at a time; whoever makes a source owns it.
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

/// Bytes that can be read anywhere, by several threads at a time: a plain file.
class ByteFile {
 public:
  ByteFile() = default;
  virtual ~ByteFile() = default;
  ByteFile(const ByteFile&) = delete;
  ByteFile& operator=(const ByteFile&) = delete;

  /// How many there were when the file was opened.
  virtual std::uint64_t size() const = 0;
  /// Reads up to `most` bytes from an offset on, at least one; 0 only at the end. Throws Failure
  /// with Unusable when the bytes cannot be had.
  virtual std::size_t ReadAt(std::uint64_t offset, char* to, std::size_t most) = 0;
};

/// Takes bytes in order. What is to happen after the last of them (a commit, a last block of a
/// compressed file) is an operation of the class at hand.
class ByteSink {
 public:
  ByteSink() = default;
  virtual ~ByteSink() = default;
  ByteSink(const ByteSink&) = delete;
  ByteSink& operator=(const ByteSink&) = delete;

  /// Takes all bytes or throws Failure with OutputFailed.
  virtual void Write(std::string_view bytes) = 0;
};

/// What became of a file while it was read. A shorter file has lost lines that a reading in parts
/// may still ask for; a file that grew, or was rewritten, gives figures of which nobody can say
/// what they are of.
enum class FileChange { None, Shrank, Changed };

/// A file, read as it is; "-" is standard input.
class FileSource : public ByteSource {
 public:
  /// Throws Failure for what cannot be opened.
  explicit FileSource(const std::string& path);
  ~FileSource() override;

  std::size_t Read(char* to, std::size_t most) override;
  /// The same from an offset on, without moving where Read goes on. Of a regular file only.
  std::size_t ReadAt(std::uint64_t offset, char* to, std::size_t most) const;
  /// A path that opens this very file once more, also where its own name leads to another file by
  /// now.
  std::string SecondPath() const { return "/proc/self/fd/" + std::to_string(file_); }
  /// Its bytes; 0 where that is not known, as of a pipe.
  std::uint64_t size() const;
  /// What became of the file since it was opened. A pipe does not change.
  FileChange Change() const;

 private:
  // What messages call it; "-" is standard input.
  const std::string path_;
  // This object owns the descriptor.
  const int file_;
  // Its status when it was opened; st_mode is 0 where that could not be asked.
  struct stat opened_ {};
};

/// Bytes that were read before, to see what they are, then the rest of what they came from.
class ResumedSource : public ByteSource {
 public:
  /// The rest is read only when all of the start has been given.
  ResumedSource(std::string start, std::unique_ptr<ByteSource> rest)
      : start_(std::move(start)), rest_(std::move(rest)) {}

  std::size_t Read(char* to, std::size_t most) override;

 private:
  std::string start_;
  std::size_t given_ = 0;
  const std::unique_ptr<ByteSource> rest_;
};

/// Fills `to` as far as the source goes. Returns the bytes read: fewer than `most` only at the end.
/// A single Read of a pipe may give less than was asked for although more is coming, so whoever
/// looks at a file's first bytes to tell its format takes this.
std::size_t ReadFully(ByteSource& source, char* to, std::size_t most);

/// Passes all of a source on.
void CopyBytes(ByteSource& from, ByteSink& to);

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_BYTE_STREAM_H_
