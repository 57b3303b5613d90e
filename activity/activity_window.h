// The part of a dump's time whose activity is counted, in ticks.
//
// For a window from 10 to 20: a toggle at 10 does not count and one at 20 does; a level from 5 to
// 12 counts for 2 ticks. A window from 20 to 30 then has the rest, and nothing twice.
#ifndef KESNCD_ACTIVITY_ACTIVITY_WINDOW_H_
#define KESNCD_ACTIVITY_ACTIVITY_WINDOW_H_

#include <algorithm>
#include <cstdint>

namespace orsa::kesncd {

/// Both bounds are times of the dump, in ticks; the defaults leave nothing out.
struct ActivityWindow {
  std::uint64_t begin = 0;
  std::uint64_t end = UINT64_MAX;

  /// The time itself, or the bound that is nearer: of the ticks between a and b, Clamp(b) -
  /// Clamp(a) are in the window. `begin` may not be after `end`.
  std::uint64_t Clamp(std::uint64_t ticks) const { return std::clamp(ticks, begin, end); }
  /// Whether a toggle at that time counts. What happens at `begin` is the initial value, so that
  /// windows that touch add up.
  bool Counts(std::uint64_t ticks) const { return begin < ticks && ticks <= end; }
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_ACTIVITY_WINDOW_H_
