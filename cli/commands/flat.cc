// kesncd flat: the toggle frequencies of one module.
//
// The library's classic result, for a power estimator that knows one module's nets: every signal of
// the module with its frequency by the hosts' counting rule, buses bit by bit ("data_0"). Three
// ways lead there: counting directly (usual), the library's line reader on the untouched dump
// (--as-is), and the library's grammar reader (--reader grammar). All write through FlatRows.
#include <memory>
#include <optional>
#include <set>
#include <variant>

#include "cli/commands/commands.h"
#include "cli/host_figures/activity_output.h"
#include "cli/host_figures/grammar_run.h"
#include "cli/host_figures/host_runs.h"
#include "cli/input/list_file.h"
#include "cli/selection/selection.h"
#include "names/flat_map.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

/// Lines: counted directly, or by the library's line reader under --as-is. Grammar: by the
/// library's second reader, which keeps names as they are declared.
enum class Reader { Lines, Grammar };

struct FlatOptions {
  FigureOptions figures;
  // The module; empty: the outermost that declares variables.
  std::string top;
  // --signal, as often as given.
  std::vector<std::string> signals;
  // File of further ones.
  std::string signalsFrom;
  Reader reader = Reader::Lines;
  std::optional<std::string> activity;  // empty: beside the dump
  SelectionOptions selection;
  OutputOptions output;

  // The whole list is read when it is needed, not while the line is parsed.
  bool IsSelective() const { return !signals.empty() || !signalsFrom.empty(); }
  std::vector<std::string> Selected() const {
    std::vector<std::string> names = signals;
    if (signalsFrom.empty()) return names;
    for (std::string& name : ReadNames(signalsFrom)) names.push_back(std::move(name));
    return names;
  }
};

constexpr char kFlatHelp[] =
    "Toggle frequencies of the signals declared in one module\n"
    "\n"
    "Examples:\n"
    "  kesncd flat sim.vcd                          all signals of the outermost module\n"
    "  kesncd flat sim.vcd --top tb/soc             all signals of that module\n"
    "  kesncd flat sim.vcd --top soc --signal clk   clk alone\n"
    "  kesncd flat sim.vcd --format csv -o soc.csv\n"
    "  kesncd flat sim.vcd --activity               also writes sim.vcd.txt\n"
    "  simulator | kesncd flat - --activity=soc.txt\n"
    "\n"
    "A bus is listed bit by bit, data_0 to data_7, each with the frequency of the bus as a host\n"
    "has it (kesncd activity gives each bit its own). The activity file is the one that hosts of\n"
    "the library read. Under --as-is --signal selects as a host does: names with an index are\n"
    "always taken.\n";

/// The columns of all three ways, so that scripts need not know which was taken.
ResultHead FlatHead(Facts facts) {
  return {std::move(facts), "signals", {"signal", "freq_mhz"}};
}

/// The rows of a module that the user wants. Calling order: Add for each signal, then Finish.
class FlatRows {
 public:
  FlatRows(const SelectionOptions& options, std::string module, ResultOutput& out)
      : module_(std::move(module)), filter_(options.match), selected_(options, out) {}

  /// `frequency` may be a cell of which nothing is known; such rows are sorted last.
  void Add(const std::string& name, const Cell& frequency) {
    if (!filter_.Takes(module_, name)) return;
    const double* const known = ValueIn(frequency);
    const std::optional<double> rate = known == nullptr ? std::nullopt : std::optional(*known);
    selected_.Add({name, rate, rate}, {name, frequency});  // toggles are in proportion to it
  }
  void Finish() { selected_.Finish(); }

 private:
  const std::string module_;  // its path
  const PathFilter filter_;
  SelectedRows selected_;
};

/// Ends the result. An empty one is written all the same (CSV has its heading), with a message and
/// status 1.
ExitStatus EndFlat(const std::string& dump, const std::string& top, ResultOutput& out) {
  if (out.rows() == 0) Say(dump, "no signal of " + top + " was selected");
  out.End();
  return out.rows() == 0 ? ExitStatus::NothingMatched : ExitStatus::Done;
}

