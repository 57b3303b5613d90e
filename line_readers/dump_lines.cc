// Where the lines of a dump come from, and the two ways that they take.
#include "line_readers/dump_lines.h"

#include "line_readers/dump_rules.h"

namespace orsa::kesncd {

DumpLines::DumpLines(std::FILE* dump, std::size_t lineBytes, Splitters splitters,
                     CodeCounts& counts, ReadingState& state, const ReadingOptions& options)
    : scansPlainLines_(options.scansPlainLines),
      source_(dump, lineBytes, options.blockBytes),
      stampSplitter_(splitters == Splitters::Shared ? wordSplitter_ : ownStampSplitter_),
      counts_(counts),
      state_(state),
      scanner_(counts_, state_, stampSplitter_,
               splitters == Splitters::Shared ? &wordSplitter_ : nullptr, lineBytes - 1) {}

/// Until the definitions end the stream is read by lines, so that a reader that gives up there
/// leaves it right after the last line even where it cannot seek.
bool DumpLines::Next(bool inBody, VcdLine& line) {
  do {
    // The fast path stops at a line that it leaves; that one comes next, and then the fast path
    // again.
    if (inBody && scansPlainLines_) {
      source_.ReadBlocks();
      scanner_.TakeLines(source_);
    }
    const char* const text = source_.Next();
    if (text == nullptr) return false;
    // Lines of blanks only are passed over for every reader.
    line.words = wordSplitter_.CutWords(text, kVcdBlanks, &line.count);
  } while (line.count == 0);
  return true;
}

/// The function of dump_rules decides; here the code is counted.
void DumpLines::TakeBodyLine(const VcdLine& line, LineKind kind) {
  const char* const code = orsa::kesncd::TakeBodyLine(line, kind, stampSplitter_, state_);
  if (code != nullptr) counts_.Count(code);
}

}  // namespace orsa::kesncd
