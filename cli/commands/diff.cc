// kesncd diff: signals and modules whose activity differs between two runs.
#include <memory>
#include <utility>

#include "activity/run_comparison.h"
#include "cli/commands/commands.h"
#include "cli/exact_figures/exact_input.h"
#include "cli/exact_figures/exact_rows.h"
#include "cli/selection/selection.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

struct DiffOptions {
  InputOptions before;
  std::string after;
  double threshold = 1;  // percent
  std::vector<std::string> match;
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

const char* KindText(RunDifference::Kind kind) {
  if (kind == RunDifference::Kind::Appeared) return "appeared";
  return kind == RunDifference::Kind::Vanished ? "vanished" : "changed";
}

Cell CellOf(const std::optional<double>& value) {
  return value ? Cell(*value) : Cell();
}

StoredRun ReadRun(const DiffOptions& options, const std::string& path) {
  ExactInput input;
  input.input = options.before;
  input.input.dump = path;
  return ReadExactRun(input);
}

bool Takes(const PathFilter& filter, const RunDifference& row, const StoredRun& run) {
  if (filter.IsOpen()) return true;
  const Declarations& declarations = run.exact.declarations;
  if (row.isModule) {
    const DumpScope& scope = declarations.scopes[row.id];
    return filter.Takes(declarations.PathOf(scope.parent), scope.name);
  }
  const DumpVariable& variable = declarations.variables[row.id];
  return TakesSignal(filter, declarations.PathOf(variable.scope), variable);
}

ExitStatus RunDiff(const DiffOptions& options) {
  CheckOutputs({options.before.dump, options.after}, {options.output.path});
  const StoredRun before = ReadRun(options, options.before.dump);
  const StoredRun after = ReadRun(options, options.after);
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
  const bool hasTick = before.exact.tick.has_value();
  std::uint64_t differing = 0;
  for (const RunDifference& row : comparison.differences) {
    const bool isNew = row.kind == RunDifference::Kind::Appeared;
    if (!Takes(filter, row, isNew ? after : before)) continue;
    if (differing++ >= options.limit) continue;
    const auto rate = [&](const std::optional<double>& toggles) {
      return hasTick ? CellOf(toggles) : Cell();
    };
    out.Add({PathOf(row, before.exact, after.exact), row.isModule ? "module" : "signal",
             KindText(row.kind), 100 * row.share, rate(row.before.toggles), rate(row.after.toggles),
             CellOf(row.before.high), CellOf(row.after.high)});
  }
  out.End({{{"differing", count(differing)}},
           {},
           std::to_string(differing) + " of " +
               std::to_string(comparison.signals + comparison.modules) +
               " signals and modules differ"});
  return differing == 0 ? ExitStatus::Done : ExitStatus::Findings;
}

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
