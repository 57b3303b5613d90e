// The clocks that a report shows: those of constraints and timing reports with the frequency that
// they ran at, else what looks like a clock by its name.
//
// What the report's reader gets is a list such as
//
//   clk   ran at 50 MHz   100 MHz in SDC
//
// from which a wrong period of the test bench is seen at once.
#ifndef KESNCD_CLI_EXACT_FIGURES_REPORT_CLOCKS_H_
#define KESNCD_CLI_EXACT_FIGURES_REPORT_CLOCKS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "activity/activity_result.h"
#include "export/report_figures.h"

namespace orsa::kesncd::cli {

/// Calling order: construct, FindIn once the dump's declarations are known, Measured once its
/// activity is.
class ReportClocks {
 public:
  /// Without constraints and timing report: signals that are called like clocks.
  ReportClocks() = default;
  /// Reads constraints and a timing report, of which either may be an empty path. Throws Failure
  /// with Unusable. Clocks of both, in this order. A report's clock without a frequency is kept: it
  /// may still run.
  ReportClocks(const std::string& sdc, const std::string& timing);

  /// The identifier codes of the clocks, each once, for ActivityOptions::watch. Says which clocks
  /// the dump does not have. Without any clock of constraints and timing report signals of one bit
  /// are taken that look like clocks by their names, twelve at most.
  std::vector<std::uint32_t> FindIn(const Declarations& declarations, const std::string& dump);

  /// With the frequency in the dump where it is known. `result.watched` is that of FindIn's codes.
  std::vector<ReportFacts::Clock> Measured(const ActivityResult& result) const;

 private:
  // A clock to show, wherever it comes from.
  struct Clock {
    std::string name;    // as it is shown
    std::string signal;  // that carries it
    // What constraints or report ask for, in MHz.
    std::optional<double> mhz;
    // "SDC", "timing report", or empty for one that was found by its name.
    std::string source;
    // Of constraints without a signal: shown only where the dump has a signal of its name.
    bool isVirtual = false;
    // Its place among the codes that FindIn gave; only where isFound.
    std::size_t watched = 0;
    bool isFound = false;
  };

  /// Adds clocks and their codes for want of better ones.
  void FindByName(const Declarations& declarations, std::vector<std::uint32_t>& codes);

  bool isByName_ = true;
  std::vector<Clock> clocks_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_REPORT_CLOCKS_H_
