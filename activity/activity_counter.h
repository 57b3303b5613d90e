// Counts the exact activity of a dump's body, or of a part of it, bit by bit.
//
// A change costs what it changes and no more: nothing is done for codes that keep their value,
// however many steps there are. What a scalar's toggles change is half a cache line; vectors are
// counted many bits at a time (vector_counter.h). Only the last value of a step counts, so each
// code keeps what it was before the step, and a further value in the same step takes the one before
// back.
//
// A level's time is never added up step by step: entering a level takes the time of the step off
// its sum, leaving it adds the time (see activity_part.h). A bit that goes from 1 to 0 at 30 has 30
// added to t1 and taken off t0, and that is all.
#ifndef KESNCD_ACTIVITY_ACTIVITY_COUNTER_H_
#define KESNCD_ACTIVITY_ACTIVITY_COUNTER_H_

#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "activity/activity_part.h"
#include "activity/activity_window.h"
#include "activity/bit_edge.h"
#include "activity/code_array.h"
#include "activity/code_bits.h"
#include "activity/vector_counter.h"
#include "activity/vector_value.h"
#include "activity/waiting_changes.h"
#include "text/large_array.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// A taker of ReadBody. Calling order: construct, ReadBody, then TakePart. A part of a body that is
/// not the first has to begin with a stamp.
///
/// Codes without a value in the open stretch have a step of 0 and cost nothing at its end: only
/// `seen_` is walked through when a piece is taken.
class ActivityCounter {
 public:
  /// `codes` has to outlive the counter. `lines` are those of counters that take the same changes.
  ActivityCounter(const CodeBits& codes, const ActivityWindow& window,
                  std::shared_ptr<CodeLines> lines = nullptr);
  ActivityCounter(const ActivityCounter&) = delete;
  ActivityCounter& operator=(const ActivityCounter&) = delete;

  void Fetch(std::uint32_t codeId) const { __builtin_prefetch(&codes_[codeId], 1); }
  // `value` is '0', '1', 'x' or 'z', and nothing else (see LevelOf).
  void Scalar(std::uint32_t codeId, char value);
  void Vector(std::uint32_t codeId, std::string_view value);
  void Real(std::uint32_t /*codeId*/, std::string_view /*value*/) {}
  void Stamp(std::uint64_t ticks);
  void Command(Keyword command);
  void SectionEnd() {}
  bool IsDone() const { return false; }

  /// Whether what another counter took from a stretch that begins with a stamp adds to what this
  /// one took: time grows from the one to the other. (Values before a dump's first stamp would
  /// belong to that stamp's step.)
  bool Precedes(const ActivityCounter& next) const {
    return part_.hasStamps && next.part_.hasStamps && part_.CanPrecede(next.part_);
  }

  /// What was counted. The counter is used up.
  ActivityPart TakePart();

 private:
  /// Which piece of the part values go into.
  enum class Place : std::uint8_t { Front, Middle, Tail };

  /// Half a cache line, so a change waits for memory once, and a processor's cache holds many.
  struct alignas(32) Code {
    std::uint64_t step = 0;  // of the last change; 0 before the first value of an observed stretch
    std::uint32_t kind = kNoBits;  // or the number of a vector
    BitEdge edge;                  // of a scalar, and what it was before the step
    BitEdge before;
    // Of a scalar, by its plain toggles: what they add to t0 and take off t1, and their number.
    // What x, z and corrections do is added in `figures_` at once.
    std::uint64_t toT0 = 0;
    std::uint64_t toggles = 0;
  };
  // Kinds that are no vector. All smaller numbers are vectors; FetchVectors and TakeText compare.
  static constexpr std::uint32_t kNoBits = UINT32_MAX;
  static constexpr std::uint32_t kScalar = UINT32_MAX - 1;

  void TakeWaiting();
  void FetchVectors();
  void TakeChange(std::uint32_t codeId, std::uint64_t value);
  void TakeScalar(std::uint32_t codeId, Code& code, Level level);
  void TakeOddScalar(std::uint32_t codeId, Code& code, Level level);
  void TakeText(std::uint32_t codeId, std::string_view value);
  void TakeVector(std::uint32_t codeId, Code& code, std::uint64_t value);
  void TakeWords(std::uint32_t codeId, Code& code);
  void BeginCode(std::uint32_t codeId, Code& code);
  void CorrectFront(std::uint32_t codeId);
  void BeginTime(std::uint64_t ticks);
  void StopObserving();
  void StartObserving();
  template <class Take>
  void ForEachSeen(Take take);
  void AddToLevels(std::uint64_t ticks);
  void EndStretch();
  ObservedPiece TakePiece(bool goesOn);
  void KeepEdgesBefore();

