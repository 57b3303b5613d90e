// Counts a dump's body, or a stretch of it, by the rule of hosts.
#ifndef KESNCD_ACTIVITY_HOST_COUNTER_H_
#define KESNCD_ACTIVITY_HOST_COUNTER_H_

#include <cstdint>
#include <string_view>
#include <utility>

#include "activity/host_part.h"
#include "free_format/body_window.h"
#include "free_format/host_rule.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// Counts what BodyWindow lets through.
class HostCounter {
 public:
  explicit HostCounter(std::uint32_t codes) {
    part_.codes.resize(codes);
    part_.first.resize(codes);
  }
  /// Goes on from what was counted.
  explicit HostCounter(HostPart&& part) : part_(std::move(part)), dumping_(part_.dumping) {}

  void Fetch(std::uint32_t codeId) const { __builtin_prefetch(&part_.codes[codeId], 1); }
  void Scalar(std::uint32_t codeId, char value) {
    // Without branches: which value a signal gets next cannot be predicted.
    Count(codeId, static_cast<unsigned char>(value),
          static_cast<std::uint32_t>(value <= '1') & dumping_.isOn());
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    Count(codeId, Fingerprint(value), dumping_.isOn());
  }
  void Real(std::uint32_t codeId, std::string_view value) { Vector(codeId, value); }
  void Command(Keyword command) { dumping_.Take(command); }
  void SectionEnd() {}
  void Stamp(std::uint64_t ticks) { dumping_.Stamp(ticks); }

  // Before a window each signal has no more than its initial value, which counts once.
  void RememberScalar(std::uint32_t codeId, char value) {
    Remember(codeId, static_cast<unsigned char>(value), value <= '1' ? 1U : 0U);
  }
  void RememberVector(std::uint32_t codeId, std::string_view value) {
    Remember(codeId, Fingerprint(value), 1);
  }
  void RememberReal(std::uint32_t codeId, std::string_view value) { RememberVector(codeId, value); }
  void Open(std::uint64_t ticks, bool isDumping) {
    dumping_.Open(ticks, isDumping);
    if (isDumping) return;
    part_.opensOff = true;
    for (HostPart::Code& code : part_.codes) code.changes = 0;
  }

  const HostPart& part() const { return part_; }
  /// What was counted. The counter is used up.
  HostPart TakePart(const WindowState& window) {
    part_.dumping = dumping_.state();
    part_.window = window;
    return std::move(part_);
  }

 private:
  /// Counts a value where `counts` is 1. A count stays in reach of its limit.
  void Count(std::uint32_t codeId, std::uint32_t value, std::uint32_t counts) {
    HostPart::Code& code = part_.codes[codeId];
    if (code.last == 0) [[unlikely]]
      part_.first[codeId] = {value, static_cast<HostPart::FirstValue>(counts)};
    part_.repeated += static_cast<std::uint32_t>(code.last == value) & counts;
    code.last = value;
    code.changes += counts;
    if (code.changes > kMostChanges) [[unlikely]]
      code.changes = kMostChanges;
  }
  void Remember(std::uint32_t codeId, std::uint32_t value, std::uint32_t counts) {
    if (part_.codes[codeId].last == 0) part_.first[codeId] = {value, HostPart::FirstValue::Initial};
    part_.codes[codeId] = {counts, value};
  }

  HostPart part_;
  DumpingTime dumping_;
};

/// A taker of ReadBody that counts in a window. Calling order: construct, ReadBody, then Finish for
/// a whole body, TakePart.
class HostCounting {
 public:
  HostCounting(std::uint32_t codes, const TickWindow& window)
      : counter_(codes), body_(window, counter_) {}
  /// Goes on from what was counted in the same window.
  HostCounting(HostPart&& part, const TickWindow& window)
      : counter_(std::move(part)), body_(window, counter_, counter_.part().window) {}
  HostCounting(const HostCounting&) = delete;
  HostCounting& operator=(const HostCounting&) = delete;

  void Fetch(std::uint32_t codeId) const { body_.Fetch(codeId); }
  void Scalar(std::uint32_t codeId, char value) { body_.Scalar(codeId, value); }
  void Vector(std::uint32_t codeId, std::string_view value) { body_.Vector(codeId, value); }
  void Real(std::uint32_t codeId, std::string_view value) { body_.Real(codeId, value); }
  void Command(Keyword command) { body_.Command(command); }
  void SectionEnd() { body_.SectionEnd(); }
  void Stamp(std::uint64_t ticks) { body_.Stamp(ticks); }
  bool IsDone() const { return body_.IsDone(); }

  /// Whether what another one took from a stretch that begins with a stamp adds to what this took.
  bool Precedes(const HostCounting& next) const {
    const WindowState& own = body_.state();
    const WindowState& others = next.body_.state();
    return own.isDumping && others.time.stamps > 0 &&
           (own.time.stamps == 0 || own.now < others.firstStamp);
  }
  /// The body was read to its end.
  void Finish() { body_.Finish(); }
  /// What was counted. The counter is used up.
  HostPart TakePart() { return counter_.TakePart(body_.state()); }

 private:
  HostCounter counter_;
  BodyWindow<HostCounter> body_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_HOST_COUNTER_H_
