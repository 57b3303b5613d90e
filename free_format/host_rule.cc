// The words for a dump that was switched off for a while.
#include "free_format/host_rule.h"

#include <cmath>

namespace orsa::kesncd {

std::string OffText(const DumpingTime& dumping, std::uint64_t spanTicks, std::uint64_t repeated) {
  const double share = static_cast<double>(dumping.OffTicks()) / static_cast<double>(spanTicks);
  // To a tenth of a percent, without the locale's decimal point.
  const std::int64_t tenths = std::llround(1000 * share);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " % of the span; " +
         std::to_string(repeated) + " repeated values counted";
}

}  // namespace orsa::kesncd
