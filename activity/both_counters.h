// Counts a body exactly and by the rule of hosts in one reading.
//
// A database of a dump holds both kinds of figures, and a pipe can be read only once, so every item
// goes to two counters. Each keeps its own idea of time, windows and dumping; neither knows of the
// other.
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
  /// `codes` has to outlive the counters. `hostWindow` without bounds counts the host's changes
  /// over all time.
  BothCounters(const CodeBits& codes, const ActivityWindow& window,
               const TickWindow& hostWindow = {})
      : activity_(codes, window), host_(codes.codes(), hostWindow) {}

  /// What ReadBody calls for each item of the body, in the file's order.
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
  /// Reals have no bits, so only hosts count them.
  void Real(std::uint32_t codeId, std::string_view value) { host_.Real(codeId, value); }
  void Stamp(std::uint64_t ticks) {
    activity_.Stamp(ticks);
    host_.Stamp(ticks);
  }
  void Command(Keyword command) {
    activity_.Command(command);
    host_.Command(command);
  }
  /// The end of $dumpvars and the like changes nothing for either.
  void SectionEnd() {}
  /// The whole body is read, whatever the window.
  bool IsDone() const { return false; }
  /// Whether a stretch that `next` counted adds up with this one: only if it does for both.
  bool Precedes(const BothCounters& next) const {
    return activity_.Precedes(next.activity_) && host_.Precedes(next.host_);
  }

  /// To be taken apart after the reading, see BodyPart and BothRuns.
  ActivityCounter& activity() { return activity_; }
  HostCounting& host() { return host_; }

 private:
  ActivityCounter activity_;
  HostCounting host_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_BOTH_COUNTERS_H_
