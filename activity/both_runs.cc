// One reading with both counters.
#include "activity/both_runs.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "activity/both_counters.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "free_format/parted_reading.h"

namespace orsa::kesncd {

namespace {

TickWindow HostWindowOf(const Declarations& declarations, const ActivityOptions& options) {
  const auto tick = declarations.tick ? declarations.tick : options.tick;
  return WindowInTicks(options.window, tick, options.dump);
}

/// As many threads as may be used, but no more than take a quarter of the memory.
unsigned ThreadsFor(const CodeBits& codes, const ActivityOptions& options) {
  const std::uint64_t most = MostBitsInMemory() / 5 / std::max<std::uint64_t>(codes.bits(), 1);
  return static_cast<unsigned>(std::clamp<std::uint64_t>(most, 1, options.jobs));
}

}  // namespace

BothRuns CountBoth(ByteFile& file, const ActivityOptions& options) {
  FileDump dump(file, options.block);
  Declarations declarations = ReadDeclarations(dump.words(), options.dump);
  const CodeBits codes(declarations);
  CheckMemory(codes, options);
  const ActivityWindow window = ActivityWindowOf(declarations, options);
  const TickWindow hostWindow = HostWindowOf(declarations, options);
  ActivityPart activity;
  std::optional<HostPart> host;
  const auto make = [&] { return std::make_unique<BothCounters>(codes, window, hostWindow); };
  const auto take = [&](const std::unique_ptr<BothCounters> counters) {
    if (host) {
      activity.Add(codes, counters->activity().TakePart());
      host->Add(hostWindow, counters->host().TakePart());
    } else {
      activity = counters->activity().TakePart();
      host = counters->host().TakePart();
    }
  };
  const auto stretches = dump.Cut(ThreadsFor(codes, options));
  const ItemTallies tallies = ReadInParts(dump, declarations, stretches, make, take);
  return FinishBoth(std::move(declarations), std::move(activity), std::move(*host), tallies,
                    options);
}

BothRuns CountBoth(ByteSource& dump, const ActivityOptions& options) {
  DumpWords words(dump, options.block, options.block / 4);
  Declarations declarations = ReadDeclarations(words, options.dump);
  const CodeBits codes(declarations);
  CheckMemory(codes, options);
  BothCounters counters(codes, ActivityWindowOf(declarations, options),
                        HostWindowOf(declarations, options));
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
