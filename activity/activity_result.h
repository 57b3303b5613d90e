// What was counted in a dump, bit by bit: how long each bit was 0, 1, x and z, and how often it
// toggled. Every export of exact activity starts from this.
//
// Identifier codes and not variables have figures: aliases share them, and a variable of fewer bits
// than its code sees the lowest ones. ActivityRows turns them into rows.
#ifndef KESNCD_ACTIVITY_ACTIVITY_RESULT_H_
#define KESNCD_ACTIVITY_ACTIVITY_RESULT_H_

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "free_format/dump_items.h"
#include "text/large_array.h"
#include "vcd/declarations.h"
#include "vcd/tally.h"

namespace orsa::kesncd {

/// Of one bit, in ticks of the dump. The four times add up to the observed time, which is the same
/// for all bits. For a clock of 10 ns seen for 100 ns in ticks of 1 ns: t0 = t1 = 50, tc = 20 or
/// 19, ig = 0.
struct BitFigures {
  std::uint64_t t0 = 0;  // ticks at 0, 1, x and z
  std::uint64_t t1 = 0;
  std::uint64_t tx = 0;
  std::uint64_t tz = 0;
  // Toggles: from 0 to 1 or 1 to 0; by way of x or z they count once.
  std::uint64_t tc = 0;
  // Excursions through x that came back to the same value: 0 x 0 and 1 x 1, but not 0 z 0.
  std::uint64_t ig = 0;

  bool operator==(const BitFigures&) const = default;
};

/// What a reader of the figures must know about the dump that they are of. Made by the reading;
/// RemarksOn turns it into sentences, and results hold its counts.
struct ActivityNotes {
  Tally typesWithoutBits;            // variables of types such as real and string
  Tally withoutBits;                 // variables whose width is no positive number
  std::uint64_t backwardStamps = 0;  // smaller than an earlier one: they do not move time
  std::uint64_t pauses = 0;          // times that $dumpoff ended observation
  bool hasStamps = true;             // false: nothing says how long anything took
  bool isEndCutBack = false;         // the window was to end after the dump
  ItemTallies items;                 // what else was passed over
};

/// When a signal of one bit toggled first and last, and how often from there to there. For clocks:
/// half of the toggles after the first one, by the time between, is the frequency.
struct ToggleSpan {
  // Ticks; only where there is a toggle.
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  std::uint64_t toggles = 0;  // two of them are one period
};

/// A value that may be kept after the dump is closed. Merged runs have a declaration tree of their
/// own, and bits that some runs lack were observed for less than `observedTicks`.
struct ActivityResult {
  Declarations declarations;
  /// Where the bits of each codeId begin in `bits`, the lowest bit first; one entry more for the
  /// end. A code has as many bits as its widest variable, or none.
  std::vector<std::uint64_t> firstBit;
  LargeArray<BitFigures> bits;
  // The interval that was counted, clamped to the window, and how much of it was observed: what
  // $dumpoff left out is not.
  std::uint64_t firstTick = 0;
  std::uint64_t lastTick = 0;
  std::uint64_t observedTicks = 0;
  std::optional<std::uint64_t> tick;  // femtoseconds; nothing where the dump does not say it
  ActivityNotes notes;
  std::vector<ToggleSpan> watched;  // of the signals that were to be watched

  /// The bits of a code, the lowest one first. Empty for a code without bits. Valid as long as the
  /// result.
  std::span<const BitFigures> BitsOf(std::uint32_t codeId) const {
    return {bits.data() + firstBit[codeId], bits.data() + firstBit[codeId + 1]};
  }
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_ACTIVITY_RESULT_H_
