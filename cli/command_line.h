// The whole command line of the program.
//
// One table describes the program to everybody: the parser, --help, the man page and the
// completions of three shells. To add a command, write cli/commands/NAME.cc with a function
// AddNameCommand and call it in MakeCommandLine; nothing else has to know of it.
#ifndef KESNCD_CLI_COMMAND_LINE_H_
#define KESNCD_CLI_COMMAND_LINE_H_

#include "cli/options/option_list.h"

namespace orsa::kesncd::cli {

/// The program with all its commands. Each call makes a new table with options of its own. Nothing
/// is read or written; a command's work is done only when its `run` is called, after ParseWords has
/// filled in its options.
CommandLine MakeCommandLine();

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_COMMAND_LINE_H_
