// Lines of an open stream, cut as fgets cuts them.
//
// A line ends behind its newline or when the buffer is full; the rest of a longer line arrives as a
// line of its own. A NUL byte ends the text of a line: what stands between it and the newline is
// read but not seen. The stream belongs to the caller and stands right behind the last line taken.
#ifndef KESNCD_TEXT_LINE_SOURCE_H_
#define KESNCD_TEXT_LINE_SOURCE_H_

#include <cstddef>
#include <cstdio>
#include <vector>

namespace orsa::kesncd {

class LineSource {
 public:
  /// Lines of up to `bufferBytes` - 1 characters.
  LineSource(std::FILE* stream, std::size_t bufferBytes) : stream_(stream), buffer_(bufferBytes) {}

  /// The next line, valid until the next call; null at the end of the stream or on a read error.
  const char* Next();

 private:
  std::FILE* stream_;
  std::vector<char> buffer_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_LINE_SOURCE_H_
