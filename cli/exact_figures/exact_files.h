// Exact activity in the forms that power estimators read: SAIF and Tcl, of a dump's nets or of the
// pins of a netlist's cells.
#ifndef KESNCD_CLI_EXACT_FIGURES_EXACT_FILES_H_
#define KESNCD_CLI_EXACT_FIGURES_EXACT_FILES_H_

#include "cli/exact_figures/exact_options.h"
#include "cli/process/exit_status.h"
#include "database/stored_run.h"

namespace orsa::kesncd::cli {

/// Writes a dump's nets as SAIF or Tcl.
ExitStatus WriteExactFile(const ExactRun& run, const ExactOptions& options);

/// Writes all of a run as a database.
void WriteDatabaseFile(const StoredRun& run, const std::string& path);

/// Writes the pins of --netlist in any format, and says how many of them the dump reaches.
ExitStatus WritePins(const ExactRun& run, const ExactOptions& options);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_EXACT_FILES_H_
