// kesncd activity: for every bit of a dump how long it was 0, 1, x and z and how often it toggled.
#include <charconv>
#include <memory>
#include <utility>

#include "cli/commands/commands.h"
#include "cli/exact_figures/exact_choices.h"
#include "cli/exact_figures/exact_files.h"
#include "cli/exact_figures/exact_input.h"
#include "cli/exact_figures/exact_options.h"
#include "cli/exact_figures/parts.h"
#include "cli/input/database_input.h"
#include "cli/process/messages.h"
#include "text/failure.h"

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
    "  kesncd activity sim.vcd -o sim.kact                 a database, to be taken for the dump\n"
    "  kesncd activity sim.vcd --part 3/16 -o 3.kact       one of sixteen parts, for kesncd merge\n"
    "\n"
    "These figures are exact, bit by bit; those of flat, tree, find, power and extract are what a\n"
    "host gets, which counts a bus as one signal. t0, t1, tx, tz are in ticks of the dump, tc is\n"
    "toggles, ig excursions through x that came back; freq_mhz is half the toggles a\n"
    "microsecond, toggle_rate all of them, high the share of time at 1. Of signals and modules\n"
    "the first are sums, the last means of a bit.\n";

StoredRun Count(const ExactOptions& options, ClockCheck* clocks) {
  ExactInput input;
  input.input = options.input;
  input.window = options.window;
  input.wantsHost = options.format == ExactFormat::Db;
  if (clocks != nullptr) {
    input.watch = [&](const Declarations& declarations) {
      return clocks->FindIn(declarations, NameOf(options.input));
    };
  }
  return ReadExactRun(input);
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

/// With the factor of the design's clock, if there is one.
ExactRun CountScaled(const ExactOptions& options) {
  const bool hasClocks = !options.clock.clock.empty() || !options.clock.sdc.empty();
  if (hasClocks && OpenDatabase(options.input, options.window)) {
    throw Failure(FailureKind::Unusable,
                  NameOf(options.input) +
                      ": a database does not hold when clocks toggle: --clock and --sdc need the "
                      "dump itself");
  }
  ClockCheck clocks(options.clock);
  StoredRun stored = Count(options, hasClocks ? &clocks : nullptr);
  ExactRun run;
  run.dump = NameOf(options.input);
  run.origin = std::move(stored.facts.dump);
  run.result = std::move(stored.exact);
  if (options.HasRows()) SayWhyNoRates(run);
  run.scale = clocks.ScaleOf(run.result, run.dump);
  return run;
}

/// "3/16"
PartChoice PartOf(const std::string& text) {
  PartChoice choice;
  const char* const end = text.data() + text.size();
  const auto number = std::from_chars(text.data(), end, choice.first);
  const bool isFirst = number.ec == std::errc() && number.ptr != end && *number.ptr == '/';
  const auto count = isFirst ? std::from_chars(number.ptr + 1, end, choice.parts) : number;
  constexpr std::uint32_t kMostParts = 65536;
  if (!isFirst || count.ec != std::errc() || count.ptr != end || choice.first == 0 ||
      choice.first > choice.parts || choice.parts > kMostParts) {
    throw Failure(FailureKind::Unusable, text + " is no part such as 3/16");
  }
  choice.last = --choice.first;
  return choice;
}

void CheckPart(const ExactOptions& options) {
  if (!options.part) return;
  if (options.format != ExactFormat::Db) {
    throw Failure(FailureKind::Unusable,
                  "--part: a part is written as a database only: -o part.kact");
  }
  if (options.window.begin || options.window.end) {
    throw Failure(FailureKind::Unusable, "--part: parts are of the whole dump, not of a window");
  }
}

ExitStatus RunActivity(const ExactOptions& options) {
  CheckExactPlaces({options.input.dump, options.clock.sdc}, options);
  if (options.part) {
    WriteDatabaseFile(ReadPart(options.input, *options.part), options.output.path);
    return ExitStatus::Done;
  }
  if (options.format == ExactFormat::Db) {
    WriteDatabaseFile(Count(options, nullptr), options.output.path);
    return ExitStatus::Done;
  }
  return WriteExact(CountScaled(options), options);
}

void AddPartOption(Command& command, ExactOptions& options) {
  std::string unused;
  command
      .AddText("--part", "K/N", unused,
               "count one of N parts of a plain file, which kesncd merge adds up")
      .take = [&options](const std::string& text) { options.part = PartOf(text); };
}

void AddClockOptions(Command& command, ClockOptions& options) {
  command.AddText("--clock", "NAME=PERIOD", options.clock,
                  "the design's period of a clock: all times and rates are scaled from the dump's "
                  "period to it, as with clk=2ns");
  command.AddFile("--sdc", "FILE", options.sdc,
                  "constraints: clocks whose period in the dump differs by over 1 % are named");
}

}  // namespace

void AddActivityCommand(CommandLine& line) {
  Command& command = line.Add("activity", kActivityHelp);
  const auto options = std::make_shared<ExactOptions>();
  AddDumpOptions(command, options->input);
  AddWindowOptions(command, options->window);
  AddExactChoices(command, *options);
  AddJobsOption(command, options->input);
  AddPartOption(command, *options);
  AddClockOptions(command, options->clock);
  AddEstimatorOptions(command, *options);
  command.check = [options] {
    CheckExactOptions(*options);
    CheckPart(*options);
    if (!options->clock.clock.empty()) (void)DesignClockOf(options->clock.clock);
  };
  command.run = [options] { return RunActivity(*options); };
}

}  // namespace orsa::kesncd::cli
