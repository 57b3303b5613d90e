// kesncd find: frequencies of signals by their names in the design.
#include <memory>

#include "cli/commands.h"
#include "cli/tree_path.h"
#include "kesncd/kesncd.h"

namespace kesncd_cli {

namespace {

using orsa::kesncd::VmodHier;

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

/// The row of one name: found where, under which name, with which frequency.
std::vector<Cell> Find(const VmodHier& root, const std::string& name, const FindOptions& options,
                       const std::string& addedRoot) {
  const bool exact = !options.ignoreCase;
  const std::string& module = options.module.empty() ? root.name : options.module;
  double frequency = 0.0;
  if (!root.FindSignalFreqHier(module, name, frequency, exact)) {
    return {name, "not found", Cell(), Cell()};
  }
  std::vector<Cell> row;
  WalkScopes(
      root,
      [&](const VmodHier& scope, int) {
        if (!VmodHier::IsNameEqual(scope.name, &scope == &root ? module : scope.name, exact)) {
          return false;
        }
        for (const auto& [code, signal] : scope.signals) {
          if (!VmodHier::IsNameEqual(signal.name, name, exact)) continue;
          row = {name, PathOf(scope, addedRoot), signal.name, frequency};
          return true;
        }
        return false;
      },
      [](const VmodHier&, int) { return true; });
  return row;
}

ExitStatus Run(const FindOptions& options) {
  std::vector<std::string> names = options.names;
  if (!options.namesFrom.empty()) {
    for (std::string& name : ReadNames(options.namesFrom)) names.push_back(std::move(name));
  }
  if (names.empty()) throw Failure(ExitStatus::Unusable, "no names to find");
  DumpInput input(options.input);
  orsa::kesncd::KesNCD analyser;
  ReadTree(analyser, input);
  Report report{RunFacts(input.name(), options.module),
                "names",
                {"name", "scope", "signal", "freq_mhz"},
                {},
                ""};
  std::int64_t found = 0;
  for (const std::string& name : names) {
    report.rows.push_back(Find(*analyser.hierRoot, name, options, input.AddedRoot()));
    if (report.rows.back()[3].index() != 0) ++found;
  }
  report.facts.emplace_back("found", found);
  report.lastLine = std::to_string(found) + " of " + std::to_string(names.size()) + " found";
  WriteReport(report, options.output);
  return found > 0 ? ExitStatus::Done : ExitStatus::NothingMatched;
}

}  // namespace

void AddFindCommand(CLI::App& app, Action& chosen) {
  CLI::App* command = app.add_subcommand("find", kHelp);
  const auto options = std::make_shared<FindOptions>();
  AddInputOptions(*command, options->input);
  command->add_option("NAME", options->names, "names in the design");
  command->add_option("--names-from", options->namesFrom, "find the names that FILE lists too")
      ->type_name("FILE");
  command->add_option("--module", options->module, "module name asked of the root")
      ->type_name("NAME");
  command->add_flag("--ignore-case", options->ignoreCase, "letter case makes no difference");
  AddOutputOptions(*command, options->output);
  command->callback([options, &chosen] { chosen = [options] { return Run(*options); }; });
}

}  // namespace kesncd_cli
