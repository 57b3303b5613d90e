// The whole command line of the program.
#ifndef KESNCD_CLI_COMMAND_LINE_H_
#define KESNCD_CLI_COMMAND_LINE_H_

#include "cli/options/option_list.h"

namespace orsa::kesncd::cli {

/// The program with all its commands.
CommandLine MakeCommandLine();

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_COMMAND_LINE_H_
