// Declarations, windows and what is said of them.
#include "activity/activity_start.h"

#include <utility>

#include "activity/activity_run.h"
#include "text/failure.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd {

namespace {

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

/// The declarations with what is to be said of them.
ActivityResult HeadOf(Declarations declarations, const ActivityOptions& options) {
  ActivityResult result;
  result.declarations = std::move(declarations);
  result.tick = result.declarations.tick ? result.declarations.tick : options.tick;
  FindBitless(result.declarations, result.notes);
  return result;
}

}  // namespace

ActivityStart::ActivityStart(Declarations declarations, const ActivityOptions& options)
    : result(HeadOf(std::move(declarations), options)),
      ticks(WindowInTicks(options.window, result.tick, options.dump)),
      window(BoundsOf(ticks, options.dump)),
      codes(result.declarations),
      dump_(options.dump) {
  if (codes.bits() <= options.mostBits) return;
  throw Failure(FailureKind::Unusable, dump_ + ": declares " + std::to_string(codes.bits()) +
                                           " bits, more than the memory holds");
}

void ActivityStart::CheckWindow(bool hasStamps, std::uint64_t first, std::uint64_t last) {
  result.notes.isEndCutBack = ticks.end && last < *ticks.end;
  if (!ticks.begin && !ticks.end) return;
  if (!hasStamps || last < window.begin || first > window.end) FailEmptyWindow(dump_);
}

}  // namespace orsa::kesncd
