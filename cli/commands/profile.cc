// kesncd profile: when a dump's modules toggle: over time, by the values of a signal, at the peak.
//
// Five ways to cut time, each with its own reading: equal parts of the span and windows of a length
// (RunWindows), a clock's edges (RunClock), the values of a signal (RunValues), and the one stretch
// with most toggles (RunPeak). A database holds windows, and answers for no other way (RunKept).
// All count the same toggles; what differs is where the sums are taken.
#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "activity/profile/profile_run.h"
#include "cli/commands/commands.h"
#include "cli/exact_figures/kept_profile.h"
#include "cli/exact_figures/profile_reading.h"
#include "cli/exact_figures/profile_rows.h"
#include "cli/input/database_input.h"
#include "cli/input/reading_threads.h"
#include "cli/selection/scope_choice.h"
#include "cli/selection/signal_choice.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

constexpr char kProfileHelp[] =
    "Toggles over time, by the values of a signal, or in the busiest stretch\n"
    "\n"
    "Examples:\n"
    "  kesncd profile sim.vcd                              200 equal parts of the span\n"
    "  kesncd profile sim.vcd --window 1us --depth 2 -o profile.csv\n"
    "  kesncd profile sim.vcd --scope soc/cpu --clock clk  a row for each rising edge\n"
    "  kesncd profile sim.vcd --peak 10us --limit 5        the busiest 10 us and what toggles "
    "there\n"
    "  kesncd profile sim.vcd --by soc/cpu/busy            with the flag set, and without\n"
    "  kesncd profile sim.kact --depth 2                   the windows that a database holds\n"
    "\n"
    "Toggles are those of kesncd activity, bit by bit, and rows add up to its totals: a toggle at\n"
    "a row's end belongs to the row, one at its begin to the row before. begin, end and observed\n"
    "are in ticks of the dump, in a table with their unit. A module is all that is in it and "
    "below.\n";

// What the options say. What is empty or 0 was not given.
struct ProfileChoices {
  InputOptions input;
  TimeWindow window;
  std::string scope;
  std::uint32_t depth = 0;
  WindowsAsked windows;
  std::string clock;
  std::optional<std::uint64_t> peak;
  std::string by;
  std::uint64_t values = 0;  // 0: not asked for
  // UINT64_MAX: not given. 0 is a number that one may ask for.
  std::uint64_t limit = UINT64_MAX;
  OutputOptions output;
};

// What is taken where --values and --limit are not given: what fits on a screen or two.
constexpr std::uint64_t kValues = 64;
constexpr std::uint64_t kLimit = 10;

/// The five ways to cut time exclude each other, and some options belong to one of them only: an
/// option without effect would hide a mistake.
void CheckProfileOptions(const ProfileChoices& options) {
  // Thrown before the dump is opened.
  const auto refuse = [](bool isWrong, const std::string& why) {
    if (isWrong) throw Failure(FailureKind::Unusable, why);
  };
  CheckWindow(options.window);
  const bool asked[] = {options.windows.parts != 0, options.windows.length.has_value(),
                        !options.clock.empty(), options.peak.has_value(), !options.by.empty()};
  // None of them means equal parts of the span, the usual number.
  const auto ways = std::count(std::begin(asked), std::end(asked), true);
  refuse(ways > 1, "--windows, --window, --clock, --peak and --by: one of them at a time");
  refuse(options.values != 0 && options.by.empty(), "--values is for --by");
  refuse(options.limit != UINT64_MAX && !options.peak, "--limit is for --peak");
  refuse(options.peak && options.depth > 0, "--depth is for rows over time and --by");
  // An optional that holds 0, not an empty one.
  refuse(options.windows.length == 0 || options.peak == 0, "--window and --peak: 0 is no length");
}

/// What the run is told. Which scope and signal are meant needs the declarations, so it is asked
/// for later, by functions that keep copies of what they need.
ProfileOptions ProfileCounting(const ProfileChoices& options) {
  ProfileOptions counting = CountingOf(options.input, options.window, options.windows);
  const std::string dump = counting.counting.dump;
  if (!options.scope.empty()) {
    counting.scope = [dump, scope = options.scope](const Declarations& declarations) {
      return OnlyScope(dump, declarations, scope);
    };
  }
  // --clock and --by exclude each other, so there is one signal at most; without either the
  // function is never called.
  const bool isClock = !options.clock.empty();
  const std::string& signal = isClock ? options.clock : options.by;
  counting.signal = [dump, signal, isClock](const Declarations& declarations) -> CuttingSignal {
    const DumpVariable& variable = OnlySignal(dump, declarations, signal);
    // A clock of several bits has no edge.
    if (!isClock || variable.width == 1) return {variable.codeId, variable.width};
    throw Failure(FailureKind::NothingMatched, dump + ": " + signal + " is no signal of one bit");
  };
  counting.depth = options.depth;
  // The length of the peak is that of a window which may begin anywhere.
  if (options.peak) counting.length = options.peak;
  counting.mostValues = options.values != 0 ? options.values : kValues;
  return counting;
}

