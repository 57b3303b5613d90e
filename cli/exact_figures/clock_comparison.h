// The clocks of a timing report against what ran in a simulation. A clock period in the test bench
// that is not the design's is the usual cause of wrong power.
//
// Used by `clocks --dump`, `extract` and its like, whose figures are those of hosts. (Exact
// commands compare periods by single edges: see clock_scale.h and report_clocks.h.)
#ifndef KESNCD_CLI_EXACT_FIGURES_CLOCK_COMPARISON_H_
#define KESNCD_CLI_EXACT_FIGURES_CLOCK_COMPARISON_H_

#include <cstdint>
#include <map>
#include <string>

#include "cli/host_figures/figures.h"

namespace orsa::kesncd::cli {

/// The frequencies in MHz of a dump's signals, by name. The names are the keys of `clocks`,
/// searched in the scope `top` and below as `kesncd find` does; of an ambiguous one the outermost
/// signal counts. What is not found or not known is left out.
std::map<std::string, double> ClocksInDump(const Figures& figures, std::uint32_t top,
                                           const std::map<std::string, double>& clocks);

/// Says of each clock whose frequency in the dump, by name in `inDump`, is more than a tenth off
/// the report's what it is. Without a time span of the dump there is nothing to compare. `clocks`
/// and `inDump` hold MHz. A remark each:
///
///   kesncd: sim.vcd: clock clk runs at 50 MHz here, but at 100 MHz in the timing report: ...
void SayWrongClocks(const std::string& dump, const std::map<std::string, double>& clocks,
                    const std::map<std::string, double>& inDump);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_CLOCK_COMPARISON_H_
