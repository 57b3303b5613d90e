// kesncd find: frequencies of signals by their names in the design.
#include <memory>

#include "cli/commands/commands.h"
#include "cli/commands/name_search.h"
#include "cli/commands/tree_path.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

namespace {

struct FindOptions {
  InputOptions input;
  std::vector<std::string> names;
  std::string namesFrom;
  std::string module;
  bool ignoreCase = false;
  OutputOptions output;
};

constexpr char kHelp[] =
    "Frequencies of signals by their names in the design\n"
    "\n"
    "Examples:\n"
    "  kesncd find sim.vcd u1/q cnt_3_ data_5_\n"
    "  kesncd find sim.vcd --module soc --names-from nets.txt --format csv\n"
    "\n"
    "A design's u1/q is the dump's u1_q, its cnt_3_ is cnt[3] or a bit of cnt[7:0]. The search\n"
    "starts at the root; the root's own signals take part when its name is NAME of --module\n"
    "(without --module they always do), all scopes below it do in any case.\n";

/// A name with where it was found, under which name and with which frequency.
std::vector<Cell> RowOf(const std::string& name, const FoundSignal& found,
                        const std::string& addedRoot) {
  if (found.signal == nullptr) return {name, "not found", Cell(), Cell()};
  return {name, PathOf(*found.scope, addedRoot), found.signal->name, FrequencyOf(*found.signal)};
}

ExitStatus Run(const FindOptions& options) {
  std::vector<std::string> names = options.names;
  if (!options.namesFrom.empty()) {
    for (std::string& name : ReadNames(options.namesFrom)) names.push_back(std::move(name));
  }
  if (names.empty()) throw Failure(FailureKind::Unusable, "no names to find");
  DumpInput input(options.input);
  orsa::kesncd::KesNCD analyser;
  ReadTree(analyser, input);
  const std::string addedRoot = input.AddedRoot();
  Report report{RunFacts(input.name(), options.module),
                "names",
                {"name", "scope", "signal", "freq_mhz"},
                {},
                ""};
  const orsa::kesncd::VmodHier& root = *analyser.hierRoot;
  const NameSearch search(root, options.module.empty() ? root.name : options.module,
                          !options.ignoreCase, names);
  std::int64_t found = 0;
  for (const std::string& name : names) {
    const FoundSignal hit = search.Find(name);
    report.rows.push_back(RowOf(name, hit, addedRoot));
    if (hit.signal != nullptr) ++found;
  }
  report.facts.emplace_back("found", found);
  report.lastLine = std::to_string(found) + " of " + std::to_string(names.size()) + " found";
  WriteReport(report, options.output);
  return found > 0 ? ExitStatus::Done : ExitStatus::NothingMatched;
}

}  // namespace

void AddFindCommand(CommandLine& line) {
  Command& command = line.Add("find", kHelp);
  const auto options = std::make_shared<FindOptions>();
  AddInputOptions(command, options->input);
  command.AddOperands("NAME", options->names, "names in the design");
  command.AddFile("--names-from", "FILE", options->namesFrom, "find the names that FILE lists too");
  command.AddText("--module", "NAME", options->module, "module name asked of the root");
  command.AddFlag("--ignore-case", options->ignoreCase, "letter case makes no difference");
  AddOutputOptions(command, options->output);
  command.run = [options] { return Run(*options); };
}

}  // namespace orsa::kesncd::cli
