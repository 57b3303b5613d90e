// The seldom ways of counting: first values, x and z, corrections, and switches of observation.
//
// Each keeps what the plain way in the header relies on: a code's figures are right up to the last
// step but for the level that it has now, which is open, and `before` is its edge before the step
// of its last change.
#include "activity/activity_counter.h"

#include <algorithm>
#include <utility>

#include "vcd/value_alphabet.h"

namespace orsa::kesncd {

/// A code without bits (a real, an event) keeps the kind kNoBits, and its changes are dropped.
ActivityCounter::ActivityCounter(const CodeBits& codes, const ActivityWindow& window,
                                 std::shared_ptr<CodeLines> lines)
    : bits_(codes),
      window_(window),
      codes_(codes.codes(), std::move(lines)),
      figures_(codes.bits()),
      vectors_(step_) {
  std::size_t widest = 1;
  for (std::uint32_t codeId = 0; codeId < codes.codes(); ++codeId) {
    const std::uint32_t width = codes.Width(codeId);
    std::uint32_t& kind = codes_[codeId].kind;
    kind = width == 1 ? kScalar : kNoBits;
    if (width > 1) kind = vectors_.Add(codes.First(codeId), width);
    widest = std::max<std::size_t>(widest, width);
  }
  value_.resize((widest + kWordBits - 1) / kWordBits);
}

/// Notes a code's first value in an observed stretch. `seen_` has each code once a stretch, since
/// EndStretch sets its step to 0 again.
void ActivityCounter::BeginCode(std::uint32_t codeId, Code& code) {
  seen_.push_back(codeId);
  code.step = step_.number;
  if (!edgesBefore_.empty()) CorrectFront(codeId);
}

/// Takes a value that comes first, comes again in its step, or has to do with x or z.
void ActivityCounter::TakeOddScalar(std::uint32_t codeId, Code& code, Level level) {
  const unsigned was = code.edge.level();
  BitFigures& figures = figures_[bits_.First(codeId)];
  if (code.step == 0) {
    BeginCode(codeId, code);
    code.before = code.edge;
  } else {
    if (was == level) return;
    // The old level ends now. If it began in this very step, its time comes to nothing.
    TimeAt(figures, was) += step_.ticks;
    if (code.step == step_.number) {
      // The value that is replaced counted as a change from `before`; the new one starts from there
      // too. So 0 1 0 within a step leaves no toggle.
      const BitEdge::Counted last = code.edge.CountedSince(code.before);
      figures.tc -= last.toggle && step_.counts ? 1 : 0;
      figures.ig -= last.glitch && step_.counts ? 1 : 0;
      code.edge = code.before;
    }
    code.before = code.edge;
    code.step = step_.number;
  }
  // And the new level begins. A first value ends no old one: time without a value is x, which
  // ActivityPart::Finish adds.
  // At a dump's begin all codes come here, where nothing changes yet: memory that is left alone
  // need not be fetched.
  if (step_.ticks != 0) TimeAt(figures, level) -= step_.ticks;
  const BitEdge::Counted counted = code.edge.Take(level, step_.counts);
  if (!step_.counts) return;
  figures.tc += counted.toggle ? 1 : 0;
  figures.ig += counted.glitch ? 1 : 0;
}

/// What is kept of a vector is known when its code has arrived.
void ActivityCounter::FetchVectors() {
  areVectorsWaiting_ = false;
  waiting_.LookAtAll([this](std::uint32_t codeId) {
    const std::uint32_t kind = codes_[codeId].kind;
    if (kind < kScalar) vectors_.Fetch(kind);
  });
}

/// Takes a value with x or z in it, or one of more than 64 characters.
void ActivityCounter::TakeText(std::uint32_t codeId, std::string_view value) {
  TakeWaiting();
  if (!isObserving_) return;
  Code& code = codes_[codeId];
  if (code.kind < kScalar) {
    ReadVectorValue(value, vectors_.Width(code.kind), value_.data());
    TakeWords(codeId, code);
  } else if (code.kind == kScalar) {
    TakeScalar(codeId, code, LevelOf(In(kBitValues, value.back())));
  }
}

/// Takes a value of 0 and 1. Nearly all are written down; the first of a stretch, a further one of
/// a step, one after x or z and those of long vectors go the way of words.
void ActivityCounter::TakeVector(std::uint32_t codeId, Code& code, std::uint64_t value) {
  const bool isFurther = code.step != 0 && code.step != step_.number;
  if (isFurther && vectors_.IsOpen(code.kind)) [[likely]] {
    if (vectors_.Write(code.kind, value, figures_.data())) code.step = step_.number;
    return;
  }
  const std::uint32_t width = vectors_.Width(code.kind);
  std::fill_n(value_.begin(), (width + kWordBits - 1) / kWordBits, ValueWord{});
  value_.front().high = value & LowBits(width);
  TakeWords(codeId, code);
}

/// Takes the value in `value_`.
void ActivityCounter::TakeWords(std::uint32_t codeId, Code& code) {
  if (code.step == 0) {
    BeginCode(codeId, code);
    vectors_.Begin(code.kind, value_.data(), figures_.data());
  } else if (code.step == step_.number) {
    vectors_.Correct(code.kind, value_.data(), figures_.data());
    // Where the value is the same, the step stays that of the last change: another value in this
    // step is then a change from the same value before.
  } else if (vectors_.Change(code.kind, value_.data(), figures_.data())) {
    code.step = step_.number;
  }
}

/// The first stamp: values before it belong to its step, though its time was not known yet. Until
/// now levels began at a time of 0, so the difference is taken off all of them at once; the same
/// for observation, where a switch came before the stamp.
void ActivityCounter::BeginTime(std::uint64_t ticks) {
  part_.hasStamps = true;
  part_.first = part_.last = ticks;
  step_.ticks = window_.Clamp(ticks);
  step_.counts = window_.Counts(ticks);
  AddToLevels(-step_.ticks);
  part_.switchTime = step_.ticks;
  if (part_.isTailOpen) part_.tailObserved -= step_.ticks;
}

void ActivityCounter::Command(Keyword command) {
  TakeWaiting();
  if (command == Keyword::DumpOff && isObserving_) StopObserving();
  if (command == Keyword::DumpOn) StartObserving();
}

/// A $dumpoff while observing. Values in front of it in its step are counted; levels end here.
/// Which piece ends depends on what the part has seen before, see the drawing in activity_part.h.
void ActivityCounter::StopObserving() {
  isObserving_ = false;
  edgesBefore_.clear();
  if (place_ == Place::Tail) {
    AddToLevels(step_.ticks);
    EndStretch();
    part_.isTailOpen = false;
    part_.tailObserved += step_.ticks;
    ++part_.tailPauses;
  } else if (place_ == Place::Middle) {
    part_.middle = TakePiece(true);
    part_.isMiddleOpen = false;
    part_.middleEnd = step_.ticks;
  } else {
    // Before the dump's first stamp nothing lasted yet.
    ObservedPiece front = TakePiece(true);
    if (part_.hasStamps) part_.front = std::move(front);
    part_.firstSwitch = ActivityPart::Switch::Off;
    part_.switchTime = step_.ticks;
  }
  place_ = Place::Tail;
  ++step_.number;
}

/// A $dumpon. While observing it switches nothing in a whole dump; in a part it may be the first
/// sign that the part began unobserved.
void ActivityCounter::StartObserving() {
  if (!isObserving_) {
    isObserving_ = true;
    part_.isTailOpen = true;
    part_.tailObserved -= step_.ticks;
    ++step_.number;
  } else if (place_ == Place::Front && part_.hasStamps) {
    // Whether this is a switch depends on what comes before the part. A dump begins observed.
    KeepEdgesBefore();
    part_.front = TakePiece(true);
    part_.firstSwitch = ActivityPart::Switch::On;
    part_.switchTime = step_.ticks;
    part_.isMiddleOpen = true;
    place_ = Place::Middle;
  }
}

/// Keeps what a value after the first switch in the same step makes of the one before it: nothing,
/// if the switch is none.
void ActivityCounter::KeepEdgesBefore() {
  for (const std::uint32_t codeId : seen_) {
    const Code& code = codes_[codeId];
    // Other codes have no value in this step yet, so that none of theirs can be replaced.
    if (code.step != step_.number) continue;
    edgesBefore_[codeId] = code.kind == kScalar ? std::vector<BitEdge>{code.before}
                                                : vectors_.EdgesBefore(code.kind, figures_.data());
  }
}

/// Takes a value of the front's last step back, because its code has a further one in this step.
void ActivityCounter::CorrectFront(std::uint32_t codeId) {
  const auto found = edgesBefore_.find(codeId);
  if (found == edgesBefore_.end()) return;
  std::uint64_t bit = bits_.First(codeId);
  for (const BitEdge before : found->second) {
    BitFigures& figures = part_.front.figures[bit];
    BitEdge& edge = part_.front.edges[bit++];
    // What was counted since `before`, by the one value of this step, is taken off again: its level
    // did not begin, the one before it did not end.
    if (before.IsSeen()) {
      TimeAt(figures, edge.level()) += step_.ticks;
      TimeAt(figures, before.level()) -= step_.ticks;
      const BitEdge::Counted counted = edge.CountedSince(before);
      figures.tc -= counted.toggle && step_.counts ? 1 : 0;
      figures.ig -= counted.glitch && step_.counts ? 1 : 0;
    } else {
      figures = {};
    }
    edge = before;
  }
}

/// Calls `take(codeId, code)` for each code with a value in the open stretch. Where these are many
/// they are not looked up in the order in which they came, which would wait for each one's memory.
template <class Take>
void ActivityCounter::ForEachSeen(Take take) {
  if (seen_.size() < codes_.size() / 8) {
    for (const std::uint32_t codeId : seen_) take(codeId, codes_[codeId]);
    return;
  }
  for (std::uint32_t codeId = 0; codeId < codes_.size(); ++codeId) {
    if (codes_[codeId].step != 0) take(codeId, codes_[codeId]);
  }
}

/// Adds a time to that of each seen bit's level.
void ActivityCounter::AddToLevels(std::uint64_t ticks) {
  ForEachSeen([&](std::uint32_t codeId, const Code& code) {
    if (code.kind == kScalar) {
      TimeAt(figures_[bits_.First(codeId)], code.edge.level()) += ticks;
    } else {
      vectors_.AddToLevels(code.kind, ticks, figures_.data());
    }
  });
}

/// From here on no bit has a value. Vectors forget theirs by Begin, which comes next for each.
void ActivityCounter::EndStretch() {
  ForEachSeen([](std::uint32_t /*codeId*/, Code& code) {
    code.step = 0;
    code.edge = {};
  });
  seen_.clear();
}

/// Gives what was counted since the last piece and begins a new one. `goesOn` says that values may
/// follow, which need figures to count in. A tail has figures of its closed stretches even where no
/// code is seen at the end.
ObservedPiece ActivityCounter::TakePiece(bool goesOn) {
  ObservedPiece piece;
  if (seen_.empty() && place_ != Place::Tail) return piece;
  piece.edges.resize(bits_.bits());
  ForEachSeen([&](std::uint32_t codeId, const Code& code) {
    BitEdge* const edges = &piece.edges[bits_.First(codeId)];
    if (code.kind == kScalar) {
      *edges = code.edge;
    } else {
      vectors_.Leave(code.kind, figures_.data(), edges);
    }
  });
  // Scalars counted beside their edges; now their toggles join the other figures, in the places
  // that CodeBits gives to all bits.
  for (std::uint32_t codeId = 0; codeId < codes_.size(); ++codeId) {
    if (codes_[codeId].kind != kScalar) continue;
    BitFigures& figures = figures_[bits_.First(codeId)];
    const std::uint64_t toT0 = std::exchange(codes_[codeId].toT0, 0);
    figures.t0 += toT0;
    figures.t1 -= toT0;
    figures.tc += std::exchange(codes_[codeId].toggles, 0);
  }
  EndStretch();
  piece.figures = std::move(figures_);
  figures_.assign(goesOn ? bits_.bits() : 0, {});
  return piece;
}

/// The piece that is open at the end; the others were taken at their switches.
ActivityPart ActivityCounter::TakePart() {
  TakeWaiting();
  if (place_ == Place::Front) part_.front = TakePiece(false);
  if (place_ == Place::Middle) part_.middle = TakePiece(false);
  if (place_ == Place::Tail) part_.tail = TakePiece(false);
  return std::move(part_);
}

}  // namespace orsa::kesncd
