// Where the activity of a flat run goes: what the library writes beside a file that it opened by
// its name, which the program's dumps have not.
#ifndef KESNCD_CLI_COMMANDS_ACTIVITY_OUTPUT_H_
#define KESNCD_CLI_COMMANDS_ACTIVITY_OUTPUT_H_

#include <string>

namespace orsa::kesncd::cli {

/// Where the activity of a dump goes unless the user says otherwise: beside it. Empty for what is
/// no file, such as a pipe.
std::string ActivityPathOf(const std::string& dump);

/// Writes what the last flat run counted. Throws Failure with OutputFailed.
void SaveActivity(const std::string& path);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_COMMANDS_ACTIVITY_OUTPUT_H_
