// kesncd flat: the toggle frequencies of one module.
#include <memory>

#include "cli/commands.h"
#include "cli/dump_header.h"
#include "cli/grammar_run.h"
#include "kesncd/kesncd.h"

namespace kesncd_cli {

namespace {

struct FlatOptions {
  std::string dump;
  std::string top;
  std::vector<std::string> signals;
  std::string signalsFrom;
  std::string reader = "lines";
  OutputOptions output;
};

constexpr char kHelp[] =
    "Toggle frequencies of the signals declared in one module\n"
    "\n"
    "Examples:\n"
    "  kesncd flat sim.vcd                          all signals of the proposed top module\n"
    "  kesncd flat sim.vcd --top soc                all signals of module soc\n"
    "  kesncd flat sim.vcd --top soc --signal clk   clk, and every name with an index\n"
    "  kesncd flat sim.vcd --format csv -o soc.csv\n"
    "\n"
    "The activity is also written to DUMP.txt, beside the dump.\n";

std::string ProposedTop(orsa::kesncd::KesNCD& analyser, const std::string& dump) {
  std::string top;
  std::string message;
  if (!analyser.GetTopModuleNameInVCD(dump, top, message)) throw RunFailure(dump, message);
  Say(dump, top.empty() ? "no module to propose as top module"
                        : "top module is " + top + "; --top chooses another");
  return top;
}

/// The names to take: those asked for, else all that the dump declares.
std::set<std::string> Selection(const FlatOptions& options) {
  std::set<std::string> names(options.signals.begin(), options.signals.end());
  if (!options.signalsFrom.empty()) {
    for (const std::string& name : ReadNames(options.signalsFrom)) names.insert(name);
  }
  const bool asked = !options.signals.empty() || !options.signalsFrom.empty();
  return asked ? names : ReadDumpHeader(options.dump).names;
}

ExitStatus Finish(const Report& report, const FlatOptions& options, const std::string& top) {
  if (report.rows.empty()) {
    Say(options.dump, "no signal of " + top + " was selected");
  } else {
    SayWhyZero(options.dump);
  }
  WriteReport(report, options.output);
  return report.rows.empty() ? ExitStatus::NothingMatched : ExitStatus::Done;
}

Report EmptyReport(const FlatOptions& options, const std::string& top) {
  return {RunFacts(options.dump, top), "signals", {"signal", "freq_mhz"}, {}, ""};
}

ExitStatus RunLines(orsa::kesncd::KesNCD& analyser, const FlatOptions& options,
                    const std::string& top) {
  const std::set<std::string> selection = Selection(options);
  analyser.SetTopModule(top);
  std::string message;
  if (!analyser.SetVCDFile(options.dump, selection, message)) {
    throw RunFailure(options.dump, message);
  }
  Report report = EmptyReport(options, top);
  for (const auto& [name, frequency] : analyser.signalFreqs) {
    report.rows.push_back({name, frequency});
  }
  return Finish(report, options, top);
}

/// The grammar reader knows no selection and keeps names as they are declared.
ExitStatus RunGrammar(const FlatOptions& options, const std::string& top) {
  return RunGrammarReader(options.dump, top, [&] {
    using orsa::kesncd::topMod;
    if (orsa::kesncd::isTopModNameEverMatched == 0) {
      throw RunFailure(options.dump, "the top module " + top + " is not in it");
    }
    Report report = EmptyReport(options, top);
    for (int i = 0; i < topMod.GetSignalSize(); ++i) {
      report.rows.push_back({topMod.GetSignalName(i), topMod.GetSignalFreq(i)});
    }
    return Finish(report, options, top);
  });
}

ExitStatus Run(const FlatOptions& options) {
  CheckInput(options.dump);
  orsa::kesncd::KesNCD analyser;
  const std::string top = options.top.empty() ? ProposedTop(analyser, options.dump) : options.top;
  if (options.reader == "grammar") return RunGrammar(options, top);
  return RunLines(analyser, options, top);
}

}  // namespace

void AddFlatCommand(CLI::App& app, Action& chosen) {
  CLI::App* command = app.add_subcommand("flat", kHelp);
  const auto options = std::make_shared<FlatOptions>();
  command->add_option("DUMP", options->dump, "value change dump")->required();
  command->add_option("--top", options->top, "module whose signals are taken")->type_name("NAME");
  command->add_option("--signal", options->signals, "take this signal (again for more)")
      ->allow_extra_args(false)
      ->type_name("NAME");
  command->add_option("--signals-from", options->signalsFrom, "take the signals that FILE lists")
      ->type_name("FILE");
  command->add_option("--reader", options->reader, "lines, or grammar: all signals, as declared")
      ->check(CLI::IsMember(std::vector<std::string>{"lines", "grammar"}))
      ->type_name("");
  AddOutputOptions(*command, options->output);
  command->callback([options, &chosen] { chosen = [options] { return Run(*options); }; });
}

}  // namespace kesncd_cli
