// The grammar reader, kept from ending the program.
#ifndef KESNCD_CLI_GRAMMAR_RUN_H_
#define KESNCD_CLI_GRAMMAR_RUN_H_

#include <functional>
#include <string>

#include "cli/dump_input.h"
#include "cli/exit_status.h"

namespace kesncd_cli {

/// Reads a dump into topMod with the grammar reader, then does `print`; both in a child process,
/// because the reader ends its process at a time scale that it does not understand. Throws Failure
/// for what the reader does not accept.
ExitStatus RunGrammarReader(DumpInput& input, const std::string& top,
                            const std::function<ExitStatus()>& print);

}  // namespace kesncd_cli

#endif  // KESNCD_CLI_GRAMMAR_RUN_H_
