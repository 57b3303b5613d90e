// The declarations of a hierarchical reading, on their way into the code index.
//
// Putting each declaration into the ordered index as it comes costs more than all else in a large
// header, so those of the header are gathered and put in sorted at its end.
#ifndef KESNCD_LINE_READERS_CODE_INDEX_H_
#define KESNCD_LINE_READERS_CODE_INDEX_H_

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "kesncd/kesncd.h"
#include "line_readers/code_counts.h"

namespace orsa::kesncd {

using CodeIndex = std::map<std::string, std::vector<VmodHier*>>;

struct ScopeSignal {
  VmodHier* scope;
  VmodSignal* signal;  // that the scope has for the code
};

class DeclarationList {
 public:
  void Append(VmodHier* scope, VmodSignal& signal);

  /// Puts the new declarations into the index, by code and within a code in their order. Codes that
  /// the index did not hold get a counter.
  void Index(CodeIndex& index, CodeCounts& counts);

  /// Adds each code's changes to every signal that was declared with it.
  void AddCounts(CodeCounts& counts) const;

 private:
  void FetchAhead(std::size_t position, const CodeCounts& counts) const;

  std::vector<ScopeSignal> list_;
  std::size_t indexed_ = 0;  // declarations that are in the index
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_CODE_INDEX_H_
