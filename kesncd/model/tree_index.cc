// Which signals of a tree take part in a search, in the order in which it meets them.
#include "kesncd/model/tree_index.h"

#include "kesncd/model/state_frequency.h"
#include "kesncd/model/tree_walk.h"
#include "names/name_match.h"

namespace orsa::kesncd {

TreeIndex::TreeIndex(const VmodHier& root, bool exact, const std::vector<std::string_view>& asked)
    : root_(root), exact_(exact) {
  // The root's signals come first, so their number tells them from the others.
  std::size_t ofRoot = 0;
  WalkTree(root, [&](const VmodHier& scope) {
    // Whether the root takes part depends on what is asked; a scope below it must match itself.
    if (&scope != &root_ && !NamesMatch(scope.name, scope.name, exact_)) return false;
    for (const auto& [code, signal] : scope.signals) signals_.push_back(&signal);
    if (&scope == &root_) ofRoot = signals_.size();
    return false;
  });
  std::vector<std::string_view> names;
  names.reserve(signals_.size());
  // Views into the tree, which the index does not keep.
  for (const VmodSignal* signal : signals_) names.emplace_back(signal->name);
  names_.emplace(names, ofRoot, exact, asked);
}

/// The root takes part only if it is the module that is asked for.
bool TreeIndex::Find(const std::string& module, const std::string& signal, double& freq) const {
  const bool withRoot = NamesMatch(root_.name, module, exact_);
  const NameIndex::Place place = names_->Find(signal, withRoot);
  if (place == NameIndex::kNowhere) return false;
  freq = FrequencyOf(signals_[place]->changes);
  return true;
}

}  // namespace orsa::kesncd
