// One way in for dumps and databases.
#include "cli/exact_figures/exact_input.h"

#include <memory>
#include <utility>

#include "activity/both_runs.h"
#include "cli/input/database_input.h"
#include "cli/input/reading_threads.h"
#include "cli/process/messages.h"

namespace orsa::kesncd::cli {

namespace {

StoredRun CountRun(const ExactInput& options) {
  StoredRun run;
  // What a database of this run will say of itself.
  run.facts.dump = NameOf(options.input);
  run.facts.program = KESNCD_VERSION;
  run.facts.window = options.window;
  run.facts.hasHost = options.wantsHost;
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
    BothRuns both =
        counting.jobs > 1 ? CountBoth(*dump.file, counting) : CountBoth(*dump.bytes, counting);
    run.exact = std::move(both.exact);
    run.host = std::move(both.host);
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
  StoredRun run = database ? database->ReadAll() : CountRun(options);
  for (const std::string& remark : RemarksOn(run.exact)) Remark(NameOf(options.input), remark);
  return run;
}

}  // namespace orsa::kesncd::cli
