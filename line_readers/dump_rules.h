// The rules that every line reader keeps alike: the recording switch, the time span, what a
// declaration is and what a value change counts.
#ifndef KESNCD_LINE_READERS_DUMP_RULES_H_
#define KESNCD_LINE_READERS_DUMP_RULES_H_

#include <string>

#include "line_readers/reading_state.h"
#include "line_readers/vcd_line.h"
#include "text/splitter.h"

namespace orsa::kesncd {

/// Switches the recording for a line that says so; false for every other line. "$dumpoff" and the
/// other three count alone on their lines only.
bool SwitchRecording(LineKind kind, ReadingState& state);

/// Takes a time stamp into the span: the first one opens it, later ones move its end. A span with
/// one negative bound is left alone. In the dump's own unit; the time scale comes in where
/// frequencies are computed.
void TakeStamp(double ticks, double& firstTick, double& lastTick);

/// Takes the stamp that a word such as "#1200" holds: the number in its second piece. `splitter`
/// keeps its slots from stamp to stamp, which is where stamp tails come from.
void TakeStampWord(Splitter& splitter, const char* word, ReadingState& state);

/// A "$var" line of six words, or of seven with the range glued to the name.
struct Declaration {
  // "count", or "count[7:0]": a range in a word of its own is glued on.
  std::string name;
  std::string type;
  // Never empty, since it is a word.
  std::string code;
  // 0 where the word is no number; it may be negative.
  int width = 0;
};

/// Reads a declaration; false, with `declaration` untouched, for every other line.
bool ReadDeclaration(const VcdLine& line, Declaration& declaration);

/// The identifier code that a value change counts for: null where nothing counts (x, z, a vector
/// without a code, a line that is no change). "1!" counts for "!", "b0110 #" for "#". Valid as long
/// as the line.
const char* ChangedCode(const VcdLine& line);

/// What a line after the definitions does: a lone "#..." word moves the span, "$end" nothing, and
/// any other line is a value change, whose code is returned while recording is on (null: none). The
/// line has a word at least.
const char* TakeBodyLine(const VcdLine& line, LineKind kind, Splitter& stampSplitter,
                         ReadingState& state);

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_DUMP_RULES_H_
