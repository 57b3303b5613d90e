// The clocks of a timing report against what ran in a simulation. A clock period in the test bench
// that is not the design's is the usual cause of wrong power.
#ifndef KESNCD_CLI_COMMANDS_CLOCK_COMPARISON_H_
#define KESNCD_CLI_COMMANDS_CLOCK_COMPARISON_H_

#include <map>
#include <string>

namespace orsa::kesncd::cli {

/// Says of each clock whose frequency in the dump, by name in `inDump`, is more than a tenth off
/// the report's what it is. Without a time span of the dump there is nothing to compare.
void SayWrongClocks(const std::string& dump, const std::map<std::string, double>& clocks,
                    const std::map<std::string, double>& inDump);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_COMMANDS_CLOCK_COMPARISON_H_