// What the facts say of the rows: "per" is "length" or "part", and no signal cuts them.
ProfileSubject SubjectOf(const std::string& dump, const std::optional<std::uint64_t>& length) {
  return {dump, length ? "length" : "part", ""};
}

/// The windows that a database holds.
ExitStatus RunKept(const ProfileChoices& options, ActivityDatabase& database) {
  if (!options.clock.empty() || !options.by.empty() || options.peak) {
    throw Failure(FailureKind::Unusable, NameOf(options.input) +
                                             ": a database does not hold when each signal changes: "
                                             "--clock, --by and --peak need the dump");
  }
  // Throws where other windows are asked for than it holds.
  StoredRun stored = ReadWithProfile(database, NameOf(options.input), options.windows);
  ProfileOptions counting = ProfileCounting(options);
  // For the remark on windows that were folded when the database was made.
  counting.parts = stored.profile->parts;
  // The rest is as after a reading: remarks, then rows.
  ProfileRun<Profile> run;
  run.base = std::move(stored.exact);
  const std::uint32_t scope = counting.scope ? counting.scope(run.base.declarations) : 0;
  run.figures = ProfileIn(stored.profile->profile, run.base.declarations, scope, options.depth);
  SayOfProfile(run, counting);
  return WriteProfile(run, SubjectOf(stored.facts.dump, stored.profile->length), options.output);
}

/// Rows over time. Equal parts need the end of the span before the counting begins, windows of a
/// length do not.
ExitStatus RunWindows(const ProfileChoices& options) {
  const ProfileOptions counting = ProfileCounting(options);
  std::optional<std::uint64_t> last;
  if (!counting.length) last = ExpectedLast(options.input, counting.counting);
  // Takes a ByteSource or a ByteFile: ReadByWindows gives the latter where several threads may
  // read.
  const auto count = [](auto& dump, const ProfileOptions& how) { return CountProfile(dump, how); };
  const ProfileRun<Profile> run = ReadByWindows(options.input, counting, last, count);
  SayOfProfile(run, counting);
  return WriteProfile(run, SubjectOf(counting.counting.dump, counting.length), options.output);
}

/// A row a cycle: rows end at the clock's rising edges, so the span need not be known before.
ExitStatus RunClock(const ProfileChoices& options) {
  const ProfileOptions counting = ProfileCounting(options);
  const auto count = [](auto& dump, const ProfileOptions& how) {
    return CountClockProfile(dump, how);
  };
  const ProfileRun<Profile> run = ReadByWindows(options.input, counting, {}, count);
  SayOfProfile(run, counting);
  return WriteProfile(run, {NameOf(options.input), "clock", options.clock}, options.output);
}

/// One reading, with what is to be said of it.
template <class Count>
auto ReadOnce(const ProfileChoices& options, ProfileOptions counting, Count count) {
  UnpackedSource bytes = OpenDump(options.input);
  counting.counting.jobs = UseThreads(options.input, bytes);
  auto run =
      counting.counting.jobs > 1 ? count(*bytes.file, counting) : count(*bytes.bytes, counting);
  bytes.bytes.reset();  // and with it the line that shows how far it was read
  for (const std::string& remark : RemarksOn(run.base)) Remark(counting.counting.dump, remark);
  return run;
}

/// A row a value of the signal, for "how much does it switch while busy is 1?".
ExitStatus RunValues(const ProfileChoices& options) {
  const ProfileOptions counting = ProfileCounting(options);
  const std::string& dump = counting.counting.dump;
  const auto count = [](auto& from, const ProfileOptions& how) { return CountByValue(from, how); };
  const ProfileRun<ValueSplit> run = ReadOnce(options, counting, count);
  // No toggle is lost by that: the last row has them, under "others".
  if (run.figures.others > 0) {
    Remark(dump, options.by + " has more than " + std::to_string(counting.mostValues) +
                     " values: those that it has for the shortest time are put together");
  }
  return WriteSplit(run, {dump, "value", options.by}, options.output);
}

