// Which names occur more than once in a list: a SAIF file can say only one thing of a name.
//
// Two passes over the names, because the names themselves would take too much memory: the first
// pass finds hashes that occur twice, the second counts the texts of just those. Two names of one
// hash are thus never mixed up.
#ifndef KESNCD_EXPORT_REPEATED_NAMES_H_
#define KESNCD_EXPORT_REPEATED_NAMES_H_

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orsa::kesncd {

/// Calling order: Add every name; Settle; Add every name again; then ask. The first round keeps
/// eight bytes a name, which is what makes a million of them cheap; the second one keeps the texts
/// of those that may be repeated. For one scope's names.
class RepeatedNames {
 public:
  /// The name may go afterwards. In the second round every name that was added in the first.
  void Add(std::string_view name) {
    const std::uint64_t hash = std::hash<std::string_view>()(name);
    if (!isSettled_) {
      hashes_.push_back(hash);
    } else if (IsCandidate(hash)) {
      ++counts_[std::string(name)];
    }
  }
  /// Between the two rounds, once.
  void Settle();
  /// Whether no name may be repeated, so that the second round is not needed.
  bool AllDiffer() const { return hashes_.empty(); }
  /// Only after both rounds; false for a name that was not added.
  bool IsRepeated(std::string_view name) const;

 private:
  /// Whether another name had the same hash.
  bool IsCandidate(std::uint64_t hash) const;

  std::vector<std::uint64_t> hashes_;  // of all names; once settled, of those that occur again
  // Filled in the second round, candidates only.
  std::unordered_map<std::string, std::uint64_t> counts_;
  bool isSettled_ = false;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_REPEATED_NAMES_H_
