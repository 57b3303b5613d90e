// One node of the module tree: ownership, declaration, counting.
#include <algorithm>
#include <utility>

#include "kesncd/kesncd.h"
#include "kesncd/model/module_node.h"
#include "kesncd/model/tree_walk.h"
#include "text/words.h"
#include "vcd/change_count.h"

namespace orsa::kesncd {

/// A node without a parent is a root, or hangs nowhere yet.
VmodHier::VmodHier() : parent(nullptr) {}

VmodHier::VmodHier(std::string scopeName) : name(std::move(scopeName)), parent(nullptr) {}

// Children are owned; the parent is not told.
VmodHier::~VmodHier() {
  Unlink();
  Clear();
}

/// Makes the node the first of a list of nodes that hang nowhere. The list runs through the nodes
/// themselves: a node can leave it in constant time, wherever it is.
void VmodHier::LinkTo(VmodHier*& list) {
  nextUnlinked_ = list;
  linkToThis_ = &list;
  if (list != nullptr) list->linkToThis_ = &nextUnlinked_;
  list = this;
}

/// Takes the node out of its list, if it is in one.
void VmodHier::Unlink() {
  if (linkToThis_ == nullptr) return;
  *linkToThis_ = nextUnlinked_;
  if (nextUnlinked_ != nullptr) nextUnlinked_->linkToThis_ = linkToThis_;
  nextUnlinked_ = nullptr;
  linkToThis_ = nullptr;
}

/// Takes the nodes of the subtree, but not this one, out of their lists: a host may have hung them
/// here without AddSubMod.
void VmodHier::UnlinkBelow() {
  WalkTree(*this, [this](VmodHier& node) {
    if (&node != this) node.Unlink();
    return false;
  });
}

/// Deletes the nodes of a list with all below them. First, those that hang below others leave it.
void VmodHier::DeleteList(VmodHier*& list) {
  // Otherwise deleting the one would delete the other while it is still in the list.
  for (VmodHier* node = list; node != nullptr; node = node->nextUnlinked_) node->UnlinkBelow();
  // Its destructor takes a node off the list.
  while (list != nullptr) delete list;
}

/// Deletes the subtree child by child, each one's own children first. The way back up is kept in
/// the parent links of the nodes that are about to go, and a node's children are turned round once,
/// so that the next one is the last: a deep tree costs neither stack nor memory.
void VmodHier::Clear() {
  const auto empty = [](VmodHier& node) {
    node.name.clear();
    node.signals.clear();
    node.names.clear();
    std::reverse(node.subMods.begin(), node.subMods.end());
  };
  // Down to a child as long as there is one, else back up; each step takes one node away or goes
  // one level deeper.
  empty(*this);
  VmodHier* node = this;
  while (node != this || !subMods.empty()) {
    if (!node->subMods.empty()) {
      VmodHier* const child = node->subMods.back();
      node->subMods.pop_back();
      // A host may have left holes.
      if (child == nullptr) continue;
      empty(*child);
      // A host may have set it otherwise, or not at all.
      child->parent = node;
      node = child;
    } else {
      VmodHier* const emptied = node;
      node = node->parent;
      delete emptied;  // NOLINT(clang-analyzer-cplusplus.NewDelete): a node has one parent only
    }
  }
}

/// Pushed first: where memory ends, the node stays in its list and has an owner.
void VmodHier::AddSubMod(VmodHier* child) {
  subMods.push_back(child);
  if (child != nullptr) child->Unlink();
}

void VmodHier::AddSignal(std::string signalName, std::string type, std::string symbol, int width) {
  DeclareIn(*this, std::move(signalName), std::move(type), std::move(symbol), width);
}

VmodSignal& DeclareIn(VmodHier& scope, std::string name, std::string type, std::string symbol,
                      int width) {
  // Simulators number their codes through, and many sort their names. A hint at the end costs no
  // search where codes and names come sorted.
  const std::size_t codes = scope.signals.size();
  VmodSignal& signal = scope.signals.try_emplace(scope.signals.end(), symbol)->second;
  // Declared again, a code keeps its first name; the new name leads to it all the same.
  if (scope.signals.size() > codes) {
    signal.name = name;
    signal.type = std::move(type);
    signal.symbol = symbol;
    signal.width = width;
  }
  scope.names.try_emplace(scope.names.end(), std::move(name), std::move(symbol));
  return signal;
}

/// A host may have taken the signal away since.
void AddChangeIn(VmodHier& scope, const std::string& symbol) {
  const auto declared = scope.signals.find(symbol);
  if (declared != scope.signals.end()) AddToCount(declared->second.changes, 1);
}

/// The first node in the tree that has the code counts; others of the same code do not.
bool VmodHier::IncreaseChangeForSymbol(const std::string& symbol) {
  return WalkTree(*this, [&symbol](VmodHier& node) {
    if (!node.signals.contains(symbol)) return false;
    AddChangeIn(node, symbol);
    return true;
  });
}

/// Kept for hosts: a path is what it is.
std::string VmodHier::GetNameHier(const std::string& scopeName) const {
  return scopeName;
}

std::string VmodHier::GetNameFlat(const std::string& scopeName) {
  return SlashesFlattened(scopeName);
}

}  // namespace orsa::kesncd
