// kesncd merge: the activity of several dumps of one design, summed.
//
// Two operations that share their files but not their sense. Runs of different stimuli are summed
// by path: times add up, rates become means weighted by time. Parts of one dump (kesncd activity
// --part K/N) are put together again to exactly what one reading of the dump gives. The first file
// tells which of the two is meant.
#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "activity/activity_rows.h"
#include "activity/run_merger.h"
#include "cli/commands/commands.h"
#include "cli/exact_figures/exact_choices.h"
#include "cli/exact_figures/exact_files.h"
#include "cli/exact_figures/exact_input.h"
#include "cli/exact_figures/parts.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

struct MergeOptions {
  // Dumps and databases; or parts of one dump, in any order.
  std::vector<std::string> runs;
  // Where the parts' dump is now; empty: where it was counted.
  std::string dump;
  bool byRun = false;
  // --scope, --per, --format, ... as in kesncd activity.
  ExactOptions exact;
};

constexpr char kMergeHelp[] =
    "The summed activity of several dumps of one design, such as a regression's tests\n"
    "\n"
    "Examples:\n"
    "  kesncd merge boot.vcd dma.kact idle.kact -o all.kact\n"
    "  kesncd merge tests/*.kact --format saif --strip tb/soc -o soc.saif\n"
    "  kesncd merge tests/*.kact --by-run --sort rate\n"
    "  kesncd merge part*.kact -o sim.kact\n"
    "\n"
    "RUN is a dump or a database that kesncd activity wrote. Figures of equal paths are summed, "
    "and\n"
    "so is the time: rates are means in which every run weighs as long as it ran. A name that "
    "only\n"
    "some runs have keeps the time of those; which runs lack names is said. Times are in ticks of\n"
    "the finest run. A merged database has no figures of hosts, whose count is of one dump.\n"
    "--by-run gives for each module the run in which it toggles most.\n"
    "\n"
    "Parts of one dump, from kesncd activity --part, add up to what one reading of it gives.\n";

/// One remark a run that lacks names which others have: a test that was compiled with another
/// configuration looks like this. Not an error, since such names keep the time of the runs that
/// have them.
void SayLacking(const RunMerger& merger) {
  // Of a regression with thousands of runs a screenful is enough.
  constexpr std::size_t kMostTold = 20;
  const std::vector<LackingRun> lacking = merger.Lacking();
  for (std::size_t i = 0; i < std::min(lacking.size(), kMostTold); ++i) {
    Remark(lacking[i].run, "lacks " + std::to_string(lacking[i].signals) + " of " +
                               std::to_string(merger.signals()) + " signals, as " +
                               lacking[i].example);
  }
  if (lacking.size() <= kMostTold) return;
  Remark("", std::to_string(lacking.size() - kMostTold) + " further runs lack signals");
}

/// Rows of modules, each with the run in which it toggles most and the mean over all:
///
///   path    run       toggle_rate  mean_toggle_rate
///   tb/soc  dma.kact          812               310
ExitStatus WriteByRun(const RunMerger& merger, const ExactRun& run, const MergeOptions& options) {
  const ActivityResult& sum = run.result;
  const std::vector<ActivitySums> sums = ActivityRows(sum).ModuleSums();
  ResultHead head{{{"runs", static_cast<std::int64_t>(merger.runs().size())}},
                  "modules",
                  {"path", "run", "toggle_rate", "mean_toggle_rate"}};
  ResultOutput out(options.exact.output, head);
  SelectedRows rows(options.exact.selection, out);
  const PathFilter filter(options.exact.selection.match);
  // Toggles a tick and bit to toggles a microsecond and bit: there are 1e9 fs in one.
  const double perTick = sum.tick ? 1e9 / static_cast<double>(*sum.tick) : 0;
  // From 1: scope 0 is the whole dump and no module.
  for (std::uint32_t scope = 1; scope < sums.size(); ++scope) {
    const BusiestRun& busiest = merger.busiest()[scope];
    const DumpScope& module = sum.declarations.scopes[scope];
    // No bits in any run, so there is nothing to compare.
    if (busiest.togglesPerTick < 0) continue;
    if (!filter.Takes(sum.declarations.PathOf(module.parent), module.name)) continue;
    const std::string path = sum.declarations.PathOf(scope);
    const std::optional<double> mean = RatesOf(sums[scope], sum).toggleRate;
    const double rate = busiest.togglesPerTick * perTick;
    rows.Add({path, static_cast<double>(sums[scope].tc), rate},
             {path, merger.runs()[busiest.run], sum.tick ? Cell(rate) : Cell(),
              mean ? Cell(*mean) : Cell()});
  }
  rows.Finish();
  out.End();
  return out.rows() > 0 ? ExitStatus::Done : ExitStatus::NothingMatched;
}

