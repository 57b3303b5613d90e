// The design's clocks against the dump's. Test benches often run a clock at another period than the
// design will have; every rate of the dump is off by the same factor then.
#ifndef KESNCD_CLI_EXACT_FIGURES_CLOCK_SCALE_H_
#define KESNCD_CLI_EXACT_FIGURES_CLOCK_SCALE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "activity/activity_result.h"
#include "cli/input/sdc_clocks.h"

namespace orsa::kesncd::cli {

struct ClockOptions {
  std::string clock;  // NAME=PERIOD; empty for none
  std::string sdc;    // file of constraints
};

/// The clock that "clk=2ns" says. Throws Failure with Unusable.
DesignClock DesignClockOf(const std::string& text);

/// By how much times of the dump are to be stretched.
struct ClockScale {
  DesignClock clock;  // of which nothing is set where nothing is scaled
  std::uint64_t numerator = 1;
  std::uint64_t denominator = 1;

  double Factor() const {
    return static_cast<double>(numerator) / static_cast<double>(denominator);
  }
};

/// Calling order: construct, FindIn once the dump's declarations are known, ScaleOf once its
/// activity is.
class ClockCheck {
 public:
  /// Reads the constraints. Throws Failure with Unusable.
  explicit ClockCheck(const ClockOptions& options);

  /// The identifier codes of the clocks, to be watched. Throws Failure with NothingMatched where no
  /// signal, or more than one, is called as the clock to scale to is, and with Unusable where that
  /// has more bits than one; says it of clocks of the constraints.
  std::vector<std::uint32_t> FindIn(const Declarations& declarations, const std::string& dump);

  /// The factor that was asked for, which is said. Names each clock of the constraints that still
  /// runs at another period. Throws Failure with NothingMatched where the clock does not run.
  ClockScale ScaleOf(const ActivityResult& result, const std::string& dump) const;

 private:
  struct Found {
    DesignClock clock;
    std::size_t watched;
  };

  void Compare(const Found& found, const ClockScale& scale, const ActivityResult& result,
               const std::string& dump) const;

  bool scales_ = false;              // to the first clock
  std::vector<DesignClock> clocks_;  // of the design
  std::string sdc_;
  std::vector<Found> found_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_CLOCK_SCALE_H_
