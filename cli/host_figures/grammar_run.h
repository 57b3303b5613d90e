// The grammar reader, kept from ending the program.
#ifndef KESNCD_CLI_HOST_FIGURES_GRAMMAR_RUN_H_
#define KESNCD_CLI_HOST_FIGURES_GRAMMAR_RUN_H_

#include <functional>
#include <string>

#include "cli/input/dump_input.h"
#include "cli/process/exit_status.h"

namespace orsa::kesncd::cli {

/// Reads a dump into topMod with the grammar reader, then does `print`; both in a child process,
/// because the reader ends its process at a time scale that it does not understand. Throws Failure
/// for what the reader does not accept.
ExitStatus RunGrammarReader(DumpInput& input, const std::string& top,
                            const std::function<ExitStatus()>& print);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_HOST_FIGURES_GRAMMAR_RUN_H_
