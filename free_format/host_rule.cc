// The words for a dump that was switched off for a while.
#include "free_format/host_rule.h"

namespace orsa::kesncd {

std::string OffText(const DumpingTime& dumping, std::uint64_t spanTicks, std::uint64_t repeated) {
  const double share = static_cast<double>(dumping.OffTicks()) / static_cast<double>(spanTicks);
  const auto tenths = static_cast<std::uint64_t>(1000 * share + 0.5);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " % of the span; " +
         std::to_string(repeated) + " repeated values counted";
}

}  // namespace orsa::kesncd
