// The fast path over a dump's value changes.
//
// Nearly all of a dump is lines of four plain shapes: a scalar change, a vector or real change with
// its code, a time stamp of digits, nothing. The scanner takes those straight from a block of the
// file and leaves every other line, and every line it is not sure of, to the reader's plain path.
// What it leaves (counts, span, the texts in the splitter's slots) is what the plain path
// would have left.
#ifndef KESNCD_LINE_READERS_CHANGE_SCANNER_H_
#define KESNCD_LINE_READERS_CHANGE_SCANNER_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "line_readers/code_counts.h"
#include "line_readers/reading_state.h"
#include "text/line_source.h"
#include "text/splitter.h"
#include "vcd/plain_lines.h"

namespace orsa::kesncd {

/// Construct it with the reading, then call TakeLines before each line of the body that the reader
/// takes from the source itself. All references must outlive it.
class ChangeScanner {
 public:
  /// `longestLine` is the most characters that a line may have. `wordSplitter` is given where the
  /// words of lines and the pieces of stamps share the splitter's slots, else null.
  ChangeScanner(CodeCounts& counts, ReadingState& state, Splitter& stampSplitter,
                const Splitter* wordSplitter, std::size_t longestLine);

  /// Takes the plain lines at the start of the source's block. Returns at the first line that is
  /// not plain; that line is then the source's next. The plain path must take one line before the
  /// next call, or nothing would ever go on.
  void TakeLines(LineSource& source);

 private:
  /// What the scan hands its lines to. Names the counts once more, so that the scan finds them
  /// without a look into the scanner.
  struct LineTaker {
    ChangeScanner& scanner;
    CodeCounts& counts;

    void Scalar(const char* line, const char* newline);
    bool Other(const char* line, const char* blank, const char* newline);
  };

  // Each gives false, with nothing changed, for a line that it leaves to the plain path.
  bool TakeOtherLine(const char* line, const char* blank, const char* end);
  bool TakeChangeWithCode(const char* line, const char* blank, const char* end);
  bool TakeStampLine(const char* line, const char* end);
  // What the plain path would leave in the slot of a line's second word.
  void StoreCode(const char* code, std::size_t length);
  // Gives the span the last stamp of a block.
  void ConvertStamp();

  // The counters belong to the caller, as do the state and the splitters.
  CodeCounts& counts_;
  ReadingState& state_;
  Splitter& stampSplitter_;
  // Null where words have a splitter of their own.
  const Splitter* const wordSplitter_;
  const std::size_t longestLine_;
  std::uint64_t unsettled_ = 0;  // bytes scanned since the counters were settled
  char* codeSlot_ = nullptr;     // where the code of a line of two words goes, if anywhere
  // A stamp then only moves the end of the span, as all but the first do.
  bool spanOpen_ = false;
  // It points into the block, which moves at the next line, so it is empty between two calls.
  std::string_view stamp_;  // the last stamp's digits, not yet converted
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_CHANGE_SCANNER_H_
