// A dump as a reader takes it: its lines, cut into words, and the counters of its codes. In the
// body the fast path takes the plain lines, and the reader sees what it leaves.
#ifndef KESNCD_LINE_READERS_DUMP_LINES_H_
#define KESNCD_LINE_READERS_DUMP_LINES_H_

#include <cstddef>
#include <cstdio>

#include "kesncd/kesncd.h"
#include "line_readers/change_scanner.h"
#include "line_readers/code_counts.h"
#include "line_readers/vcd_line.h"
#include "text/line_source.h"

namespace orsa::kesncd {

/// Whether stamps are cut in slots of their own, or in those of the words, whose tails they keep.
enum class Splitters { Separate, Shared };

class DumpLines {
 public:
  DumpLines(std::FILE* dump, std::size_t lineBytes, Splitters splitters);

  /// The next line with words for the reader; false at the end. `inBody`: value changes are read.
  bool Next(bool inBody, VcdLine& line);
  /// Whether a read error ended the lines.
  bool Failed() const { return source_.Failed(); }
  /// Takes a line of the body: a stamp, or a change that counts if recording is on.
  void TakeBodyLine(const VcdLine& line, LineKind kind);

  CodeCounts& counts() { return counts_; }

 private:
  LineSource source_;
  Mem wordSplitter_;
  Mem ownStampSplitter_;
  Mem& stampSplitter_;
  CodeCounts counts_;
  ChangeScanner scanner_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_DUMP_LINES_H_
