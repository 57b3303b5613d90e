// Walks over a module tree. Dumps nest their scopes as deep as they like, so no walk recurses.
#ifndef KESNCD_MODEL_TREE_WALK_H_
#define KESNCD_MODEL_TREE_WALK_H_

#include <vector>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

/// Visits a node and its subtree, each node before its children and those in their order, until
/// `visit` returns true; whether it did. `visit` may change a node but not its list of children.
template <class Node, class Visit>
bool WalkTree(Node& start, Visit visit) {
  std::vector<Node*> pending{&start};
  while (!pending.empty()) {
    Node& node = *pending.back();
    pending.pop_back();
    if (visit(node)) return true;
    // The last child goes in first, so that the first one is visited next.
    for (auto child = node.subMods.rbegin(); child != node.subMods.rend(); ++child) {
      // A host may have left holes in the list.
      if (*child != nullptr) pending.push_back(*child);
    }
  }
  return false;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_MODEL_TREE_WALK_H_
