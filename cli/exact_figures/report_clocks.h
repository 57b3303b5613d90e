// The clocks that a report shows: those of constraints and timing reports with the frequency that
// they ran at, else what looks like a clock by its name.
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
  /// Reads constraints and a timing report, of which either may be an empty path. Throws Failure
  /// with Unusable.
  ReportClocks(const std::string& sdc, const std::string& timing);

  /// The identifier codes of the clocks, to be watched. Says which clocks the dump does not have.
  std::vector<std::uint32_t> FindIn(const Declarations& declarations, const std::string& dump);

  std::vector<ReportFacts::Clock> Measured(const ActivityResult& result) const;

 private:
  struct Clock {
    std::string name;    // as it is shown
    std::string signal;  // that carries it
    std::optional<double> mhz;
    std::string source;
    std::size_t watched = 0;
    bool isFound = false;
  };

  void FindByName(const Declarations& declarations, std::vector<std::uint32_t>& codes);

  std::string sdc_;
  std::string timing_;
  std::vector<Clock> clocks_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_REPORT_CLOCKS_H_
