// An index of signals by the design names that they match.
//
// It finds the first of many signals that a design name means, in constant time. It is built for
// the names that will be asked, so that the many signals that none of them can mean cost a look
// each and no memory.
#ifndef KESNCD_NAMES_NAME_INDEX_H_
#define KESNCD_NAMES_NAME_INDEX_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "text/secret_hash.h"

namespace orsa::kesncd {

/// Construct it for all names, then Find any of them. It answers as NamesMatch would, asked for
/// each signal in turn until one matches.
class NameIndex {
 public:
  /// A signal's place in the list.
  using Place = std::uint32_t;
  static constexpr Place kNowhere = UINT32_MAX;

  /// An index of `signals`, the dump's names in the order in which a search meets them, for the
  /// design names `asked`. The first `ofRoot` of the signals stand in the scope where a search
  /// starts, which does not always take part. Neither list is kept. `exact` false: letter case
  /// makes no difference.
  NameIndex(const std::vector<std::string_view>& signals, std::size_t ofRoot, bool exact,
            const std::vector<std::string_view>& asked);

  /// The first signal that an asked design name means, without those of the root unless they take
  /// part; kNowhere when there is none. `design` must be one of the names asked for; others may
  /// find nothing.
  Place Find(const std::string& design, bool withRoot) const;

 private:
  /// The first of the signals that match, among all and among those below the root.
  struct First {
    // kNowhere is larger than all places, so the smaller of two is the first.
    Place ofAll = kNowhere;
    Place below = kNowhere;

    void Take(const First& other);
  };
  /// From `low` on, up to the next segment, `first` is the first range that holds an index.
  struct Segment {
    std::int64_t low;
    First first;
  };
  // A bus, which matches by any of its indices.
  struct Range {
    std::int64_t low, high;
    Place place;
  };

  /// What an asked name is looked up by: its forms, each also with the extra letter if that shows.
  /// Two forms: as it stands, and with "/" turned into "_" where there is one.
  struct Keys {
    std::array<std::string, 2> forms;
    std::size_t count = 0;
    bool hasLetter = false;

    std::string* begin() { return forms.data(); }
    std::string* end() { return forms.data() + count; }
  };

  Keys KeysOf(std::string_view design) const;
  // Marks what the design name may be looked up by.
  void ExpectKeysOf(std::string_view design);
  void Expect(std::string_view text);
  // May be true for others too, but never false for what was expected.
  bool IsExpected(std::string_view text) const;
  // A signal under each text by which it may be asked.
  void Enter(std::string_view signal, Place place);
  void EnterText(std::string_view text, Place place);
  std::vector<Segment> Segments(const std::pmr::vector<Range>& ranges) const;
  // In small letters unless letter case counts.
  std::string Folded(std::string_view text) const;
  std::string_view Kept(std::string_view text);
  First FirstAt(Place place) const;
  First FindText(const std::string& text) const;
  // The first range that holds the index of a name such as "data[5]".
  First FindBit(const std::string& design) const;
  std::size_t BitOf(std::string_view text) const;

  const bool exact_;
  const std::size_t ofRoot_;
  // Holds the texts and tables, and is released as a whole.
  std::pmr::monotonic_buffer_resource memory_;
  std::array<char, 256> folds_{};  // characters as they are compared
  std::vector<bool> expected_;     // by hash: texts that an asked name may be looked up by
  // Plain names, and bits as designs write them.
  std::pmr::unordered_map<std::string_view, First, SecretTextHash> texts_;
  // Ranges by their name, while signals are entered.
  std::pmr::unordered_map<std::string_view, std::pmr::vector<Range>, SecretTextHash> ranges_;
  // The same ranges cut into segments, when all are entered.
  std::unordered_map<std::string_view, std::vector<Segment>, SecretTextHash> segments_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_NAMES_NAME_INDEX_H_
