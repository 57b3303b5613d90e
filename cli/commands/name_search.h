// Finds many signals of the module tree by their names in the design.
//
// The answers are those of VmodHier::FindSignalFreqHier, which searches the tree anew for every
// name. Here the tree is walked once: its signals are sorted under rough forms of the names asked
// for, in which all that a design and a simulator may write differently looks alike. Whether a
// signal is meant is then VmodHier::IsNameEqual's to say.
#ifndef KESNCD_CLI_COMMANDS_NAME_SEARCH_H_
#define KESNCD_CLI_COMMANDS_NAME_SEARCH_H_

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

/// A signal with its scope; null where nothing was found.
struct FoundSignal {
  const VmodHier* scope = nullptr;
  const VmodSignal* signal = nullptr;
};

class NameSearch {
 public:
  /// A search of the tree below `root` for these names. `module` is what the root must be called
  /// for its own signals to take part. The tree must stay as it is.
  NameSearch(const VmodHier& root, const std::string& module, bool exact,
             const std::vector<std::string>& names);

  /// The first signal that matches one of the names.
  FoundSignal Find(const std::string& name) const;

 private:
  /// The first of all signals that the dump calls the same.
  struct Candidate {
    std::uint64_t place;
    FoundSignal found;
  };

  void Take(const FoundSignal& found, std::uint64_t place);
  std::string RoughForm(std::string name) const;
  std::string FormInDump(const std::string& name) const;
  std::vector<std::string> FormsInDesign(const std::string& name) const;

  const bool exact_;
  std::unordered_map<std::string, std::vector<Candidate>> candidates_;
};

/// The frequency of a signal of the tree that was read last.
double FrequencyOf(const VmodSignal& signal);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_COMMANDS_NAME_SEARCH_H_
