// What differs between two runs: a block that stopped, a clock that runs on, a bus that woke up. A
// regression asks this after every change of a design.
//
// Rates are compared, not counts, so runs may differ in length; that is why one without a time
// scale cannot be compared with one that has it.
#ifndef KESNCD_ACTIVITY_RUN_COMPARISON_H_
#define KESNCD_ACTIVITY_RUN_COMPARISON_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "activity/activity_result.h"

namespace orsa::kesncd {

/// A row of the result. For `Appeared` only `after` has rates, for `Vanished` only `before`.
struct RunDifference {
  enum class Kind : std::uint8_t { Changed, Appeared, Vanished };

  /// Means over the row's bits in one of the runs; nothing where they are not known, or where the
  /// run does not have the row.
  struct Rates {
    std::optional<double> toggles;  // a microsecond and bit, or a tick and bit
    std::optional<double> high;     // the share of time at 1, from 0 to 1
  };

  Kind kind = Kind::Changed;
  bool isModule = false;
  std::uint32_t id = 0;     // the scope's or the variable's; of the run after where it appeared
  std::uint32_t depth = 0;  // scopes around it
  Rates before;
  Rates after;
  // By which the rate or the duty differs, of the larger of the two: from 0 to 1, and 1 where only
  // one run has the row.
  double share = 0;
  // What rows are sorted by: toggles that came or went, times their share of the row's. A row of
  // 100 toggles that lost 50 has 25, one of 50 that lost all has 50.
  double weight = 0;
};

/// The counts are of all rows that were compared, also those below the threshold.
struct RunComparison {
  std::uint64_t signals = 0;  // compared ones, of both runs
  std::uint64_t modules = 0;
  std::vector<RunDifference> differences;  // those above the threshold, the gravest first
};

/// The path of what differs, and its name. "tb/soc/q[7:0]" or "tb/soc".
std::string PathOf(const RunDifference& difference, const ActivityResult& before,
                   const ActivityResult& after);

/// Compares signals and modules of equal paths. A row differs where its toggle rate or its share of
/// time at 1 does by more than `threshold` of the larger one, and where only one run has it. Most
/// weight has what lost or gained most toggles and is little else: a block that stopped stands
/// before its parts, what is around it and what it drives. Throws Failure with Unusable where only
/// one of the runs says how long a tick is. `threshold` is a share, 0.01 for one percent. Both
/// results are read only and may be let go of afterwards.
RunComparison CompareRuns(const ActivityResult& before, const ActivityResult& after,
                          double threshold);

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_RUN_COMPARISON_H_
