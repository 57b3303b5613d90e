// Scopes become nodes, and declarations their signals.
#include "kesncd/model/tree_builder.h"

#include <memory>
#include <utility>

#include "kesncd/model/module_node.h"

namespace orsa::kesncd {

void TreeBuilder::OpenScope(const char* name) {
  // Owned here until something else leads to it.
  auto node = std::make_unique<VmodHier>(name);
  // A top-level scope has no parent.
  node->parent = current_;
  // The very first scope is the root, wherever it stands.
  if (tree_.root == nullptr) {
    tree_.root = node.get();
  } else if (current_ != nullptr) {
    current_->AddSubMod(node.get());
  } else {
    // A further top-level scope: its signals count, but nothing leads to it from the root.
    node->LinkTo(tree_.unlinked);
  }
  current_ = node.release();
}

/// More ends than scopes do nothing.
void TreeBuilder::CloseScope() {
  if (current_ != nullptr) current_ = current_->parent;
}

void TreeBuilder::Declare(Declaration& declaration) {
  // Outside all scopes a variable belongs nowhere.
  if (current_ == nullptr) return;
  declarations_.Append(
      current_, DeclareIn(*current_, std::move(declaration.name), std::move(declaration.type),
                          std::move(declaration.code), declaration.width));
}

/// Counting begins: what is in the index from here on has a counter.
void TreeBuilder::EndDefinitions() {
  declarations_.Index(tree_.index);
}

void TreeBuilder::Finish() {
  // Declarations after the last end of the definitions are indexed all the same.
  declarations_.Index(tree_.index);
  declarations_.AddCounts();
}

}  // namespace orsa::kesncd
