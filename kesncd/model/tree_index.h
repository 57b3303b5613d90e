// An index of a module tree: VmodHier::FindSignalFreqHier in constant time, for the length of one
// export. The tree must stay as it is meanwhile.
#ifndef KESNCD_MODEL_TREE_INDEX_H_
#define KESNCD_MODEL_TREE_INDEX_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kesncd/kesncd.h"
#include "names/name_index.h"

namespace orsa::kesncd {

/// Construct it when many names are to be asked for, then Find each. It keeps pointers into the
/// tree.
class TreeIndex {
 public:
  /// An index of the tree below `root` for the signals named `asked`. `asked` are all names that
  /// Find will be given; the texts are not kept.
  TreeIndex(const VmodHier& root, bool exact, const std::vector<std::string_view>& asked);

  /// The same as root.FindSignalFreqHier(module, signal, freq, exact), for a signal that was given
  /// to the constructor.
  bool Find(const std::string& module, const std::string& signal, double& freq) const;

 private:
  const VmodHier& root_;
  const bool exact_;
  // Signals of the tree, in the order of a search.
  std::vector<const VmodSignal*> signals_;  // by their place in the index
  // Made last, since it needs the names of all signals.
  std::optional<NameIndex> names_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_MODEL_TREE_INDEX_H_