/// Writes the signals of a module as they are declared. Not bit by bit and not under design-style
/// names: hosts read this file by the dump's own names.
void SaveActivity(const Figures& figures, std::uint32_t scope, const FlatOptions& options) {
  const Declarations& declarations = figures.run.declarations;
  ActivityText text(declarations.scopes[scope].name);
  for (const std::uint32_t index : declarations.scopes[scope].variables) {
    const Cell frequency = figures.FrequencyOf(declarations.variables[index]);
    // The file has no word for "unknown"; hosts write 0 there.
    const double* const known = std::get_if<double>(&frequency);
    text.Add(declarations.variables[index].name, known == nullptr ? 0.0 : *known);
  }
  text.Save(ActivityPath(*options.activity, options.figures.input.dump));
}

/// Counts the dump directly. Names that the module does not have are said, each, since a misspelt
/// --signal would otherwise look like a signal that was left out.
ExitStatus FlatDirectly(const FlatOptions& options) {
  const std::vector<std::string> selected = options.Selected();
  const Figures figures = ReadFigures(options.figures);
  const Declarations& declarations = figures.run.declarations;
  const std::uint32_t scope = ChosenScope(figures, options.top);
  const std::string top = ScopeName(declarations, scope);
  SayProposedTop(figures, options.top, scope);
  // Without a choice all signals of the module; the map then has nothing missing.
  const FlatMap map =
      options.IsSelective() ? FlatMap(declarations, scope, selected) : FlatMap(declarations, scope);
  for (const std::string& name : map.Missing()) {
    Remark(figures.dump, std::string(top).append(" has no signal ").append(name));
  }
  // A hostile range stands for more names than memory holds; refused before the walk, in a host's
  // own words.
  if (map.RangeNames() > kMostFlatNames) {
    throw Failure(FailureKind::Unusable, figures.dump + ": ERROR: Too many bus bits.");
  }
  // Before the rows: if the file cannot be written, no result claims that the run went well.
  if (options.activity) SaveActivity(figures, scope, options);
  ResultOutput out(options.output, FlatHead(RunFacts(figures, declarations.PathOf(scope))));
  FlatRows rows(options.selection, declarations.PathOf(scope), out);
  map.Walk([&](const std::string& name, std::uint32_t variable) {
    rows.Add(name, figures.FrequencyOf(declarations.variables[variable]));
  });
  rows.Finish();
  return EndFlat(figures.dump, top, out);
}

/// The same from the library's exported module after a run of its own.
void SaveHostActivity(const FlatOptions& options) {
  using orsa::kesncd::topMod;
  ActivityText text(topMod.GetName());
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    text.Add(topMod.GetSignalName(i), topMod.GetSignalFreq(i));
  }
  text.Save(ActivityPath(*options.activity, options.figures.input.dump));
}

/// The library's flat run on the untouched dump, with whatever its line reader makes of it. Its
/// selection takes names with an index always, which the help says.
ExitStatus FlatAsHost(const FlatOptions& options) {
  DumpInput input(options.figures.input);
  // A host has to name a module, so --as-is proposes one as the direct way does.
  const std::string top = options.top.empty() ? input.ProposedTop() : options.top;
  if (options.top.empty()) {
    Remark(input.name(), "top module is " + top + "; --top chooses another");
  }
  const std::vector<std::string> selected = options.Selected();
  orsa::kesncd::KesNCD analyser;
  ReadFlat(analyser, input,
           options.IsSelective() ? std::set<std::string>(selected.begin(), selected.end())
                                 : AllNames(input),
           top);
  if (options.activity) SaveHostActivity(options);
  SayWhyZero(input);
  ResultOutput out(options.output, FlatHead(HostFacts(input, top)));
  FlatRows rows(options.selection, top, out);
  for (const auto& [name, frequency] : analyser.signalFreqs) rows.Add(name, frequency);
  rows.Finish();
  return EndFlat(input.name(), top, out);
}

