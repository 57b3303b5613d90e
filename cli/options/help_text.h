// What --help prints: from the same list of options that is parsed.
#ifndef KESNCD_CLI_OPTIONS_HELP_TEXT_H_
#define KESNCD_CLI_OPTIONS_HELP_TEXT_H_

#include <string>

#include "cli/options/option_list.h"

namespace orsa::kesncd::cli {

/// The help of the program, with its commands.
std::string HelpOf(const CommandLine& line);

/// The help of one of its commands.
std::string HelpOf(const CommandLine& line, const Command& command);

/// "-o, --output FILE"
std::string OptionText(const Option& option);

/// The option's help with what it must be and its default.
std::string HelpWithDefault(const Option& option);

/// "[OPTION]... --nets FILE DUMP [NAME]...", without the command's name.
std::string UsageOf(const Command& command);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OPTIONS_HELP_TEXT_H_
