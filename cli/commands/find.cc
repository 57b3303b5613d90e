// kesncd find: frequencies of signals by their names.
//
// For scripts that have a list of names from elsewhere (a netlist, a report) and want figures for
// them. A name need not be the dump's own: names/signal_search.h explains which readings there are
// and which goes first. One row an answer:
//
//   name      scope   signal    freq_mhz  status
//   cnt_3_    tb/soc  cnt[7:0]        50  found
//   q         tb/u1   q               10  ambiguous
//   q         tb/u2   q               20  ambiguous
//   nothing                            -  not found
#include <memory>

#include "cli/commands/commands.h"
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
  // From the command line, before those of the file.
  std::vector<std::string> names;
  // File with further names; empty for none.
  std::string namesFrom;
  // Search in it only; under --as-is what the root has to be called.
  std::string module;
  bool ignoreCase = false;
  // Applies to rows, not to names: --match takes answers by their paths.
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

/// Rows of the answers, and how many names had one. Calling order: Append for each name in the
/// user's order, then Finish.
class FindRows {
 public:
  FindRows(const Figures& figures, const SelectionOptions& options, ResultOutput& out)
      : figures_(figures), filter_(options.match), selected_(options, out) {}

  /// Writes the answers of one name: a row a variable, or one row that says "not found". Such a row
  /// has no scope; --match then sees the name alone.
  void Append(const std::string& name, const std::vector<std::uint32_t>& variables) {
    if (variables.empty()) {
      if (filter_.Takes("", name)) {
        selected_.Add({name, {}, {}}, {name, Cell(), Cell(), Cell(), std::string("not found")});
      }
      return;
    }
    // Counted before --match looks at the rows: the last line tells how many names the dump knows.
    ++found_;
    const char* const status = variables.size() > 1 ? "ambiguous" : "found";
    for (const std::uint32_t index : variables) {
      // The variables of one name have different identifier codes, so their figures may differ; the
      // user has to choose.
      const DumpVariable& variable = figures_.run.declarations.variables[index];
      const std::string scope = RowPath(figures_.run.declarations, variable.scope);
      if (!filter_.Takes(scope, variable.name)) continue;
      const Cell frequency = figures_.FrequencyOf(variable);
      const double* const known = ValueIn(frequency);
      // Sorted by toggles means by changes here: hosts count changes.
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

/// The names are looked up together: one walk over the declarations, however many names there are.
void FindDirectly(const Figures& figures, const FindOptions& options,
                  const std::vector<std::string>& names, FindRows& rows) {
  const std::uint32_t top =
      options.module.empty() ? Declarations::kDump : ChosenScope(figures, options.module);
  const SignalSearch search(figures.run.declarations, top, !options.ignoreCase, names);
  for (std::size_t i = 0; i < names.size(); ++i) {
    const SignalAnswer& answer = search.Answer(i);
    rows.Append(names[i], answer.variables);
    // Of a bare name such as "clk" a large design has thousands; 64 are kept (see SignalSearch).
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
  // The signals' names with the variable of each, in the order in which a host's tree meets them:
  // the root's own first, `ofRoot` of them.
  std::vector<std::string_view> signals;
  std::vector<std::uint32_t> variables;
  std::size_t ofRoot = 0;
  // A host's tree has one root, the first top-level scope; what is beside it cannot be reached.
  const std::uint32_t root = declarations.scopes[Declarations::kDump].scopes.front();
  for (const std::uint32_t scope : ScopesInOrder(declarations, root)) {
    const std::string& name = declarations.scopes[scope].name;
    // A scope whose name has a ':' without a range matches nothing, its own name included: a host
    // passes over its signals, but not over the scopes in it.
    if (scope != root && !NamesMatch(name, name, exact)) continue;
    for (const std::uint32_t variable : declarations.scopes[scope].variables) {
      signals.push_back(declarations.variables[variable].name);
      variables.push_back(variable);
    }
    if (scope == root) ofRoot = signals.size();
  }
  const NameIndex index(signals, ofRoot, exact, {names.begin(), names.end()});
  const std::string& rootName = declarations.scopes[root].name;
  // Without --module the root is asked for by its own name, which need not match itself either.
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

/// NothingMatched if no name was found; some missing names are no failure, their rows say so.
ExitStatus RunFind(const FindOptions& options) {
  CheckOutputs({options.figures.input.dump, options.namesFrom}, {options.output.path});
  std::vector<std::string> names = options.names;
  if (!options.namesFrom.empty()) {
    // Duplicates are kept: each line of the user's list gets its row.
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
