// Counts the toggles of modules over a dump's body, for whoever takes the sums from time to time:
// at the ends of windows, at edges of a clock, whenever a signal changes.
//
// These are the toggles of exact activity, without the times at each level: x and z need no account
// of their own then, since a toggle is a known value that differs from the last known one. So each
// bit costs little, and nothing where no module wants it.
//
// A bit's toggles go straight into the sum of the module that wants it; nothing is kept a bit but
// its last known value, and what that was before the open step, so that a further value in the same
// step can take the one before back. Those of a code that several modules name, such as a clock
// that is a port of each, wait until the sums are taken: a toggle costs the same in all designs.
#ifndef KESNCD_ACTIVITY_PROFILE_TOGGLE_COUNTER_H_
#define KESNCD_ACTIVITY_PROFILE_TOGGLE_COUNTER_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "activity/activity_window.h"
#include "activity/bit_edge.h"
#include "activity/code_array.h"
#include "activity/code_bits.h"
#include "activity/profile/module_shares.h"
#include "activity/vector_value.h"
#include "activity/waiting_changes.h"
#include "vcd/dump_keywords.h"
#include "vcd/value_alphabet.h"

namespace orsa::kesncd {

/// What was seen of time, in ticks of the dump: `pausedAt` and `unobserved` are clamped to the
/// window that is counted in, stamps are as they were given.
struct CountedTime {
  bool hasStamps = false;
  std::uint64_t firstStamp = 0;
  std::uint64_t lastStamp = 0;  // the largest
  std::uint64_t backward = 0;   // stamps that were smaller than an earlier one
  std::uint64_t pauses = 0;
  std::uint64_t unobserved = 0;  // ticks in pauses that ended
  bool isObserving = true;
  std::uint64_t pausedAt = 0;  // where it is not

  /// Ticks without observation up to a time. The time must not be before `pausedAt`, which holds
  /// for the clamped last stamp.
  std::uint64_t UnobservedUpTo(std::uint64_t ticks) const {
    return unobserved + (isObserving ? 0 : ticks - pausedAt);
  }
};

/// Bits that got their first known value in a stretch of a body. Whether that was a toggle depends
/// on what comes before the stretch. A word is 64 bits of a vector; a scalar's bit is bit 0 of word
/// 0.
struct Opening {
  std::uint64_t ticks = 0;
  std::uint64_t bits = 0;    // of the code's word of 64
  std::uint64_t values = 0;  // of these bits
  std::uint32_t codeId = 0;
  std::uint32_t word = 0;
};

/// Thrown by a taker of a stretch that needs more room than it has. That is no Failure: the stretch
/// may hold what is no part of the dump, such as a long comment, or fit into the room of one
/// reading.
struct StretchTooLarge {};

/// What a counter of a stretch knows beside its sums.
struct TogglePart {
  CountedTime time;
  std::vector<Opening> openings;
  std::vector<Opening> levels;  // the last known values; their ticks say nothing
};

/// A taker of ReadBody. Calling order: construct, ReadBody; Sums may be taken and set to 0 at any
/// time between two calls and hold what toggled since.
///
/// One that takes a stretch of a body, which begins with a stamp, is told to keep openings before
/// it takes anything. What it took then adds to what another took right before, which has to end
/// observed: the toggles of its openings first, then Follow.
class ToggleCounter {
 public:
  /// `modules` is how many modules the shares speak of. `codes` and `shares` have to outlive the
  /// counter. `lines` are those of counters that take the same changes.
  ToggleCounter(const CodeBits& codes, const ModuleShares& shares, std::size_t modules,
                const ActivityWindow& window, std::shared_ptr<CodeLines> lines = nullptr);
  ToggleCounter(const ToggleCounter&) = delete;
  ToggleCounter& operator=(const ToggleCounter&) = delete;

  void Scalar(std::uint32_t codeId, char value);
  void Vector(std::uint32_t codeId, std::string_view value);
  void Real(std::uint32_t /*codeId*/, std::string_view /*value*/) {}
  void Stamp(std::uint64_t ticks);
  void Command(Keyword command);
  void SectionEnd() {}
  bool IsDone() const { return false; }

