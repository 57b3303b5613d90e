// Exact activity as rows: of bits, of signals, of modules, or of the pins of a netlist's cells.
#ifndef KESNCD_CLI_EXACT_FIGURES_EXACT_ROWS_H_
#define KESNCD_CLI_EXACT_FIGURES_EXACT_ROWS_H_

#include "cli/exact_figures/exact_options.h"
#include "cli/process/exit_status.h"
#include "export/netlist_pins.h"

namespace orsa::kesncd::cli {

/// Whether a pattern matches a signal, with or without its range.
bool TakesSignal(const PathFilter& filter, const std::string& scopePath,
                 const DumpVariable& variable);

/// Writes the rows that were asked for; NothingMatched where a scope or pattern left none.
ExitStatus WriteExactRows(const ExactRun& run, const ExactOptions& options);

/// The same for pins, as bits.
ExitStatus WritePinRows(const ExactRun& run, const NetlistPins& pins, const ExactOptions& options);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_EXACT_ROWS_H_
