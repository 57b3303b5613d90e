// From a dump's bytes to the activity of its bits.
#include "activity/activity_run.h"

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

// Two kinds of takers count: one of them watches a few signals as well. Watching costs each change
// something, so it is left out where there is nothing to be watched.
using WatchingCounter = ToggleWatch<ActivityCounter>;

ActivityCounter& CounterOf(ActivityCounter& taker) {
  return taker;
}
ActivityCounter& CounterOf(WatchingCounter& taker) {
  return taker.counter();
}
void AddWatched(ActivityCounter& /*whole*/, ActivityCounter& /*next*/) {}
void AddWatched(WatchingCounter& whole, WatchingCounter& next) {
  whole.Add(next);
}
std::vector<ToggleSpan> TakeWatched(ActivityCounter& /*taker*/) {
  return {};
}
std::vector<ToggleSpan> TakeWatched(WatchingCounter& taker) {
  return taker.Take();
}

/// Calls `count(make)`, where `make()` gives a taker for a body or a stretch of one.
template <class Count>
ActivityResult WithTakers(const ActivityStart& start, const std::vector<std::uint32_t>& watched,
                          Count count) {
  if (watched.empty()) {
    return count([&] { return std::make_unique<ActivityCounter>(start.codes, start.window); });
  }
  return count(
      [&] { return std::make_unique<WatchingCounter>(watched, start.codes, start.window); });
}

/// Goes on from the declarations to the end of the dump.
ActivityResult CountBody(DumpWords& words, ActivityStart& start,
                         const std::vector<std::uint32_t>& watched) {
  return WithTakers(start, watched, [&](const auto make) {
    // Items need the declarations, to know which codes there are.
    DumpItems items(words, start.result.declarations);
    const auto taker = make();
    ReadBody(items, *taker);
    start.result.watched = TakeWatched(*taker);
    return Finish(start, CounterOf(*taker).TakePart(), items.tallies());
  });
}

/// The same by several threads, each with stretches of the body.
ActivityResult CountStretches(FileDump& dump, ActivityStart& start,
                              const std::vector<std::uint32_t>& watched, unsigned threads) {
  return WithTakers(start, watched, [&](const auto make) {
    // What was watched is gathered in the first stretch's taker, what was counted in `part`.
    decltype(make()) whole;
    ActivityPart part;
    // Called in the dump's order, when all is read.
    const auto take = [&](decltype(make()) next) {
      if (whole) {
        part.Add(start.codes, CounterOf(*next).TakePart());
        AddWatched(*whole, *next);
      } else {
        part = CounterOf(*next).TakePart();
        whole = std::move(next);
      }
    };
    ItemTallies tallies =
        ReadInParts(dump, start.result.declarations, dump.Cut(threads), make, take);
    start.result.watched = TakeWatched(*whole);
    return Finish(start, std::move(part), std::move(tallies));
  });
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
  if (threads == 1) return CountBody(dump.words(), start, watched);
  return CountStretches(dump, start, watched, threads);
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
