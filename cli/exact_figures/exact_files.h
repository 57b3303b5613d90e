// Exact activity in the forms that power estimators read: SAIF and Tcl, of a dump's nets or of the
// pins of a netlist's cells.
//
// What a user sees besides the files are remarks with their counts:
//
//   kesncd: sim.vcd: 212 nets written; 0 left out, whose names no reader of SAIF takes
//   kesncd: sim.vcd: 3847 of 3847 pins of uart_echo reached, 100 %
#ifndef KESNCD_CLI_EXACT_FIGURES_EXACT_FILES_H_
#define KESNCD_CLI_EXACT_FIGURES_EXACT_FILES_H_

#include "cli/exact_figures/exact_options.h"
#include "cli/process/exit_status.h"
#include "database/stored_run.h"

namespace orsa::kesncd::cli {

/// Writes a dump's nets as SAIF or Tcl. `options.format` is Saif or Tcl. Always Done; throws
/// Failure, as for a dump without a time scale.
ExitStatus WriteExactFile(const ExactRun& run, const ExactOptions& options);

/// Writes all of a run as a database. An empty path and "-" are standard output.
void WriteDatabaseFile(const StoredRun& run, const std::string& path);

/// Writes the pins of --netlist in any format, and says how many of them the dump reaches. Rows,
/// SAIF or Tcl by the format. NothingMatched where fewer are reached than --require says.
ExitStatus WritePins(const ExactRun& run, const ExactOptions& options);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_EXACT_FILES_H_
