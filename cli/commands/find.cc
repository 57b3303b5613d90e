// kesncd find: frequencies of signals by their names.
#include <memory>

#include "cli/commands/commands.h"
#include "cli/host_figures/host_runs.h"
#include "cli/input/list_file.h"
#include "cli/selection/selection.h"
#include "names/name_index.h"
#include "names/name_match.h"
#include "names/scope_search.h"
#include "names/signal_search.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

struct FindOptions {
  FigureOptions figures;
  std::vector<std::string> names;
  std::string namesFrom;
  std::string module;
  bool ignoreCase = false;
  SelectionOptions selection;
  OutputOptions output;
};

constexpr char kFindHelp[] =
    "Frequencies of signals by their names\n"
    "\n"
    "Examples:\n"
    "  kesncd find sim.vcd u1/q cnt_3_ data_5_\n"
    "  kesncd find sim.vcd --module soc --names-from nets.txt --format csv\n"
    "\n"
    "A name may be a path (tb/soc/q), the end of one (soc/q) or a bare name. Its last part may be\n"
    "the dump's own name, a design's (u1/q is also the dump's u1_q, cnt_3_ is cnt[3] or a bit of\n"
    "cnt[7:0]) or one that kesncd flat prints. Scopes that share a signal are one answer, the\n"
    "outermost; where a name means different signals, all are given and marked ambiguous. With\n"
    "--module only that module and what is below it are searched. Under --as-is the first match\n"
    "of a host counts: NAME of --module is what its root must be called for the root's own "
    "signals\n"
    "to take part.\n";

/// Rows of the answers, and how many names had one.
class FindRows {
 public:
  FindRows(const Figures& figures, const SelectionOptions& options, ResultOutput& out)
      : figures_(figures), filter_(options.match), selected_(options, out) {}

  void Append(const std::string& name, const std::vector<std::uint32_t>& variables) {
    if (variables.empty()) {
      if (filter_.Takes("", name)) {
        selected_.Add({name, {}, {}}, {name, Cell(), Cell(), Cell(), std::string("not found")});
      }
      return;
    }
    ++found_;
    const char* const status = variables.size() > 1 ? "ambiguous" : "found";
    for (const std::uint32_t index : variables) {
      const DumpVariable& variable = figures_.run.declarations.variables[index];
      const std::string scope = RowPath(figures_.run.declarations, variable.scope);
      if (!filter_.Takes(scope, variable.name)) continue;
      const Cell frequency = figures_.FrequencyOf(variable);
      const double* const known = ValueIn(frequency);
      selected_.Add({name, static_cast<double>(figures_.run.ChangesOf(variable)),
                     known == nullptr ? std::nullopt : std::optional(*known)},
                    {name, scope, variable.name, frequency, std::string(status)});
    }
  }

  std::int64_t found() const { return found_; }
  void Finish() { selected_.Finish(); }

 private:
  const Figures& figures_;
  const PathFilter filter_;
  SelectedRows selected_;
  std::int64_t found_ = 0;
};

void FindDirectly(const Figures& figures, const FindOptions& options,
                  const std::vector<std::string>& names, FindRows& rows) {
  const std::uint32_t top =
      options.module.empty() ? Declarations::kDump : ChosenScope(figures, options.module);
  const SignalSearch search(figures.run.declarations, top, !options.ignoreCase, names);
  for (std::size_t i = 0; i < names.size(); ++i) {
    const SignalAnswer& answer = search.Answer(i);
    rows.Append(names[i], answer.variables);
    if (answer.more == 0) continue;
    Remark(figures.dump, names[i] + ": " + std::to_string(answer.more) + " further matches");
  }
}

/// As a host's tree answers: the first match counts. The root's own signals take part where its
/// name is the module's, those below it where their scope's name can mean itself.
void FindAsHost(const Figures& figures, const FindOptions& options,
                const std::vector<std::string>& names, FindRows& rows) {
  const Declarations& declarations = figures.run.declarations;
  const bool exact = !options.ignoreCase;
  std::vector<std::string_view> signals;
  std::vector<std::uint32_t> variables;
  std::size_t ofRoot = 0;
  const std::uint32_t root = declarations.scopes[Declarations::kDump].scopes.front();
  for (const std::uint32_t scope : ScopesInOrder(declarations, root)) {
    const std::string& name = declarations.scopes[scope].name;
    if (scope != root && !NamesMatch(name, name, exact)) continue;
    for (const std::uint32_t variable : declarations.scopes[scope].variables) {
      signals.push_back(declarations.variables[variable].name);
      variables.push_back(variable);
    }
    if (scope == root) ofRoot = signals.size();
  }
  const NameIndex index(signals, ofRoot, exact, {names.begin(), names.end()});
  const std::string& rootName = declarations.scopes[root].name;
  const bool withRoot =
      NamesMatch(rootName, options.module.empty() ? rootName : options.module, exact);
  for (const std::string& name : names) {
    const NameIndex::Place place = index.Find(name, withRoot);
    if (place == NameIndex::kNowhere) {
      rows.Append(name, {});
    } else {
      rows.Append(name, {variables[place]});
    }
  }
}

ExitStatus RunFind(const FindOptions& options) {
  CheckOutputs({options.figures.input.dump, options.namesFrom}, {options.output.path});
  std::vector<std::string> names = options.names;
  if (!options.namesFrom.empty()) {
    for (std::string& name : ReadNames(options.namesFrom)) names.push_back(std::move(name));
  }
  if (names.empty()) throw Failure(FailureKind::Unusable, "no names to find");
  const Figures figures = ReadFigures(options.figures);
  ResultOutput out(options.output, {RunFacts(figures, options.module),
                                    "names",
                                    {"name", "scope", "signal", "freq_mhz", "status"}});
  FindRows rows(figures, options.selection, out);
  if (figures.isAsIs) {
    FindAsHost(figures, options, names, rows);
  } else {
    FindDirectly(figures, options, names, rows);
  }
  rows.Finish();
  out.End({{{"found", rows.found()}},
           {},
           std::to_string(rows.found()) + " of " + std::to_string(names.size()) + " found"});
  return rows.found() > 0 ? ExitStatus::Done : ExitStatus::NothingMatched;
}

}  // namespace

void AddFindCommand(CommandLine& line) {
  Command& command = line.Add("find", kFindHelp);
  const auto options = std::make_shared<FindOptions>();
  AddFigureOptions(command, options->figures);
  command.AddOperands("NAME", options->names, "names of signals");
  command.AddFile("--names-from", "FILE", options->namesFrom, "find the names that FILE lists too");
  command.AddText("--module", "NAME", options->module,
                  "search only this module and below, a name or a path");
  command.AddFlag("--ignore-case", options->ignoreCase, "letter case makes no difference");
  AddSelectionOptions(command, options->selection);
  AddOutputOptions(command, options->output);
  command.check = [options] { CheckFigureOptions(options->figures); };
  command.run = [options] { return RunFind(*options); };
}

}  // namespace orsa::kesncd::cli
