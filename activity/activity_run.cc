// From a dump's bytes to the activity of its bits.
#include "activity/activity_run.h"

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "activity/activity_counter.h"
#include "activity/activity_part.h"
#include "activity/activity_start.h"
#include "activity/code_bits.h"
#include "activity/profile/toggle_watch.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "free_format/parted_reading.h"
#include "free_format/remarks.h"

namespace orsa::kesncd {

namespace {

constexpr std::uint64_t kBytesPerBit = 120;

std::vector<std::uint32_t> WatchedCodes(const Declarations& declarations,
                                        const ActivityOptions& options) {
  if (!options.watch) return {};
  return options.watch(declarations);
}

ActivityResult Finish(ActivityStart& start, ActivityPart part, ItemTallies items) {
  start.CheckWindow(part.hasStamps, part.first, part.last);
  start.result.notes.items = std::move(items);
  std::move(part).Finish(start.codes, start.window, start.result);
  return std::move(start.result);
}

/// Goes on from the declarations to the end of the dump.
ActivityResult CountBody(DumpWords& words, ActivityStart& start,
                         const std::vector<std::uint32_t>& watched) {
  DumpItems items(words, start.result.declarations);
  ActivityCounter counter(start.codes, start.window);
  if (watched.empty()) {
    ReadBody(items, counter);
  } else {
    ToggleWatch watch(counter, watched, start.codes.codes(), start.window);
    ReadBody(items, watch);
    start.result.watched = watch.Take();
  }
  const ItemTallies tallies = items.tallies();
  return Finish(start, counter.TakePart(), tallies);
}

}  // namespace

ActivityResult CountActivity(ByteSource& dump, const ActivityOptions& options) {
  DumpWords words(dump, options.block, options.block / 4);
  ActivityStart start(ReadDeclarations(words, options.dump), options);
  return CountBody(words, start, WatchedCodes(start.result.declarations, options));
}

ActivityResult CountActivity(ByteFile& file, const ActivityOptions& options) {
  FileDump dump(file, options.block);
  ActivityStart start(ReadDeclarations(dump.words(), options.dump), options);
  const CodeBits& codes = start.codes;
  const std::vector<std::uint32_t> watched = WatchedCodes(start.result.declarations, options);
  const unsigned threads = ThreadsWithin(kBytesPerBit * codes.bits(), options.jobs);
  if (threads == 1 || !watched.empty()) return CountBody(dump.words(), start, watched);
  ActivityPart whole;
  bool isFirst = true;
  const auto make = [&] { return std::make_unique<ActivityCounter>(codes, start.window); };
  const auto take = [&](const std::unique_ptr<ActivityCounter> counter) {
    if (isFirst) {
      whole = counter->TakePart();
    } else {
      whole.Add(codes, counter->TakePart());
    }
    isFirst = false;
  };
  ItemTallies tallies = ReadInParts(dump, start.result.declarations, dump.Cut(threads), make, take);
  return Finish(start, std::move(whole), std::move(tallies));
}

ActivityResult FinishActivity(Declarations declarations, ActivityPart part, ItemTallies items,
                              const ActivityOptions& options) {
  ActivityStart start(std::move(declarations), options);
  return Finish(start, std::move(part), std::move(items));
}

std::uint64_t MemoryBytes() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long page = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || page <= 0) return UINT64_MAX;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page);
}

std::uint64_t MostBitsInMemory() {
  return MemoryBytes() / kBytesPerBit;
}

unsigned ThreadsWithin(std::uint64_t bytesOfEach, unsigned jobs) {
  const std::uint64_t most = MemoryBytes() / 4 / std::max<std::uint64_t>(bytesOfEach, 1);
  return static_cast<unsigned>(std::max<std::uint64_t>(std::min<std::uint64_t>(most, jobs), 1));
}

std::vector<std::string> RemarksOn(const ActivityResult& result) {
  const ActivityNotes& notes = result.notes;
  std::vector<std::string> remarks = ReadingRemarks(result.declarations, notes.items);
  if (!notes.hasStamps) remarks.emplace_back("it has no time stamp: all its figures are 0");
  if (notes.isEndCutBack) {
    remarks.emplace_back("the window ends after the dump: it is cut back to the dump's end");
  }
  if (notes.pauses > 0) {
    const std::uint64_t span = result.lastTick - result.firstTick;
    remarks.push_back("dumping was off for " + std::to_string(span - result.observedTicks) +
                      " of " + std::to_string(span) + " ticks, which are left out");
  }
  if (notes.withoutBits) {
    remarks.push_back(
        RemarkOn("variables whose width is no positive number, left out", notes.withoutBits));
  }
  if (notes.typesWithoutBits) {
    remarks.push_back(
        RemarkOn("variables of types without bits, left out", notes.typesWithoutBits));
  }
  return remarks;
}

}  // namespace orsa::kesncd
