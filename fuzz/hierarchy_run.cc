// The hierarchical run and the lookups in its tree, with both values of `exact`, against the plain
// walk. The first option is the module that the lookups name, the others are the signals.
#include "fuzz/target.h"
#include "kesncd/kesncd.h"
#include "tests/support/input.h"
#include "tests/support/plain_names.h"
#include "tests/support/reader_state.h"
#include "tests/support/require.h"
#include "tests/support/streams.h"

namespace {

using namespace orsa::kesncd;

/// Checks a node and those below it; returns how many they are.
std::size_t CheckTree(const VmodHier& node, std::map<std::string, double>& frequencies) {
  std::size_t nodes = 1;
  for (const auto& [code, signal] : node.signals) {
    support::Require(signal.symbol == code && signal.changes >= 0, "a signal of the tree");
    frequencies.insert({signal.name, support::PlainFrequency(signal.changes)});
  }
  for (const auto& [name, code] : node.names) {
    support::Require(node.signals.count(code) == 1, "a name leads to a signal");
  }
  for (const VmodHier* child : node.subMods) {
    support::Require(child->parent == &node, "a scope knows the one around it");
    nodes += CheckTree(*child, frequencies);
  }
  return nodes;
}

void CheckIndex(const KesNCD& analyser) {
  for (const auto& [code, scopes] : analyser.codeIndex) {
    support::Require(!scopes.empty(), "no code without a scope");
    for (const VmodHier* scope : scopes) {
      support::Require(scope->signals.count(code) == 1,
                       "the index names a scope that has the code");
    }
  }
}

void CheckFrequencies(const VmodHier& root) {
  std::map<std::string, double> expected;
  CheckTree(root, expected);
  std::map<std::string, double> frequencies;
  root.GetSignalFreqHier(frequencies);
  support::Require(frequencies.size() == expected.size(), "all signals have a frequency");
  for (const auto& [name, frequency] : frequencies) {
    support::Require(support::Same(expected.at(name), frequency), "the frequency of " + name);
  }
}

}  // namespace

void CheckInput(std::string_view bytes) {
  const support::Input input(bytes);
  const support::MemoryFile file(input.text);
  ResetReaderState();
  KesNCD analyser;
  std::string message = "untouched";
  const bool done = analyser.SetVCDFileHier(file.Path(), {}, message);
  support::Require(done == (analyser.hierRoot != nullptr), "a tree is what a run is for");
  support::Require((message == "untouched") == done, "a message is for failures");
  CheckIndex(analyser);
  if (!done) return;
  CheckFrequencies(*analyser.hierRoot);
  constexpr std::size_t kMostLookups = 8;  // each walks all of the tree
  std::size_t lookups = 0;
  for (const std::string& signal : input.OptionsFrom(1)) {
    if (++lookups > kMostLookups) break;
    for (const bool exact : {false, true}) {
      support::CheckLookup(*analyser.hierRoot, input.Option(0), signal, exact);
    }
  }
}
