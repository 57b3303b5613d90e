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
/// count like all others. Ticks are the dump's own; WindowInTicks turns times into them.
struct TickWindow {
  std::optional<std::uint64_t> begin;
  std::optional<std::uint64_t> end;
};

/// What was seen of time: the span is from `first` to `last`.
struct BodyTime {
  std::uint64_t stamps = 0;  // all of the dump's, as far as it was read
  bool isOpen = false;       // something of the dump lies in the window
  bool isEndCut = false;     // END lies after the dump's last stamp
  // Both are ticks, and 0 without a stamp.
  std::uint64_t first = 0;
  std::uint64_t last = 0;
};

/// How far a body was read in a window. A value, so that the reading may go on elsewhere from it.
struct WindowState {
  BodyTime time;
  // The dump's first stamp, which may lie before the window.
  std::uint64_t firstStamp = 0;
  // The largest stamp so far.
  std::uint64_t now = 0;
  // What the dump commands so far say.
  bool isDumping = true;
  bool hasBegun = false;  // `time.first` is known
  bool isDone = false;    // what follows lies after the window
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
  // Without BEGIN everything from the dump's first byte on is in the window.
  BodyWindow(const TickWindow& window, Inner& inner) : window_(window), inner_(inner) {
    state_.time.isOpen = !window.begin;
    // No time lies in a window that ends before it begins.
    state_.isDone = window.begin && window.end && *window.begin > *window.end;
  }
  /// Goes on from a state, as the inner taker does from its own.
  BodyWindow(const TickWindow& window, Inner& inner, const WindowState& state)
      : window_(window), inner_(inner), state_(state) {}

  void Fetch(std::uint32_t codeId) const requires requires(const Inner& inner) {
    inner.Fetch(codeId);
  }
  { inner_.Fetch(codeId); }
  void Scalar(std::uint32_t codeId, char value) {
    if (state_.isDone) return;
    if (state_.time.isOpen) {
      inner_.Scalar(codeId, value);
    } else {
      inner_.RememberScalar(codeId, value);
    }
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    if (state_.isDone) return;
    if (state_.time.isOpen) {
      inner_.Vector(codeId, value);
    } else {
      inner_.RememberVector(codeId, value);
    }
  }
  void Real(std::uint32_t codeId, std::string_view value) {
    if (state_.isDone) return;
    if (state_.time.isOpen) {
      inner_.Real(codeId, value);
    } else {
      inner_.RememberReal(codeId, value);
    }
  }
  // Also before the window: it says whether dumping is on when the window begins.
  void Command(Keyword command) {
    state_.isDumping = command != Keyword::DumpOff;
    if (state_.time.isOpen && !state_.isDone) inner_.Command(command);
  }
  void SectionEnd() {
    if (state_.time.isOpen && !state_.isDone) inner_.SectionEnd();
  }
  // What a stamp does depends on where it lies: before BEGIN nothing, past it the window opens,
  // past END it is over, and in between time moves.
  void Stamp(std::uint64_t ticks) {
    if (state_.isDone) return;
    const bool isFirst = state_.time.stamps++ == 0;
    // Not larger: it belongs to the step that is open.
    if (!isFirst && ticks <= state_.now) return;
    if (isFirst) state_.firstStamp = ticks;
    const std::uint64_t before = isFirst ? ticks : state_.now;
    state_.now = ticks;
    // All of the dump lies after the window; what came before its first stamp is then not in it
    // either.
    if (window_.end && isFirst && ticks > *window_.end) {
      state_.time.isOpen = false;
      state_.isDone = true;
      return;
    }
    // Opened at BEGIN, not at the stamp: the time between the two is the window's. Where the dump
    // begins later, it opens there.
    if (!state_.time.isOpen && ticks > *window_.begin) OpenAt(std::max(before, *window_.begin));
    if (state_.time.isOpen) MoveTo(ticks);
  }
  bool IsDone() const { return state_.isDone; }

  /// To be called when the body was read. A dump that ends with the stamp BEGIN has opened nothing
  /// yet.
  void Finish() {
    const bool reaches = state_.time.stamps > 0 && state_.now >= window_.begin.value_or(0);
    if (!state_.time.isOpen && !state_.isDone && reaches) OpenAt(state_.now);
    state_.time.isEndCut = window_.end && !state_.isDone && state_.now < *window_.end;
    // Without a window a dump without stamps may still have values.
    if (window_.begin || window_.end)
      state_.time.isOpen = state_.time.isOpen && state_.time.stamps > 0;
  }
  const BodyTime& time() const { return state_.time; }
  const WindowState& state() const { return state_; }

 private:
  /// The value that each signal has here is its initial one.
  void OpenAt(std::uint64_t ticks) {
    state_.time.isOpen = true;
    state_.time.first = state_.time.last = ticks;
    state_.hasBegun = true;
    inner_.Open(ticks, state_.isDumping);
  }

  void MoveTo(std::uint64_t ticks) {
    // The stamp after END closes the span at END.
    state_.isDone = window_.end && ticks > *window_.end;
    if (state_.isDone) ticks = *window_.end;
    // The window opened at this very tick.
    if (state_.hasBegun && ticks <= state_.time.last) return;
    if (!state_.hasBegun) state_.time.first = ticks;
    state_.hasBegun = true;
    state_.time.last = ticks;
    inner_.Stamp(ticks);
  }

  const TickWindow window_;
  Inner& inner_;
  WindowState state_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_BODY_WINDOW_H_
