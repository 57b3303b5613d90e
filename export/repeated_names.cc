// Repeated names are found by their hashes first: almost all names of a scope differ.
#include "export/repeated_names.h"

#include <algorithm>

namespace orsa::kesncd {

/// Leaves one entry for each further occurrence: sorted, so it can be searched.
void RepeatedNames::Settle() {
  std::sort(hashes_.begin(), hashes_.end());
  std::size_t kept = 0;
  for (std::size_t i = 1; i < hashes_.size(); ++i) {
    if (hashes_[i] == hashes_[i - 1]) hashes_[kept++] = hashes_[i];
  }
  hashes_.resize(kept);
  isSettled_ = true;
}

/// A handful of entries, mostly none.
bool RepeatedNames::IsCandidate(std::uint64_t hash) const {
  return std::binary_search(hashes_.begin(), hashes_.end(), hash);
}

/// Counted by text, so a chance meeting of two hashes harms nobody.
bool RepeatedNames::IsRepeated(std::string_view name) const {
  if (AllDiffer()) return false;
  const auto found = counts_.find(std::string(name));
  return found != counts_.end() && found->second > 1;
}

}  // namespace orsa::kesncd
