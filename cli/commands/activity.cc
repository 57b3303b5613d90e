// kesncd activity: for every bit of a dump how long it was 0, 1, x and z and how often it toggled.
//
// What happens, in order: the options are checked (CheckExactOptions), the places of inputs and
// outputs compared (CheckExactPlaces), the dump or database read once (ReadExactRun), the clock's
// factor found (ClockCheck), and the figures written in the format that was asked for (WriteExact).
// A database of a dump (-o x.kact) and a part of one (--part 3/16) take a short way: they hold all
// figures and know no selection, scale or estimator option.
#include <algorithm>
#include <charconv>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

#include "cli/commands/commands.h"
#include "cli/exact_figures/exact_choices.h"
#include "cli/exact_figures/exact_files.h"
#include "cli/exact_figures/exact_input.h"
#include "cli/exact_figures/exact_options.h"
#include "cli/exact_figures/parts.h"
#include "cli/input/database_input.h"
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

/// Reads the figures, with the clocks watched where `clocks` is given: only a reading of the dump
/// itself sees when a clock toggles, and it has to know the codes before it starts on the body.
StoredRun Count(const ExactOptions& options, ClockCheck* clocks) {
  ExactInput input;
  input.input = options.input;
  input.window = options.window;
  // A database answers `flat`, `tree` and `find` as well as exact commands, so it gets both kinds
  // of figures from the one reading.
  input.wantsHost = options.format == ExactFormat::Db;
  if (input.wantsHost && !options.noProfile) input.profile = options.windows;
  if (clocks != nullptr) {
    input.watch = [&](const Declarations& declarations) {
      return clocks->FindIn(declarations, NameOf(options.input));
    };
  }
  return ReadExactRun(input);
}

/// With the factor of the design's clock, if there is one. All times and rates of the run are then
/// to be multiplied and divided by `scale`; the figures themselves stay in the dump's ticks.
ExactRun CountScaled(const ExactOptions& options) {
  const bool hasClocks = !options.clock.clock.empty() || !options.clock.sdc.empty();
  // Opened only to tell a database from a dump; the reading below opens it again.
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
  // What the dump was called when it was counted, which a database remembers: a result made from
  // the database is then the same as one made from the dump.
  run.origin = std::move(stored.facts.dump);
  run.result = std::move(stored.exact);
  // SAIF and Tcl without a time scale are an error of their own, so only rows need the remark.
  if (options.HasRows()) SayWhyNoRates(run.result, run.dump);
  run.scale = clocks.ScaleOf(run.result, run.dump);
  return run;
}

/// The choice that a text such as "3/16" means: users count parts from 1, PartChoice from 0. Throws
/// Failure with Unusable for "0/4", "5/4", "3/", "3/16 " and the like.
PartChoice PartOf(const std::string& text) {
  PartChoice choice;
  const char* const end = text.data() + text.size();
  // from_chars reads no sign, no blank and no number beyond 32 bits, so each of these is refused
  // without a rule of its own.
  const auto number = std::from_chars(text.data(), end, choice.first);
  const bool isFirst = number.ec == std::errc() && number.ptr != end && *number.ptr == '/';
  const auto count = isFirst ? std::from_chars(number.ptr + 1, end, choice.parts) : number;
  // More parts than that are no job list but a slip of the keyboard; a part's edges cost a search
  // in the dump each.
  constexpr std::uint32_t kMostParts = 65536;
  if (!isFirst || count.ec != std::errc() || count.ptr != end || choice.first == 0 ||
      choice.first > choice.parts || choice.parts > kMostParts) {
    throw Failure(FailureKind::Unusable, text + " is no part such as 3/16");
  }
  // One part only; a merge makes longer stretches where two parts have to be read as one.
  choice.last = --choice.first;
  return choice;
}

/// A part carries what adding up needs (first values, open excursions), which no other format has
/// room for, and its edges are stretches of the file, which a window in time would cut across.
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

void CheckProfile(const ExactOptions& options) {
  const WindowsAsked& windows = options.windows;
  const auto refuse = [](bool isWrong, const std::string& why) {
    if (isWrong) throw Failure(FailureKind::Unusable, why);
  };
  refuse(windows.length == 0, "--window: 0 is no length");
  const bool asked[] = {windows.parts != 0, windows.length.has_value(), options.noProfile};
  refuse(std::count(std::begin(asked), std::end(asked), true) > 1,
         "--windows, --window and --no-profile: one of them at a time");
  refuse((!windows.IsAny() || options.noProfile) && options.format != ExactFormat::Db,
         "--windows, --window and --no-profile are for a database; kesncd profile gives rows over "
         "time");
}

ExitStatus RunActivity(const ExactOptions& options) {
  // Before the reading, which may take long: an output that is an input would end it.
  CheckExactPlaces({options.input.dump, options.clock.sdc}, options);
  if (options.part) {
    std::optional<WindowsAsked> windows;
    if (!options.noProfile) windows = options.windows;
    WriteDatabaseFile(ReadPart(options.input, *options.part, windows), options.output.path);
    return ExitStatus::Done;
  }
  if (options.format == ExactFormat::Db) {
    WriteDatabaseFile(Count(options, nullptr), options.output.path);
    return ExitStatus::Done;
  }
  return WriteExact(CountScaled(options), options);
}

/// --part is taken apart while the line is parsed, so that a wrong one is refused before anything
/// is opened.
void AddPartOption(Command& command, ExactOptions& options) {
  // AddText wants a target; what is taken goes to `options.part` instead, so nothing ever writes to
  // this one after the function has returned.
  std::string unused;
  command
      .AddText("--part", "K/N", unused,
               "count one of N parts of a plain file, which kesncd merge adds up")
      .take = [&options](const std::string& text) { options.part = PartOf(text); };
}

void AddProfileOptions(Command& command, ExactOptions& options) {
  command
      .AddCount("--windows", "N", {1, 1000000}, options.windows.parts,
                "database: toggles over time in so many equal parts of the span")
      .Initially(std::to_string(kUsualParts));
  command.AddTime("--window", options.windows.length, "database: in windows of this length");
  command.AddFlag("--no-profile", options.noProfile, "database: without toggles over time");
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
  AddProfileOptions(command, *options);
  AddClockOptions(command, options->clock);
  AddEstimatorOptions(command, *options);
  command.check = [options] {
    CheckExactOptions(*options);
    CheckPart(*options);
    CheckProfile(*options);
    if (!options->clock.clock.empty()) (void)DesignClockOf(options->clock.clock);
  };
  command.run = [options] { return RunActivity(*options); };
}

}  // namespace orsa::kesncd::cli
