// What --help prints: from the same list of options that is parsed.
//
// For example:
//
//   Options:
//     --limit N                 so many rows at most (default: all)
//     -o, --output FILE         write the result to FILE, packed if it ends in .gz
#ifndef KESNCD_CLI_OPTIONS_HELP_TEXT_H_
#define KESNCD_CLI_OPTIONS_HELP_TEXT_H_

#include <string>

#include "cli/options/option_list.h"

namespace orsa::kesncd::cli {

/// The help of the program, with its commands. Ends in a newline, as the next one does.
std::string HelpOf(const CommandLine& line);

/// The help of one of its commands. The command's summary and text, its usage line, operands and
/// options.
std::string HelpOf(const CommandLine& line, const Command& command);

/// "-o, --output FILE", where the value may be left out "[=FILE]"; of an operand that may be
/// repeated "NAME...".
std::string OptionText(const Option& option);

/// The option's help with "(required)", "(optional)" or "(default: 4)" after it. Also used by the
/// man page, so that both say the same.
std::string HelpWithDefault(const Option& option);

/// "[OPTION]... --nets FILE DUMP [NAME]...", without the command's name. Required options are
/// named, the others are "[OPTION]...".
std::string UsageOf(const Command& command);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OPTIONS_HELP_TEXT_H_
