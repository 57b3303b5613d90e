// Runs of the library as a host makes them, for --as-is: the dump is handed over untouched.
//
// The order is always that of a host: construct a KesNCD, ReadTree or ReadFlat once, then read its
// members and the library's exported variables. Nothing else may use the library meanwhile, since
// those variables belong to the process.
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
/// `analyser.hierRoot` is the first top-level scope and never null afterwards. Throws Failure with
/// the library's message where it reads nothing.
void ReadTree(orsa::kesncd::KesNCD& analyser, DumpInput& input);

/// Does the flat run of a module. `signals` are the names that the run takes and `top` a module's
/// name without a path; figures are in `analyser.signalFreqs` then, in MHz by design-style names,
/// and topMod holds the module.
void ReadFlat(orsa::kesncd::KesNCD& analyser, DumpInput& input,
              const std::set<std::string>& signals, const std::string& top);

/// All names that a dump declares, for a flat run without a selection of the user's: the library
/// takes none but the names that it is told (and those with an index).
std::set<std::string> AllNames(const DumpInput& input);

/// The library's message for a dump, with what helps after it. A module that was never met is
/// NothingMatched, with the names that --top can take; every other failure is Unusable.
Failure RunFailure(const DumpInput& input, const std::string& libraryMessage);

/// Says what keeps all frequencies of a run at 0. A remark, or nothing where frequencies are known.
void SayWhyZero(const DumpInput& input);

/// The facts that results of such a run begin with. Read from the library's exported variables, so
/// only right after a run.
Facts HostFacts(const DumpInput& input, const std::string& top);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_HOST_FIGURES_HOST_RUNS_H_
