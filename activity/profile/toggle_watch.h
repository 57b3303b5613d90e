// When a few signals toggled first and last. The mean of a clock's toggles over a whole dump is not
// its period, since a dump seldom begins and ends at an edge; the time between its edges is.
#ifndef KESNCD_ACTIVITY_PROFILE_TOGGLE_WATCH_H_
#define KESNCD_ACTIVITY_PROFILE_TOGGLE_WATCH_H_

#include <cstdint>
#include <string_view>
#include <vector>

#include "activity/activity_result.h"
#include "activity/activity_window.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// Stands before a taker of a dump's body (see body_reader.h) and passes all on to it. Calling
/// order: construct, ReadBody, Take; watches of a body's stretches add up by Add, in the order of
/// the dump, before Take.
template <class Taker>
class ToggleWatch {
 public:
  /// `codeIds` of signals of one bit, each once.
  ToggleWatch(Taker& taker, const std::vector<std::uint32_t>& codeIds, std::uint32_t codes,
              const ActivityWindow& window)
      : taker_(taker), window_(window), place_(codes, kNone), watched_(codeIds.size()) {
    for (std::uint32_t i = 0; i < codeIds.size(); ++i) place_[codeIds[i]] = i;
  }

  void Fetch(std::uint32_t codeId) const { taker_.Fetch(codeId); }
  void Scalar(std::uint32_t codeId, char value) {
    if (place_[codeId] != kNone) watched_[place_[codeId]].given = value;
    taker_.Scalar(codeId, value);
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    if (place_[codeId] != kNone) watched_[place_[codeId]].given = value.back();
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
      isOver_ = true;
    }
    taker_.Command(command);
  }
  void SectionEnd() { taker_.SectionEnd(); }
  bool IsDone() const { return taker_.IsDone(); }
  /// What the watches saw adds up whenever what the takers took does.
  bool Precedes(const ToggleWatch& next) const { return taker_.Precedes(next.taker_); }

  /// Adds what another watch saw from a stamp later than all of this one on.
  void Add(ToggleWatch& next) {
    EndStep();
    next.EndStep();
    if (isOver_) return;
    for (std::size_t i = 0; i < watched_.size(); ++i) watched_[i].Add(next.watched_[i], window_);
    isOver_ = next.isOver_;
    now_ = next.now_;
  }

  std::vector<ToggleSpan> Take() {
    EndStep();
    std::vector<ToggleSpan> spans;
    for (const Watched& watched : watched_) spans.push_back(watched.span);
    return spans;
  }

 private:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  struct Watched {
    char given = 0;  // the last value of the step that is open
    char level = 0;  // the last known value before
    char first = 0;  // the first known value, and its time
    std::uint64_t firstTime = 0;
    ToggleSpan span;

    void Toggle(std::uint64_t ticks) {
      if (span.toggles++ == 0) span.first = ticks;
      span.last = ticks;
    }
    void Add(const Watched& next, const ActivityWindow& window) {
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

  void EndStep() {
    for (Watched& watched : watched_) {
      const char given = watched.given;
      watched.given = 0;
      if (isOver_ || (given != '0' && given != '1') || given == watched.level) continue;
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
  std::vector<Watched> watched_;
  std::uint64_t now_ = 0;
  bool isOver_ = false;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_TOGGLE_WATCH_H_
