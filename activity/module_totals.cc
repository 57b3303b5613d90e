// Summing up, with every code once in each subtree.
//
// Walking the scopes in the dump's order, a code adds to the scope where it is met; where it was
// met before, the innermost scope around both places would count it twice, so it is taken off
// there. Adding up from the leaves then gives each subtree every code once.
#include "activity/module_totals.h"

#include <algorithm>
#include <iterator>

namespace orsa::kesncd {

namespace {

// Of a code that was not met yet.
constexpr std::uint32_t kNowhere = UINT32_MAX;

/// Signed sums, since what is taken off may lie above what it is taken from.
struct Sums {
  std::int64_t signals = 0;
  std::int64_t changes = 0;
  std::int64_t counted = 0;
  std::uint32_t most = 0;

  /// `sign` is 1 where a code counts and -1 where it is taken off.
  void Add(std::uint32_t moreChanges, std::int64_t sign) {
    signals += sign;
    changes += sign * static_cast<std::int64_t>(moreChanges);
    // A code without a value has no initial value either.
    counted += sign * (moreChanges > 0 ? static_cast<std::int64_t>(moreChanges) - 1 : 0);
    // Taking off does not lower a maximum: the code is still in the sum once.
    most = std::max(most, moreChanges);
  }
  // Sums of a scope below.
  void Add(const Sums& other) {
    signals += other.signals;
    changes += other.changes;
    counted += other.counted;
    most = std::max(most, other.most);
  }
  // When all is added up nothing is negative any more.
  ModuleTotal Total() const {
    return {static_cast<std::uint64_t>(signals), static_cast<std::uint64_t>(changes),
            static_cast<std::uint64_t>(counted), most};
  }
};

/// Calling order: construct, Sum once.
class Summing {
 public:
  explicit Summing(const HostRun& run)
      : run_(run),
        own_(run.declarations.scopes.size()),
        tree_(own_.size()),
        place_(own_.size()),
        lastOfCode_(run.changes.size(), kNowhere) {}

  ModuleTotals Sum() {
    // Fills order_, own_ and the scopes' parts of tree_.
    WalkScopes();
    // In reverse, each scope comes after those below it.
    for (auto scope = order_.rbegin(); scope != order_.rend(); ++scope) {
      if (*scope != Declarations::kDump) {
        tree_[run_.declarations.scopes[*scope].parent].Add(tree_[*scope]);
      }
    }
    // By number, as callers look them up.
    ModuleTotals totals;
    for (std::size_t i = 0; i < own_.size(); ++i) {
      totals.own.push_back(own_[i].Total());
      totals.tree.push_back(tree_[i].Total());
    }
    return totals;
  }

 private:
  struct Pending {
    std::uint32_t scope;
    std::size_t depth;
  };

  /// Depth first in the dump's order, without recursion.
  void WalkScopes() {
    std::vector<Pending> pending{{Declarations::kDump, 0}};
    while (!pending.empty()) {
      const Pending next = pending.back();
      pending.pop_back();
      // Those around the last scope that are not around this one go.
      around_.resize(next.depth);
      around_.push_back(next.scope);
      place_[next.scope] = static_cast<std::uint32_t>(order_.size());
      order_.push_back(next.scope);
      for (const std::uint32_t variable : run_.declarations.scopes[next.scope].variables) {
        TakeCode(run_.declarations.variables[variable].codeId, next.scope);
      }
      // Backwards onto the stack, to come off in the dump's order.
      const auto& below = run_.declarations.scopes[next.scope].scopes;
      for (auto child = below.rbegin(); child != below.rend(); ++child) {
        pending.push_back({*child, next.depth + 1});
      }
    }
  }

  /// Adds a code to the scope, and takes it off where two places of it meet.
  void TakeCode(std::uint32_t codeId, std::uint32_t scope) {
    const std::uint32_t last = lastOfCode_[codeId];
    // A second name in the same scope.
    if (last == scope) return;
    lastOfCode_[codeId] = scope;
    const std::uint32_t changes = run_.changes[codeId];
    own_[scope].Add(changes, 1);
    tree_[scope].Add(changes, 1);
    // Met for the first time.
    if (last == kNowhere) return;
    // Of the scopes around this one, those that began no later than the place before hold both.
    // Places in order_ grow along around_, so the innermost of those is found by halving.
    const auto inner = std::upper_bound(
        around_.begin(), around_.end(), place_[last],
        [this](std::uint32_t place, std::uint32_t outer) { return place < place_[outer]; });
    tree_[*std::prev(inner)].Add(changes, -1);
  }

  const HostRun& run_;
  std::vector<Sums> own_;
  std::vector<Sums> tree_;
  std::vector<std::uint32_t> order_;   // the scopes as the dump declares them
  std::vector<std::uint32_t> place_;   // of each scope in that order
  std::vector<std::uint32_t> around_;  // the scopes around the one being walked, outermost first
  std::vector<std::uint32_t> lastOfCode_;  // the scope where each code was met last
};

}  // namespace

ModuleTotals SumModules(const HostRun& run) {
  return Summing(run).Sum();
}

}  // namespace orsa::kesncd
