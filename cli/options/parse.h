// From the words that a user typed to the work that was asked for.
//
// From these words          becomes
//   kesncd sim.vcd          the work of `look`, with sim.vcd (CommandLine::commandOfFiles)
//   kesncd flat -h          the printing of flat's help
//   kesncd flat --tpo soc   Failure: "--tpo is no option; did you mean --top?"
#ifndef KESNCD_CLI_OPTIONS_PARSE_H_
#define KESNCD_CLI_OPTIONS_PARSE_H_

#include <functional>
#include <string>
#include <vector>

#include "cli/options/option_list.h"

namespace orsa::kesncd::cli {

/// Gives the words' values to the options that they name, and returns what is to be done then,
/// once: the command's work, or printing help or the version. Throws Failure with Unusable, before
/// anything was done, for words that mean nothing.
///
/// An option's value is the next word, or stands after "=" ("-oFILE" after a single letter);
/// options and operands mix; after "--" every word is an operand, and "-" always is. The line must
/// live as long as what is returned. `words` are those after the program's name.
std::function<ExitStatus()> ParseWords(const CommandLine& line,
                                       const std::vector<std::string>& words);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OPTIONS_PARSE_H_