  const CodeBits& bits_;
  const ActivityWindow window_;
  // Before vectors_, which refers to it.
  CountedStep step_;
  bool isObserving_ = true;
  Place place_ = Place::Front;
  CodeArray<Code> codes_;
  std::vector<std::uint32_t> seen_;  // codes with a value in the open stretch
  LargeArray<BitFigures> figures_;   // of all bits; plain toggles of scalars are added at the end
  VectorCounter vectors_;
  std::vector<ValueWord> value_;  // of the vector in hand
  ActivityPart part_;
  // Values of 0 and 1 only, up to 64 bits as a number: a change's text does not outlive its line.
  WaitingChanges<std::uint64_t> waiting_;
  bool areVectorsWaiting_ = false;  // among the changes
  // Edges before the step in which the middle began, of codes that had a value in this step before.
  std::unordered_map<std::uint32_t, std::vector<BitEdge>> edgesBefore_;
};

/// Changes are taken in groups, so that their codes' memory is fetched at the same time; whatever
/// must come after them calls TakeWaiting first.
inline void ActivityCounter::Scalar(std::uint32_t codeId, char value) {
  if ((value | 1) == '1') [[likely]] {
    const std::uint64_t bit = value & 1;
    if (waiting_.Add(codeId, bit, &codes_[codeId])) TakeWaiting();
  } else {
    TakeText(codeId, {&value, 1});
  }
}

inline void ActivityCounter::TakeWaiting() {
  if (areVectorsWaiting_) FetchVectors();
  waiting_.TakeAll(
      [this](std::uint32_t codeId, std::uint64_t value) { TakeChange(codeId, value); });
}

inline void ActivityCounter::TakeChange(std::uint32_t codeId, std::uint64_t value) {
  if (!isObserving_) return;
  Code& code = codes_[codeId];
  if (code.kind == kScalar) [[likely]] {
    TakeScalar(codeId, code, (value & 1) != 0 ? kHigh : kLow);
  } else if (code.kind != kNoBits) {
    TakeVector(codeId, code, value);
  }
}

inline void ActivityCounter::TakeScalar(std::uint32_t codeId, Code& code, Level level) {
  const unsigned was = code.edge.level();
  if (((was | level) >= kUnknown) || code.step == step_.number) [[unlikely]] {
    TakeOddScalar(codeId, code, level);
    return;
  }
  // A code without a value is x, so this one has one. Whether it toggles is not branched on: where
  // it is not what the last ones did, the processor would wait for the code's memory each time.
  const std::uint64_t toggles = was ^ level;
  const std::uint64_t ticks = (level == kHigh ? step_.ticks : -step_.ticks) & -toggles;
  code.step = step_.number;
  code.before = code.edge;
  code.edge.Flip(toggles != 0);
  // 0 to 1 leaves 0 now: its time is added to t0 and taken off t1; 1 to 0 the other way round.
  // Without a toggle `ticks` is 0.
  code.toT0 += ticks;
  code.toggles += toggles & (step_.counts ? 1U : 0U);
}

inline void ActivityCounter::Vector(std::uint32_t codeId, std::string_view value) {
  std::uint64_t bits = 0;
  if (!ReadBinaryValue(value, bits)) [[unlikely]] {
    TakeText(codeId, value);
    return;
  }
  areVectorsWaiting_ = true;
  if (waiting_.Add(codeId, bits, &codes_[codeId])) TakeWaiting();
}

inline void ActivityCounter::Stamp(std::uint64_t ticks) {
  TakeWaiting();
  if (!part_.hasStamps) {
    BeginTime(ticks);
    return;
  }
  if (ticks <= part_.last) {
    part_.backward += ticks < part_.last ? 1 : 0;
    return;
  }
  // No value of the switch's step can come any more.
  if (!edgesBefore_.empty()) [[unlikely]]
    edgesBefore_.clear();
  part_.last = ticks;
  ++step_.number;
  step_.ticks = window_.Clamp(ticks);
  step_.counts = window_.Counts(ticks);
}

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_ACTIVITY_COUNTER_H_
