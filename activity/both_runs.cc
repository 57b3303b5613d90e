// One reading with both counters.
//
// The two kinds need the same items but count them by different rules: the exact one bit by bit,
// with the last value of each step only, the hosts' one every value that a line gives. So a reading
// feeds two counters, and nothing is read or unpacked twice. Neither kind is changed by the other:
// both are what a reading for one kind alone would give.
#include "activity/both_runs.h"

#include <memory>
#include <optional>
#include <utility>

#include "activity/activity_start.h"
#include "activity/both_counters.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "free_format/parted_reading.h"

namespace orsa::kesncd {

namespace {

// What each thread needs for a bit in both counts: it bounds how many threads fit into memory.
constexpr std::uint64_t kBytesPerBit = 180;

}  // namespace

/// Of a file: the stretches are counted apart and added up in the dump's order.
BothRuns CountBoth(ByteFile& file, const ActivityOptions& options) {
  FileDump dump(file, options.block);
  ActivityStart start(ReadDeclarations(dump.words(), options.dump), options);
  const CodeBits& codes = start.codes;
  ActivityPart activity;
  std::optional<HostPart> host;
  // A pair of counters for each stretch; all of them live until the last one is read.
  const auto make = [&] {
    return std::make_unique<BothCounters>(codes, start.window,
                                          std::make_shared<CodeLines>(codes.codes()), start.ticks);
  };
  // The first stretch's counts become the whole; a later stretch adds to both kinds, so that they
  // always are of the same part of the dump.
  const auto take = [&](const std::unique_ptr<BothCounters> counters) {
    if (host) {
      activity.Add(codes, counters->activity().TakePart());
      host->Add(start.ticks, counters->host().TakePart());
    } else {
      activity = counters->activity().TakePart();
      host = counters->host().TakePart();
    }
  };
  const auto stretches = dump.Cut(ThreadsWithin(kBytesPerBit * codes.bits(), options.jobs));
  const ItemTallies tallies = ReadInParts(dump, start.result.declarations, stretches, make, take);
  return FinishBoth(std::move(start.result.declarations), std::move(activity), std::move(*host),
                    tallies, options);
}

/// Of any source, by one thread.
BothRuns CountBoth(ByteSource& dump, const ActivityOptions& options) {
  DumpWords words(dump, options.block, options.block / 4);
  ActivityStart start(ReadDeclarations(words, options.dump), options);
  BothCounters counters(start.codes, start.window, std::make_shared<CodeLines>(start.codes.codes()),
                        start.ticks);
  DumpItems items(words, start.result.declarations);
  ReadBody(items, counters);
  const ItemTallies tallies = items.tallies();
  ActivityPart activity = counters.activity().TakePart();
  return FinishBoth(std::move(start.result.declarations), std::move(activity),
                    counters.host().TakePart(), tallies, options);
}

/// The declarations are moved to the host's run and from there to the exact one, where they stay.
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
