// One reading with both counters.
#include "activity/both_runs.h"

#include <utility>

#include "activity/both_counters.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"

namespace orsa::kesncd {

BothRuns CountBoth(ByteSource& dump, const ActivityOptions& options) {
  DumpWords words(dump, options.block, options.block / 4);
  Declarations declarations = ReadDeclarations(words, options.dump);
  const CodeBits codes(declarations);
  CheckMemory(codes, options);
  const auto tick = declarations.tick ? declarations.tick : options.tick;
  BothCounters counters(codes, ActivityWindowOf(declarations, options),
                        WindowInTicks(options.window, tick, options.dump));
  DumpItems items(words, declarations);
  ReadBody(items, counters);
  const ItemTallies tallies = items.tallies();
  ActivityPart activity = counters.activity().TakePart();
  return FinishBoth(std::move(declarations), std::move(activity), counters.host().TakePart(),
                    tallies, options);
}

BothRuns FinishBoth(Declarations declarations, ActivityPart activity, HostPart host,
                    const ItemTallies& items, const ActivityOptions& options) {
  BothRuns runs;
  runs.host =
      FinishHostRun(std::move(declarations), std::move(host), items, options.dump, options.window);
  runs.exact =
      FinishActivity(std::move(runs.host.declarations), std::move(activity), items, options);
  return runs;
}

}  // namespace orsa::kesncd
