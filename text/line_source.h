// Lines of an open stream, cut as fgets cuts them.
//
// A line ends after its newline or when it is as long as lines may be; the rest of a longer line
// arrives as a line of its own. A NUL byte ends the text of a line: what stands between it and the
// newline is read but not seen.
//
// The stream belongs to the caller. It is read line by line until ReadBlocks is called, so that a
// reader that stops leaves it right after the last line taken; from then on it is read in blocks,
// and what was read ahead is given back when the source goes, where the stream can seek.
#ifndef KESNCD_TEXT_LINE_SOURCE_H_
#define KESNCD_TEXT_LINE_SOURCE_H_

#include <cstddef>
#include <cstdio>
#include <string_view>
#include <vector>

namespace orsa::kesncd {

/// Call Next until it gives null, then ask Failed. To read fast, call ReadBlocks once, and then
/// take what lines you like from the start of Block with Skip before each Next.
class LineSource {
 public:
  /// Bytes that may be read, though not looked at, after the end of a block.
  static constexpr std::size_t kPadding = 64;
  /// Much larger than any line, small enough to stay in the processor's second cache.
  static constexpr std::size_t kBlockBytes = std::size_t{128} * 1024;

  /// Lines of up to `bufferBytes` - 1 characters; blocks of `blockBytes`, which must be more. The
  /// stream may be null, which is the end.
  LineSource(std::FILE* stream, std::size_t bufferBytes, std::size_t blockBytes = kBlockBytes);
  ~LineSource();
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;

  /// The next line, valid until the next call; null at the end of the stream or on a read error.
  const char* Next();
  /// Whether a read error of this source, and not the end of the stream, ended the lines.
  bool Failed() const { return failed_; }

  /// Reads the stream in blocks from now on.
  void ReadBlocks();
  /// What is left of the current block: whole lines, but for the last. Empty before ReadBlocks.
  std::string_view Block() const { return {block_.data() + taken_, held_ - taken_}; }
  /// Takes the first `bytes` of the block.
  void Skip(std::size_t bytes) { taken_ += bytes; }

 private:
  const char* NextOfStream();
  const char* NextOfBlock();
  bool Refill();

  // Null is a dump without lines.
  std::FILE* const stream_;
  const std::size_t blockBytes_;
  // Set by a read error of this source only: a stream may come with its error flag set.
  bool failed_ = false;
  std::vector<char> line_;   // the line that Next returned
  std::vector<char> block_;  // empty while the stream is read line by line
  std::size_t taken_ = 0;    // bytes of the block that were taken
  std::size_t held_ = 0;     // bytes of the block that were read
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_LINE_SOURCE_H_
