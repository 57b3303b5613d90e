// Cuts time where a signal changes: a row for each rising edge of a clock, or one for each value of
// a state or flag. Of a whole body or of stretches of it, which add up to the same.
#ifndef KESNCD_ACTIVITY_PROFILE_SIGNAL_CUTS_H_
#define KESNCD_ACTIVITY_PROFILE_SIGNAL_CUTS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "activity/activity_start.h"
#include "activity/profile/profile.h"
#include "activity/profile/profile_counter.h"
#include "activity/profile/toggle_counter.h"
#include "activity/vector_value.h"

namespace orsa::kesncd {

/// What the cuts of a body, or of a stretch of it, may hold.
struct CutRoom {
  std::string dump;             // what messages call it
  std::uint64_t mostCells = 0;  // sums of modules
  /// Whether it begins the body. What begins elsewhere is added to what comes before it.
  bool isFirst = true;
};

/// A taker of ReadInParts that counts toggles and tells `Listener` of the values of one signal,
/// once a step, when the counter's sums are those up to and with that step. Calling order:
/// construct, ReadBody; Add what the next stretches gave; Finish, then the listener's own.
///
///   Listener(ToggleCounter& toggles, std::uint32_t width, const CutRoom& room)
///   void Value(const std::vector<ValueWord>& value)   one that was given, changed or not
///   void Pause()                                      observation ends; no value goes on
///   void Add(Listener& next)                          what the next stretch's listener was told;
///                                                     its counter is followed too
/// Values of a step are told before the stamp that ends it moves time, so that a listener that cuts
/// at it takes exactly what toggled up to then.
template <class Listener>
class SignalCuts {
 public:
  /// `start` and `shares` have to outlive it.
  SignalCuts(const ActivityStart& start, const ModuleShares& shares, std::size_t modules,
             std::uint32_t codeId, std::uint32_t width, const CutRoom& room)
      : toggles_(start.codes, shares, modules, start.window),
        listener_(toggles_, width, room),
        codeId_(codeId),
        width_(width),
        // In words of 64 bits, as ReadVectorValue fills them.
        value_((width + kWordBits - 1) / kWordBits) {
    if (!room.isFirst) toggles_.KeepOpenings();
  }

  void Fetch(std::uint32_t codeId) const { toggles_.Fetch(codeId); }
  void Scalar(std::uint32_t codeId, char value) {
    if (codeId == codeId_) Note({&value, 1});
    toggles_.Scalar(codeId, value);
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    if (codeId == codeId_) Note(value);
    toggles_.Vector(codeId, value);
  }
  void Real(std::uint32_t codeId, std::string_view value) { toggles_.Real(codeId, value); }
  void Stamp(std::uint64_t ticks) {
    const CountedTime& time = toggles_.time();
    if (time.hasStamps && ticks > time.lastStamp) EndStep();
    toggles_.Stamp(ticks);
  }
  void Command(Keyword command) {
    if (command == Keyword::DumpOff && toggles_.time().isObserving) {
      EndStep();
      listener_.Pause();
    }
    toggles_.Command(command);
  }
  void SectionEnd() {}
  bool IsDone() const { return false; }

  /// Whether what another one took from the stretch that comes next adds to this one's.
  bool Precedes(const SignalCuts& next) const { return toggles_.Precedes(next.toggles_); }
  void Add(SignalCuts& next) {
    EndStep();
    next.EndStep();
    listener_.Add(next.listener_);
  }

  /// The last step of the dump ends too. Before the listener's own Finish.
  void Finish() { EndStep(); }
  const CountedTime& time() const { return toggles_.time(); }
  Listener& listener() { return listener_; }

 private:
  /// Later values of a step replace earlier ones.
  void Note(std::string_view value) {
    if (!toggles_.time().isObserving) return;
    ReadVectorValue(value, width_, value_.data());
    isGiven_ = true;
  }
  void EndStep() {
    if (isGiven_) listener_.Value(value_);
    isGiven_ = false;
  }

