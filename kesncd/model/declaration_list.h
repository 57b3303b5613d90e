// The declarations of a hierarchical reading: on their way into the code index, and for the changes
// that each of them gets.
//
// Putting each declaration into the ordered index as it comes costs more than all else in a large
// header, so those of the header are gathered and put in sorted at its end.
#ifndef KESNCD_MODEL_DECLARATION_LIST_H_
#define KESNCD_MODEL_DECLARATION_LIST_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "kesncd/kesncd.h"
#include "line_readers/code_counts.h"
#include "text/secret_hash.h"

namespace orsa::kesncd {

/// The scopes that declare a code, as hosts see it in the analyser.
using CodeIndex = std::map<std::string, std::vector<VmodHier*>>;

/// Append each declaration, Index them whenever definitions end, AddCounts once at the end.
class DeclarationList {
 public:
  /// `counts` are those of the reading.
  explicit DeclarationList(CodeCounts& counts) : counts_(counts) {}

  /// Takes a declaration: its scope and the signal that the scope has for the code. Both must stay
  /// where they are until AddCounts. After the first Index, changes that the code had until now are
  /// not this declaration's.
  void Append(VmodHier* scope, VmodSignal& signal);

  /// Puts the new declarations into the index, by code and within a code in their order. Codes that
  /// the index did not hold get a counter. May be called again: only what was appended since is put
  /// in.
  void Index(CodeIndex& index);

  /// Gives every declaration's signal the changes of its code since the declaration.
  void AddCounts();

 private:
  struct ScopeSignal {
    // Both belong to the tree.
    VmodHier* scope;
    VmodSignal* signal;
  };

  // Fetches the counter of a declaration further on.
  void FetchAhead(std::size_t position) const;
  // Changes of its code that came before the declaration itself.
  std::uint64_t ChangesBefore(std::size_t position) const;

  CodeCounts& counts_;
  // Declarations in the order of the dump.
  std::vector<ScopeSignal> list_;
  std::size_t indexed_ = 0;  // declarations that are in the index
  // A declaration after the first changes does not get those. What its code had counted by then is
  // kept with it, and the code's counter starts again.
  bool counting_ = false;                  // the definitions have ended once
  std::size_t firstLate_ = 0;              // declaration after that
  std::vector<std::uint64_t> lateStarts_;  // by declaration, from that on
  // Changes that Append took off a code's counter.
  std::unordered_map<std::string, std::uint64_t, SecretTextHash, std::equal_to<>> taken_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_MODEL_DECLARATION_LIST_H_
