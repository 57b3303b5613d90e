// From a dump's bytes to the activity of its bits.
#include "activity/activity_run.h"

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "activity/activity_counter.h"
#include "activity/activity_part.h"
#include "activity/activity_window.h"
#include "activity/code_bits.h"
#include "activity/toggle_watch.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "free_format/parted_reading.h"
#include "free_format/remarks.h"
#include "text/failure.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd {

namespace {

constexpr std::uint64_t kBytesPerBit = 120;

[[noreturn]] void FailEmptyWindow(const std::string& dump) {
  throw Failure(FailureKind::NothingMatched, dump + ": nothing lies in the window");
}

/// Notes the variables without bits.
void FindBitless(const Declarations& declarations, ActivityNotes& notes) {
  for (const DumpVariable& variable : declarations.variables) {
    if (!TypeHasBits(declarations.TypeOf(variable))) {
      Tally& tally = notes.typesWithoutBits;
      tally.Add(variable.line, tally ? "" : declarations.ShortPathOf(variable));
    } else if (variable.width == 0) {
      Tally& tally = notes.withoutBits;
      tally.Add(variable.line, tally ? "" : declarations.ShortPathOf(variable));
    }
  }
}

TickWindow WindowOf(const Declarations& declarations, const ActivityOptions& options) {
  const auto tick = declarations.tick ? declarations.tick : options.tick;
  return WindowInTicks(options.window, tick, options.dump);
}

/// Throws where nothing of the dump lies in the window.
void CheckWindow(const ActivityPart& part, const TickWindow& window, const std::string& dump) {
  if (!window.begin && !window.end) return;
  if (!part.hasStamps || part.last < window.begin.value_or(0) ||
      part.first > window.end.value_or(UINT64_MAX)) {
    FailEmptyWindow(dump);
  }
}

std::vector<std::uint32_t> WatchedCodes(const Declarations& declarations,
                                        const ActivityOptions& options) {
  if (!options.watch) return {};
  return options.watch(declarations);
}

/// As many threads as may be used, but no more than take a quarter of the memory.
unsigned ThreadsFor(const CodeBits& codes, const ActivityOptions& options) {
  const std::uint64_t most = MostBitsInMemory() / 4 / std::max<std::uint64_t>(codes.bits(), 1);
  return static_cast<unsigned>(std::clamp<std::uint64_t>(most, 1, options.jobs));
}

/// Goes on from the declarations to the end of the dump.
ActivityResult CountBody(DumpWords& words, Declarations declarations, const CodeBits& codes,
                         const std::vector<std::uint32_t>& watched,
                         const ActivityOptions& options) {
  const ActivityWindow window = ActivityWindowOf(declarations, options);
  DumpItems items(words, declarations);
  ActivityCounter counter(codes, window);
  std::vector<ToggleSpan> spans;
  if (watched.empty()) {
    ReadBody(items, counter);
  } else {
    ToggleWatch watch(counter, watched, codes.codes(), window);
    ReadBody(items, watch);
    spans = watch.Take();
  }
  const ItemTallies tallies = items.tallies();
  ActivityResult result =
      FinishActivity(std::move(declarations), counter.TakePart(), tallies, options);
  result.watched = std::move(spans);
  return result;
}

}  // namespace

ActivityWindow ActivityWindowOf(const Declarations& declarations, const ActivityOptions& options) {
  const TickWindow window = WindowOf(declarations, options);
  const ActivityWindow all;
  const ActivityWindow bounds{window.begin.value_or(all.begin), window.end.value_or(all.end)};
  if (bounds.begin > bounds.end) FailEmptyWindow(options.dump);
  return bounds;
}

void CheckMemory(const CodeBits& codes, const ActivityOptions& options) {
  if (codes.bits() <= options.mostBits) return;
  throw Failure(FailureKind::Unusable, options.dump + ": declares " + std::to_string(codes.bits()) +
                                           " bits, more than the memory holds");
}

ActivityResult CountActivity(ByteSource& dump, const ActivityOptions& options) {
  DumpWords words(dump, options.block, options.block / 4);
  Declarations declarations = ReadDeclarations(words, options.dump);
  (void)ActivityWindowOf(declarations, options);
  const CodeBits codes(declarations);
  CheckMemory(codes, options);
  const std::vector<std::uint32_t> watched = WatchedCodes(declarations, options);
  return CountBody(words, std::move(declarations), codes, watched, options);
}

ActivityResult CountActivity(ByteFile& file, const ActivityOptions& options) {
  FileDump dump(file, options.block);
  Declarations declarations = ReadDeclarations(dump.words(), options.dump);
  const ActivityWindow window = ActivityWindowOf(declarations, options);
  const CodeBits codes(declarations);
  CheckMemory(codes, options);
  const std::vector<std::uint32_t> watched = WatchedCodes(declarations, options);
  const unsigned threads = ThreadsFor(codes, options);
  if (threads == 1 || !watched.empty()) {
    return CountBody(dump.words(), std::move(declarations), codes, watched, options);
  }
  ActivityPart whole;
  bool isFirst = true;
  const auto make = [&] { return std::make_unique<ActivityCounter>(codes, window); };
  const auto take = [&](const std::unique_ptr<ActivityCounter> counter) {
    if (isFirst) {
      whole = counter->TakePart();
    } else {
      whole.Add(codes, counter->TakePart());
    }
    isFirst = false;
  };
  ItemTallies tallies = ReadInParts(dump, declarations, dump.Cut(threads), make, take);
  return FinishActivity(std::move(declarations), std::move(whole), std::move(tallies), options);
}

ActivityResult FinishActivity(Declarations declarations, ActivityPart part, ItemTallies items,
                              const ActivityOptions& options) {
  const TickWindow ticks = WindowOf(declarations, options);
  const ActivityWindow window = ActivityWindowOf(declarations, options);
  CheckWindow(part, ticks, options.dump);
  ActivityResult result;
  result.tick = declarations.tick ? declarations.tick : options.tick;
  result.declarations = std::move(declarations);
  FindBitless(result.declarations, result.notes);
  result.notes.items = std::move(items);
  result.notes.isEndCutBack = ticks.end && part.last < *ticks.end;
  std::move(part).Finish(CodeBits(result.declarations), window, result);
  return result;
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
