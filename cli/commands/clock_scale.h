// The design's clock against the dump's. Test benches often run a clock at another period than the
// design will have; every rate of the dump is off by the same factor then.
#ifndef KESNCD_CLI_COMMANDS_CLOCK_SCALE_H_
#define KESNCD_CLI_COMMANDS_CLOCK_SCALE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "activity/activity_result.h"

namespace orsa::kesncd::cli {

struct ClockOptions {
  std::string clock;  // NAME=PERIOD; empty for none
  std::string sdc;    // file of constraints
};

/// A clock and its period in the design.
struct DesignClock {
  std::string name;
  std::uint64_t period = 0;  // femtoseconds
  std::string periodText;
};

/// By how much times of the dump are to be stretched.
struct ClockScale {
  DesignClock clock;  // of which nothing is set where nothing is scaled
  std::uint64_t numerator = 1;
  std::uint64_t denominator = 1;

  double Factor() const {
    return static_cast<double>(numerator) / static_cast<double>(denominator);
  }
};

/// The clock that "clk=2ns" says. Throws Failure with Unusable.
DesignClock DesignClockOf(const std::string& text);

/// The factor between the clock's period in the dump and in the design; says it. Throws Failure
/// with NothingMatched where no signal, or more than one, is called so or it does not run, with
/// Unusable where it is no clock.
ClockScale ScaleTo(const DesignClock& clock, const ActivityResult& result, const std::string& dump);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_COMMANDS_CLOCK_SCALE_H_
