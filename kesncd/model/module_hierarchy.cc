// One node of the module tree: ownership, declaration, counting.
#include <algorithm>
#include <utility>

#include "kesncd/kesncd.h"
#include "kesncd/model/tree_walk.h"
#include "vcd/change_count.h"

namespace orsa::kesncd {

VmodHier::VmodHier() : parent(nullptr) {}

VmodHier::VmodHier(std::string scopeName) : name(std::move(scopeName)), parent(nullptr) {}

VmodHier::~VmodHier() {
  Clear();
}

/// Deletes the subtree leaf by leaf. The way back up is kept in the parent links of the nodes that
/// are about to go, so a deep tree costs neither stack nor memory.
void VmodHier::Clear() {
  name.clear();
  signals.clear();
  names.clear();
  VmodHier* node = this;
  while (node != this || !subMods.empty()) {
    if (!node->subMods.empty()) {
      VmodHier* const child = node->subMods.back();
      node->subMods.pop_back();
      if (child == nullptr) continue;
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
}

void VmodHier::AddSignal(std::string signalName, std::string type, std::string symbol, int width) {
  Declare(std::move(signalName), std::move(type), std::move(symbol), width);
}

/// Declares a signal; returns the one that the code has from now on.
VmodSignal& VmodHier::Declare(std::string signalName, std::string type, std::string symbol,
                              int width) {
  // Simulators number their codes through, and many sort their names.
  const std::size_t codes = signals.size();
  VmodSignal& signal = signals.try_emplace(signals.end(), symbol)->second;
  if (signals.size() > codes) {
    signal.name = signalName;
    signal.type = std::move(type);
    signal.symbol = symbol;
    signal.width = width;
  }
  names.try_emplace(names.end(), std::move(signalName), std::move(symbol));
  return signal;
}

void VmodHier::AddChanges(const std::string& symbol, std::uint32_t count) {
  const auto declared = signals.find(symbol);
  if (declared != signals.end()) AddToCount(declared->second.changes, count);
}

bool VmodHier::IncreaseChangeForSymbol(const std::string& symbol) {
  return WalkTree(*this, [&symbol](VmodHier& node) {
    if (!node.signals.contains(symbol)) return false;
    node.AddChanges(symbol, 1);
    return true;
  });
}

std::string VmodHier::GetNameHier(const std::string& scopeName) const {
  return scopeName;
}

std::string VmodHier::GetNameFlat(const std::string& scopeName) {
  std::string flat = scopeName;
  std::replace(flat.begin(), flat.end(), '/', '_');
  return flat;
}

}  // namespace orsa::kesncd