/// What toggles in a stretch, from a second reading; nothing where the dump allows none.
std::optional<ActivityResult> ActivityIn(const Peak& peak, const ProfileChoices& options,
                                         const ProfileOptions& counting,
                                         const ActivityResult& base) {
  ActivityOptions again = counting.counting;
  const std::uint64_t tick = base.tick.value_or(1);
  if (!CanReadTwice(options.input) || peak.end > UINT64_MAX / tick) return {};
  // In femtoseconds; a peak beyond what 64 bits of them hold has no second reading. The window
  // counts toggles after its begin up to its end, as the search did.
  again.window = {peak.begin * tick, peak.end * tick};
  UnpackedSource bytes = OpenDump(options.input);
  again.jobs = UseThreads(options.input, bytes);
  return again.jobs > 1 ? CountActivity(*bytes.file, again) : CountActivity(*bytes.bytes, again);
}

/// Two readings of a file: the first finds the stretch, the second counts what toggles in it. Of a
/// pipe there is only the first.
ExitStatus RunPeak(const ProfileChoices& options) {
  const ProfileOptions counting = ProfileCounting(options);
  const std::string& dump = counting.counting.dump;
  const auto count = [](auto& from, const ProfileOptions& how) { return FindPeak(from, how); };
  const ProfileRun<Peak> run = ReadOnce(options, counting, count);
  const Peak& peak = run.figures;
  // Said, because a stretch between two grains may have had a few more.
  if (peak.grain > 1) {
    Remark(dump,
           "a stretch of this length holds too many steps: the peak was looked for at every " +
               std::to_string(peak.grain) + " ticks");
  }
  const std::uint32_t scope = counting.scope ? counting.scope(run.base.declarations) : 0;
  const std::uint64_t limit = options.limit == UINT64_MAX ? kLimit : options.limit;
  const std::optional<ActivityResult> inPeak = ActivityIn(peak, options, counting, run.base);
  if (!inPeak) {
    Remark(dump, std::string("what toggles in the peak is found by a second reading, ") +
                     (CanReadTwice(options.input)
                          ? "which no time of an option reaches: it ends after 2^64 femtoseconds"
                          : "which a pipe does not allow"));
  }
  return WritePeak(run, inPeak ? &*inPeak : nullptr, scope, limit, dump, options.output);
}

/// A database first, as none of the other ways can read one. Inputs and outputs are compared before
/// anything is opened.
ExitStatus RunProfile(const ProfileChoices& options) {
  CheckOutputs({options.input.dump}, {options.output.path});
  if (const auto database = OpenDatabase(options.input, options.window)) {
    return RunKept(options, *database);
  }
  if (!options.clock.empty()) return RunClock(options);
  if (!options.by.empty()) return RunValues(options);
  return options.peak ? RunPeak(options) : RunWindows(options);
}

/// The signal that cuts time. Not an empty text, as of a script's variable that is not set: the
/// rows would be equal parts of the span, which look like what was asked for.
void AddSignal(Command& command, const std::string& flag, const std::string& value,
               std::string& target, const std::string& help) {
  command.AddText(flag, value, target, help).take = [&target](const std::string& text) {
    if (text.empty()) throw Failure(FailureKind::Unusable, "an empty text is no signal");
    target = text;
  };
}

}  // namespace

void AddProfileCommand(CommandLine& line) {
  Command& command = line.Add("profile", kProfileHelp);
  const auto options = std::make_shared<ProfileChoices>();
  AddDumpOptions(command, options->input);
  AddJobsOption(command, options->input);
  command.AddTime("--window", options->windows.length, "windows of this length");
  command
      .AddCount("--windows", "N", {1, 1000000}, options->windows.parts,
                "so many equal parts of the span")
      .Initially(std::to_string(kUsualParts) + ", or what a database holds");
  AddSignal(command, "--clock", "NAME", options->clock,
            "a window for each rising edge of this signal, which ends there");
  // With --peak, 0 is refused by the check.
  command.AddTime("--peak", options->peak,
                  "the busiest stretch of this length, and what toggles most in it");
  AddSignal(command, "--by", "SIGNAL", options->by,
            "split by the values that this signal has: a toggle belongs to the value before it");
  command
      .AddCount("--values", "N", {1, 4000}, options->values,
                "with --by, so many values at most, the others together")
      .Initially(std::to_string(kValues));
  // 0 is allowed: only the peak itself is shown.
  command.AddCount("--limit", "N", {0}, options->limit, "with --peak, so many modules and signals")
      .Initially(std::to_string(kLimit));
  command.AddText("--scope", "PATH", options->scope,
                  "only this scope and all below it: its path from the top, or a name that only "
                  "one has");
  command
      .AddCount("--depth", "N", {0}, options->depth,
                "a column for each module down to so many levels below")
      .Initially("0");
  AddWindowOptions(command, options->window);
  AddOutputOptions(command, options->output);
  command.check = [options] { CheckProfileOptions(*options); };
  command.run = [options] { return RunProfile(*options); };
}

}  // namespace orsa::kesncd::cli
