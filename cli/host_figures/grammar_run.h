// The grammar reader, kept from ending the program.
//
// The library's grammar reader is a parser of the whole dump. At a time scale that it does not know
// it calls exit(), which no caller can catch; so the program runs it in a child process and goes by
// the child's exit status.
#ifndef KESNCD_CLI_HOST_FIGURES_GRAMMAR_RUN_H_
#define KESNCD_CLI_HOST_FIGURES_GRAMMAR_RUN_H_

#include <functional>
#include <string>

#include "cli/input/dump_input.h"
#include "cli/process/exit_status.h"

namespace orsa::kesncd::cli {

/// Reads a dump into topMod with the grammar reader, then does `print`; both in a child process,
/// because the reader ends its process at a time scale that it does not understand. Throws Failure
/// for what the reader does not accept. `print` runs in the child too, after the reading: topMod
/// and the other exported variables are set in that process only. It returns the child's status,
/// which this returns; a Failure that either throws is said by the child. Standard output and open
/// files are shared with the child, so nothing may be left unwritten in them before the call.
ExitStatus RunGrammarReader(DumpInput& input, const std::string& top,
                            const std::function<ExitStatus()>& print);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_HOST_FIGURES_GRAMMAR_RUN_H_
