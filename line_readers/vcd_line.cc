// Telling the kinds of lines apart.
#include "line_readers/vcd_line.h"

#include <cstring>

namespace orsa::kesncd {

namespace {

/// The first letter is asked first: nearly all lines of a single word are changes and stamps.
LineKind KindOfWord(const VcdLine& line) {
  if (line.words[0][0] != '$') return LineKind::Word;
  // Alone on its line; the next line with words is the time scale itself.
  if (line.Is(0, "$timescale")) return LineKind::Timescale;
  if (line.Is(0, "$dumpall") || line.Is(0, "$dumpon") || line.Is(0, "$dumpvars")) {
    return LineKind::RecordingOn;
  }
  return line.Is(0, "$dumpoff") ? LineKind::RecordingOff : LineKind::Word;
}

/// "$enddefinitions" without its "$end" on the line ends nothing.
LineKind KindOfPair(const VcdLine& line) {
  if (!line.Is(1, "$end")) return LineKind::Other;
  if (line.Is(0, "$upscope")) return LineKind::Upscope;
  return line.Is(0, "$enddefinitions") ? LineKind::EndDefinitions : LineKind::Other;
}

}  // namespace

bool VcdLine::Is(int index, const char* text) const {
  return std::strcmp(words[index], text) == 0;
}

/// The number of words decides first; the readers' rules are all of the form "alone on its line".
LineKind VcdLine::Kind() const {
  switch (count) {
    case 1:
      return KindOfWord(*this);
    case 2:
      return KindOfPair(*this);
    // No line of three words has a kind.
    case 4:
      return Is(0, "$scope") && Is(3, "$end") ? LineKind::Scope : LineKind::Other;
    default:
      return LineKind::Other;
  }
}

}  // namespace orsa::kesncd
