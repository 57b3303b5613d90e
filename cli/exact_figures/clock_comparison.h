// The clocks of a timing report against what ran in a simulation. A clock period in the test bench
// that is not the design's is the usual cause of wrong power.
#ifndef KESNCD_CLI_EXACT_FIGURES_CLOCK_COMPARISON_H_
#define KESNCD_CLI_EXACT_FIGURES_CLOCK_COMPARISON_H_

#include <cstdint>
#include <map>
#include <string>

#include "cli/host_figures/figures.h"

namespace orsa::kesncd::cli {

/// The frequencies that a dump's signals of these names have, by name; names that the scope `top`
/// and those below it do not hold are left out.
std::map<std::string, double> ClocksInDump(const Figures& figures, std::uint32_t top,
                                           const std::map<std::string, double>& clocks);

/// Says of each clock whose frequency in the dump, by name in `inDump`, is more than a tenth off
/// the report's what it is. Without a time span of the dump there is nothing to compare.
void SayWrongClocks(const std::string& dump, const std::map<std::string, double>& clocks,
                    const std::map<std::string, double>& inDump);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_CLOCK_COMPARISON_H_
