// The flat run's activity file: the module's frequencies as hosts read them back.
#ifndef KESNCD_CLI_ACTIVITY_FILE_H_
#define KESNCD_CLI_ACTIVITY_FILE_H_

#include <string>

namespace kesncd_cli {

/// Where the activity of a dump goes unless the user says otherwise: beside it. Empty for what is
/// no file, such as a pipe.
std::string ActivityPathOf(const std::string& dump);

/// Writes what the last flat run counted. Throws Failure with OutputFailed.
void WriteActivity(const std::string& path);

}  // namespace kesncd_cli

#endif  // KESNCD_CLI_ACTIVITY_FILE_H_
