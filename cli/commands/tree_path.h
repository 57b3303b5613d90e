// Scopes of the module tree and where they stand in it.
#ifndef KESNCD_CLI_COMMANDS_TREE_PATH_H_
#define KESNCD_CLI_COMMANDS_TREE_PATH_H_

#include <string>
#include <vector>

#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

/// The scope's path from the root: "tb/dut/u1". The middle of a very deep one is left out, and so
/// is a root of the name `addedRoot` around others: it stands in no dump.
std::string PathOf(const VmodHier& scope, const std::string& addedRoot);

/// Visits a scope and those below it, each before its children and those in their order.
/// `visit(scope, depth)` returns true to end the walk; `enter(scope, depth)` whether its children
/// are visited. True when a visit ended the walk.
template <class Visit, class Enter>
bool WalkScopes(const VmodHier& start, Visit visit, Enter enter) {
  struct Pending {
    const VmodHier* scope;
    int depth;
  };
  std::vector<Pending> pending{{&start, 0}};
  while (!pending.empty()) {
    const Pending next = pending.back();
    pending.pop_back();
    if (visit(*next.scope, next.depth)) return true;
    if (!enter(*next.scope, next.depth)) continue;
    const auto& children = next.scope->subMods;
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
      pending.push_back({*child, next.depth + 1});
    }
  }
  return false;
}

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_COMMANDS_TREE_PATH_H_
