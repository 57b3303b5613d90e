// From a dump's bytes to the activity of its bits.
#include "activity/activity_run.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "activity/activity_counter.h"
#include "activity/activity_part.h"
#include "activity/activity_window.h"
#include "activity/code_bits.h"
#include "activity/host_counter.h"
#include "activity/taker_pair.h"
#include "activity/toggle_watch.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
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

/// The window with both bounds. Throws for one that is empty whatever the dump holds.
ActivityWindow BoundsOf(const TickWindow& window, const std::string& dump) {
  const ActivityWindow all;
  const ActivityWindow bounds{window.begin.value_or(all.begin), window.end.value_or(all.end)};
  if (bounds.begin > bounds.end) FailEmptyWindow(dump);
  return bounds;
}

/// Throws where nothing of the dump lies in the window.
void CheckWindow(const ActivityPart& part, const TickWindow& window, const std::string& dump) {
  if (!window.begin && !window.end) return;
  if (!part.hasStamps || part.last < window.begin.value_or(0) ||
      part.first > window.end.value_or(UINT64_MAX)) {
    FailEmptyWindow(dump);
  }
}

}  // namespace

ActivityResult CountActivity(ByteSource& dump, const ActivityOptions& options) {
  DumpWords words(dump, options.block, options.block / 4);
  ActivityResult result;
  result.declarations = ReadDeclarations(words, options.dump);
  result.tick = result.declarations.tick ? result.declarations.tick : options.tick;
  FindBitless(result.declarations, result.notes);
  const TickWindow ticks = WindowInTicks(options.window, result.tick, options.dump);
  const ActivityWindow window = BoundsOf(ticks, options.dump);
  const CodeBits codes(result.declarations);
  if (codes.bits() > options.mostBits) {
    throw Failure(FailureKind::Unusable, options.dump + ": declares " +
                                             std::to_string(codes.bits()) +
                                             " bits, more than the memory holds");
  }
  std::vector<std::uint32_t> watched;
  if (options.watch) watched = options.watch(result.declarations);
  ActivityPart part;
  {
    DumpItems items(words, result.declarations);
    ActivityCounter counter(codes, window);
    if (options.host != nullptr) {
      HostCounting host(codes.codes(), ticks);
      TakerPair both(counter, host);
      ReadBody(items, both);
      SetHostFigures(result.declarations, items.tallies(), host, options.dump, *options.host);
    } else if (watched.empty()) {
      ReadBody(items, counter);
    } else {
      ToggleWatch watch(counter, watched, codes.codes(), window);
      ReadBody(items, watch);
      result.watched = watch.Take();
    }
    result.notes.items = items.tallies();
    part = counter.TakePart();
  }
  CheckWindow(part, ticks, options.dump);
  result.notes.isEndCutBack = ticks.end && part.last < *ticks.end;
  std::move(part).Finish(codes, window, result);
  return result;
}

std::uint64_t MostBitsInMemory() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long page = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || page <= 0) return UINT64_MAX;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page) / kBytesPerBit;
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
