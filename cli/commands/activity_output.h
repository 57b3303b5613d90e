// The activity file of a flat run, which hosts read: the library leaves it beside each dump that it
// opens by name, the program only where a user asks for it.
#ifndef KESNCD_CLI_COMMANDS_ACTIVITY_OUTPUT_H_
#define KESNCD_CLI_COMMANDS_ACTIVITY_OUTPUT_H_

#include <string>

namespace orsa::kesncd::cli {

/// Where the activity of a dump goes unless the user says otherwise: beside it. Empty for what is
/// no file, such as a pipe.
std::string ActivityPathOf(const std::string& dump);

/// Throws Failure with Unusable for a regular file that is no activity file: it must not be written
/// over.
void RequireActivityFile(const std::string& path);

/// Writes what the last flat run counted. Throws Failure with OutputFailed.
void SaveActivity(const std::string& path);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_COMMANDS_ACTIVITY_OUTPUT_H_
