// kesncd flat: the toggle frequencies of one module.
#include <memory>

#include "cli/commands/activity_output.h"
#include "cli/commands/commands.h"
#include "cli/commands/grammar_run.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

namespace {

struct FlatOptions {
  InputOptions input;
  std::string top;
  std::vector<std::string> signals;
  std::string signalsFrom;
  Reader reader = Reader::Lines;
  std::string activity;
  OutputOptions output;
};

constexpr char kHelp[] =
    "Toggle frequencies of the signals declared in one module\n"
    "\n"
    "Examples:\n"
    "  kesncd flat sim.vcd                          all signals of the outermost module\n"
    "  kesncd flat sim.vcd --top soc                all signals of module soc\n"
    "  kesncd flat sim.vcd --top soc --signal clk   clk, and every name with an index\n"
    "  kesncd flat sim.vcd --format csv -o soc.csv\n"
    "  simulator | kesncd flat - --activity soc.txt\n"
    "\n"
    "The activity is also written to DUMP.txt, beside the dump; that of a pipe only where\n"
    "--activity says.\n";

std::string ChosenTop(const DumpInput& input, const FlatOptions& options) {
  if (!options.top.empty()) return options.top;
  std::string top = input.ProposedTop();
  Say(input.name(), "top module is " + top + "; --top chooses another");
  return top;
}

/// The names to take: those asked for, else all that the dump declares.
std::set<std::string> Selection(const DumpInput& input, const FlatOptions& options) {
  std::set<std::string> names(options.signals.begin(), options.signals.end());
  if (!options.signalsFrom.empty()) {
    for (const std::string& name : ReadNames(options.signalsFrom)) names.insert(name);
  }
  const bool asked = !options.signals.empty() || !options.signalsFrom.empty();
  return asked ? names : AllNames(input);
}

/// Writes the activity where it was asked for. Beside the dump it is a gift: a folder that takes
/// none is passed over.
void LeaveActivity(const FlatOptions& options) {
  if (!options.activity.empty()) return SaveActivity(options.activity);
  const std::string beside = ActivityPathOf(options.input.dump);
  if (beside.empty()) return;
  try {
    SaveActivity(beside);
  } catch (const Failure&) {
  }
}

ExitStatus Finish(const Report& report, const DumpInput& input, const FlatOptions& options,
                  const std::string& top) {
  if (report.rows.empty()) {
    Say(input.name(), "no signal of " + top + " was selected");
  } else {
    SayWhyZero(input);
  }
  WriteReport(report, options.output);
  return report.rows.empty() ? ExitStatus::NothingMatched : ExitStatus::Done;
}

Report EmptyReport(const DumpInput& input, const std::string& top) {
  return {RunFacts(input.name(), top), "signals", {"signal", "freq_mhz"}, {}, ""};
}

ExitStatus RunLines(DumpInput& input, const FlatOptions& options, const std::string& top) {
  orsa::kesncd::KesNCD analyser;
  ReadFlat(analyser, input, Selection(input, options), top);
  LeaveActivity(options);
  Report report = EmptyReport(input, top);
  for (const auto& [name, frequency] : analyser.signalFreqs) {
    report.rows.push_back({name, frequency});
  }
  return Finish(report, input, options, top);
}

/// The grammar reader knows no selection and keeps names as they are declared.
ExitStatus RunGrammar(DumpInput& input, const FlatOptions& options, const std::string& top) {
  return RunGrammarReader(input, top, [&] {
    using orsa::kesncd::topMod;
    if (orsa::kesncd::isTopModNameEverMatched == 0) {
      throw RunFailure(input, "the top module " + top + " is not in it");
    }
    if (!options.activity.empty()) SaveActivity(options.activity);
    Report report = EmptyReport(input, top);
    for (int i = 0; i < topMod.GetSignalSize(); ++i) {
      report.rows.push_back({topMod.GetSignalName(i), topMod.GetSignalFreq(i)});
    }
    return Finish(report, input, options, top);
  });
}

ExitStatus Run(const FlatOptions& options) {
  const bool isGrammar = options.reader == Reader::Grammar;
  DumpInput input(options.input, options.reader);
  const std::string top = ChosenTop(input, options);
  return isGrammar ? RunGrammar(input, options, top) : RunLines(input, options, top);
}

}  // namespace

void AddFlatCommand(CommandLine& line) {
  Command& command = line.Add("flat", kHelp);
  const auto options = std::make_shared<FlatOptions>();
  AddInputOptions(command, options->input);
  command.AddText("--top", "NAME", options->top, "module whose signals are taken");
  command.AddTexts("--signal", "NAME", options->signals, "take this signal (again for more)");
  command.AddFile("--signals-from", "FILE", options->signalsFrom,
                  "take the signals that FILE lists");
  command.AddChoice("--reader", {{"lines", Reader::Lines}, {"grammar", Reader::Grammar}},
                    options->reader, "which reader reads it; grammar: all signals, as declared");
  command.AddFile("--activity", "FILE", options->activity,
                  "write the activity to FILE instead of beside the dump");
  AddOutputOptions(command, options->output);
  command.run = [options] { return Run(*options); };
}

}  // namespace orsa::kesncd::cli
