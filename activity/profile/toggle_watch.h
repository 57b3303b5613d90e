// When a few signals toggled first and last. The mean of a clock's toggles over a whole dump is not
// its period, since a dump seldom begins and ends at an edge; the time between its edges is.
#ifndef KESNCD_ACTIVITY_PROFILE_TOGGLE_WATCH_H_
#define KESNCD_ACTIVITY_PROFILE_TOGGLE_WATCH_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "activity/activity_result.h"
#include "activity/activity_window.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// What was seen of a signal of one bit in a stretch of a dump.
struct WatchedSignal {
  char given = 0;  // the last value of the step that is open
  char level = 0;  // the last known value before
  char first = 0;  // the first known value, and its time
  std::uint64_t firstTime = 0;
  ToggleSpan span;

  void Toggle(std::uint64_t ticks) {
    if (span.toggles++ == 0) span.first = ticks;
    span.last = ticks;
  }
  void Add(const WatchedSignal& next, const ActivityWindow& window) {
    if (next.first == 0) return;
    if (level == 0) {
      first = next.first;
      firstTime = next.firstTime;
    } else if (level != next.first && window.Counts(next.firstTime)) {
      Toggle(next.firstTime);
    }
    level = next.level;
    if (next.span.toggles == 0) return;
    if (span.toggles == 0) span.first = next.span.first;
    span.last = next.span.last;
    span.toggles += next.span.toggles;
  }
};

/// What was seen of all watched signals, when the stretch's last step has ended.
struct WatchPart {
  std::vector<WatchedSignal> signals;
  bool isOver = false;  // it paused

  /// Adds what was seen from a stamp later than all of this one on, of the same signals.
  void Add(const WatchPart& next, const ActivityWindow& window) {
    if (isOver) return;
    for (std::size_t i = 0; i < signals.size(); ++i) signals[i].Add(next.signals[i], window);
    isOver = next.isOver;
  }
};

/// Stands before a taker of a dump's body (see body_reader.h) and passes all on to it. Calling
/// order: construct, ReadBody, Take; watches of a body's stretches add up by Add, in the order of
/// the dump, before Take.
template <class Taker>
class ToggleWatch {
 public:
  /// `codeIds` of signals of one bit, each once.
  ToggleWatch(Taker& taker, const std::vector<std::uint32_t>& codeIds, std::uint32_t codes,
              const ActivityWindow& window)
      : taker_(taker), window_(window), place_(codes, kNone) {
    part_.signals.resize(codeIds.size());
    for (std::uint32_t i = 0; i < codeIds.size(); ++i) place_[codeIds[i]] = i;
  }

  void Fetch(std::uint32_t codeId) const { taker_.Fetch(codeId); }
  void Scalar(std::uint32_t codeId, char value) {
    if (place_[codeId] != kNone) part_.signals[place_[codeId]].given = value;
    taker_.Scalar(codeId, value);
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    if (place_[codeId] != kNone) part_.signals[place_[codeId]].given = value.back();
    taker_.Vector(codeId, value);
  }
  void Real(std::uint32_t codeId, std::string_view value) { taker_.Real(codeId, value); }
  void Stamp(std::uint64_t ticks) {
    if (ticks > now_) {
      EndStep();
      now_ = ticks;
    }
    taker_.Stamp(ticks);
  }
  /// Of a dump that pauses only what comes before the first pause is sure to be without a gap.
  void Command(Keyword command) {
    if (command == Keyword::DumpOff) {
      EndStep();
      part_.isOver = true;
    }
    taker_.Command(command);
  }
  void SectionEnd() { taker_.SectionEnd(); }
  bool IsDone() const { return taker_.IsDone(); }

  /// Adds what another watch saw from a stamp later than all of this one on.
  void Add(ToggleWatch& next) {
    EndStep();
    next.EndStep();
    if (!part_.isOver) now_ = next.now_;
    part_.Add(next.part_, window_);
  }

  std::vector<ToggleSpan> Take() {
    EndStep();
    std::vector<ToggleSpan> spans;
    for (const WatchedSignal& watched : part_.signals) spans.push_back(watched.span);
    return spans;
  }
  /// In place of Take, of a stretch that is added to others elsewhere.
  WatchPart TakePart() {
    EndStep();
    return std::move(part_);
  }

 private:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  void EndStep() {
    for (WatchedSignal& watched : part_.signals) {
      const char given = watched.given;
      watched.given = 0;
      if (part_.isOver || (given != '0' && given != '1') || given == watched.level) continue;
      if (watched.level == 0) {
        watched.first = given;
        watched.firstTime = now_;
      } else if (window_.Counts(now_)) {
        watched.Toggle(now_);
      }
      watched.level = given;
    }
  }

  Taker& taker_;
  const ActivityWindow window_;
  std::vector<std::uint32_t> place_;  // by codeId
  WatchPart part_;
  std::uint64_t now_ = 0;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_TOGGLE_WATCH_H_
