// How parts of a dump add up, and how the whole becomes figures.
#include "activity/activity_part.h"

#include <utility>

namespace orsa::kesncd {

bool ObservedPiece::IsSeen(const CodeBits& codes, std::uint32_t codeId) const {
  return !IsEmpty() && codes.Width(codeId) > 0 && edges[codes.First(codeId)].IsSeen();
}

void ObservedPiece::Append(const CodeBits& codes, ObservedPiece&& next) {
  if (next.IsEmpty()) return;
  if (IsEmpty()) {
    *this = std::move(next);
    return;
  }
  for (std::uint32_t codeId = 0; codeId < codes.codes(); ++codeId) {
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
        const BitEdge::Counted counted = edges[bit].Append(next.edges[bit]);
        sums.tc += counted.toggle ? 1 : 0;
        sums.ig += counted.glitch ? 1 : 0;
      } else {
        edges[bit] = next.edges[bit];
      }
    }
  }
}

void ObservedPiece::Close(std::uint64_t ticks) {
  for (std::size_t bit = 0; bit < edges.size(); ++bit) {
    if (!edges[bit].IsSeen()) continue;
    TimeAt(figures[bit], edges[bit].level()) += ticks;
    edges[bit] = {};
  }
}

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

/// The piece that goes on where the part ends; null for none.
ObservedPiece* ActivityPart::OpenPiece() {
  if (firstSwitch == Switch::None) return &front;
  if (isMiddleOpen) return &middle;
  return isTailOpen ? &tail : nullptr;
}

/// Ends the observation that is open after the first switch. The middle stays as it is, since it
/// may yet go on from what comes before.
void ActivityPart::Pause(std::uint64_t ticks) {
  if (isMiddleOpen) {
    isMiddleOpen = false;
    middleEnd = ticks;
    return;
  }
  tail.Close(ticks);
  tailObserved += ticks;
  isTailOpen = false;
  ++tailPauses;
}

void ActivityPart::Add(const CodeBits& codes, ActivityPart&& next) {
  if (!next.hasStamps) return;
  if (!hasStamps) {
    *this = std::move(next);
    return;
  }
  last = next.last;
  backward += next.backward;
  if (firstSwitch != Switch::None && next.firstSwitch != Switch::None) {
    AddSwitched(codes, std::move(next));
    return;
  }
  ObservedPiece* const open = OpenPiece();
  if (open != nullptr) open->Append(codes, std::move(next.front));
  if (next.firstSwitch == Switch::None) return;
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

/// Adds a part with switches to one whose own switches say whether it ends observed.
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
    tail.Join(std::move(next.middle));
    tailObserved -= next.switchTime;
    isTailOpen = true;
  }
  if (next.firstSwitch == Switch::On && !next.isMiddleOpen) Pause(next.middleEnd);
  if (next.firstSwitch == Switch::On && next.isMiddleOpen) return;
  tail.Join(std::move(next.tail));
  tailObserved += next.tailObserved;
  tailPauses += next.tailPauses;
  isTailOpen = next.isTailOpen;
}

void ActivityPart::Finish(const CodeBits& codes, const ActivityWindow& window,
                          ActivityResult& result) && {
  result.notes.hasStamps = hasStamps;
  result.notes.backwardStamps = backward;
  result.firstBit = codes.all();
  if (!hasStamps) {
    result.bits.assign(codes.bits(), {});
    return;
  }
  result.firstTick = window.Clamp(first);
  result.lastTick = window.Clamp(last);
  // The dump begins observed: the front counts, up to where observation first ends.
  const bool goesOn = firstSwitch == Switch::On;
  if (goesOn) front.Append(codes, std::move(middle));
  std::uint64_t end = result.lastTick;
  if (firstSwitch == Switch::Off) end = switchTime;
  if (goesOn && !isMiddleOpen) end = middleEnd;
  front.Close(end);
  if (isTailOpen) {
    tail.Close(result.lastTick);
    tailObserved += result.lastTick;
  }
  front.Join(std::move(tail));
  result.observedTicks = end - result.firstTick + tailObserved;
  const bool isPaused = firstSwitch == Switch::Off || (goesOn && !isMiddleOpen);
  result.notes.pauses = tailPauses + (isPaused ? 1 : 0);
  result.bits = std::move(front.figures);
  result.bits.resize(codes.bits());
  for (BitFigures& bit : result.bits) {
    // Without a value a bit is x.
    bit.tx += result.observedTicks - (bit.t0 + bit.t1 + bit.tx + bit.tz);
  }
}

}  // namespace orsa::kesncd
