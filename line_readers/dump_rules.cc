#include "line_readers/dump_rules.h"

#include "text/number.h"

namespace orsa::kesncd {

bool SwitchRecording(LineKind kind) {
  if (kind != LineKind::RecordingOn && kind != LineKind::RecordingOff) return false;
  recording = kind == LineKind::RecordingOn ? 1 : 0;
  return true;
}

void TakeStamp(double ticks) {
  if (startCycle < 0 && endCycle < 0) {
    startCycle = ticks;
    endCycle = ticks;
  } else if (startCycle >= 0 && endCycle >= 0) {
    endCycle = ticks;
  }
}

void TakeStampWord(Mem& splitter, const char* word) {
  int count = 0;
  char** pieces = splitter.GetArrayOfPieces(word, &count);
  // A text that is no number leaves the bound that it would have set; a lone "#" has no second
  // piece, and the slot's earlier text stands in for it.
  double ticks = startCycle < 0 ? startCycle : endCycle;
  ScanDouble(pieces[1], ticks);
  TakeStamp(ticks);
}

bool ReadDeclaration(const VcdLine& line, Declaration& declaration) {
  if ((line.count != 6 && line.count != 7) || !line.Is(0, "$var")) return false;
  declaration.type = line.words[1];
  declaration.width = ScanInt(line.words[2]);
  declaration.code = line.words[3];
  declaration.name = line.words[4];
  if (line.count == 7) declaration.name += line.words[5];
  return true;
}

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

const char* TakeBodyLine(const VcdLine& line, LineKind kind, Mem& stampSplitter) {
  if (kind == LineKind::Word && line.words[0][0] == '#') {
    TakeStampWord(stampSplitter, line.words[0]);
    return nullptr;
  }
  const char* code = ChangedCode(line);  // "$end" is none
  return recording == 1 ? code : nullptr;
}

}  // namespace orsa::kesncd
