// Toggles over time in a part of a dump that was counted by itself, and how parts add up: exactly
// as the stretches that threads read.
#ifndef KESNCD_ACTIVITY_PROFILE_PROFILE_PART_H_
#define KESNCD_ACTIVITY_PROFILE_PROFILE_PART_H_

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "activity/profile/toggle_counter.h"
#include "activity/profile/toggle_watch.h"

namespace orsa::kesncd {

/// By which windows a part was counted. Parts add up only if these are the same in all.
struct PartWindows {
  std::uint64_t parts = 0;              // of the span; 0 for windows of a length
  std::optional<std::uint64_t> length;  // of a window in femtoseconds
  // The dump's first stamp and its largest one, as they were looked up; nothing in a dump without.
  std::optional<std::uint64_t> first;
  std::optional<std::uint64_t> last;

  bool operator==(const PartWindows&) const = default;
};

/// Toggles of one sum of a module: the part's first window is 0, and those before `window` have
/// none. They may have wrapped around.
struct ProfileRow {
  std::uint32_t sum = 0;
  std::uint64_t window = 0;
  std::vector<std::uint64_t> toggles;
};

/// A value that can be stored: what ProfileCounter knows of a part.
struct ProfilePart {
  PartWindows windows;
  bool isFull = false;  // it has more sums than there is room for, and none of them is here
  TogglePart toggles;
  std::vector<ProfileRow> rows;
  // By window of the whole dump, the ticks without observation.
  std::vector<std::pair<std::uint64_t, std::uint64_t>> unobserved;
  std::vector<std::pair<std::uint64_t, std::uint64_t>> gaps;
  bool hasManyGaps = false;
  std::vector<std::uint32_t> watched;  // codes of clocks
  WatchPart watch;                     // of these

  /// Whether a part adds up with this one, which comes right before it.
  bool CanPrecede(const ProfilePart& next) const {
    const CountedTime& time = toggles.time;
    const CountedTime& later = next.toggles.time;
    return time.isObserving && time.hasStamps && later.hasStamps &&
           time.lastStamp < later.firstStamp && !next.isFull;
  }
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_PROFILE_PART_H_