/// Adds the runs one by one: memory is that of the sum and of one run, not of all. `merger` stays
/// the caller's, who asks it for the busiest runs afterwards.
StoredRun AddRuns(const MergeOptions& options, RunMerger& merger) {
  StoredRun merged;
  // Counted up below: a merged database that is merged again brings all of its runs.
  merged.facts.runs = 0;
  for (const std::string& path : options.runs) {
    ExactInput input;
    input.input = options.exact.input;
    input.input.dump = path;
    StoredRun run = ReadExactRun(input);
    merged.facts.runs += run.facts.runs;
    try {
      // The merger knows no files; what it refuses needs the name of the run that it refused.
      merger.Add(std::move(run.exact), NameOf(input.input));
    } catch (const Failure& failure) {
      throw Failure(failure.kind(), NameOf(input.input) + ": " + failure.what());
    }
  }
  SayLacking(merger);
  merged.facts.dump = std::to_string(merged.facts.runs) + " runs";
  merged.facts.program = KESNCD_VERSION;
  // Hosts count value changes of one dump; a sum of them belongs to no dump.
  merged.facts.hasHost = false;
  merged.exact = merger.Finish();
  // Sums of dumps that declare only reals and events, say.
  if (merged.exact.declarations.variables.empty()) {
    throw Failure(FailureKind::Unusable, "the runs have no signal with bits");
  }
  return merged;
}

/// Which of the two operations it is, is told by the first file before anything is read.
ExitStatus RunMerge(const MergeOptions& options) {
  const std::optional<std::string> dump = DumpOfPart(options.runs.front());
  const bool areParts = dump.has_value();
  std::vector<std::string> inputs = options.runs;
  inputs.push_back(options.dump);
  // A merge reads of it what no part could read by itself.
  if (areParts && options.dump.empty()) inputs.push_back(*dump);
  CheckExactPlaces(inputs, options.exact);
  RunMerger merger;
  if (areParts && options.byRun) {
    throw Failure(FailureKind::Unusable, "--by-run: these are parts of one run");
  }
  // A dump has no place in a sum of runs; ignoring the option would hide a mistake.
  if (!areParts && !options.dump.empty()) {
    throw Failure(FailureKind::Unusable, "--dump is for parts of a dump");
  }
  // Afterwards `merger` still knows the runs and, of each module, the busiest one: see WriteByRun.
  StoredRun merged = areParts ? AddParts(options.runs, options.dump) : AddRuns(options, merger);
  if (options.exact.format == ExactFormat::Db) {
    WriteDatabaseFile(merged, options.exact.output.path);
    return ExitStatus::Done;
  }
  // Results call the sum "3 runs", there being no dump to name.
  ExactRun run;
  run.dump = run.origin = merged.facts.dump;
  run.result = std::move(merged.exact);
  if (options.exact.HasRows()) SayWhyNoRates(run.result, run.dump);
  return options.byRun ? WriteByRun(merger, run, options)
                       : WriteExact(std::move(run), options.exact);
}

/// `options.exact.format` is set by this, so RunMerge may rely on it.
void CheckMergeOptions(MergeOptions& options) {
  if (options.runs.empty()) throw Failure(FailureKind::Unusable, "no runs to merge");
  if (std::count(options.runs.begin(), options.runs.end(), "-") > 1) {
    throw Failure(FailureKind::Unusable, "standard input can be one run only");
  }
  CheckExactOptions(options.exact);
  // It has columns of its own, so all that shapes other rows or files is refused.
  const bool isRows = options.exact.HasRows() && options.exact.netlist.empty();
  if (options.byRun && (!isRows || !options.exact.scope.empty())) {
    throw Failure(FailureKind::Unusable, "--by-run has rows of its own: --format table, csv, json");
  }
}

}  // namespace

void AddMergeCommand(CommandLine& line) {
  Command& command = line.Add("merge", kMergeHelp);
  const auto options = std::make_shared<MergeOptions>();
  command.AddFileOperands("RUN", options->runs, "dumps, or databases of them");
  AddQuietOption(command, options->exact.input);
  AddJobsOption(command, options->exact.input);
  command.AddFile("--dump", "FILE", options->dump,
                  "where the dump of the parts is now, if it was moved");
  command.AddFlag("--by-run", options->byRun, "for each module the run in which it toggles most");
  AddExactChoices(command, options->exact);
  AddEstimatorOptions(command, options->exact);
  command.check = [options] { CheckMergeOptions(*options); };
  command.run = [options] { return RunMerge(*options); };
}

}  // namespace orsa::kesncd::cli
