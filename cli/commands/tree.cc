// kesncd tree: the module tree with its activity.
//
// The way to find out where activity is, from the top down. A row a module, with two groups of
// columns: what the module declares itself, and what it and everything below it declare together:
//
//   path    kind    signals  changes  ...  tree_signals  tree_changes  ...
//   tb      module        3      400                120         90000
//   tb/soc  module       20     8000                117         89600
//
// A signal counts once in each group however many names it has there, so a tree's sums are less
// than the sums of its rows where a port and the net on it share an identifier code.
#include <limits>
#include <memory>

#include "activity/module_totals.h"
#include "cli/commands/commands.h"
#include "cli/host_figures/figures.h"
#include "cli/selection/selection.h"

namespace orsa::kesncd::cli {

namespace {

struct TreeOptions {
  FigureOptions figures;
  // Scope to start at; empty: all top-level scopes with variables.
  std::string top;
  // Levels below the start.
  int depth = std::numeric_limits<int>::max();
  // Rows of signals after each module's.
  bool signals = false;
  SelectionOptions selection;
  OutputOptions output;
};

constexpr char kTreeHelp[] =
    "The module tree: signals, changes and frequencies of each module and of all below it\n"
    "\n"
    "Examples:\n"
    "  kesncd tree sim.vcd\n"
    "  kesncd tree sim.vcd --top soc --depth 1     soc and the modules directly in it\n"
    "  kesncd tree sim.vcd --signals --format csv  with every signal\n"
    "\n"
    "The tree_ columns count a module together with everything below it. A signal that has "
    "several\n"
    "names in a module counts once there. Figures are a host's: changes count as it counts them.\n";

// Positions in a Row, in the order of ResultHead in RunTree: of what a signal or a module has
// itself, and of a module with all below it.
constexpr std::size_t kOwnChanges = 3;
constexpr std::size_t kOwnMean = 4;
constexpr std::size_t kTreeChanges = 7;
constexpr std::size_t kTreeMean = 8;

/// Rows of scopes, each before those in it. Calling order: construct, Write for each start, Finish.
/// Keeps references to its arguments.
class TreeRows {
 public:
  TreeRows(const Figures& figures, const TreeOptions& options, ResultOutput& out)
      : figures_(figures),
        declarations_(figures.run.declarations),
        options_(options),
        totals_(SumModules(figures.run)),
        filter_(options.selection.match),
        selected_(options.selection, out) {}

  void Finish() { selected_.Finish(); }

  /// Writes a scope and those below it, depth first and in the dump's order. No recursion: a
  /// hostile dump may nest scopes a million deep.
  void Write(std::uint32_t start) {
    struct Pending {
      std::uint32_t scope;
      int depth;
    };
    std::vector<Pending> pending{{start, 0}};
    while (!pending.empty()) {
      const Pending next = pending.back();
      pending.pop_back();
      WriteScope(next.scope);
      // The scope of all scopes is none of the dump's: only its own variables belong to it.
      if (next.depth >= options_.depth || next.scope == Declarations::kDump) continue;
      const auto& below = declarations_.scopes[next.scope].scopes;
      // Backwards onto the stack, so that the first child is taken off first.
      for (auto child = below.rbegin(); child != below.rend(); ++child) {
        // Scopes that hold no variables in themselves or below would be rows of zeros.
        if (declarations_.scopes[*child].populated) pending.push_back({*child, next.depth + 1});
      }
    }
  }

 private:
  /// Writes the row of a scope, then those of its signals if they are wanted.
  void WriteScope(std::uint32_t scope) {
    const std::string path = RowPath(declarations_, scope);
    Row row{path, std::string("module")};
    AppendTotal(totals_.own[scope], row);
    // For the variables outside every scope "tree" is the same as "own": their scope is the whole
    // dump, and its tree would repeat all rows.
    AppendTotal(scope == Declarations::kDump ? totals_.own[scope] : totals_.tree[scope], row);
    const std::string& name = declarations_.scopes[scope].name;
    // The path without the last part; a top-level scope has none.
    const std::string_view outer(path.data(), path.size() - std::min(path.size(), name.size() + 1));
    if (filter_.Takes(outer, name)) Add(row, kTreeChanges, kTreeMean);
    if (!options_.signals) return;
    for (const std::uint32_t index : declarations_.scopes[scope].variables) {
      WriteSignal(declarations_.variables[index], path);
    }
  }

