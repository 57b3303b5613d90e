// Reads a dump with the reader asked for and describes what it leaves.
#include "tests/support/line_readers.h"

#include <sstream>

#include "line_readers/change_scanner.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {

namespace {

/// Whether recording is off; the scale and the span where they are not 1 and unknown.
std::string State() {
  std::ostringstream text;
  if (recording == 0) text << "off ";
  if (timeScale != 1) text << timeScale << "ns ";
  if (startCycle != -1 || endCycle != -1) text << startCycle << "-" << endCycle << " ";
  return text.str();
}

/// Scopes with their signals: "top(clk=1 d[7:0]=0 u(x=0))".
void Describe(const VmodHier& scope, std::ostream& out) {
  out << scope.name << "(";
  const char* blank = "";
  for (const auto& [code, signal] : scope.signals) {
    out << std::exchange(blank, " ") << signal.name << "=" << signal.changes;
  }
  for (const VmodHier* child : scope.subMods) {
    Describe(*child, out << std::exchange(blank, " "));
  }
  out << ")";
}

/// The tree, and behind it the scopes that hang nowhere.
void Describe(const KesNCD& analyser, std::ostream& out) {
  if (analyser.hierRoot != nullptr) Describe(*analyser.hierRoot, out);
  std::set<const VmodHier*> shown{analyser.hierRoot};
  for (const auto& [code, scopes] : analyser.codeIndex) {
    for (const VmodHier* scope : scopes) {
      if (scope->parent == nullptr && shown.insert(scope).second) Describe(*scope, out << " +");
    }
  }
}

}  // namespace

std::string TreeText(const KesNCD& analyser) {
  std::ostringstream text;
  Describe(analyser, text);
  return text.str();
}

Reading ReadDump(Reader reader, std::FILE* stream, bool fast) {
  ResetReaderState();
  useChangeScanner = fast;
  KesNCD analyser;
  analyser.SetTopModule("top");
  Reading reading;
  if (reader == Reader::Unfiltered) reading.complete = analyser.ParseVcdFile(stream);
  if (reader == Reader::Filtered) analyser.ParseVcdFile2(stream, {"clk", "u/q"});
  if (reader == Reader::Hierarchical) reading.complete = analyser.ParseVcdFileHier(stream, {});
  if (reader == Reader::Grammar) reading.complete = ParseVcdFile(stream) == 0;
  useChangeScanner = true;
  for (const auto& [code, scopes] : analyser.codeIndex) {
    for (VmodHier* scope : scopes) reading.changes += scope->signals[code].changes;
  }
  for (int i = 0; i < topMod.GetSignalSize(); ++i) reading.changes += topMod.GetSignalChange(i);
  std::ostringstream text;
  text << State();
  if (!topMod.GetName().empty()) text << topMod.GetName() << "(" << TopModCounts() << ")";
  reading.text = text.str() + TreeText(analyser);
  return reading;
}

Reading ExpectSamePaths(Reader reader, const std::string& dump) {
  Reading readings[2];
  std::string ends[2];
  for (const bool fast : {false, true}) {
    const TextStream stream(dump);
    readings[fast] = ReadDump(reader, stream, fast);
    ends[fast] = readings[fast].text + (readings[fast].complete ? " at " : " gave up at ") +
                 std::to_string(std::ftell(stream));
  }
  EXPECT_EQ(ends[true], ends[false]) << "reader " << static_cast<int>(reader) << "\n"
                                     << ::testing::PrintToString(dump.substr(0, 3000));
  return readings[true];
}

}  // namespace orsa::kesncd
