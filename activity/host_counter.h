// Counts a dump's body, or a stretch of it, by the rule of hosts.
//
// The rule: each 0 or 1 of a scalar counts, x and z do not; each value of a vector or a real
// counts; a value that repeats the one before counts too; nothing counts while dumping is off. The
// first count of a signal is its initial value. The figures are those of the library's readers,
// exactly.
#ifndef KESNCD_ACTIVITY_HOST_COUNTER_H_
#define KESNCD_ACTIVITY_HOST_COUNTER_H_

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include "activity/code_array.h"
#include "activity/host_part.h"
#include "free_format/body_window.h"
#include "free_format/host_rule.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// Counts what BodyWindow lets through. An inner taker of BodyWindow, see there for what its
/// functions mean. Without BEGIN of a window it is never told to Remember or Open. Memory: 16 bytes
/// a code.
class HostCounter {
 public:
  explicit HostCounter(std::uint32_t codes, std::shared_ptr<CodeLines> lines)
      : codes_(codes, std::move(lines)) {
    part_.first.resize(codes);
  }
  /// Goes on from what was counted; see HostPart::Add.
  explicit HostCounter(HostPart&& part)
      : part_(std::move(part)), codes_(std::move(part_.codes)), dumping_(part_.dumping) {}

  /// Fetches the code's count before it is needed: in a large dump it is in no cache.
  void Fetch(std::uint32_t codeId) const { __builtin_prefetch(&codes_[codeId], 1); }
  void Scalar(std::uint32_t codeId, char value) {
    // Without branches: which value a signal gets next cannot be predicted. '0' and '1' are the
    // smallest of the characters that arrive here.
    Count(codeId, static_cast<unsigned char>(value),
          static_cast<std::uint32_t>(value <= '1') & dumping_.isOn());
  }
  /// A vector's value is kept as a fingerprint: long values would need memory in proportion to
  /// buses.
  void Vector(std::uint32_t codeId, std::string_view value) {
    Count(codeId, Fingerprint(value), dumping_.isOn());
  }
  void Real(std::uint32_t codeId, std::string_view value) { Vector(codeId, value); }
  /// $dumpoff and $dumpon, which end and begin counting.
  void Command(Keyword command) { dumping_.Take(command); }
  void SectionEnd() {}
  void Stamp(std::uint64_t ticks) { dumping_.Stamp(ticks); }

  /// Before a window each signal has no more than its initial value, which counts once. A later
  /// value before the window replaces the one before.
  void RememberScalar(std::uint32_t codeId, char value) {
    Remember(codeId, static_cast<unsigned char>(value), value <= '1' ? 1U : 0U);
  }
  void RememberVector(std::uint32_t codeId, std::string_view value) {
    Remember(codeId, Fingerprint(value), 1);
  }
  void RememberReal(std::uint32_t codeId, std::string_view value) { RememberVector(codeId, value); }
  /// BEGIN of a window is reached. What was remembered becomes the initial values, which count once
  /// each, but not while dumping is off there.
  void Open(std::uint64_t ticks, bool isDumping) {
    dumping_.Open(ticks, isDumping);
    if (isDumping) return;
    part_.opensOff = true;
    for (std::size_t codeId = 0; codeId < codes_.size(); ++codeId) codes_[codeId].changes = 0;
  }

  const HostPart& part() const { return part_; }
  /// What was counted. The counter is used up. `window` is how far the body was read, which parts
  /// that follow have to know.
  HostPart TakePart(const WindowState& window) {
    part_.dumping = dumping_.state();
    part_.window = window;
    part_.codes = codes_.Take();
    return std::move(part_);
  }

 private:
  /// Counts a value where `counts` is 1. A count stays in reach of its limit. `value` is a
  /// character or a fingerprint, never 0.
  void Count(std::uint32_t codeId, std::uint32_t value, std::uint32_t counts) {
    HostPart::Code& code = codes_[codeId];
    // The first value of a code: a part that comes before must know whether it repeats that part's
    // last.
    if (code.last == 0) [[unlikely]]
      part_.first[codeId] = {value, static_cast<HostPart::FirstValue>(counts)};
    // For the remark on dumping that was off: see OffText.
    part_.repeated += static_cast<std::uint32_t>(code.last == value) & counts;
    code.last = value;
    code.changes += counts;
    // As a host's counter does, it stays at its limit.
    if (code.changes > kMostChanges) [[unlikely]]
      code.changes = kMostChanges;
  }
  /// One value at most: what was remembered before is forgotten.
  void Remember(std::uint32_t codeId, std::uint32_t value, std::uint32_t counts) {
    if (codes_[codeId].last == 0) part_.first[codeId] = {value, HostPart::FirstValue::Initial};
    codes_[codeId] = {counts, value};
  }

  HostPart part_;  // but for its codes
  CodeArray<HostPart::Code> codes_;
  // Whether values count now, and for how long they did not.
  DumpingTime dumping_;
};

/// A taker of ReadBody that counts in a window. Calling order: construct, ReadBody, then Finish for
/// a whole body, TakePart. A window without bounds is all of the dump's time. Not copied: `body_`
/// refers to `counter_`.
class HostCounting {
 public:
  /// `lines` are those of counters that take the same changes.
  HostCounting(std::uint32_t codes, const TickWindow& window,
               std::shared_ptr<CodeLines> lines = nullptr)
      : counter_(codes, std::move(lines)), body_(window, counter_) {}
  /// Goes on from what was counted in the same window. For a part to which a stamp or an end has to
  /// be told still; see HostPart::Add and FinishHostRun.
  HostCounting(HostPart&& part, const TickWindow& window)
      : counter_(std::move(part)), body_(window, counter_, counter_.part().window) {}
  HostCounting(const HostCounting&) = delete;
  HostCounting& operator=(const HostCounting&) = delete;

  /// What ReadBody calls; the window decides what of it reaches the counter.
  void Fetch(std::uint32_t codeId) const { body_.Fetch(codeId); }
  void Scalar(std::uint32_t codeId, char value) { body_.Scalar(codeId, value); }
  void Vector(std::uint32_t codeId, std::string_view value) { body_.Vector(codeId, value); }
  void Real(std::uint32_t codeId, std::string_view value) { body_.Real(codeId, value); }
  void Command(Keyword command) { body_.Command(command); }
  void SectionEnd() { body_.SectionEnd(); }
  void Stamp(std::uint64_t ticks) { body_.Stamp(ticks); }
  /// True after the window's end: ReadBody may stop.
  bool IsDone() const { return body_.IsDone(); }

  /// Whether what another one took from a stretch that begins with a stamp adds to what this took.
  /// Time must grow at the cut, and dumping must be on there, as `next` was counted as if it were.
  bool Precedes(const HostCounting& next) const {
    const WindowState& own = body_.state();
    const WindowState& others = next.body_.state();
    return own.isDumping && others.time.stamps > 0 &&
           (own.time.stamps == 0 || own.now < others.firstStamp);
  }
  /// The body was read to its end. What is open at the end of the dump is closed.
  void Finish() { body_.Finish(); }
  /// What was counted. The counter is used up.
  HostPart TakePart() { return counter_.TakePart(body_.state()); }

 private:
  // The order matters: body_ is constructed with counter_.
  HostCounter counter_;
  BodyWindow<HostCounter> body_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_HOST_COUNTER_H_
