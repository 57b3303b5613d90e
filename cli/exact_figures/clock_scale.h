// The design's clocks against the dump's. Test benches often run a clock at another period than the
// design will have; every rate of the dump is off by the same factor then.
//
// Two uses. --clock clk=2ns scales: if clk has a period of 10 ns in the dump, all times are
// multiplied by 2/10 and all rates by 10/2, as if the test bench had run at the design's speed.
// --sdc only compares, and names the clocks that differ by more than 1 %.
#ifndef KESNCD_CLI_EXACT_FIGURES_CLOCK_SCALE_H_
#define KESNCD_CLI_EXACT_FIGURES_CLOCK_SCALE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "activity/activity_result.h"
#include "cli/input/sdc_clocks.h"

namespace orsa::kesncd::cli {

/// Both may be given; --clock then scales, and the clocks of --sdc are compared after scaling.
struct ClockOptions {
  std::string clock;  // NAME=PERIOD; empty for none
  std::string sdc;    // file of constraints
};

/// The clock that a text such as "clk=2ns" says. It is cut at the last "=", as escaped names may
/// hold one. Throws Failure with Unusable, which names what was given.
DesignClock DesignClockOf(const std::string& text);

/// By how much times of the dump are to be stretched. A quotient of whole numbers, since SAIF's
/// times are whole: see SaifOptions. A time t becomes t * numerator / denominator, rounded by
/// whoever writes it. Its name shows in results as the fact "clock".
struct ClockScale {
  DesignClock clock;  // of which nothing is set where nothing is scaled
  std::uint64_t numerator = 1;
  std::uint64_t denominator = 1;

  /// For rates, which are divided by it, and for messages.
  double Factor() const {
    return static_cast<double>(numerator) / static_cast<double>(denominator);
  }
};

/// Calling order: construct, FindIn once the dump's declarations are known, ScaleOf once its
/// activity is. What is watched are toggles of single codes, so a database cannot stand in for the
/// dump. Without --clock and --sdc nothing is watched, and ScaleOf gives the factor 1.
class ClockCheck {
 public:
  /// Reads the constraints. Throws Failure with Unusable. A file without clocks is said, as it is
  /// most likely the wrong one.
  explicit ClockCheck(const ClockOptions& options);

  /// The identifier codes of the clocks, to be watched. Throws Failure with NothingMatched where no
  /// signal, or more than one, is called as the clock to scale to is, and with Unusable where that
  /// has more bits than one; says it of clocks of the constraints. Each code once, for
  /// ActivityOptions::watch. `found_` remembers which clock has which.
  std::vector<std::uint32_t> FindIn(const Declarations& declarations, const std::string& dump);

  /// The factor that was asked for, which is said. Names each clock of the constraints that still
  /// runs at another period. Throws Failure with NothingMatched where the clock does not run.
  /// `result.watched` must be that of the codes that FindIn gave, in their order.
  ClockScale ScaleOf(const ActivityResult& result, const std::string& dump) const;

 private:
  // A clock that the dump has, and its place among the watched codes; two clocks of one code share
  // it.
  struct Found {
    DesignClock clock;
    std::size_t watched;
  };

  /// Remarks on a clock of the constraints whose period, scaled, is more than 1 % off.
  void Compare(const Found& found, const ClockScale& scale, const ActivityResult& result,
               const std::string& dump) const;

  bool scales_ = false;  // to the first clock
  // First the one of --clock, if it is given, then those of the constraints.
  std::vector<DesignClock> clocks_;
  std::string sdc_;  // path of the constraints; empty for none
  std::vector<Found> found_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_CLOCK_SCALE_H_
