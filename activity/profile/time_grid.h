// Windows of equal length, exactly: where they begin in ticks, and which one a toggle belongs to.
#ifndef KESNCD_ACTIVITY_PROFILE_TIME_GRID_H_
#define KESNCD_ACTIVITY_PROFILE_TIME_GRID_H_

#include <algorithm>
#include <cstdint>

namespace orsa::kesncd {

/// Windows of span / parts ticks each, which need be no whole number. Toggles happen at whole
/// ticks, so edges rounded down have the same toggles between them as those that are not rounded.
/// For 10 ticks in 4 parts edges are 0, 2, 5, 7 and 10 (2.5 and 7.5 rounded down).
struct TimeGrid {
  __extension__ using Wide = unsigned __int128;  // for products

  std::uint64_t first = 0;  // where the first window begins
  std::uint64_t span = 1;   // not 0
  std::uint64_t parts = 1;  // not 0

  /// Where a window begins, and the one before it ends; UINT64_MAX where that is later.
  std::uint64_t Edge(std::uint64_t window) const {
    const Wide edge = first + Wide{window} * span / parts;
    return edge > UINT64_MAX ? UINT64_MAX : static_cast<std::uint64_t>(edge);
  }
  /// The window of a toggle: a toggle at an edge belongs to the window that ends there.
  std::uint64_t WindowOf(std::uint64_t ticks) const {
    if (ticks <= first) return 0;
    const Wide ends = (Wide{ticks - first} * parts + span - 1) / span;
    return static_cast<std::uint64_t>(std::min<Wide>(ends - 1, UINT64_MAX));
  }
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_TIME_GRID_H_
