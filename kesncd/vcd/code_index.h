// The declarations of a hierarchical reading, on their way into the code index.
//
// Putting each declaration into the ordered index as it comes costs more than all else in a large
// header, so those of the header are gathered and put in sorted at its end.
#ifndef KESNCD_VCD_CODE_INDEX_H_
#define KESNCD_VCD_CODE_INDEX_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "kesncd/kesncd.h"
#include "kesncd/vcd/code_counts.h"

namespace orsa::kesncd {

using CodeIndex = std::map<std::string, std::vector<VmodHier*>>;

struct ScopeSignal {
  std::uint64_t codeStart;  // first bytes of the code, which order most codes
  VmodSignal* signal;       // that the scope has for the code
  VmodHier* scope;
};

class DeclarationList {
 public:
  void Append(VmodHier* scope, VmodSignal& signal);

  /// Puts the new declarations into the index, by code and within a code in their order. Codes that
  /// the index did not hold get a counter.
  void Index(CodeIndex& index, CodeCounts& counts);

  /// All declarations that went into the index.
  const std::vector<ScopeSignal>& indexed() const { return indexed_; }

 private:
  std::vector<ScopeSignal> new_;
  std::vector<ScopeSignal> indexed_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_CODE_INDEX_H_
