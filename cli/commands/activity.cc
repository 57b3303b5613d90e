// kesncd activity: for every bit of a dump how long it was 0, 1, x and z and how often it toggled.
#include <memory>
#include <vector>

#include "activity/activity_run.h"
#include "cli/commands/commands.h"
#include "cli/commands/exact_files.h"
#include "cli/commands/exact_options.h"
#include "cli/commands/exact_rows.h"
#include "cli/commands/scope_choice.h"
#include "cli/input/reading_threads.h"
#include "text/failure.h"
#include "text/number.h"

namespace orsa::kesncd::cli {

namespace {

constexpr char kActivityHelp[] =
    "Exact activity: how long every bit was 0, 1, x and z, and how often it toggled\n"
    "\n"
    "Examples:\n"
    "  kesncd activity sim.vcd                             all signals\n"
    "  kesncd activity sim.vcd --per bit --format csv      every bit by itself\n"
    "  kesncd activity sim.vcd --per module --sort rate --limit 10\n"
    "  kesncd activity sim.vcd --begin 1us --end 3us --match '**/fifo/*'\n"
    "  kesncd activity sim.vcd --format saif --scope tb/soc --strip tb/soc -o soc.saif\n"
    "  kesncd activity sim.vcd --format tcl --netlist soc.json --require 95 -o soc.tcl\n"
    "\n"
    "These figures are exact, bit by bit; those of flat, tree, find, power and extract are what a\n"
    "host gets, which counts a bus as one signal. t0, t1, tx, tz are in ticks of the dump, tc is\n"
    "toggles, ig excursions through x that came back; freq_mhz is half the toggles a\n"
    "microsecond, toggle_rate all of them, high the share of time at 1. Of signals and modules\n"
    "the first are sums, the last means of a bit.\n";

/// What goes with some formats only is refused with others rather than overlooked.
void CheckOptions(const ExactOptions& options) {
  const auto refuse = [](bool isWrong, const std::string& why) {
    if (isWrong) throw Failure(FailureKind::Unusable, why);
  };
  const bool isSaif = options.format == ExactFormat::Saif;
  const bool hasNetlist = !options.netlist.empty();
  refuse((!options.root.empty() || !options.unwritten.empty()) && !isSaif,
         "--root and --unwritten are for --format saif");
  refuse(!options.strip.empty() && options.HasRows() && !hasNetlist,
         "--strip is for --format saif and tcl, and for --netlist");
  refuse(options.timeUnit.has_value() && options.format != ExactFormat::Tcl,
         "--time-unit is for --format tcl");
  refuse(options.timeUnit == 0, "--time-unit: 0 is no unit");
  refuse(!options.HasRows() &&
             (options.selection.sort != SortBy::Nothing || options.selection.limit != UINT64_MAX),
         "--sort and --limit are for rows: --format table, csv, json");
  refuse(!options.HasRows() && hasNetlist && !options.selection.match.empty(),
         "--match and --netlist go together in rows only");
  refuse(!hasNetlist &&
             (!options.netlistTop.empty() || !options.unmatched.empty() || options.require > 0),
         "--netlist-top, --unmatched and --require are for --netlist");
  refuse(options.require > 100,
         "--require: " + RoundedText(options.require, 17) + " is more than 100 percent");
  if (!options.clock.clock.empty()) (void)DesignClockOf(options.clock.clock);
}

void CheckPlaces(const ExactOptions& options) {
  std::vector<std::string> outputs{options.output.path};
  for (const std::string& path : {options.unwritten, options.unmatched}) {
    if (!path.empty()) outputs.push_back(path);
  }
  CheckOutputs({options.input.dump, options.netlist, options.clock.sdc}, outputs);
}

/// Rates that are missing in every row want a reason.
void SayWhyNoRates(const ExactRun& run) {
  if (!run.result.tick) {
    Remark(run.dump,
           "it has no time scale, so no rate is known; kesncd prepare --timescale gives one");
  } else if (run.result.observedTicks == 0 && run.result.notes.hasStamps) {
    Remark(run.dump, "no time was observed, so no rate is known");
  }
}

ExactRun Count(const ExactOptions& options) {
  ExactRun run;
  run.dump = NameOf(options.input);
  UnpackedSource dump = OpenDump(options.input);
  ActivityOptions counting;
  counting.dump = run.dump;
  counting.window = options.window;
  counting.mostBits = MostBitsInMemory();
  ClockCheck clocks(options.clock);
  counting.watch = [&](const Declarations& declarations) {
    return clocks.FindIn(declarations, run.dump);
  };
  counting.jobs = UseThreads(options.input, dump);
  run.result = counting.jobs > 1 ? CountActivity(*dump.file, counting)
                                 : CountActivity(*dump.bytes, counting);
  dump = {};  // and with it the line that shows how far it was read
  for (const std::string& remark : RemarksOn(run.result)) Remark(run.dump, remark);
  if (options.HasRows()) SayWhyNoRates(run);
  run.scale = clocks.ScaleOf(run.result, run.dump);
  return run;
}

ExitStatus RunActivity(const ExactOptions& options) {
  CheckPlaces(options);
  ExactRun run = Count(options);
  if (!options.scope.empty()) {
    run.scope = OnlyScope(run.dump, run.result.declarations, options.scope);
  }
  if (!options.netlist.empty()) return WritePins(run, options);
  return options.HasRows() ? WriteExactRows(run, options) : WriteExactFile(run, options);
}

Format RowFormatOf(ExactFormat format) {
  if (format == ExactFormat::Csv) return Format::Csv;
  return format == ExactFormat::Json ? Format::Json : Format::Table;
}

void AddChoices(Command& command, ExactOptions& options) {
  command.AddChoice(
      "--per", {{"bit", RowsPer::Bit}, {"signal", RowsPer::Signal}, {"module", RowsPer::Module}},
      options.per, "what a row is; a module is all that is in it and below");
  command.AddText("--scope", "PATH", options.scope,
                  "only this scope and all below it: its path from the top, or a name that only "
                  "one has");
  AddWindowOptions(command, options.window);
  AddSelectionOptions(command, options.selection);
  command.AddChoice("--format",
                    {{"table", ExactFormat::Table},
                     {"csv", ExactFormat::Csv},
                     {"json", ExactFormat::Json},
                     {"saif", ExactFormat::Saif},
                     {"tcl", ExactFormat::Tcl}},
                    options.format, "how the activity is written");
  AddLookOptions(command, options.output);
  AddJobsOption(command, options.input);
}

void AddEstimatorOptions(Command& command, ExactOptions& options) {
  command.AddText("--clock", "NAME=PERIOD", options.clock.clock,
                  "the design's period of a clock: all times and rates are scaled from the dump's "
                  "period to it, as with clk=2ns");
  command.AddFile("--sdc", "FILE", options.clock.sdc,
                  "constraints: clocks whose period in the dump differs by over 1 % are named");
  command.AddText("--strip", "PATH", options.strip,
                  "the scope that is the design: the way to it is left out of SAIF and Tcl");
  command.AddText("--root", "NAME", options.root, "what the outermost instance of SAIF is called");
  command.AddFile("--unwritten", "FILE", options.unwritten,
                  "list the names that no reader of SAIF takes");
  command.AddTime("--time-unit", options.timeUnit,
                  "Tcl: toggles are counted in this time, 1ns if there is no --clock");
  command.AddFile("--netlist", "FILE", options.netlist,
                  "write the pins of this netlist's cells: JSON of Yosys, or Verilog");
  command.AddText("--netlist-top", "NAME", options.netlistTop,
                  "the design's module, where the netlist does not say");
  command.AddFile("--unmatched", "FILE", options.unmatched,
                  "list the pins that the dump does not reach");
  command.AddNumber("--require", "PERCENT", 0, options.require,
                    "exit status 1 where fewer of the pins are reached");
}

}  // namespace

void AddActivityCommand(CommandLine& line) {
  Command& command = line.Add("activity", kActivityHelp);
  const auto options = std::make_shared<ExactOptions>();
  AddDumpOptions(command, options->input);
  AddChoices(command, *options);
  AddEstimatorOptions(command, *options);
  command.check = [options] { CheckOptions(*options); };
  command.run = [options] {
    options->output.format = RowFormatOf(options->format);
    return RunActivity(*options);
  };
}

}  // namespace orsa::kesncd::cli
