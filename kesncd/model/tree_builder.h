// Building the module tree and its code index from the declarations of a hierarchical reading.
#ifndef KESNCD_MODEL_TREE_BUILDER_H_
#define KESNCD_MODEL_TREE_BUILDER_H_

#include "kesncd/kesncd.h"
#include "kesncd/model/declaration_list.h"
#include "line_readers/code_counts.h"
#include "line_readers/declaration_sink.h"

namespace orsa::kesncd {

/// A tree that a reading adds to, as hosts see it: the members of an analyser, which the reading
/// changes in place. Top-level scopes after the root are linked to `unlinked`.
struct HostTree {
  CodeIndex& index;
  VmodHier*& root;
  VmodHier*& unlinked;
};

/// Takes the declarations of one reading; Finish after its last line. A scope that is opened a
/// second time becomes a second node.
class TreeBuilder : public DeclarationSink {
 public:
  /// `counts` are those of the reading. Codes that the index holds before it are not counted.
  TreeBuilder(const HostTree& tree, CodeCounts& counts) : tree_(tree), declarations_(counts) {}

  void OpenScope(const char* name) override;
  void CloseScope() override;
  void Declare(Declaration& declaration) override;
  void EndDefinitions() override;

  /// Completes the index and gives every signal its changes.
  void Finish();

 private:
  HostTree tree_;
  // The declarations of this reading alone.
  DeclarationList declarations_;
  // The innermost open node; null outside all scopes.
  VmodHier* current_ = nullptr;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_MODEL_TREE_BUILDER_H_
