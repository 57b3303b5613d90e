// kesncd tree: the module tree with its activity.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <unordered_map>

#include "cli/commands/commands.h"
#include "cli/commands/name_search.h"
#include "cli/commands/tree_path.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

namespace {

using orsa::kesncd::VmodHier;

struct TreeOptions {
  InputOptions input;
  std::string top;
  int depth = std::numeric_limits<int>::max();
  bool signals = false;
  OutputOptions output;
};

constexpr char kHelp[] =
    "The module tree: signals, changes and frequencies of each module and of all below it\n"
    "\n"
    "Examples:\n"
    "  kesncd tree sim.vcd\n"
    "  kesncd tree sim.vcd --top soc --depth 1     soc and the modules directly in it\n"
    "  kesncd tree sim.vcd --signals --format csv  with every signal\n"
    "\n"
    "The tree_ columns count a module together with everything below it.\n";

/// Activity of one module, or of a module with all below it.
struct Activity {
  std::int64_t signals = 0;
  std::int64_t changes = 0;
  double sum = 0.0;
  double highest = 0.0;

  void Add(std::int64_t moreChanges, double frequency) {
    highest = signals == 0 ? frequency : std::max(highest, frequency);
    ++signals;
    changes += moreChanges;
    sum += frequency;
  }
  void Add(const Activity& other) {
    if (other.signals == 0) return;
    highest = signals == 0 ? other.highest : std::max(highest, other.highest);
    signals += other.signals;
    changes += other.changes;
    sum += other.sum;
  }
  void AppendTo(std::vector<Cell>& row) const {
    row.emplace_back(signals);
    row.emplace_back(changes);
    row.push_back(signals > 0 ? Cell(sum / static_cast<double>(signals)) : Cell());
    row.push_back(signals > 0 ? Cell(highest) : Cell());
  }
};

using Totals = std::unordered_map<const VmodHier*, Activity>;

Activity OwnActivity(const VmodHier& scope) {
  Activity own;
  for (const auto& [code, signal] : scope.signals) own.Add(signal.changes, FrequencyOf(signal));
  return own;
}

/// Activity of each scope with all below it, summed from the leaves up.
Totals SumUp(const VmodHier& start) {
  std::vector<const VmodHier*> scopes;
  WalkScopes(
      start,
      [&scopes](const VmodHier& scope, int) {
        scopes.push_back(&scope);
        return false;
      },
      [](const VmodHier&, int) { return true; });
  Totals totals;
  for (auto scope = scopes.rbegin(); scope != scopes.rend(); ++scope) {
    Activity& total = totals[*scope];
    total.Add(OwnActivity(**scope));
    for (const VmodHier* child : (*scope)->subMods) total.Add(totals[child]);
  }
  return totals;
}

void AppendSignals(const VmodHier& scope, const std::string& path, Report& report) {
  for (const auto& [code, signal] : scope.signals) {
    const double frequency = FrequencyOf(signal);
    report.rows.push_back({path + "/" + signal.name, "signal", Cell(), std::int64_t{signal.changes},
                           frequency, frequency, Cell(), Cell(), Cell(), Cell()});
  }
}

void AppendScopes(const VmodHier& start, const TreeOptions& options, const std::string& addedRoot,
                  Report& report) {
  const Totals totals = SumUp(start);
  WalkScopes(
      start,
      [&](const VmodHier& scope, int) {
        const std::string path = PathOf(scope, addedRoot);
        std::vector<Cell> row{path, "module"};
        OwnActivity(scope).AppendTo(row);
        totals.at(&scope).AppendTo(row);
        report.rows.push_back(std::move(row));
        if (options.signals) AppendSignals(scope, path, report);
        return false;
      },
      [&options](const VmodHier&, int depth) { return depth < options.depth; });
}

/// The scopes that the user named, by name or by path; the outermost when none was named.
std::vector<const VmodHier*> Starts(const VmodHier& root, const std::string& top,
                                    const std::string& addedRoot) {
  if (top.empty() && (root.name != addedRoot || !root.signals.empty())) return {&root};
  if (top.empty()) return {root.subMods.begin(), root.subMods.end()};
  std::vector<const VmodHier*> starts;
  const bool isPath = top.find('/') != std::string::npos;
  const auto isStart = [&](const VmodHier& scope) {
    return scope.name == top || (isPath && PathOf(scope, addedRoot) == top);
  };
  WalkScopes(
      root,
      [&](const VmodHier& scope, int) {
        if (isStart(scope)) starts.push_back(&scope);
        return false;
      },
      [&](const VmodHier& scope, int) { return !isStart(scope); });
  return starts;
}

ExitStatus Run(const TreeOptions& options) {
  DumpInput input(options.input);
  orsa::kesncd::KesNCD analyser;
  ReadTree(analyser, input);
  const std::string addedRoot = input.AddedRoot();
  Report report{RunFacts(input.name(), options.top),
                "scopes",
                {"path", "kind", "signals", "changes", "mean_freq_mhz", "max_freq_mhz",
                 "tree_signals", "tree_changes", "tree_mean_freq_mhz", "tree_max_freq_mhz"},
                {},
                ""};
  for (const VmodHier* start : Starts(*analyser.hierRoot, options.top, addedRoot)) {
    AppendScopes(*start, options, addedRoot, report);
  }
  WriteReport(report, options.output);
  if (!report.rows.empty()) return ExitStatus::Done;
  Say(input.name(), "no scope " + options.top + " can be reached from the root");
  return ExitStatus::NothingMatched;
}

}  // namespace

void AddTreeCommand(CommandLine& line) {
  Command& command = line.Add("tree", kHelp);
  const auto options = std::make_shared<TreeOptions>();
  AddInputOptions(command, options->input);
  command.AddText("--top", "NAME", options->top, "start at this scope, a name or a path");
  command.AddCount("--depth", "N", {0}, options->depth, "levels below the start to show")
      .Initially("all");
  command.AddFlag("--signals", options->signals, "show the signals too");
  AddOutputOptions(command, options->output);
  command.run = [options] { return Run(*options); };
}

}  // namespace orsa::kesncd::cli
