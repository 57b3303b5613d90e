// The limit of a change count.
#ifndef KESNCD_VCD_CHANGE_COUNT_H_
#define KESNCD_VCD_CHANGE_COUNT_H_

#include <algorithm>
#include <cstdint>
#include <limits>

namespace orsa::kesncd {

/// Where a count stops instead of overflowing.
inline constexpr std::uint32_t kMostCounted = std::numeric_limits<std::int32_t>::max();

/// Adds to a change count. A negative count, which a host may have made, goes up like any other.
inline void AddToCount(int& count, std::uint32_t added) {
  const std::uint32_t room = kMostCounted - static_cast<std::uint32_t>(std::max(count, 0));
  count += static_cast<int>(std::min(added, room));
}

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_CHANGE_COUNT_H_
