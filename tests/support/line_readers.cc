// Reads a dump with the reader asked for and describes what it leaves.
#include "tests/support/line_readers.h"

#include <sstream>

#include "kesncd/readings.h"
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

/// The tree, and after it the scopes that hang nowhere.
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

Reading ReadDump(Reader reader, std::FILE* stream, const ReadingOptions& options) {
  ResetReaderState();
  KesNCD analyser;
  analyser.SetTopModule("top");
  Reading reading;
  const std::set<std::string> selection{"clk", "u/q"};
  VmodHier* unlinked = nullptr;
  const HostTree tree{analyser.codeIndex, analyser.hierRoot, unlinked};
  if (reader == Reader::Unfiltered) reading.complete = ReadFlat(stream, nullptr, options);
  if (reader == Reader::Filtered) ReadFlat(stream, &selection, options);
  if (reader == Reader::Hierarchical) reading.complete = ReadTree(stream, tree, options);
  if (reader == Reader::Grammar) reading.complete = ParseVcdFile(stream) == 0;
  for (const auto& [code, scopes] : analyser.codeIndex) {
    for (VmodHier* scope : scopes) reading.changes += scope->signals[code].changes;
  }
  for (int i = 0; i < topMod.GetSignalSize(); ++i) reading.changes += topMod.GetSignalChange(i);
  std::ostringstream text;
  text << State();
  if (!topMod.GetName().empty()) text << topMod.GetName() << "(" << TopModCounts() << ")";
  reading.text = text.str() + TreeText(analyser);
  VmodHier::DeleteList(unlinked);
  return reading;
}

Reading ExpectSamePaths(Reader reader, const std::string& dump) {
  Reading reading;
  std::string expected;
  const ReadingOptions small{.blockBytes = 4200, .longestDirectCode = 2};
  for (const ReadingOptions& options : {ReadingOptions{.scansPlainLines = false}, small, {}}) {
    const TextStream stream(dump);
    reading = ReadDump(reader, stream, options);
    const std::string found = reading.text + (reading.complete ? " at " : " gave up at ") +
                              std::to_string(std::ftell(stream));
    if (expected.empty()) expected = found;
    EXPECT_EQ(found, expected) << "reader " << static_cast<int>(reader) << "\n"
                               << ::testing::PrintToString(dump.substr(0, 3000));
  }
  return reading;
}

}  // namespace orsa::kesncd
