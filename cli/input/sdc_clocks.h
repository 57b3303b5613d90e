// The clocks of a design's timing constraints, to hold a dump's clocks against.
#ifndef KESNCD_CLI_INPUT_SDC_CLOCKS_H_
#define KESNCD_CLI_INPUT_SDC_CLOCKS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orsa::kesncd::cli {

/// A clock and its period in the design.
struct DesignClock {
  std::string name;
  std::string signal;        // what carries it: a port's name, mostly its own
  std::uint64_t period = 0;  // femtoseconds
  std::string periodText;
};

/// The clocks that create_clock commands of a text make, one for each object that carries it.
/// Periods are in nanoseconds unless set_units says otherwise; clocks whose period is no number,
/// but a variable say, are left out.
std::vector<DesignClock> SdcClocks(std::string_view text);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_SDC_CLOCKS_H_
