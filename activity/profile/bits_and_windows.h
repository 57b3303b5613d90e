// Counts bits, toggles by windows and a few signals in one reading: of a whole dump, or of a part
// of one. What both kinds of reading have to agree in is here, so that parts add up to the whole.
#ifndef KESNCD_ACTIVITY_PROFILE_BITS_AND_WINDOWS_H_
#define KESNCD_ACTIVITY_PROFILE_BITS_AND_WINDOWS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "activity/activity_counter.h"
#include "activity/activity_start.h"
#include "activity/both_counters.h"
#include "activity/code_array.h"
#include "activity/profile/profile_counter.h"
#include "activity/profile/profile_run.h"
#include "activity/profile/toggle_watch.h"
#include "activity/taker_pair.h"
#include "free_format/parted_reading.h"

namespace orsa::kesncd {

/// The length of a window in femtoseconds; 0 for none. Throws where it is no length for the dump: a
/// window of less than a tick would be a row in which nothing can ever happen.
std::uint64_t WindowLength(const ActivityStart& start, const ProfileOptions& options);
/// The windows that are asked for, but for the dump's first stamp.
ProfileWindows WindowsFor(const ActivityStart& start, const ProfileOptions& options);
/// For counters of stretches, which need a first stamp, and a last one, also where the dump has
/// none. `dump` is what messages call it.
ProfileWindows StretchWindows(const PartWindows& windows, const std::string& dump,
                              std::optional<std::uint64_t> tick, std::uint64_t mostCells);
/// The first stamp of a body whose declarations were read.
std::optional<std::uint64_t> FirstStampOf(FileDump& dump, const Declarations& declarations);
/// A database's profile has two sums of each module.
inline std::size_t KeptSums(const ModuleTree& tree) {
  return 2 * tree.size();
}
/// Whether a database holds the profile: each window has its own number beside those of modules.
inline bool HasRoomFor(const ModuleTree& tree, const ProfileOptions& options) {
  return options.length || KeptSums(tree) + 1 <= options.mostCells / options.parts;
}

/// A taker of ReadBody that looks at stamps only. Calling order: construct, ReadBody, then read the
/// members. With `isFirstEnough` the reading ends at the first stamp, so that a body of many
/// gigabytes costs no more than its begin.
class LargestStamp {
 public:
  void Scalar(std::uint32_t /*codeId*/, char /*value*/) {}
  void Vector(std::uint32_t /*codeId*/, std::string_view /*value*/) {}
  void Real(std::uint32_t /*codeId*/, std::string_view /*value*/) {}
  void Stamp(std::uint64_t ticks) {
    if (!first) first = ticks;
    largest = std::max(largest.value_or(0), ticks);
  }
  void Command(Keyword /*command*/) {}
  void SectionEnd() {}
  bool IsDone() const { return isFirstEnough && first; }

  bool isFirstEnough = false;
  std::optional<std::uint64_t> first;
  std::optional<std::uint64_t> largest;
};

/// What was counted of bits and, by BothCounters only, by the rule of hosts. Made from a counter,
/// which is used up.
struct BitParts {
  ActivityPart activity;
  std::optional<HostPart> host;

  explicit BitParts(ActivityCounter& counter) : activity(counter.TakePart()) {}
  explicit BitParts(BothCounters& counters)
      : activity(counters.activity().TakePart()), host(counters.host().TakePart()) {}

  void Add(const ActivityStart& start, BitParts&& next) {
    activity.Add(start.codes, std::move(next.activity));
    if (host) host->Add(start.ticks, *next.host);
  }
};

/// Counts bits and toggles by windows in one reading, and watches a few signals. A taker of
/// ReadInParts; Counter is an ActivityCounter, or BothCounters. Calling order: construct, ReadBody;
/// Add what the next stretches gave; then the rest.
template <class Counter>
class BitsAndWindows : public TakerPair<ToggleWatch<Counter>, ProfileCounter> {
 public:
  /// `more` is what a counter is made of beside the codes, the window of `start` and their memory.
  template <class... More>
  BitsAndWindows(const ActivityStart& start, const std::vector<std::uint32_t>& watched,
                 const ModuleShares& shares, std::size_t sums, const ProfileWindows& windows,
                 const More&... more)
      : BitsAndWindows(std::make_shared<CodeLines>(start.codes.codes()), start, watched, shares,
                       sums, windows, more...) {}

  /// Adds what the next stretch gave. Both bit counters end here: their parts are taken and added.
  void Add(BitsAndWindows& next) {
    parts().Add(start_, std::move(next.parts()));
    this->first().Add(next.first());
    windows().Add(next.windows());
  }
  /// What was counted bit by bit, when all is read.
  BitParts& parts() {
    if (!parts_) parts_.emplace(this->first().counter());
    return *parts_;
  }
  std::vector<ToggleSpan> watched() { return this->first().Take(); }
  WatchPart TakeWatch() { return this->first().TakePart(); }
  ProfileCounter& windows() { return this->second(); }

 private:
  template <class... More>
  BitsAndWindows(const std::shared_ptr<CodeLines>& lines, const ActivityStart& start,
                 const std::vector<std::uint32_t>& watched, const ModuleShares& shares,
                 std::size_t sums, const ProfileWindows& windows, const More&... more)
      : TakerPair<ToggleWatch<Counter>, ProfileCounter>(
            [&] {
              return ToggleWatch<Counter>(watched, start.codes, start.window, lines, more...);
            },
            [&] {
              return ProfileCounter(start.codes, shares, sums, start.window, windows, lines);
            }),
        start_(start) {}

  const ActivityStart& start_;
  std::optional<BitParts> parts_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_BITS_AND_WINDOWS_H_
