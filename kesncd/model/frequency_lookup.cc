// Frequencies of the module tree, by design name or all of them.
#include "kesncd/kesncd.h"
#include "kesncd/model/tree_walk.h"
#include "names/frequency.h"

namespace orsa::kesncd {

// cppcheck-suppress passedByValue ; the public interface says so
bool VmodHier::FindSignalFreqHier(std::string module, std::string signal, double& freq,
                                  bool exact) const {
  const double span = endCycle - startCycle;
  return WalkTree(*this, [&](const VmodHier& scope) {
    // Only the start is asked for the module's name; below it a scope is asked for its own, which
    // all hold but those with a ':' in it.
    const std::string& asked = &scope == this ? module : scope.name;
    if (!IsNameEqual(scope.name, asked, exact)) return false;
    for (const auto& [code, candidate] : scope.signals) {
      if (!IsNameEqual(candidate.name, signal, exact)) continue;
      freq = ToggleFrequency(candidate.changes, span);
      return true;
    }
    return false;
  });
}

void VmodHier::GetSignalFreqHier(std::map<std::string, double>& frequencies) const {
  WalkTree(*this, [&](const VmodHier& scope) {
    for (const auto& [code, signal] : scope.signals) {
      ClearDebugLatch();
      frequencies.emplace(signal.name, ToggleFrequency(signal.changes, endCycle - startCycle));
    }
    return false;
  });
}

}  // namespace orsa::kesncd
