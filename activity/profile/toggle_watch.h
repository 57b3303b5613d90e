// When a few signals toggled first and last. The mean of a clock's toggles over a whole dump is not
// its period, since a dump seldom begins and ends at an edge; the time between its edges is.
//
// For example, a clock that rises at 5, 15 and 25 and falls at 10 and 20 toggles 5 times from 5 to
// 25: 4 intervals in 20 ticks, so its period is 10, whatever the dump's span is.
#ifndef KESNCD_ACTIVITY_PROFILE_TOGGLE_WATCH_H_
#define KESNCD_ACTIVITY_PROFILE_TOGGLE_WATCH_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "activity/activity_result.h"
#include "activity/activity_window.h"
#include "activity/code_bits.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// What was seen of a signal of one bit in a stretch of a dump. Levels are '0' and '1'; 0 says that
/// there was none.
struct WatchedSignal {
  char given = 0;  // the last value of the step that is open
  char level = 0;  // the last known value before
  char first = 0;  // the first known value, and its time
  std::uint64_t firstTime = 0;
  ToggleSpan span;

  // Only the first and the last one are kept: the mean distance of edges needs no more.
  void Toggle(std::uint64_t ticks) {
    if (span.toggles++ == 0) span.first = ticks;
    span.last = ticks;
  }
  /// Joins two stretches. Whether the first known value of `next` is a toggle is known here only:
  /// the watch that saw it did not know what came before.
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

/// A counter that watches a few signals: a taker of a dump's body (see body_reader.h). Calling
/// order: construct, ReadBody, Take; watches of a body's stretches add up by Add, in the order of
/// the dump, before Take.
///
/// Levels follow the rules of exact activity: only the last value of a step is seen, x and z are
/// passed over (0 x 1 is a toggle at the 1, 0 x 0 none), the first known value is none. Every
/// change costs a look into a table, which has a bit a code, to stay in the cache of a processor
/// where there are a million codes.
template <class Counter>
class ToggleWatch {
 public:
  /// `watched` are codes of signals of one bit, each once. `more` is what a counter is made of
  /// beside the codes and the window.
  template <class... More>
  ToggleWatch(const std::vector<std::uint32_t>& watched, const CodeBits& codes,
              const ActivityWindow& window, const More&... more)
      : counter_(codes, window, more...),
        window_(window),
        isWatched_(codes.codes()),
        place_(watched.empty() ? 0 : codes.codes()) {
    part_.signals.resize(watched.size());
    for (std::uint32_t i = 0; i < watched.size(); ++i) {
      isWatched_[watched[i]] = true;
      place_[watched[i]] = i;
    }
  }

  void Fetch(std::uint32_t codeId) const { counter_.Fetch(codeId); }
  void Scalar(std::uint32_t codeId, char value) {
    if (isWatched_[codeId]) [[unlikely]]
      part_.signals[place_[codeId]].given = value;
    counter_.Scalar(codeId, value);
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    // A wider value is cut on its left, so the signal's bit is its last character.
    if (isWatched_[codeId]) [[unlikely]]
      part_.signals[place_[codeId]].given = value.back();
    counter_.Vector(codeId, value);
  }
  void Real(std::uint32_t codeId, std::string_view value) { counter_.Real(codeId, value); }
  /// A stamp that repeats the time or goes back leaves the step open, as it does for all takers.
  void Stamp(std::uint64_t ticks) {
    if (ticks > now_) {
      EndStep();
      now_ = ticks;
    }
    counter_.Stamp(ticks);
  }
  /// Edges on the two sides of a pause are no period apart, so nothing is watched after the first
  /// pause.
  void Command(Keyword command) {
    if (command == Keyword::DumpOff) {
      EndStep();
      part_.isOver = true;
    }
    counter_.Command(command);
  }
  void SectionEnd() { counter_.SectionEnd(); }
  bool IsDone() const { return counter_.IsDone(); }
  /// What the watches saw adds up whenever what the counters counted does.
  bool Precedes(const ToggleWatch& next) const { return counter_.Precedes(next.counter_); }

  Counter& counter() { return counter_; }

  /// Adds what another watch saw, but not what its counter counted, from a stamp later than all of
  /// this one on.
  void Add(ToggleWatch& next) {
    EndStep();
    next.EndStep();
    if (!part_.isOver) now_ = next.now_;
    part_.Add(next.part_, window_);
  }

  /// In the order of `watched`. To be called once all is read and added.
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
  /// Takes the values of the step that ends; a signal without one keeps its level.
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

  Counter counter_;
  const ActivityWindow window_;
  std::vector<bool> isWatched_;       // by codeId
  std::vector<std::uint32_t> place_;  // of a watched one
  WatchPart part_;
  std::uint64_t now_ = 0;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_TOGGLE_WATCH_H_
