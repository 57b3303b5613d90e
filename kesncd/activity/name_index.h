// An index of a tree's signals by the design names that they match.
//
// It answers what VmodHier::FindSignalFreqHier answers, in constant time, for the length of one
// export; building it costs a few walks over the tree. The tree must stay as it is meanwhile.
#ifndef KESNCD_ACTIVITY_NAME_INDEX_H_
#define KESNCD_ACTIVITY_NAME_INDEX_H_

#include <cstdint>
#include <memory_resource>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kesncd/activity/name_match.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd {

class NameIndex {
 public:
  NameIndex(const VmodHier& root, bool exact);

  /// The same as root.FindSignalFreqHier(module, signal, freq, exact).
  bool Find(const std::string& module, const std::string& signal, double& freq) const;

 private:
  // A signal's place in the order in which a search meets them: the root's own come first.
  using Place = std::uint32_t;
  static constexpr Place kNowhere = UINT32_MAX;

  /// The first of the signals that match, among all and among those below the root.
  struct First {
    Place ofAll = kNowhere;
    Place below = kNowhere;

    void Take(const First& other);
  };
  /// From `low` on, up to the next segment, `first` is the first range that holds an index.
  struct Segment {
    std::int64_t low;
    First first;
  };
  struct Range {
    std::int64_t low, high;
    Place place;
  };

  void Enter(Place place);
  void EnterText(std::string_view text, Place place);
  std::vector<Segment> Segments(const std::pmr::vector<Range>& ranges) const;
  std::string Folded(std::string_view text) const;
  std::string_view Kept(std::string_view text);
  First FirstAt(Place place) const;
  First FindText(const std::string& text) const;
  First FindBit(const std::string& design) const;

  const VmodHier& root_;
  const bool exact_;
  std::pmr::monotonic_buffer_resource memory_;
  std::vector<const VmodSignal*> signals_;  // by place
  std::size_t ofRoot_ = 0;
  std::pmr::unordered_map<std::string_view, First> texts_;
  std::pmr::unordered_map<std::string_view, std::pmr::vector<Range>> ranges_;
  std::unordered_map<std::string_view, std::vector<Segment>> segments_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_NAME_INDEX_H_
