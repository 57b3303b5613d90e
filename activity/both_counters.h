// Counts a body exactly and by the rule of hosts in one reading.
//
// A database of a dump holds both kinds of figures. Each counter keeps its own idea of time,
// windows and dumping.
#ifndef KESNCD_ACTIVITY_BOTH_COUNTERS_H_
#define KESNCD_ACTIVITY_BOTH_COUNTERS_H_

#include <memory>

#include "activity/activity_counter.h"
#include "activity/activity_window.h"
#include "activity/code_array.h"
#include "activity/code_bits.h"
#include "activity/host_counter.h"
#include "activity/taker_pair.h"

namespace orsa::kesncd {

/// A taker of ReadBody. The exact counts are those of a window.
class BothCounters : public TakerPair<ActivityCounter, HostCounting> {
 public:
  /// `codes` has to outlive the counters. `hostWindow` without bounds counts the host's changes
  /// over all time. `lines` are for both, and for others that take the same changes.
  BothCounters(const CodeBits& codes, const ActivityWindow& window,
               const std::shared_ptr<CodeLines>& lines, const TickWindow& hostWindow = {})
      : TakerPair([&] { return ActivityCounter(codes, window, lines); },
                  [&] { return HostCounting(codes.codes(), hostWindow, lines); }) {}

  /// To be taken apart after the reading, see BodyPart and BothRuns.
  ActivityCounter& activity() { return first(); }
  HostCounting& host() { return second(); }
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_BOTH_COUNTERS_H_
