// Exact activity as rows: of bits, of signals, of modules, or of the pins of a netlist's cells.
//
// Columns of bits and pins, then those of signals and modules, which are sums with means:
//
//   path  t0  t1  tx  tz  tc  ig  freq_mhz  toggle_rate  high
//   path  bits  toggles  ig  t0  t1  tx  tz  freq_mhz  toggle_rate  high
//
// Times are in the dump's ticks and never scaled; rates are per bit and microsecond, scaled by
// --clock.
#ifndef KESNCD_CLI_EXACT_FIGURES_EXACT_ROWS_H_
#define KESNCD_CLI_EXACT_FIGURES_EXACT_ROWS_H_

#include "cli/exact_figures/exact_options.h"
#include "cli/process/exit_status.h"
#include "export/netlist_pins.h"

namespace orsa::kesncd::cli {

/// Whether a pattern matches a signal, with or without its range: "data" and "data[7:0]" both take
/// the signal data[7:0], "data[[]3]" only a bit of it. `scopePath` is empty outside every scope.
bool TakesSignal(const PathFilter& filter, const std::string& scopePath,
                 const DumpVariable& variable);

/// Writes the rows that were asked for; NothingMatched where a scope or pattern left none.
/// `options.per` says of what; `options.output` where to and in which format.
ExitStatus WriteExactRows(const ExactRun& run, const ExactOptions& options);

/// The same for pins, as bits. Pins that the dump does not reach have no row; ReportPins counts
/// them. --per does not matter here.
ExitStatus WritePinRows(const ExactRun& run, const NetlistPins& pins, const ExactOptions& options);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_EXACT_ROWS_H_
