// Time in a dump's body: which part of it a run looks at, and what counts as its time span.
//
// Time only grows: a stamp that is smaller than an earlier one moves nothing, and what follows it
// belongs to the step that is open. A window from BEGIN to END keeps what happens after BEGIN up to
// and with END; what happens at BEGIN and before it is the window's initial state, in which each
// signal has one value. Windows that touch therefore share no change, and their changes add up.
#ifndef KESNCD_FREE_FORMAT_BODY_WINDOW_H_
#define KESNCD_FREE_FORMAT_BODY_WINDOW_H_

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// The bounds of a window in ticks, both of them in it. Without `begin` the dump's first values
/// count like all others.
struct TickWindow {
  std::optional<std::uint64_t> begin;
  std::optional<std::uint64_t> end;
};

/// What was seen of time: the span is from `first` to `last`.
struct BodyTime {
  std::uint64_t stamps = 0;  // all of the dump's, as far as it was read
  bool isOpen = false;       // something of the dump lies in the window
  bool isEndCut = false;     // END lies after the dump's last stamp
  std::uint64_t first = 0;
  std::uint64_t last = 0;
};

/// A taker for ReadBody that passes on what lies in a window. `Inner` has the operations
///
///   void Scalar, Vector, Real, Command, SectionEnd   as for ReadBody
///   void Stamp(std::uint64_t ticks)                  each larger than the one before
///   void RememberScalar, RememberVector, RememberReal(codeId, value)   before the window
///   void Fetch(std::uint32_t codeId) const           as for ReadBody; may be left out
///   void Open(std::uint64_t ticks, bool isDumping)   the window begins; not called without BEGIN
///
/// Calling order: ReadBody, Finish, time.
template <class Inner>
class BodyWindow {
 public:
  BodyWindow(const TickWindow& window, Inner& inner) : window_(window), inner_(inner) {
    time_.isOpen = !window.begin;
    isDone_ = window.begin && window.end && *window.begin > *window.end;
  }

  void Fetch(std::uint32_t codeId) const requires requires(const Inner& inner) {
    inner.Fetch(codeId);
  }
  { inner_.Fetch(codeId); }
  void Scalar(std::uint32_t codeId, char value) {
    if (isDone_) return;
    if (time_.isOpen) {
      inner_.Scalar(codeId, value);
    } else {
      inner_.RememberScalar(codeId, value);
    }
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    if (isDone_) return;
    if (time_.isOpen) {
      inner_.Vector(codeId, value);
    } else {
      inner_.RememberVector(codeId, value);
    }
  }
  void Real(std::uint32_t codeId, std::string_view value) {
    if (isDone_) return;
    if (time_.isOpen) {
      inner_.Real(codeId, value);
    } else {
      inner_.RememberReal(codeId, value);
    }
  }
  void Command(Keyword command) {
    isDumping_ = command != Keyword::DumpOff;
    if (time_.isOpen && !isDone_) inner_.Command(command);
  }
  void SectionEnd() {
    if (time_.isOpen && !isDone_) inner_.SectionEnd();
  }
  void Stamp(std::uint64_t ticks) {
    if (isDone_) return;
    const bool isFirst = time_.stamps++ == 0;
    if (!isFirst && ticks <= now_) return;
    const std::uint64_t before = isFirst ? ticks : now_;
    now_ = ticks;
    if (window_.end && isFirst && ticks > *window_.end) {
      time_.isOpen = false;
      isDone_ = true;
      return;
    }
    if (!time_.isOpen && ticks > *window_.begin) OpenAt(std::max(before, *window_.begin));
    if (time_.isOpen) MoveTo(ticks);
  }
  bool IsDone() const { return isDone_; }

  /// To be called when the body was read.
  void Finish() {
    const bool reaches = time_.stamps > 0 && now_ >= window_.begin.value_or(0);
    if (!time_.isOpen && !isDone_ && reaches) OpenAt(now_);
    time_.isEndCut = window_.end && !isDone_ && now_ < *window_.end;
    if (window_.begin || window_.end) time_.isOpen = time_.isOpen && time_.stamps > 0;
  }
  const BodyTime& time() const { return time_; }

 private:
  /// The value that each signal has here is its initial one.
  void OpenAt(std::uint64_t ticks) {
    time_.isOpen = true;
    time_.first = time_.last = ticks;
    hasBegun_ = true;
    inner_.Open(ticks, isDumping_);
  }

  void MoveTo(std::uint64_t ticks) {
    isDone_ = window_.end && ticks > *window_.end;
    if (isDone_) ticks = *window_.end;
    if (hasBegun_ && ticks <= time_.last) return;
    if (!hasBegun_) time_.first = ticks;
    hasBegun_ = true;
    time_.last = ticks;
    inner_.Stamp(ticks);
  }

  const TickWindow window_;
  Inner& inner_;
  BodyTime time_;
  std::uint64_t now_ = 0;
  bool isDumping_ = true;
  bool hasBegun_ = false;  // `first` is known
  bool isDone_ = false;    // what follows lies after the window
};

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_BODY_WINDOW_H_
