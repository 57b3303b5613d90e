// One node of the module tree: ownership, declaration, counting.
#include <algorithm>
#include <utility>

#include "kesncd/kesncd.h"
#include "kesncd/model/module_node.h"
#include "kesncd/model/tree_walk.h"
#include "text/words.h"
#include "vcd/change_count.h"

namespace orsa::kesncd {

VmodHier::VmodHier() : parent(nullptr) {}

VmodHier::VmodHier(std::string scopeName) : name(std::move(scopeName)), parent(nullptr) {}

VmodHier::~VmodHier() {
  Unlink();
  Clear();
}

/// Makes the node the first of a list of nodes that hang nowhere.
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
  empty(*this);
  VmodHier* node = this;
  while (node != this || !subMods.empty()) {
    if (!node->subMods.empty()) {
      VmodHier* const child = node->subMods.back();
      node->subMods.pop_back();
      if (child == nullptr) continue;
      empty(*child);
      child->parent = node;
      node = child;
    } else {
      VmodHier* const emptied = node;
      node = node->parent;
      delete emptied;  // NOLINT(clang-analyzer-cplusplus.NewDelete): a node has one parent only
    }
  }
}

void VmodHier::AddSubMod(VmodHier* child) {
  subMods.push_back(child);
  if (child != nullptr) child->Unlink();
}

void VmodHier::AddSignal(std::string signalName, std::string type, std::string symbol, int width) {
  DeclareIn(*this, std::move(signalName), std::move(type), std::move(symbol), width);
}

VmodSignal& DeclareIn(VmodHier& scope, std::string name, std::string type, std::string symbol,
                      int width) {
  // Simulators number their codes through, and many sort their names.
  const std::size_t codes = scope.signals.size();
  VmodSignal& signal = scope.signals.try_emplace(scope.signals.end(), symbol)->second;
  if (scope.signals.size() > codes) {
    signal.name = name;
    signal.type = std::move(type);
    signal.symbol = symbol;
    signal.width = width;
  }
  scope.names.try_emplace(scope.names.end(), std::move(name), std::move(symbol));
  return signal;
}

void AddChangesIn(VmodHier& scope, const std::string& symbol, std::uint32_t changes) {
  const auto declared = scope.signals.find(symbol);
  if (declared != scope.signals.end()) AddToCount(declared->second.changes, changes);
}

bool VmodHier::IncreaseChangeForSymbol(const std::string& symbol) {
  return WalkTree(*this, [&symbol](VmodHier& node) {
    if (!node.signals.contains(symbol)) return false;
    AddChangesIn(node, symbol, 1);
    return true;
  });
}

std::string VmodHier::GetNameHier(const std::string& scopeName) const {
  return scopeName;
}

std::string VmodHier::GetNameFlat(const std::string& scopeName) {
  return SlashesFlattened(scopeName);
}

}  // namespace orsa::kesncd