  /// Toggles of modules without those below. They may be below 0, wrapped around, until they are
  /// added up: where a code was taken off a module.
  std::vector<std::uint64_t>& Sums() {
    TakeWaiting();
    if (!waitingShared_.empty()) ShareOut();
    return sums_;
  }
  const CountedTime& time() const { return time_; }
  const ActivityWindow& window() const { return window_; }

  void Fetch(std::uint32_t codeId) const { __builtin_prefetch(&codes_[codeId], 1); }
  /// Only for a counter that is added to another one: openings cost memory for each bit.
  void KeepOpenings() { keepsOpenings_ = true; }
  /// Whether what another counter took from the stretch that comes next adds to this one's.
  bool Precedes(const ToggleCounter& next) const {
    return time_.isObserving && time_.hasStamps && next.time_.hasStamps &&
           time_.lastStamp < next.time_.firstStamp;
  }
  /// The openings in the order of time, when all is taken.
  const std::vector<Opening>& Openings();
  /// Adds the toggles of an opening of the next stretch to the sums.
  void Open(const Opening& opening);
  /// Goes on where the next stretch ended. Its sums are not taken over.
  void Follow(ToggleCounter& next);
  /// What another counter of the same codes needs to stand for this one: it is restored before it
  /// takes anything, and added to others then.
  TogglePart TakePart();
  /// False where the part is none of these codes.
  bool Restore(const TogglePart& part);

 private:
  /// How a code is counted. Unused: no module wants it. Scalar: one bit in one module, once, which
  /// is one addition. SharedScalar: one bit with any other shares. Vector: all that is wider.
  enum class Kind : std::uint8_t { Unused, Scalar, SharedScalar, Vector };
  /// A scalar's last known value: 0 for none, else kKnown with the value.
  static constexpr std::uint8_t kKnown = 2;

  /// Small, since a change of a large design waits for the memory of its code more than for
  /// anything else. `step` is 0 for a code without a value.
  struct Code {
    std::uint64_t step = 0;   // of the last value
    std::uint32_t place = 0;  // a scalar's module, or the first word of a vector
    Kind kind = Kind::Unused;
    std::uint8_t known = 0;
    std::uint8_t before = 0;  // that it had before the step
  };
  /// Toggles of a code whose modules have the same bits of it, on their way into the sums; below 0,
  /// wrapped around, where more were taken back than counted since the sums were taken.
  struct Shared {
    std::uint32_t codeId = 0;
    bool isWaiting = false;  // it is in waitingShared_
    std::uint64_t toggles = 0;
  };
  static constexpr std::uint32_t kNotShared = UINT32_MAX;
  /// 64 bits of a vector.
  struct Word {
    std::uint64_t hasKnown = 0, known = 0;
    std::uint64_t hadKnown = 0, knew = 0;  // before the step
  };

  void TakeWaiting();
  void TakeScalar(std::uint32_t codeId, char value);
  void TakeOddScalar(std::uint32_t codeId, Code& code);
  void TakeVector(std::uint32_t codeId, Code& code, std::string_view value);
  void CountShares(std::uint32_t codeId, std::uint32_t index, std::uint64_t toggles,
                   std::uint64_t sign);
  void ShareOut();
  // A code comes here once a step, with its first value in it.
  void NoteUnknown(std::uint32_t codeId) {
    if (keepsOpenings_) unknown_.push_back(codeId);
  }
  void NoteOpenings();
  bool IsOfCodes(const Opening& word) const;
  void FollowVector(std::uint32_t codeId, ToggleCounter& next, bool wasSeen, bool isSeen);
  // What was known before the open stretch of observation began is forgotten, without a walk over
  // all codes at its begin: the step of the last value tells.
  std::uint8_t KnownOf(const Code& code) const { return code.step < stretch_ ? 0 : code.known; }

