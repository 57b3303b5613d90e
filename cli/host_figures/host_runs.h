// Runs of the library as a host makes them, for --as-is: the dump is handed over untouched.
#ifndef KESNCD_CLI_HOST_FIGURES_HOST_RUNS_H_
#define KESNCD_CLI_HOST_FIGURES_HOST_RUNS_H_

#include <set>
#include <string>

#include "cli/input/dump_input.h"
#include "export/result_writer.h"
#include "kesncd/kesncd.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

/// Reads the module tree, which then has a root. Says how much of the dump cannot be reached in it.
void ReadTree(orsa::kesncd::KesNCD& analyser, DumpInput& input);

/// Does the flat run of a module.
void ReadFlat(orsa::kesncd::KesNCD& analyser, DumpInput& input,
              const std::set<std::string>& signals, const std::string& top);

/// All names that a dump declares.
std::set<std::string> AllNames(const DumpInput& input);

/// The library's message for a dump, with what helps after it.
Failure RunFailure(const DumpInput& input, const std::string& libraryMessage);

/// Says what keeps all frequencies of a run at 0.
void SayWhyZero(const DumpInput& input);

/// The facts that results of such a run begin with.
Facts HostFacts(const DumpInput& input, const std::string& top);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_HOST_FIGURES_HOST_RUNS_H_
