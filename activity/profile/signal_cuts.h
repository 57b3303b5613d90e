// Cuts time where a signal changes: a row for each rising edge of a clock, or one for each value of
// a state or flag.
#ifndef KESNCD_ACTIVITY_PROFILE_SIGNAL_CUTS_H_
#define KESNCD_ACTIVITY_PROFILE_SIGNAL_CUTS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "activity/profile/profile.h"
#include "activity/profile/profile_counter.h"
#include "activity/profile/toggle_counter.h"
#include "activity/vector_value.h"

namespace orsa::kesncd {

/// A taker of ReadBody in front of a ToggleCounter, to which it passes everything on; it tells
/// `Listener` of the values of one signal, once a step, when the counter's sums are those up to and
/// with that step. Calling order: construct, ReadBody, Finish.
///
///   void Value(const std::vector<ValueWord>& value)   one that was given, changed or not
///   void Pause()                                      observation ends; no value goes on
/// Values of a step are told before the stamp that ends it moves time, so that a listener that cuts
/// at it takes exactly what toggled up to then.
template <class Listener>
class SignalWatch {
 public:
  SignalWatch(ToggleCounter& toggles, std::uint32_t codeId, std::uint32_t width, Listener& listener)
      : toggles_(toggles),
        listener_(listener),
        codeId_(codeId),
        width_(width),
        // In words of 64 bits, as ReadVectorValue fills them.
        value_((width + 63) / 64) {}

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

  /// The last step of the dump ends too. Before the listener's own Finish.
  void Finish() { EndStep(); }

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

  ToggleCounter& toggles_;
  Listener& listener_;
  const std::uint32_t codeId_;
  const std::uint32_t width_;
  std::vector<ValueWord> value_;
  bool isGiven_ = false;  // in the step that is open
};

/// Listens to a clock: a row for each rising edge, which ends at it. Calling order: construct, the
/// calls of SignalWatch, Finish. A profile of clock cycles: windows whose edges are the clock's.
class ClockRows {
 public:
  ClockRows(ToggleCounter& toggles, std::string dump, std::uint64_t mostCells)
      : toggles_(toggles), rows_(std::move(dump), toggles.Sums().size(), mostCells) {}

  /// Cuts at 0 to 1; x and z are passed over, so 0 x 1 is an edge too.
  void Value(const std::vector<ValueWord>& value);
  /// After a pause the level has to become known anew.
  void Pause() { known_ = kNone; }

  Profile Finish(ModuleTree tree);

 private:
  // No known value.
  static constexpr unsigned kNone = 2;

  void Cut(std::uint64_t ticks);

  ToggleCounter& toggles_;
  ProfileRows rows_;
  unsigned known_ = kNone;
  std::vector<std::uint64_t> edges_;       // where rows end
  std::vector<std::uint64_t> unobserved_;  // ticks up to there
};

/// Listens to a signal and splits what is counted by its values. Calling order as of ClockRows. For
/// each value the time that it held and what toggled meanwhile. At most 4096 values are kept apart.
class ValueParts {
 public:
  ValueParts(ToggleCounter& toggles, std::uint32_t width, std::uint64_t mostCells);

  void Value(const std::vector<ValueWord>& value);
  void Pause();

  /// The parts of at most so many values, those that had it longest, and the others in one.
  ValueSplit Finish(ModuleTree tree, std::uint64_t mostValues);

 private:
  static constexpr std::size_t kOthers = 0;  // the part of values that are not kept apart

  /// What toggled since the last cut belongs to the value that held until now.
  void Cut();
  std::size_t PartOf(const std::vector<ValueWord>& value);

  ToggleCounter& toggles_;
  const std::uint32_t width_;
  const std::size_t mostParts_;
  std::vector<ValueSplit::Part> parts_;
  std::unordered_map<std::string, std::size_t> places_;  // of values in parts
  std::vector<ValueWord> now_;
  std::size_t part_;
  std::uint64_t since_ = 0;  // observed ticks up to the last cut
};

/// A taker of ReadBody in front of a ToggleCounter of one module that looks for the stretch of a
/// length in which it toggles most: at every step, so exactly, unless a stretch holds more steps
/// than there is room for. Calling order: construct, ReadBody, Finish. Two pointers over the steps:
/// one at the step that ends, one at the first that is still within the length.
class PeakSearch {
 public:
  /// `length` is in ticks, not 0.
  PeakSearch(ToggleCounter& toggles, std::uint64_t length, std::size_t mostSteps = 1U << 22U)
      : toggles_(toggles), length_(length), mostSteps_(mostSteps) {}

  void Scalar(std::uint32_t codeId, char value) { toggles_.Scalar(codeId, value); }
  void Vector(std::uint32_t codeId, std::string_view value) { toggles_.Vector(codeId, value); }
  void Real(std::uint32_t codeId, std::string_view value) { toggles_.Real(codeId, value); }
  void Stamp(std::uint64_t ticks) {
    const CountedTime& time = toggles_.time();
    if (time.hasStamps && ticks > time.lastStamp) EndStep(time.lastStamp);
    toggles_.Stamp(ticks);
  }
  void Command(Keyword command) { toggles_.Command(command); }
  void SectionEnd() {}
  bool IsDone() const { return false; }

  Peak Finish();

 private:
  // A step, or a grain of several, and what toggled in it.
  struct Step {
    std::uint64_t ticks;
    std::uint64_t toggles;
  };

  void EndStep(std::uint64_t ticks);
  void Coarsen();
  std::uint64_t GrainEnd(std::uint64_t ticks) const;

  ToggleCounter& toggles_;
  const std::uint64_t length_;
  const std::size_t mostSteps_;
  // Ticks to which steps are rounded: 1 as long as there is room.
  std::uint64_t grain_ = 1;
  std::vector<Step> steps_;  // those in the stretch from `first_` on; those before left it
  std::size_t first_ = 0;
  // Toggles of the steps from first_ on.
  std::uint64_t sum_ = 0;
  Peak best_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_SIGNAL_CUTS_H_
