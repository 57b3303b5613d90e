// The rules as functions of a line and of the reading's state.
#include "line_readers/dump_rules.h"

#include "text/number.h"

namespace orsa::kesncd {

/// Wherever the line stands, also in comments and in the header.
bool SwitchRecording(LineKind kind, ReadingState& state) {
  if (kind != LineKind::RecordingOn && kind != LineKind::RecordingOff) return false;
  state.recording = kind == LineKind::RecordingOn ? 1 : 0;
  return true;
}

/// Two negative bounds: the stamp opens the span; none: it moves the end. A single one is what a
/// host left there, which nothing repairs.
void TakeStamp(double ticks, double& firstTick, double& lastTick) {
  if (firstTick < 0 && lastTick < 0) {
    firstTick = ticks;
    lastTick = ticks;
  } else if (firstTick >= 0 && lastTick >= 0) {
    lastTick = ticks;
  }
}

/// "#1200" is the pieces "#" and "1200"; of "#12.5" only the 12 counts.
void TakeStampWord(Splitter& splitter, const char* word, ReadingState& state) {
  int count = 0;
  // Pieces are copied without a terminator, so pieces[1] is the stamp tail's place.
  char** pieces = splitter.CutPieces(word, &count);
  // A text that is no number leaves the bound that it would have set; a lone "#" has no second
  // piece, and the slot's earlier text stands in for it.
  double ticks = state.firstTick < 0 ? state.firstTick : state.lastTick;
  ScanDouble(pieces[1], ticks);
  TakeStamp(ticks, state.firstTick, state.lastTick);
}

/// "$var wire 8 # count [7:0] $end" has seven words. Where the last word is not "$end" the line is
/// taken all the same.
bool ReadDeclaration(const VcdLine& line, Declaration& declaration) {
  if ((line.count != 6 && line.count != 7) || !line.Is(0, "$var")) return false;
  declaration.type = line.words[1];
  declaration.width = ScanInt(line.words[2]);
  declaration.code = line.words[3];
  declaration.name = line.words[4];
  if (line.count == 7) declaration.name += line.words[5];
  return true;
}

// "1!" has its code in the first word, "b101 !" and "r0.5 !" in the second.
const char* ChangedCode(const VcdLine& line) {
  switch (line.words[0][0]) {
    case '0':
    case '1':
      return line.words[0] + 1;
    case 'b':
    case 'B':
    case 'r':
    case 'R':
      return line.count > 1 ? line.words[1] : nullptr;
    default:
      return nullptr;
  }
}

// Stamps move the span also while recording is off; only counting stops.
const char* TakeBodyLine(const VcdLine& line, LineKind kind, Splitter& stampSplitter,
                         ReadingState& state) {
  if (kind == LineKind::Word && line.words[0][0] == '#') {
    TakeStampWord(stampSplitter, line.words[0], state);
    return nullptr;
  }
  const char* code = ChangedCode(line);  // "$end" is none
  return state.recording == 1 ? code : nullptr;
}

}  // namespace orsa::kesncd
