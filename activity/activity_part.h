// What was counted in a part of a dump without knowing what came before it, and how parts add up.
//
// Times are kept as sums of differences: each level that a bit leaves adds the time of the leaving,
// each that it enters takes the time off, and all wraps around. So a stretch without its beginning
// or its end is a sum like any other, and two neighbours need only what happened where they meet.
//
// An example: a bit is 0 from tick 10, 1 from tick 30, and the part ends at 50. Entering 0 at 10
// takes 10 off t0, leaving it at 30 adds 30: t0 is 20. Entering 1 takes 30 off t1, and what is
// still open at the end is closed by adding 50: t1 is 20 too. A part that ends in between simply
// has t1 = -30, as a number that wraps around, until the next part says when the level ends.
#ifndef KESNCD_ACTIVITY_ACTIVITY_PART_H_
#define KESNCD_ACTIVITY_ACTIVITY_PART_H_

#include <cstdint>
#include <vector>

#include "activity/activity_result.h"
#include "activity/activity_window.h"
#include "activity/bit_edge.h"
#include "activity/code_bits.h"
#include "text/large_array.h"

namespace orsa::kesncd {

/// Bits over a stretch of time that was observed without a break. A code without a value in it
/// keeps the levels that its bits had before. Both vectors have an element for each bit of all
/// codes, by the places of CodeBits, or, if no code has a value, none.
struct ObservedPiece {
  // tc and ig count what is known within the piece; t0 to tz may be below 0, wrapped around.
  LargeArray<BitFigures> figures;  // of each bit: differences since its code's first value
  std::vector<BitEdge> edges;      // of each bit

  bool IsEmpty() const { return figures.empty(); }
  /// Whether the code was given any value in the piece.
  bool IsSeen(const CodeBits& codes, std::uint32_t codeId) const;
  /// Goes on with the piece that comes next without a break. `next` is used up. What happened where
  /// the two meet (a toggle, an excursion that ended) is counted from their edges.
  void Append(const CodeBits& codes, ObservedPiece&& next);
  /// Ends all bits' levels where observation ends; from then on nothing is known of any bit, as
  /// before its first value.
  void Close(std::uint64_t ticks);
  /// Adds the figures of a piece that begins after a break; the levels are then those of `next`.
  /// This piece has to be closed.
  void Join(ObservedPiece&& next);
};

/// Activity of a part of a dump's body, which begins with a stamp, or with the body, and ends
/// before a stamp larger than all of its own. Parts of one dump that were counted with the same
/// codes and window add up: Add in any order of association, then Finish.
///
/// A part's time, if its first switch is a $dumpoff, and if it is a $dumpon:
///
///   |--- front ---| off      on |--- tail ---| off      on |--- tail ...
///   |--- front --- on --- middle ---| off     on |--- tail ...
///
/// In the second case only the part before tells what the $dumpon did. If this part began observed,
/// it switched nothing and the middle goes on from the front; if not, the front does not count and
/// the middle begins anew.
class ActivityPart {
 public:
  /// Which word the part's first switch is: $dumpoff, $dumpon, or none.
  enum class Switch : std::uint8_t { None, Off, On };

  bool hasStamps = false;  // else the part is empty
  // Not clamped to the window, as CanPrecede compares them.
  std::uint64_t first = 0;     // stamp
  std::uint64_t last = 0;      // the largest stamp
  std::uint64_t backward = 0;  // stamps that were smaller than an earlier one

  // All times from here on are clamped to the window.
  // Before the first switch; it counts only if the part began observed.
  ObservedPiece front;
  Switch firstSwitch = Switch::None;
  // When the first switch was; only where there is one.
  std::uint64_t switchTime = 0;
  // From a first switch that begins observation to the next one that ends it. If the part began
  // observed, the front goes on here, else this begins anew.
  ObservedPiece middle;
  // No second switch ended the middle.
  bool isMiddleOpen = false;
  // When it was ended; only where it was.
  std::uint64_t middleEnd = 0;
  // All observed stretches after that, added up, and the edges of one that is open at the end.
  ObservedPiece tail;
  bool isTailOpen = false;
  // A sum that may wrap around until Finish, like the times of bits.
  std::uint64_t tailObserved = 0;  // ends less begins
  // How many of those stretches ended in a pause.
  std::uint64_t tailPauses = 0;

  /// Whether a part can come next: its time grows at the cut, or one of the two is empty. A cut
  /// where time does not grow is none: the values after it would belong to the step before.
  bool CanPrecede(const ActivityPart& next) const {
    return !hasStamps || !next.hasStamps || last < next.first;
  }
  /// Adds the part that comes next in the dump, which this one can precede. `next` is used up.
  /// Associative: (a + b) + c is a + (b + c), to the last tick.
  void Add(const CodeBits& codes, ActivityPart&& next);
  /// Turns the part, as the whole of a dump, into its figures. `result` has its declarations; the
  /// interval, the figures and what the part knows of the notes are set. The whole of a dump begins
  /// observed, and its last open stretch ends with its last stamp.
  void Finish(const CodeBits& codes, const ActivityWindow& window, ActivityResult& result) &&;

 private:
  /// Both parts have switches; see the definition.
  void AddSwitched(const CodeBits& codes, ActivityPart&& next);
  ObservedPiece* OpenPiece();
  void Pause(std::uint64_t ticks);
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_ACTIVITY_PART_H_
