// Counts a body exactly and by the rule of hosts in one reading.
//
// A database of a dump holds both kinds of figures. Each counter keeps its own idea of time,
// windows and dumping.
#ifndef KESNCD_ACTIVITY_BOTH_COUNTERS_H_
#define KESNCD_ACTIVITY_BOTH_COUNTERS_H_

#include "activity/activity_counter.h"
#include "activity/activity_window.h"
#include "activity/code_bits.h"
#include "activity/host_counter.h"
#include "activity/taker_pair.h"

namespace orsa::kesncd {

/// A taker of ReadBody. The exact counts are those of a window.
class BothCounters : public TakerPair<ActivityCounter, HostCounting> {
 public:
  /// `codes` has to outlive the counters. `hostWindow` without bounds counts the host's changes
  /// over all time.
  BothCounters(const CodeBits& codes, const ActivityWindow& window,
               const TickWindow& hostWindow = {})
      : TakerPair([&] { return ActivityCounter(codes, window); },
                  [&] { return HostCounting(codes.codes(), hostWindow); }) {}

  /// To be taken apart after the reading, see BodyPart and BothRuns.
  ActivityCounter& activity() { return first(); }
  HostCounting& host() { return second(); }
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_BOTH_COUNTERS_H_
