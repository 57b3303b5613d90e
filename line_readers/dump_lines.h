// A dump as a reader takes it: its lines, cut into words, and the counters of its codes. In the
// body the fast path takes the plain lines, and the reader sees what it leaves.
#ifndef KESNCD_LINE_READERS_DUMP_LINES_H_
#define KESNCD_LINE_READERS_DUMP_LINES_H_

#include <cstddef>
#include <cstdio>

#include "line_readers/change_scanner.h"
#include "line_readers/code_counts.h"
#include "line_readers/vcd_line.h"
#include "text/line_source.h"
#include "text/splitter.h"

namespace orsa::kesncd {

/// Whether stamps are cut in slots of their own, or in those of the words, whose tails they keep.
enum class Splitters { Separate, Shared };

/// How a dump is read; what is read from it does not depend on that, which tests check.
struct ReadingOptions {
  bool scansPlainLines = true;  // by the fast path
  std::size_t blockBytes = LineSource::kBlockBytes;
  std::size_t longestDirectCode = CodeCells::kLongestDirect;  // see CodeCells
};

/// Construct it for one dump, call Next until it is false, then Failed. The stream is the caller's;
/// when this object goes it is right after the last line that was taken, where it can seek.
class DumpLines {
 public:
  DumpLines(std::FILE* dump, std::size_t lineBytes, Splitters splitters, CodeCounts& counts,
            ReadingState& state, const ReadingOptions& options);

  /// The next line with words for the reader; false at the end. `inBody`: value changes are read.
  /// `line` is valid until the next call: its words lie in the splitter's slots.
  bool Next(bool inBody, VcdLine& line);
  /// Whether a read error ended the lines.
  bool Failed() const { return source_.Failed(); }
  /// Takes a line of the body: a stamp, or a change that counts if recording is on.
  void TakeBodyLine(const VcdLine& line, LineKind kind);

  ReadingState& state() { return state_; }

 private:
  const bool scansPlainLines_;
  LineSource source_;
  // Cuts lines into words, and stamps into pieces where it is shared.
  Splitter wordSplitter_;
  // Cuts stamps where the readers keep two splitters; unused otherwise.
  Splitter ownStampSplitter_;
  // Refers to one of the two above.
  Splitter& stampSplitter_;
  CodeCounts& counts_;
  ReadingState& state_;
  ChangeScanner scanner_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_DUMP_LINES_H_
