// Declarations, windows and what is said of them.
#include "activity/activity_start.h"

#include <utility>

#include "activity/activity_run.h"
#include "free_format/prepare/prepare.h"
#include "text/failure.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd {

namespace {

/// One message for all reasons: a user has to look at the dump's span in any case.
[[noreturn]] void FailEmptyWindow(const std::string& dump) {
  throw Failure(FailureKind::NothingMatched, dump + ": nothing lies in the window");
}

/// Notes the variables without bits.
void FindBitless(const Declarations& declarations, ActivityNotes& notes) {
  for (const DumpVariable& variable : declarations.variables) {
    if (!TypeHasBits(declarations.TypeOf(variable))) {
      Tally& tally = notes.typesWithoutBits;
      // The path of the first one is enough for a remark.
      tally.Add(variable.line, tally ? "" : declarations.ShortPathOf(variable));
    } else if (variable.width == 0) {
      // "reg 0 # q" or a width that is no number.
      Tally& tally = notes.withoutBits;
      tally.Add(variable.line, tally ? "" : declarations.ShortPathOf(variable));
    }
  }
}

/// The window with both bounds. Throws for one that is empty whatever the dump holds. `window` has
/// only the bounds that the user gave.
ActivityWindow BoundsOf(const TickWindow& window, const std::string& dump) {
  const ActivityWindow all;
  const ActivityWindow bounds{window.begin.value_or(all.begin), window.end.value_or(all.end)};
  // BEGIN and END were rounded to ticks, BEGIN up and END down, so that a short window may become
  // empty.
  if (bounds.begin > bounds.end) FailEmptyWindow(dump);
  return bounds;
}

/// The declarations with what is to be said of them.
ActivityResult HeadOf(Declarations declarations, const ActivityOptions& options) {
  ActivityResult result;
  result.declarations = std::move(declarations);
  // The dump's own time scale counts; an option can only stand in for one.
  result.tick = result.declarations.tick ? result.declarations.tick : options.tick;
  FindBitless(result.declarations, result.notes);
  return result;
}

}  // namespace

/// The order of the members matters: each is made from those before it.
ActivityStart::ActivityStart(Declarations declarations, const ActivityOptions& options)
    : result(HeadOf(std::move(declarations), options)),
      ticks(WindowInTicks(options.window, result.tick, options.dump)),
      window(BoundsOf(ticks, options.dump)),
      codes(result.declarations),
      dump_(options.dump) {
  // Before any counter asks for memory: a few bytes of a hostile dump declare millions of bits.
  if (codes.bits() <= options.mostBits) return;
  throw Failure(FailureKind::Unusable, dump_ + ": declares " + std::to_string(codes.bits()) +
                                           " bits, more than the memory holds");
}

/// Called after the body was read: only then its last stamp is known.
void ActivityStart::CheckWindow(bool hasStamps, std::uint64_t first, std::uint64_t last) {
  // Noted even if nothing lies in the window: the failure below then tells more.
  result.notes.isEndCutBack = ticks.end && last < *ticks.end;
  // Without a window a dump may have no stamp at all: its figures are 0.
  if (!ticks.begin && !ticks.end) return;
  if (!hasStamps || last < window.begin || first > window.end) FailEmptyWindow(dump_);
}

}  // namespace orsa::kesncd
