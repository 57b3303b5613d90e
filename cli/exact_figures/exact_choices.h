// What the commands that write exact activity share: their options, the checks of these, and the
// way from figures to the format that was asked for.
//
// Calling order in a command: AddExactChoices and AddEstimatorOptions fill in the options,
// CheckExactOptions settles the format before anything is read, CheckExactPlaces compares files,
// the command counts, WriteExact writes.
#ifndef KESNCD_CLI_EXACT_FIGURES_EXACT_CHOICES_H_
#define KESNCD_CLI_EXACT_FIGURES_EXACT_CHOICES_H_

#include <string>
#include <vector>

#include "cli/exact_figures/exact_options.h"
#include "cli/options/option_list.h"
#include "cli/process/exit_status.h"

namespace orsa::kesncd::cli {

/// Adds what says which rows there are and how they are written: --per, --scope, --sort, --limit,
/// --match, --format, --digits, --wide and -o.
void AddExactChoices(Command& command, ExactOptions& options);
/// Adds what files for estimators can be told: --strip, --root, --unwritten, --time-unit,
/// --netlist, --netlist-top, --unmatched and --require.
void AddEstimatorOptions(Command& command, ExactOptions& options);

/// Settles the format, and refuses what does not go together. Throws Failure with Unusable. Sets
/// `options.format` and the format of `options.output`, which the functions below go by. The
/// message names the option that is wrong and the format that it is for.
void CheckExactOptions(ExactOptions& options);
/// Throws Failure with Unusable where an output is an input too. `inputs` may hold empty paths; the
/// netlist of the options is added to them.
void CheckExactPlaces(std::vector<std::string> inputs, const ExactOptions& options);

/// Writes figures in any format but a database's. Takes the run over: it may be as large as the
/// dump has bits. NothingMatched where a choice left nothing, or fewer pins than --require asks for
/// were reached.
ExitStatus WriteExact(ExactRun run, const ExactOptions& options);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_EXACT_CHOICES_H_