  const CodeBits& bits_;
  const ModuleShares& shares_;
  const ActivityWindow window_;
  CountedTime time_;
  std::uint64_t step_ = 1;
  std::uint64_t stretch_ = 1;  // the step that observation began with
  std::uint64_t counts_ = 0;   // 1 where the step's toggles lie in the window
  CodeArray<Code> codes_;
  std::vector<Word> words_;
  std::vector<std::uint64_t> sums_;
  std::vector<std::uint32_t> sharedPlaces_;  // by code, in shared_, or kNotShared
  std::vector<Shared> shared_;
  std::vector<std::uint32_t> waitingShared_;  // places of those with toggles that are in no sum
  std::vector<ValueWord> value_;              // of the vector in hand
  WaitingChanges<char> waiting_;
  bool keepsOpenings_ = false;  // until the first pause
  // Codes with a value in the step and bits that were unknown before it.
  std::vector<std::uint32_t> unknown_;
  std::vector<Opening> openings_;
};

inline void ToggleCounter::Scalar(std::uint32_t codeId, char value) {
  if (waiting_.Add(codeId, value, &codes_[codeId])) TakeWaiting();
}

inline void ToggleCounter::TakeWaiting() {
  waiting_.TakeAll([this](std::uint32_t codeId, char value) { TakeScalar(codeId, value); });
}

// Always inlined: in a source with many takers the compiler leaves it out of line, which takes a
// tenth more instructions for a dump of short changes.
[[gnu::always_inline]] inline void ToggleCounter::TakeScalar(std::uint32_t codeId, char value) {
  Code& code = codes_[codeId];
  if (code.kind == Kind::Unused || !time_.isObserving) return;
  if (code.kind == Kind::Vector) {
    TakeVector(codeId, code, {&value, 1});
    return;
  }
  const bool isAgain = code.step == step_;
  if (code.step < stretch_ || isAgain) [[unlikely]]
    TakeOddScalar(codeId, code);
  code.step = step_;
  code.before = code.known;
  if (code.before == 0 && !isAgain) [[unlikely]]
    NoteUnknown(codeId);
  // x and z leave the last known value, which the next known one is compared with.
  const unsigned level = LevelOf(value);
  if (level >= kUnknown) return;
  // One if there was a known value, it differs, and the step lies in the window: no branch, since
  // toggles of data cannot be predicted.
  const std::uint64_t toggles = code.known >> 1U & (code.known ^ level) & counts_;
  code.known = static_cast<std::uint8_t>(kKnown | level);
  if (code.kind == Kind::Scalar) [[likely]] {
    sums_[code.place] += toggles;
  } else if (toggles != 0) {
    CountShares(codeId, 0, 1, 1);
  }
}

inline void ToggleCounter::Vector(std::uint32_t codeId, std::string_view value) {
  TakeWaiting();
  Code& code = codes_[codeId];
  if (code.kind == Kind::Unused || !time_.isObserving) return;
  if (code.kind == Kind::Vector)
    TakeVector(codeId, code, value);
  else
    TakeScalar(codeId, In(kBitValues, value.back()));
}

inline void ToggleCounter::Stamp(std::uint64_t ticks) {
  TakeWaiting();
  // The step goes on: a time that is given again adds to it, one that goes back moves nothing.
  if (time_.hasStamps && ticks <= time_.lastStamp) {
    time_.backward += ticks < time_.lastStamp ? 1 : 0;
    return;
  }
  if (time_.hasStamps) {
    if (!unknown_.empty()) [[unlikely]]
      NoteOpenings();
    ++step_;
  } else {
    time_.hasStamps = true;
    time_.firstStamp = ticks;
    // Dumping may have been switched off before; time begins here for a pause too. Values before
    // the first stamp are of this step, so step_ stays.
    time_.pausedAt = window_.Clamp(ticks);
  }
  time_.lastStamp = ticks;
  counts_ = window_.Counts(ticks) ? 1 : 0;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_TOGGLE_COUNTER_H_
