// What was counted in a part of a dump without knowing what came before it, and how parts add up.
//
// Times are kept as sums of differences: each level that a bit leaves adds the time of the leaving,
// each that it enters takes the time off, and all wraps around. So a stretch without its beginning
// or its end is a sum like any other, and two neighbours need only what happened where they meet.
#ifndef KESNCD_ACTIVITY_ACTIVITY_PART_H_
#define KESNCD_ACTIVITY_ACTIVITY_PART_H_

#include <cstdint>
#include <vector>

#include "activity/activity_result.h"
#include "activity/activity_window.h"
#include "activity/bit_edge.h"
#include "activity/code_bits.h"

namespace orsa::kesncd {

/// Bits over a stretch of time that was observed without a break. What is not said of a code that
/// had no value: its bits keep the level they had before. Empty vectors stand for no value at all.
struct ObservedPiece {
  std::vector<BitFigures> figures;  // of each bit: differences since its code's first value
  std::vector<BitEdge> edges;       // of each bit

  bool IsEmpty() const { return figures.empty(); }
  bool IsSeen(const CodeBits& codes, std::uint32_t codeId) const;
  /// Goes on with the piece that comes next without a break.
  void Append(const CodeBits& codes, ObservedPiece&& next);
  /// Ends all bits' levels at a time; they are as before the first value then.
  void Close(std::uint64_t ticks);
  /// Adds the figures of a piece that begins after a break, and goes on as that one ends. All bits
  /// of this one are closed.
  void Join(ObservedPiece&& next);
};

/// Activity of a part of a dump's body, which begins with a stamp, or with the body, and ends
/// before a stamp larger than all of its own. Parts of one dump that were counted with the same
/// codes and window add up: Add in any order of association, then Finish.
class ActivityPart {
 public:
  /// Whether the word of the part's first switch, if there is one, ended or began observation.
  enum class Switch : std::uint8_t { None, Off, On };

  bool hasStamps = false;      // else the part is empty
  std::uint64_t first = 0;     // stamp
  std::uint64_t last = 0;      // the largest stamp
  std::uint64_t backward = 0;  // stamps that were smaller than an earlier one

  // All times from here on are clamped to the window.
  // Before the first switch; it counts only if the part began observed.
  ObservedPiece front;
  Switch firstSwitch = Switch::None;
  std::uint64_t switchTime = 0;
  // From a first switch that begins observation to the next one that ends it. If the part began
  // observed, the front goes on here, else this begins anew.
  ObservedPiece middle;
  bool isMiddleOpen = false;
  std::uint64_t middleEnd = 0;
  // All observed stretches after that, added up, and the edges of one that is open at the end.
  ObservedPiece tail;
  bool isTailOpen = false;
  std::uint64_t tailObserved = 0;  // ends less begins
  std::uint64_t tailPauses = 0;

  /// Whether a part can come next: its time grows at the cut, or one of the two is empty.
  bool CanPrecede(const ActivityPart& next) const {
    return !hasStamps || !next.hasStamps || last < next.first;
  }
  /// Adds the part that comes next in the dump, which this one can precede.
  void Add(const CodeBits& codes, ActivityPart&& next);
  /// Turns the part, as the whole of a dump, into its figures. `result` has its declarations; the
  /// interval, the figures and what the part knows of the notes are set.
  void Finish(const CodeBits& codes, const ActivityWindow& window, ActivityResult& result) &&;

 private:
  void AddSwitched(const CodeBits& codes, ActivityPart&& next);
  ObservedPiece* OpenPiece();
  void Pause(std::uint64_t ticks);
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_ACTIVITY_PART_H_
