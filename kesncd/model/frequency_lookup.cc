// Frequencies of the module tree, by design name or all of them.
#include <map>

#include "kesncd/kesncd.h"
#include "kesncd/model/state_frequency.h"
#include "kesncd/model/tree_walk.h"
#include "names/name_match.h"

namespace orsa::kesncd {

bool VmodHier::IsNameEqual(const std::string& vcdName, const std::string& designName, bool exact) {
  return NamesMatch(vcdName, designName, exact);
}

// cppcheck-suppress passedByValue ; the public interface says so
bool VmodHier::FindSignalFreqHier(std::string module, std::string signal, double& freq,
                                  bool exact) const {
  // In the order of WalkTree and, in a scope, of its codes; the first signal that matches is the
  // answer.
  return WalkTree(*this, [&](const VmodHier& scope) {
    // Only the start must have the module's name. A scope below it is compared with its own name,
    // which only one with a ':' in it does not match.
    const std::string& asked = &scope == this ? module : scope.name;
    if (!NamesMatch(scope.name, asked, exact)) return false;
    // The map's order is that of the codes, not of the declarations.
    for (const auto& [code, candidate] : scope.signals) {
      if (!NamesMatch(candidate.name, signal, exact)) continue;
      freq = FrequencyOf(candidate.changes);
      return true;
    }
    return false;
  });
}

/// A name that several scopes have keeps the first one's frequency.
void VmodHier::GetSignalFreqHier(std::map<std::string, double>& frequencies) const {
  WalkTree(*this, [&](const VmodHier& scope) {
    for (const auto& [code, signal] : scope.signals) {
      ClearDebugLatch();
      frequencies.emplace(signal.name, FrequencyOf(signal.changes));
    }
    return false;
  });
}

}  // namespace orsa::kesncd
