// Scopes become nodes, and declarations their signals.
#include "kesncd/model/tree_builder.h"

#include <memory>
#include <utility>

#include "kesncd/model/module_node.h"

namespace orsa::kesncd {

void TreeBuilder::OpenScope(const char* name) {
  auto node = std::make_unique<VmodHier>(name);
  node->parent = current_;
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

void TreeBuilder::CloseScope() {
  if (current_ != nullptr) current_ = current_->parent;
}

void TreeBuilder::Declare(Declaration& declaration) {
  if (current_ == nullptr) return;
  declarations_.Append(
      current_, DeclareIn(*current_, std::move(declaration.name), std::move(declaration.type),
                          std::move(declaration.code), declaration.width));
}

void TreeBuilder::EndDefinitions() {
  declarations_.Index(tree_.index);
}

void TreeBuilder::Finish() {
  declarations_.Index(tree_.index);
  declarations_.AddCounts();
}

}  // namespace orsa::kesncd
