// How parts of a dump add up, and how the whole becomes figures.
#include "activity/activity_part.h"

#include <utility>

namespace orsa::kesncd {

/// A code's first bit says it for all, as a value sets all of them.
bool ObservedPiece::IsSeen(const CodeBits& codes, std::uint32_t codeId) const {
  return !IsEmpty() && codes.Width(codeId) > 0 && edges[codes.First(codeId)].IsSeen();
}

/// Code by code, since most codes of a short part have no value at all.
void ObservedPiece::Append(const CodeBits& codes, ObservedPiece&& next) {
  if (next.IsEmpty()) return;
  if (IsEmpty()) {
    *this = std::move(next);
    return;
  }
  for (std::uint32_t codeId = 0; codeId < codes.codes(); ++codeId) {
    // No value: the bits go on as they were.
    if (!next.IsSeen(codes, codeId)) continue;
    const bool isSeen = IsSeen(codes, codeId);
    const std::uint64_t end = codes.First(codeId) + codes.Width(codeId);
    for (std::uint64_t bit = codes.First(codeId); bit < end; ++bit) {
      const BitFigures& added = next.figures[bit];
      // All levels but the first are left when the next one is entered: what remains is its time.
      const std::uint64_t begin = -(added.t0 + added.t1 + added.tx + added.tz);
      BitFigures& sums = figures[bit];
      AddFigures(sums, added);
      if (isSeen) {
        TimeAt(sums, edges[bit].level()) += begin;
        // The first level of `next` was entered without leaving the one before: that one ends here.
        const BitEdge::Counted counted = edges[bit].Append(next.edges[bit]);
        sums.tc += counted.toggle ? 1 : 0;
        sums.ig += counted.glitch ? 1 : 0;
      } else {
        // The first value of the code in both pieces together.
        edges[bit] = next.edges[bit];
      }
    }
  }
}

/// Only bits that were given a value have an open level; the others are x, which Finish adds.
void ObservedPiece::Close(std::uint64_t ticks) {
  for (std::size_t bit = 0; bit < edges.size(); ++bit) {
    if (!edges[bit].IsSeen()) continue;
    TimeAt(figures[bit], edges[bit].level()) += ticks;
    edges[bit] = {};
  }
}

/// All levels of both are closed, or belong to `next` alone, so times and counts just add up.
void ObservedPiece::Join(ObservedPiece&& next) {
  if (next.IsEmpty()) return;
  if (IsEmpty()) {
    *this = std::move(next);
    return;
  }
  for (std::size_t bit = 0; bit < figures.size(); ++bit)
    AddFigures(figures[bit], next.figures[bit]);
  edges = std::move(next.edges);
}

/// The piece that goes on where the part ends; null for none. Before the first switch it is the
/// front; after that what the switches left open.
ObservedPiece* ActivityPart::OpenPiece() {
  if (firstSwitch == Switch::None) return &front;
  if (isMiddleOpen) return &middle;
  return isTailOpen ? &tail : nullptr;
}

/// Ends the observation that is open after the first switch. The middle stays as it is, since it
/// may yet go on from what comes before. `ticks` is when, clamped to the window.
void ActivityPart::Pause(std::uint64_t ticks) {
  if (isMiddleOpen) {
    isMiddleOpen = false;
    middleEnd = ticks;
    return;
  }
  tail.Close(ticks);
  // An end less a begin, which was taken off when the stretch began.
  tailObserved += ticks;
  isTailOpen = false;
  ++tailPauses;
}

void ActivityPart::Add(const CodeBits& codes, ActivityPart&& next) {
  // Nothing in it, not even time.
  if (!next.hasStamps) return;
  if (!hasStamps) {
    *this = std::move(next);
    return;
  }
  // Stamps only grow from part to part.
  last = next.last;
  backward += next.backward;
  // Where both have switches, this part's say whether `next` began observed.
  if (firstSwitch != Switch::None && next.firstSwitch != Switch::None) {
    AddSwitched(codes, std::move(next));
    return;
  }
  // One of the two has none: its pieces go into the other's.
  ObservedPiece* const open = OpenPiece();
  if (open != nullptr) open->Append(codes, std::move(next.front));
  // Without switches `next` is all front.
  if (next.firstSwitch == Switch::None) return;
  // This part had none, so the switches of `next` are now the first ones.
  firstSwitch = next.firstSwitch;
  switchTime = next.switchTime;
  middle = std::move(next.middle);
  isMiddleOpen = next.isMiddleOpen;
  middleEnd = next.middleEnd;
  tail = std::move(next.tail);
  isTailOpen = next.isTailOpen;
  tailObserved = next.tailObserved;
  tailPauses = next.tailPauses;
}

/// Adds a part with switches to one whose own switches say whether it ends observed. Three cases:
/// this part ends observed and `next` switches off first; it ends observed and `next` switches on,
/// which switches nothing; it ends unobserved, so the front of `next` does not count.
void ActivityPart::AddSwitched(const CodeBits& codes, ActivityPart&& next) {
  ObservedPiece* const open = OpenPiece();
  if (open != nullptr) {
    open->Append(codes, std::move(next.front));
    if (next.firstSwitch == Switch::Off) {
      Pause(next.switchTime);
    } else {
      open->Append(codes, std::move(next.middle));
    }
  } else if (next.firstSwitch == Switch::On) {
    // Unobserved, and switched on in `next`: its middle begins a new stretch.
    tail.Join(std::move(next.middle));
    // The begin of that stretch; its end is added when it comes.
    tailObserved -= next.switchTime;
    isTailOpen = true;
  }
  // The middle that began, or went on, ended in `next`.
  if (next.firstSwitch == Switch::On && !next.isMiddleOpen) Pause(next.middleEnd);
  // It is still open, so `next` has no tail.
  if (next.firstSwitch == Switch::On && next.isMiddleOpen) return;
  // The tail of `next` is complete in itself.
  tail.Join(std::move(next.tail));
  tailObserved += next.tailObserved;
  tailPauses += next.tailPauses;
  isTailOpen = next.isTailOpen;
}

/// In four steps: the front with what goes on from it, the tail, their sum, and x for all time
/// without a value.
void ActivityPart::Finish(const CodeBits& codes, const ActivityWindow& window,
                          ActivityResult& result) && {
  result.notes.hasStamps = hasStamps;
  result.notes.backwardStamps = backward;
  result.firstBit = codes.all();
  // Every figure is 0 then, as nothing says how long anything took.
  if (!hasStamps) {
    result.bits.assign(codes.bits(), {});
    return;
  }
  // The window may reach beyond the dump on either side.
  result.firstTick = window.Clamp(first);
  result.lastTick = window.Clamp(last);
  // The dump begins observed: the front counts, up to where observation first ends. Switching on
  // while observing switches nothing.
  const bool goesOn = firstSwitch == Switch::On;
  if (goesOn) front.Append(codes, std::move(middle));
  // Where the first observed stretch ends: with the dump, at the first $dumpoff, or at the one
  // after a $dumpon without effect.
  std::uint64_t end = result.lastTick;
  if (firstSwitch == Switch::Off) end = switchTime;
  if (goesOn && !isMiddleOpen) end = middleEnd;
  front.Close(end);
  // $dumpon without a $dumpoff after it.
  if (isTailOpen) {
    tail.Close(result.lastTick);
    tailObserved += result.lastTick;
  }
  front.Join(std::move(tail));
  // The same for every bit.
  result.observedTicks = end - result.firstTick + tailObserved;
  // The first pause is not in tailPauses.
  const bool isPaused = firstSwitch == Switch::Off || (goesOn && !isMiddleOpen);
  result.notes.pauses = tailPauses + (isPaused ? 1 : 0);
  result.bits = std::move(front.figures);
  // A dump without any value has no vectors yet.
  result.bits.resize(codes.bits());
  for (BitFigures& bit : result.bits) {
    // Without a value a bit is x.
    bit.tx += result.observedTicks - (bit.t0 + bit.t1 + bit.tx + bit.tz);
  }
}

}  // namespace orsa::kesncd
