// The figures that exact commands start from: counted in a dump, or taken from a database.
#ifndef KESNCD_CLI_EXACT_FIGURES_EXACT_INPUT_H_
#define KESNCD_CLI_EXACT_FIGURES_EXACT_INPUT_H_

#include <functional>
#include <optional>
#include <vector>

#include "cli/exact_figures/kept_profile.h"
#include "cli/input/dump_input.h"
#include "database/stored_run.h"
#include "free_format/prepare/prepare.h"

namespace orsa::kesncd::cli {

struct ExactInput {
  InputOptions input;
  // In femtoseconds; a database is taken only if it holds the same one.
  TimeWindow window;
  bool wantsHost = false;  // the hosts' figures too, from the same reading
  /// Of what windows a profile is wanted; needs the hosts' figures.
  std::optional<WindowsAsked> profile;
  /// See ActivityOptions. Not for a database, which does not hold when all signals toggled.
  std::function<std::vector<std::uint32_t>(const Declarations&)> watch;
};

/// Reads the figures of a dump, or those that a database holds, and says what a user must know
/// about them. Throws Failure. In the result `host` is set only where it was wanted or the database
/// has it.
StoredRun ReadExactRun(const ExactInput& options);

/// Rates that are missing in every row want a reason, which this says on standard error; nothing
/// where there are rates. `name` is what messages call the run.
void SayWhyNoRates(const ActivityResult& result, const std::string& name);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_EXACT_INPUT_H_