/// The grammar reader knows no selection and keeps names as they are declared. Prepared unless
/// --as-is: the grammar takes only little of what simulators write. Frequencies come from topMod in
/// declaration order, a bus as one signal.
ExitStatus RunGrammar(const FlatOptions& options) {
  const InputOptions& dump = options.figures.input;
  // All that needs the result happens in the closure, inside the child process that holds topMod;
  // see RunGrammarReader.
  DumpInput input(dump, dump.asIs ? Passing::AsIs : Passing::Prepared);
  const std::string top = options.top.empty() ? input.ProposedTop() : options.top;
  return RunGrammarReader(input, top, [&] {
    using orsa::kesncd::topMod;
    // The reader itself does not fail at a module that is not there.
    if (orsa::kesncd::isTopModNameEverMatched == 0) {
      throw RunFailure(input, "the top module " + top + " is not in it");
    }
    if (options.activity) SaveHostActivity(options);
    SayWhyZero(input);
    ResultOutput out(options.output, FlatHead(HostFacts(input, top)));
    FlatRows rows(options.selection, top, out);
    for (int i = 0; i < topMod.GetSignalSize(); ++i) {
      rows.Add(topMod.GetSignalName(i), topMod.GetSignalFreq(i));
    }
    rows.Finish();
    return EndFlat(input.name(), top, out);
  });
}

/// Before a run that may take long: an output must not end the input, or a file of the user's.
/// --activity without a FILE goes beside the dump, whose name a user may have other plans for: what
/// is there and is no activity file is left alone.
void CheckFlatPlaces(const FlatOptions& options) {
  std::vector<std::string> outputs{options.output.path};
  if (options.activity) {
    outputs.push_back(ActivityPath(*options.activity, options.figures.input.dump));
  }
  CheckOutputs({options.figures.input.dump, options.signalsFrom}, outputs);
  if (options.activity) RequireActivityFile(outputs.back());
}

ExitStatus RunFlat(const FlatOptions& options) {
  CheckFlatPlaces(options);
  if (options.reader == Reader::Grammar) return RunGrammar(options);
  return options.figures.input.asIs ? FlatAsHost(options) : FlatDirectly(options);
}

/// What the grammar reader cannot do is refused, not ignored.
void CheckFlatOptions(const FlatOptions& options) {
  CheckFigureOptions(options.figures);
  if (options.reader != Reader::Grammar) return;
  if (options.figures.window.begin || options.figures.window.end || options.IsSelective()) {
    throw Failure(FailureKind::Unusable,
                  "--reader grammar reads the whole dump and every signal of the module");
  }
}

}  // namespace

void AddFlatCommand(CommandLine& line) {
  Command& command = line.Add("flat", kFlatHelp);
  const auto options = std::make_shared<FlatOptions>();
  AddFigureOptions(command, options->figures);
  command.AddText("--top", "NAME", options->top,
                  "module whose signals are taken, a name or a path");
  command.AddTexts("--signal", "NAME", options->signals, "take this signal (again for more)");
  command.AddFile("--signals-from", "FILE", options->signalsFrom,
                  "take the signals that FILE lists");
  command.AddChoice("--reader", {{"lines", Reader::Lines}, {"grammar", Reader::Grammar}},
                    options->reader, "which reader reads it; grammar: all signals, as declared");
  command.AddOptionalFile("--activity", "FILE", options->activity,
                          "write the activity to FILE, or to DUMP.txt");
  AddSelectionOptions(command, options->selection);
  AddOutputOptions(command, options->output);
  command.check = [options] { CheckFlatOptions(*options); };
  command.run = [options] { return RunFlat(*options); };
}

}  // namespace orsa::kesncd::cli
