// The hierarchical run: dump to module tree.
#include <cstdio>
#include <set>

#include "kesncd/kesncd.h"
#include "kesncd/model/module_node.h"
#include "kesncd/run_messages.h"
#include "text/file.h"

namespace orsa::kesncd {

/// Deletes the tree and what leads into it: the code index and the scopes that hang nowhere. What a
/// host has hung into a tree since, or has made the root, goes with that tree only.
void KesNCD::DeleteHierarchy() {
  codeIndex.clear();
  // Scopes of the list that a host has hung into the tree leave it first: the tree owns them now.
  if (unlinkedScopes_ != nullptr && hierRoot != nullptr) {
    hierRoot->Unlink();
    hierRoot->UnlinkBelow();
  }
  delete hierRoot;
  hierRoot = nullptr;
  VmodHier::DeleteList(unlinkedScopes_);
}

bool KesNCD::ReadVCDHier(const std::set<std::string>& signals, std::string& message) {
  if (vcdFile.empty()) {
    message = kNoDump;
    return false;
  }
  const File dump = OpenForReading(vcdFile);
  if (dump == nullptr) {
    message = CannotOpen(vcdFile);
    return false;
  }
  // The tree of the run before goes even if this one then fails.
  DeleteHierarchy();
  ParseVcdFileHier(dump.get(), signals);
  if (isTopModNameEverMatched == 0) {
    message = kTopModuleNotMatched;
    return false;
  }
  // After a read error the tree is there, with counts that are too small.
  if (std::ferror(dump.get()) != 0) {
    message = CannotRead(vcdFile);
    return false;
  }
  return true;
}

/// For hosts that read changes themselves: each scope that declares the code counts, as often as it
/// does.
void KesNCD::IncreaseChangeForSymbol(const std::string& symbol) {
  const auto declared = codeIndex.find(symbol);
  if (declared == codeIndex.end()) return;
  for (VmodHier* scope : declared->second) AddChangeIn(*scope, symbol);
}

}  // namespace orsa::kesncd
