// What the commands that write exact activity share: their options, the checks of these, and the
// way from figures to the format that was asked for.
#ifndef KESNCD_CLI_EXACT_FIGURES_EXACT_CHOICES_H_
#define KESNCD_CLI_EXACT_FIGURES_EXACT_CHOICES_H_

#include <string>
#include <vector>

#include "cli/exact_figures/exact_options.h"
#include "cli/options/option_list.h"
#include "cli/process/exit_status.h"

namespace orsa::kesncd::cli {

/// Adds what says which rows there are and how they are written.
void AddExactChoices(Command& command, ExactOptions& options);
/// Adds what files for estimators can be told.
void AddEstimatorOptions(Command& command, ExactOptions& options);

/// Settles the format, and refuses what does not go together. Throws Failure with Unusable.
void CheckExactOptions(ExactOptions& options);
/// Throws Failure with Unusable where an output is an input too.
void CheckExactPlaces(std::vector<std::string> inputs, const ExactOptions& options);

/// Writes figures in any format but a database's.
ExitStatus WriteExact(ExactRun run, const ExactOptions& options);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_EXACT_CHOICES_H_
