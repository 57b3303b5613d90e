// Counts a body exactly and by the rule of hosts in one reading.
#ifndef KESNCD_ACTIVITY_BOTH_COUNTERS_H_
#define KESNCD_ACTIVITY_BOTH_COUNTERS_H_

#include <cstdint>
#include <string_view>

#include "activity/activity_counter.h"
#include "activity/activity_window.h"
#include "activity/code_bits.h"
#include "activity/host_counter.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// A taker of ReadBody. The exact counts are those of a window; so are the host's where it gets
/// one, else they are those of all time.
class BothCounters {
 public:
  /// `codes` has to outlive the counters.
  BothCounters(const CodeBits& codes, const ActivityWindow& window,
               const TickWindow& hostWindow = {})
      : activity_(codes, window), host_(codes.codes(), hostWindow) {}

  void Fetch(std::uint32_t codeId) const {
    activity_.Fetch(codeId);
    host_.Fetch(codeId);
  }
  void Scalar(std::uint32_t codeId, char value) {
    activity_.Scalar(codeId, value);
    host_.Scalar(codeId, value);
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    activity_.Vector(codeId, value);
    host_.Vector(codeId, value);
  }
  void Real(std::uint32_t codeId, std::string_view value) { host_.Real(codeId, value); }
  void Stamp(std::uint64_t ticks) {
    activity_.Stamp(ticks);
    host_.Stamp(ticks);
  }
  void Command(Keyword command) {
    activity_.Command(command);
    host_.Command(command);
  }
  void SectionEnd() {}
  bool IsDone() const { return false; }
  bool Precedes(const BothCounters& next) const {
    return activity_.Precedes(next.activity_) && host_.Precedes(next.host_);
  }

  ActivityCounter& activity() { return activity_; }
  HostCounting& host() { return host_; }

 private:
  ActivityCounter activity_;
  HostCounting host_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_BOTH_COUNTERS_H_
