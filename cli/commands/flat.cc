// kesncd flat: the toggle frequencies of one module.
#include <memory>
#include <optional>

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
  std::optional<std::string> activity;  // empty: beside the dump
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
    "  kesncd flat sim.vcd --activity               also writes sim.vcd.txt\n"
    "  simulator | kesncd flat - --activity=soc.txt\n"
    "\n"
    "The activity file is the one that hosts of the library read.\n";

std::string ChosenTop(const DumpInput& input, const FlatOptions& options) {
  if (!options.top.empty()) return options.top;
  std::string top = input.ProposedTop();
  Remark(input.name(), "top module is " + top + "; --top chooses another");
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

/// Where the activity goes; empty for nowhere.
std::string ActivityPath(const FlatOptions& options) {
  if (!options.activity) return "";
  if (!options.activity->empty()) return *options.activity;
  const std::string beside = ActivityPathOf(options.input.dump);
  if (beside.empty()) {
    throw Failure(FailureKind::Unusable,
                  NameOf(options.input) + ": is no file with a place beside it; --activity=FILE");
  }
  return beside;
}

/// Writes the signals that `each` gives with their frequencies.
template <class Each>
ExitStatus WriteSignals(const DumpInput& input, const FlatOptions& options, const std::string& top,
                        Each each) {
  ResultOutput result(options.output,
                      {RunFacts(input.name(), top), "signals", {"signal", "freq_mhz"}});
  each([&result](const std::string& name, double frequency) { result.Add({name, frequency}); });
  if (result.rows() == 0) {
    Say(input.name(), "no signal of " + top + " was selected");
  } else {
    SayWhyZero(input);
  }
  result.End();
  return result.rows() == 0 ? ExitStatus::NothingMatched : ExitStatus::Done;
}

ExitStatus RunLines(DumpInput& input, const FlatOptions& options, const std::string& top) {
  orsa::kesncd::KesNCD analyser;
  ReadFlat(analyser, input, Selection(input, options), top);
  if (options.activity) SaveActivity(ActivityPath(options));
  return WriteSignals(input, options, top, [&analyser](const auto& write) {
    for (const auto& [name, frequency] : analyser.signalFreqs) write(name, frequency);
  });
}

/// The grammar reader knows no selection and keeps names as they are declared.
ExitStatus RunGrammar(DumpInput& input, const FlatOptions& options, const std::string& top) {
  return RunGrammarReader(input, top, [&] {
    using orsa::kesncd::topMod;
    if (orsa::kesncd::isTopModNameEverMatched == 0) {
      throw RunFailure(input, "the top module " + top + " is not in it");
    }
    if (options.activity) SaveActivity(ActivityPath(options));
    return WriteSignals(input, options, top, [](const auto& write) {
      for (int i = 0; i < topMod.GetSignalSize(); ++i) {
        write(topMod.GetSignalName(i), topMod.GetSignalFreq(i));
      }
    });
  });
}

/// Before a run that may take long: an output must not end the input, or a file of the user's.
void CheckPlaces(const FlatOptions& options) {
  std::vector<std::string> outputs{options.output.path};
  if (options.activity) outputs.push_back(ActivityPath(options));
  CheckOutputs({options.input.dump, options.signalsFrom}, outputs);
  if (options.activity) RequireActivityFile(outputs.back());
}

ExitStatus Run(const FlatOptions& options) {
  CheckPlaces(options);
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
  command.AddOptionalFile("--activity", "FILE", options->activity,
                          "also write the activity file: to FILE, else to DUMP.txt");
  AddOutputOptions(command, options->output);
  command.run = [options] { return Run(*options); };
}

}  // namespace orsa::kesncd::cli
