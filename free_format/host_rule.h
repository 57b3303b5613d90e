// The counting rule of hosts, as far as runs and the findings about a dump share it: every value
// that is given while dumping is on counts, also one that repeats the value before, so a user has
// to know how many did and for how long nothing could count.
#ifndef KESNCD_FREE_FORMAT_HOST_RULE_H_
#define KESNCD_FREE_FORMAT_HOST_RULE_H_

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// A value as a number, to tell whether the next one repeats it. Different values have different
/// numbers but for a chance of one in two thousand million. A repeat that is missed, or one too
/// many, changes a remark by one, never a count.
inline std::uint32_t Fingerprint(std::string_view value) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;
  // The length goes in first, so "0" and "00" differ.
  std::uint64_t mixed = value.size();
  std::size_t i = 0;
  for (; i + sizeof mixed <= value.size(); i += sizeof mixed) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, value.data() + i, sizeof bytes);
    mixed = (mixed ^ bytes) * kFactor;
    mixed ^= mixed >> 32;
  }
  for (; i < value.size(); ++i) {
    mixed = (mixed ^ static_cast<unsigned char>(value[i])) * kFactor;
  }
  // Apart from scalars, which are kept as their characters: those are below 2^31.
  return static_cast<std::uint32_t>(mixed >> 32) | 1U << 31;
}

/// A value that goes on from stretch to stretch; all times in ticks.
struct DumpingState {
  std::uint32_t isOn = 1;
  // Until the first stamp `now` means nothing.
  bool hasStamp = false;
  // The largest stamp so far.
  std::uint64_t now = 0;
  // The tick at which dumping was switched off; valid while it is off.
  std::uint64_t offSince = 0;
  // The sum of the times that have ended.
  std::uint64_t offTicks = 0;
};

/// For how long of a span dumping is off. Calling order: Take and Stamp as the body goes, then the
/// rest.
class DumpingTime {
 public:
  DumpingTime() = default;
  explicit DumpingTime(const DumpingState& state) : state_(state) {}

  /// A dump command; whether it switches dumping off or on.
  bool Take(Keyword command) {
    // $dumpvars, $dumpall and $dumpon all switch it on.
    const std::uint32_t isOn = command != Keyword::DumpOff ? 1 : 0;
    if (isOn == state_.isOn) return false;
    state_.isOn = isOn;
    if (state_.isOn == 0) {
      state_.offSince = state_.now;
    } else {
      state_.offTicks += state_.now - state_.offSince;
    }
    return true;
  }
  // Stamps that go back are passed over.
  void Stamp(std::uint64_t ticks) {
    // Off from the start is off from the first stamp on.
    if (!state_.hasStamp) state_.offSince = state_.now = ticks;
    state_.hasStamp = true;
    if (ticks > state_.now) state_.now = ticks;
  }
  /// A window begins there, with dumping on or off.
  void Open(std::uint64_t ticks, bool isOn) {
    state_.isOn = isOn ? 1 : 0;
    Stamp(ticks);
  }

  /// Adds the time of the stretch that comes next, which was taken as beginning with dumping on. So
  /// dumping must be on at the end of this one, unless nothing was taken yet.
  void Join(const DumpingTime& next) {
    const std::uint64_t offBefore = state_.offTicks;
    state_ = next.state_;
    state_.offTicks += offBefore;
  }

  /// 1 while dumping is on, else 0: a number, so that counting needs no branch.
  std::uint32_t isOn() const { return state_.isOn; }
  // A time that is still going on counts up to now.
  std::uint64_t OffTicks() const {
    return state_.offTicks + (state_.isOn == 0 ? state_.now - state_.offSince : 0);
  }
  const DumpingState& state() const { return state_; }

 private:
  DumpingState state_;
};

/// "12.5 % of the span; 3 repeated values counted". The span is more than 0 ticks.
inline std::string OffText(const DumpingTime& dumping, std::uint64_t spanTicks,
                           std::uint64_t repeated) {
  const double share = static_cast<double>(dumping.OffTicks()) / static_cast<double>(spanTicks);
  // To a tenth of a percent, without the locale's decimal point.
  const std::int64_t tenths = std::llround(1000 * share);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " % of the span; " +
         std::to_string(repeated) + " repeated values counted";
}

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_HOST_RULE_H_
