// kesncd diff: signals and modules whose activity differs between two runs.
//
// The usual question of a regression: did this change of the design make anything switch more, or
// stop a block altogether? Both sides may be dumps or databases of them; keeping yesterday's
// database (1 MB, say) is cheaper than keeping its dump (1 GB).
#include <memory>

#include "activity/run_comparison.h"
#include "cli/commands/commands.h"
#include "cli/exact_figures/exact_input.h"
#include "cli/exact_figures/exact_rows.h"
#include "cli/selection/selection.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

struct DiffOptions {
  // Read with the options of `before`, such as --jobs.
  InputOptions before;
  std::string after;
  double threshold = 1;  // percent
  // Only paths that one of these patterns takes; none: all.
  std::vector<std::string> match;
  // Rows shown; the count of differing ones does not depend on it.
  std::uint64_t limit = UINT64_MAX;
  OutputOptions output;
};

constexpr char kDiffHelp[] =
    "What differs between two runs: signals and modules whose toggle rate or duty changed\n"
    "\n"
    "Examples:\n"
    "  kesncd diff yesterday.kact today.vcd\n"
    "  kesncd diff a.vcd b.vcd --threshold 5 --limit 20 --format csv\n"
    "\n"
    "A row differs where its toggle rate or its share of time at 1 (duty) does by more than the\n"
    "threshold, of the larger value, or where only one run has it. First comes what lost or "
    "gained\n"
    "most toggles and is little else: a block that is held in reset stands before what is around\n"
    "it. The exit status is 1 where anything differs, 0 where nothing does.\n";

/// The word of the column "change", which scripts match: do not reword it.
const char* KindText(RunDifference::Kind kind) {
  if (kind == RunDifference::Kind::Appeared) return "appeared";
  return kind == RunDifference::Kind::Vanished ? "vanished" : "changed";
}

/// Not known becomes "-" in a table, an empty field in CSV and null in JSON.
Cell CellOf(const std::optional<double>& value) {
  return value ? Cell(*value) : Cell();
}

/// Reads one side. Whatever is told of --jobs and --quiet holds for both.
StoredRun ReadRun(const DiffOptions& options, const std::string& path) {
  ExactInput input;
  input.input = options.before;
  input.input.dump = path;
  StoredRun run = ReadExactRun(input);
  SayWhyNoRates(run.exact, NameOf(input.input));
  return run;
}

/// Whether --match wants the row. A signal is taken with or without its range ("data" takes
/// data[7:0]), a module by its own path.
bool Takes(const PathFilter& filter, const RunDifference& row, const StoredRun& run) {
  if (filter.IsOpen()) return true;
  const Declarations& declarations = run.exact.declarations;
  if (row.isModule) {
    // The path of the scope around the module: patterns see scope and name apart, since one without
    // "/" is for names in any scope.
    const DumpScope& scope = declarations.scopes[row.id];
    return filter.Takes(declarations.PathOf(scope.parent), scope.name);
  }
  const DumpVariable& variable = declarations.variables[row.id];
  return TakesSignal(filter, declarations.PathOf(variable.scope), variable);
}

/// Reads both runs, compares them and writes a row a difference, the gravest first:
///
///   path       kind      change   difference_percent  toggle_rate_before  toggle_rate_after  ...
///   tb/soc/u1  module    changed                 100                  50                  0  ...
///
/// Findings (status 1) where anything differs, so that a script can use the status alone.
ExitStatus RunDiff(const DiffOptions& options) {
  // One side may be standard input, neither may be the output.
  CheckOutputs({options.before.dump, options.after}, {options.output.path});
  const StoredRun before = ReadRun(options, options.before.dump);
  const StoredRun after = ReadRun(options, options.after);
  // A percentage for the user is a share of 1 for the comparison.
  const RunComparison comparison = CompareRuns(before.exact, after.exact, options.threshold / 100);
  const auto count = [](std::uint64_t number) { return static_cast<std::int64_t>(number); };
  ResultHead head{{{"before", before.facts.dump},
                   {"after", after.facts.dump},
                   {"threshold_percent", options.threshold},
                   {"signals", count(comparison.signals)},
                   {"modules", count(comparison.modules)}},
                  "differences",
                  {"path", "kind", "change", "difference_percent", "toggle_rate_before",
                   "toggle_rate_after", "high_before", "high_after"}};
  ResultOutput out(options.output, head);
  const PathFilter filter(options.match);
  // Without a tick rates are per tick and comparable with one another, but no toggles a
  // microsecond: then only the percentage is shown. (CompareRuns refuses two runs of which only one
  // has a tick.)
  const bool hasTick = before.exact.tick.has_value();
  std::uint64_t differing = 0;
  for (const RunDifference& row : comparison.differences) {
    // A row's id counts in the run that has it; what both have is an id of the run before.
    const bool isNew = row.kind == RunDifference::Kind::Appeared;
    if (!Takes(filter, row, isNew ? after : before)) continue;
    // Counted beyond the limit, so that the last line and the status tell all of it.
    if (differing++ >= options.limit) continue;
    const auto rate = [&](const std::optional<double>& toggles) {
      return hasTick ? CellOf(toggles) : Cell();
    };
    out.Add({PathOf(row, before.exact, after.exact), row.isModule ? "module" : "signal",
             KindText(row.kind), 100 * row.share, rate(row.before.toggles), rate(row.after.toggles),
             CellOf(row.before.high), CellOf(row.after.high)});
  }
  // "differing" in JSON, the sentence below a table.
  out.End({{{"differing", count(differing)}},
           {},
           std::to_string(differing) + " of " +
               std::to_string(comparison.signals + comparison.modules) +
               " signals and modules differ"});
  return differing == 0 ? ExitStatus::Done : ExitStatus::Findings;
}

/// A pipe can be read once. Two names of one file are no mistake: they compare as equal.
void CheckDiffOptions(const DiffOptions& options) {
  if (options.before.dump == "-" && options.after == "-") {
    throw Failure(FailureKind::Unusable, "standard input can be one of the two only");
  }
}

}  // namespace

void AddDiffCommand(CommandLine& line) {
  Command& command = line.Add("diff", kDiffHelp);
  const auto options = std::make_shared<DiffOptions>();
  command.AddFileOperand("BEFORE", options->before.dump, "a dump, or a database of one").Required();
  command.AddFileOperand("AFTER", options->after, "the one to compare with it").Required();
  AddQuietOption(command, options->before);
  AddJobsOption(command, options->before);
  // Percent of the larger of the two values; 0 shows every difference.
  command.AddNumber("--threshold", "PERCENT", 0, options->threshold,
                    "what differs by no more is left out");
  command.AddTexts("--match", "GLOB", options->match,
                   "only paths that a pattern matches (again for more), as in kesncd activity");
  command.AddCount("--limit", "N", {0}, options->limit, "so many rows at most").Initially("all");
  AddOutputOptions(command, options->output);
  command.check = [options] { CheckDiffOptions(*options); };
  command.run = [options] { return RunDiff(*options); };
}

}  // namespace orsa::kesncd::cli
