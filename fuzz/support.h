// What the fuzz targets share: inputs with options behind them, memory files, and oracles that
// abort.
#ifndef KESNCD_FUZZ_SUPPORT_H_
#define KESNCD_FUZZ_SUPPORT_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

/// Ends the process, with the message on standard error, when what must hold does not.
void Require(bool holds, const std::string& message);

/// An input as a person can write it: a text, and behind its last byte 0xFF the options, a line
/// each. Most inputs are plain texts without any.
struct Input {
  Input(const std::uint8_t* data, std::size_t size);

  /// The option of that number, or `otherwise`.
  std::string Option(std::size_t number, const std::string& otherwise = "") const;
  /// The options from a number on.
  std::set<std::string> OptionsFrom(std::size_t number) const;

  std::string text;
  std::vector<std::string> options;
};

/// The lines of a text, without their ends.
std::vector<std::string> Lines(std::string_view text);

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

/// The reader state that a run leaves, as a text to compare.
std::string StateText();

/// 1000 / period in MHz, as the figures are defined.
double PlainFrequency(int changes);
/// Equal, or both not a number.
bool Same(double a, double b);

}  // namespace fuzz

#endif  // KESNCD_FUZZ_SUPPORT_H_
