// From a dump's bytes to the activity of its bits.
#include "activity/activity_run.h"

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

// About what a bit takes while it is counted and while parts are added.
constexpr std::uint64_t kBytesPerBit = 120;

/// Empty where nothing is to be watched.
std::vector<std::uint32_t> WatchedCodes(const Declarations& declarations,
                                        const ActivityOptions& options) {
  if (!options.watch) return {};
  return options.watch(declarations);
}

/// The end that all ways of counting have in common.
ActivityResult Finish(ActivityStart& start, ActivityPart part, ItemTallies items) {
  // Throws for a window in which nothing lies.
  start.CheckWindow(part.hasStamps, part.first, part.last);
  start.result.notes.items = std::move(items);
  std::move(part).Finish(start.codes, start.window, start.result);
  return std::move(start.result);
}

/// Goes on from the declarations to the end of the dump.
ActivityResult CountBody(DumpWords& words, ActivityStart& start,
                         const std::vector<std::uint32_t>& watched) {
  // Items need the declarations, to know which codes there are.
  DumpItems items(words, start.result.declarations);
  ActivityCounter counter(start.codes, start.window);
  if (watched.empty()) {
    // Watching sits between the body and the counter and passes everything on.
    ReadBody(items, counter);
  } else {
    ToggleWatch watch(counter, watched, start.codes.codes(), start.window);
    ReadBody(items, watch);
    start.result.watched = watch.Take();
  }
  // Taken after the reading, as they grow with it.
  const ItemTallies tallies = items.tallies();
  return Finish(start, counter.TakePart(), tallies);
}

}  // namespace

/// By one thread, from wherever the bytes come.
ActivityResult CountActivity(ByteSource& dump, const ActivityOptions& options) {
  // Words of up to a quarter of a block are kept whole.
  DumpWords words(dump, options.block, options.block / 4);
  ActivityStart start(ReadDeclarations(words, options.dump), options);
  return CountBody(words, start, WatchedCodes(start.result.declarations, options));
}

ActivityResult CountActivity(ByteFile& file, const ActivityOptions& options) {
  // Opens the file's stretches later; the declarations are read here.
  FileDump dump(file, options.block);
  ActivityStart start(ReadDeclarations(dump.words(), options.dump), options);
  const CodeBits& codes = start.codes;
  const std::vector<std::uint32_t> watched = WatchedCodes(start.result.declarations, options);
  // Each thread has the figures of all bits.
  const unsigned threads = ThreadsWithin(kBytesPerBit * codes.bits(), options.jobs);
  if (threads == 1 || !watched.empty()) return CountBody(dump.words(), start, watched);
  ActivityPart whole;
  bool isFirst = true;
  // Called for each stretch; `codes` outlives all counters.
  const auto make = [&] { return std::make_unique<ActivityCounter>(codes, start.window); };
  // Called in the dump's order, when all is read.
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

/// Declarations move into the result.
ActivityResult FinishActivity(Declarations declarations, ActivityPart part, ItemTallies items,
                              const ActivityOptions& options) {
  ActivityStart start(std::move(declarations), options);
  return Finish(start, std::move(part), std::move(items));
}

/// Swapping would take longer than anybody waits, so it is not counted on.
std::uint64_t MostBitsInMemory() {
  return MemoryBytes() / kBytesPerBit;
}

/// First what could not be read, then what the figures leave out.
std::vector<std::string> RemarksOn(const ActivityResult& result) {
  const ActivityNotes& notes = result.notes;
  // Words that were passed over, changes of undeclared codes and the like.
  std::vector<std::string> remarks = ReadingRemarks(result.declarations, notes.items);
  if (!notes.hasStamps) remarks.emplace_back("it has no time stamp: all its figures are 0");
  if (notes.isEndCutBack) {
    remarks.emplace_back("the window ends after the dump: it is cut back to the dump's end");
  }
  if (notes.pauses > 0) {
    // Within the window.
    const std::uint64_t span = result.lastTick - result.firstTick;
    remarks.push_back("dumping was off for " + std::to_string(span - result.observedTicks) +
                      " of " + std::to_string(span) + " ticks, which are left out");
  }
  // With their number, the first line and an example, as RemarkOn says it.
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