  /// Writes a signal's row; the columns of modules stay empty in it. Mean and maximum are one here.
  void WriteSignal(const DumpVariable& variable, const std::string& path) {
    const Cell frequency = figures_.FrequencyOf(variable);
    if (!filter_.Takes(path, variable.name)) return;
    Add({path.empty() ? variable.name : path + "/" + variable.name, std::string("signal"), Cell(),
         std::int64_t{figures_.run.ChangesOf(variable)}, frequency, frequency, Cell(), Cell(),
         Cell(), Cell()},
        kOwnChanges, kOwnMean);
  }

  /// Rows are sorted by what those columns say. `changes` and `rate` are the positions of the two
  /// sorting columns.
  void Add(const Row& row, std::size_t changes, std::size_t rate) {
    const double* const known = ValueIn(row[rate]);
    selected_.Add({std::get<std::string>(row.front()),
                   static_cast<double>(std::get<std::int64_t>(row[changes])),
                   known == nullptr ? std::nullopt : std::optional(*known)},
                  row);
  }

  /// Appends four cells: signals, changes, mean and greatest frequency.
  void AppendTotal(const ModuleTotal& total, Row& row) const {
    row.emplace_back(static_cast<std::int64_t>(total.signals));
    row.emplace_back(static_cast<std::int64_t>(total.changes));
    // No signals have no mean, rather than one of 0 MHz.
    if (total.signals == 0) {
      row.resize(row.size() + 2);
      return;
    }
    row.push_back(Mean(total));
    row.push_back(figures_.Frequency(total.most));
  }

  /// Frequencies grow with the counted changes, so the mean is that of their mean.
  Cell Mean(const ModuleTotal& total) const {
    // Two changes are one counted change, since a signal's first is its initial value.
    const Cell one = figures_.Frequency(2);  // of a single counted change
    const double* const frequency = std::get_if<double>(&one);
    if (frequency == nullptr) return {};
    // `counted` leaves out each signal's first change; see ModuleTotal.
    return *frequency * static_cast<double>(total.counted) / static_cast<double>(total.signals);
  }

  const Figures& figures_;
  const Declarations& declarations_;
  const TreeOptions& options_;
  const ModuleTotals totals_;  // by scope, of the scope itself and of its tree
  const PathFilter filter_;
  SelectedRows selected_;
};

/// Where the tree starts: what the user named, else every top-level scope with variables.
std::vector<std::uint32_t> Starts(const Figures& figures, const std::string& top) {
  if (!top.empty()) return {ChosenScope(figures, top)};
  std::vector<std::uint32_t> starts;
  const auto& scopes = figures.run.declarations.scopes;
  // Variables outside every scope are a start of their own, the path of whose row is empty.
  if (!scopes[Declarations::kDump].variables.empty()) starts.push_back(Declarations::kDump);
  for (const std::uint32_t scope : scopes[Declarations::kDump].scopes) {
    if (scopes[scope].populated) starts.push_back(scope);
  }
  return starts;
}

ExitStatus RunTree(const TreeOptions& options) {
  CheckOutputs({options.figures.input.dump}, {options.output.path});
  const Figures figures = ReadFigures(options.figures);
  const std::vector<std::uint32_t> starts = Starts(figures, options.top);
  const ResultHead head{
      RunFacts(figures, options.top),
      "scopes",
      // The order that kOwnChanges and the other positions count in.
      {"path", "kind", "signals", "changes", "mean_freq_mhz", "max_freq_mhz", "tree_signals",
       "tree_changes", "tree_mean_freq_mhz", "tree_max_freq_mhz"}};
  ResultOutput out(options.output, head);
  TreeRows rows(figures, options, out);
  for (const std::uint32_t start : starts) rows.Write(start);
  rows.Finish();
  out.End();
  // --limit 0 asks for a result without rows, which is no failure.
  if (out.rows() > 0 || options.selection.limit == 0) return ExitStatus::Done;
  Say(figures.dump, "no module was selected");
  return ExitStatus::NothingMatched;
}

}  // namespace

void AddTreeCommand(CommandLine& line) {
  Command& command = line.Add("tree", kTreeHelp);
  const auto options = std::make_shared<TreeOptions>();
  AddFigureOptions(command, options->figures);
  command.AddText("--top", "NAME", options->top, "start at this scope, a name or a path");
  command.AddCount("--depth", "N", {0}, options->depth, "levels below the start to show")
      .Initially("all");
  command.AddFlag("--signals", options->signals, "show the signals too");
  AddSelectionOptions(command, options->selection);
  AddOutputOptions(command, options->output);
  command.check = [options] { CheckFigureOptions(options->figures); };
  command.run = [options] { return RunTree(*options); };
}

}  // namespace orsa::kesncd::cli