  ToggleCounter toggles_;
  Listener listener_;
  const std::uint32_t codeId_;
  const std::uint32_t width_;
  std::vector<ValueWord> value_;
  bool isGiven_ = false;  // in the step that is open
};

/// Listens to a clock and makes a profile whose windows end at its rising edges. Calling order:
/// construct, the calls of SignalCuts, Finish.
///
/// In a stretch that does not begin the body, the first known level may be a rise, if the stretch
/// before ended at 0: what toggled up to then, the head, is kept apart until that is known.
class ClockRows {
 public:
  ClockRows(ToggleCounter& toggles, std::uint32_t /*width*/, const CutRoom& room)
      : toggles_(toggles),
        rows_(room.dump, toggles.Sums().size(), room.mostCells),
        isFirst_(room.isFirst),
        isOpen_(!room.isFirst) {}

  /// Cuts at 0 to 1; x and z are passed over, so 0 x 1 is an edge too.
  void Value(const std::vector<ValueWord>& value);
  /// After a pause the level has to become known anew.
  void Pause() {
    known_ = kNone;
    isOpen_ = false;
  }
  void Add(ClockRows& next);

  Profile Finish(ModuleTree tree);

 private:
  static constexpr unsigned kNone = 2;  // no known value

  void Cut(std::uint64_t ticks);
  void AddOpenings(const std::vector<Opening>& openings, std::size_t row);

  ToggleCounter& toggles_;
  ProfileRows rows_;
  const bool isFirst_;
  bool isOpen_;  // whether the level at the begin of the stretch is the one before it
  unsigned known_ = kNone;
  std::vector<std::uint64_t> edges_;       // where rows end
  std::vector<std::uint64_t> unobserved_;  // ticks up to there
  // Where the head ends, if it may be a row's end, and its toggles.
  std::optional<std::uint64_t> headEnd_;
  std::vector<std::uint64_t> head_;
};

/// Listens to a signal and splits what is counted by its values: for each the time that it held and
/// what toggled meanwhile. At most 4096 values are kept apart. Calling order as of ClockRows.
///
/// What a stretch that does not begin the body counts before the signal's first value in it belongs
/// to the value that the stretch before ended with.
class ValueParts {
 public:
  ValueParts(ToggleCounter& toggles, std::uint32_t width, const CutRoom& room);

  void Value(const std::vector<ValueWord>& value);
  void Pause();
  void Add(ValueParts& next);

  /// The parts of at most so many values, those that had it longest, and the others in one.
  ValueSplit Finish(ModuleTree tree, std::uint64_t mostValues);

 private:
  static constexpr std::size_t kOthers = 0;  // the part of values that are not kept apart
  static constexpr std::size_t kHead = 1;    // of the value at the begin

  /// Openings up to an index, which are in the part of the value that held in their steps.
  struct OpeningsEnd {
    std::size_t end;
    std::size_t part;
  };

  /// What toggled since the last cut belongs to the value that held until now.
  void Cut();
  std::size_t PartOf(const std::vector<ValueWord>& value);
  std::size_t NewPart(const std::string& key, std::string text);
  std::vector<std::size_t> PlacesOf(const ValueParts& next);
  void AddOpenings(ValueParts& next, const std::vector<std::size_t>& places);
  void TakeSums(ValueSplit::Part& part);

  ToggleCounter& toggles_;
  const std::uint32_t width_;
  const std::size_t mostParts_;
  const bool isFirst_;
  bool isOpen_;  // whether the value is the one that the stretch before ended with
  std::vector<ValueSplit::Part> parts_;
  std::unordered_map<std::string, std::size_t> places_;  // of values in parts
  std::vector<ValueWord> now_;
  std::size_t part_ = kHead;
  std::uint64_t since_ = 0;  // observed ticks up to the last cut
  std::vector<OpeningsEnd> openings_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_SIGNAL_CUTS_H_
