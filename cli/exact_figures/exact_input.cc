// One way in for dumps and databases.
//
// A command that starts from exact figures need not know where they come from: the run has the same
// members either way, and remarks on it are said here, once.
#include "cli/exact_figures/exact_input.h"

#include <memory>
#include <utility>

#include "activity/both_runs.h"
#include "cli/exact_figures/profile_reading.h"
#include "cli/exact_figures/report_clocks.h"
#include "cli/input/database_input.h"
#include "cli/input/reading_threads.h"
#include "cli/process/messages.h"

namespace orsa::kesncd::cli {

namespace {

// The exact run owns the declarations that the hosts' figures refer to.
void TakeBoth(BothRuns both, StoredRun& run) {
  run.exact = std::move(both.exact);
  run.host = std::move(both.host);
}

/// Counts with a profile, which takes two readings where the end of the span is not to be seen.
void CountProfiled(const ExactInput& options, StoredRun& run) {
  ProfileOptions counting = CountingOf(options.input, options.window, *options.profile);
  ReportClocks clocks;
  // A database keeps the toggles of signals that are called like clocks: which clocks a report will
  // be asked for is not known yet.
  counting.counting.watch = [&](const Declarations& declarations) {
    return clocks.FindIn(declarations, run.facts.dump);
  };
  std::optional<std::uint64_t> last;
  if (!counting.length) last = ExpectedLast(options.input, counting.counting);
  const auto count = [](auto& dump, const ProfileOptions& how) {
    return CountBothAndProfile(dump, how);
  };
  ProfiledRuns counted = ReadByWindows(options.input, counting, last, count);
  TakeBoth(std::move(counted.runs), run);
  run.profile = std::move(counted.profile);
  if (!run.profile) {
    Remark(run.facts.dump,
           "it has too many modules for so many windows: the database holds no figures over time");
  } else if (run.profile->profile.isFolded) {
    Remark(run.facts.dump, FoldedText(run.profile->profile, counting.parts));
  }
}

/// Counts a dump: with a profile, with the hosts' figures, or neither. The facts are filled in
/// first, since remarks use the dump's name.
StoredRun CountRun(const ExactInput& options) {
  StoredRun run;
  // What a database of this run will say of itself.
  run.facts.dump = NameOf(options.input);
  run.facts.program = KESNCD_VERSION;
  run.facts.window = options.window;
  run.facts.hasHost = options.wantsHost;
  if (options.profile) {
    CountProfiled(options, run);
    return run;
  }
  UnpackedSource dump = OpenDump(options.input);
  ActivityOptions counting;
  counting.dump = run.facts.dump;
  counting.window = options.window;
  // Checked against the declarations, before memory is asked for.
  counting.mostBits = MostBitsInMemory();
  counting.watch = options.watch;
  // Threads read parts of a plain file; a packed one is unpacked by a thread of its own. Must come
  // before `bytes` is used.
  counting.jobs = UseThreads(options.input, dump);
  // More costly than one kind alone, so only for databases.
  if (options.wantsHost) {
    TakeBoth(counting.jobs > 1 ? CountBoth(*dump.file, counting) : CountBoth(*dump.bytes, counting),
             run);
  } else {
    run.exact = counting.jobs > 1 ? CountActivity(*dump.file, counting)
                                  : CountActivity(*dump.bytes, counting);
  }
  return run;  // the line that shows how far the dump was read goes with it
}

}  // namespace

StoredRun ReadExactRun(const ExactInput& options) {
  // Null for a dump. A database that is corrupt throws.
  const std::unique_ptr<ActivityDatabase> database = OpenDatabase(options.input, options.window);
  StoredRun run;
  // Windows that are named have to be those of the database; of windows that are not, any will do,
  // and none will do too.
  if (!database) {
    run = CountRun(options);
  } else if (options.profile && !options.profile->IsAny()) {
    run = ReadWithProfile(*database, NameOf(options.input), *options.profile);
  } else {
    run = database->ReadAll();
  }
  // Who asked for no profile need not look whether the database had one.
  if (!options.profile) run.profile.reset();
  for (const std::string& remark : RemarksOn(run.exact)) Remark(NameOf(options.input), remark);
  return run;
}

/// The two causes need different advice: a missing time scale can be supplied, a dump that ends
/// where it begins has nothing to measure.
void SayWhyNoRates(const ActivityResult& result, const std::string& name) {
  if (!result.tick) {
    Remark(name, "it has no time scale, so no rate is known; kesncd prepare --timescale gives one");
  } else if (result.observedTicks == 0 && result.notes.hasStamps) {
    // A dump without stamps has had its own remark from the reading.
    Remark(name, "no time was observed, so no rate is known");
  }
}

}  // namespace orsa::kesncd::cli
