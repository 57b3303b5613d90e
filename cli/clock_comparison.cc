#include "cli/clock_comparison.h"

#include <cmath>

#include "cli/exit_status.h"
#include "cli/report.h"
#include "kesncd/kesncd.h"

namespace kesncd_cli {

namespace {

constexpr double kTolerance = 0.1;

}  // namespace

void SayWrongClocks(const std::string& dump, const std::map<std::string, double>& clocks,
                    const std::function<std::optional<double>(const std::string&)>& inDump) {
  using namespace orsa::kesncd;
  if (timeScale == 0.0 || endCycle == startCycle) return;
  for (const auto& [name, promised] : clocks) {
    const std::optional<double> found = inDump(name);
    if (!found || promised < 0 || std::abs(*found - promised) <= kTolerance * promised) continue;
    Say(dump, "clock " + name + " runs at " + NumberText(*found) + " MHz here, but at " +
                  NumberText(promised) +
                  " MHz in the timing report: is its period in the test bench right?");
  }
}

}  // namespace kesncd_cli
