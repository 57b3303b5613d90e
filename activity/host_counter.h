// Counts a dump's body by the rule of hosts.
#ifndef KESNCD_ACTIVITY_HOST_COUNTER_H_
#define KESNCD_ACTIVITY_HOST_COUNTER_H_

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "activity/host_run.h"
#include "free_format/body_window.h"
#include "free_format/host_rule.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// Counts what BodyWindow lets through.
class HostCounter {
 public:
  explicit HostCounter(std::size_t codes) : cells_(codes) {}

  void Scalar(std::uint32_t codeId, char value) {
    // Without branches: which value a signal gets next cannot be predicted.
    Count(cells_[codeId], static_cast<unsigned char>(value),
          static_cast<std::uint32_t>(value <= '1') & dumping_.isOn());
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    Count(cells_[codeId], Fingerprint(value), dumping_.isOn());
  }
  void Real(std::uint32_t codeId, std::string_view value) { Vector(codeId, value); }
  void Command(Keyword command) { dumping_.Take(command); }
  void SectionEnd() {}
  void Stamp(std::uint64_t ticks) { dumping_.Stamp(ticks); }

  // Before a window each signal has no more than its initial value, which counts once.
  void RememberScalar(std::uint32_t codeId, char value) {
    cells_[codeId] = {value <= '1' ? 1U : 0U, static_cast<unsigned char>(value)};
  }
  void RememberVector(std::uint32_t codeId, std::string_view value) {
    cells_[codeId] = {1, Fingerprint(value)};
  }
  void RememberReal(std::uint32_t codeId, std::string_view value) { RememberVector(codeId, value); }
  void Open(std::uint64_t ticks, bool isDumping) {
    dumping_.Open(ticks, isDumping);
    if (isDumping) return;
    for (Cell& cell : cells_) cell.changes = 0;
  }

  std::vector<std::uint32_t> TakeChanges() {
    std::vector<std::uint32_t> changes;
    changes.reserve(cells_.size());
    for (const Cell& cell : cells_) changes.push_back(std::min(cell.changes, kMostChanges));
    return changes;
  }
  const DumpingTime& dumping() const { return dumping_; }
  std::uint64_t repeated() const { return repeated_; }

 private:
  struct Cell {
    std::uint32_t changes = 0;
    std::uint32_t last = 0;  // 0: no value yet
  };

  /// Counts a value where `counts` is 1. A count stays in reach of its limit.
  void Count(Cell& cell, std::uint32_t value, std::uint32_t counts) {
    repeated_ += static_cast<std::uint32_t>(cell.last == value) & counts;
    cell.last = value;
    cell.changes += counts;
    if (cell.changes > kMostChanges) [[unlikely]]
      cell.changes = kMostChanges;
  }

  std::vector<Cell> cells_;
  DumpingTime dumping_;
  std::uint64_t repeated_ = 0;
};

/// A taker of ReadBody that counts in a window. Calling order: construct, ReadBody, Finish, the
/// rest.
class HostCounting {
 public:
  HostCounting(std::size_t codes, const TickWindow& window)
      : counter_(codes), body_(window, counter_) {}
  HostCounting(const HostCounting&) = delete;
  HostCounting& operator=(const HostCounting&) = delete;

  void Scalar(std::uint32_t codeId, char value) { body_.Scalar(codeId, value); }
  void Vector(std::uint32_t codeId, std::string_view value) { body_.Vector(codeId, value); }
  void Real(std::uint32_t codeId, std::string_view value) { body_.Real(codeId, value); }
  void Command(Keyword command) { body_.Command(command); }
  void SectionEnd() { body_.SectionEnd(); }
  void Stamp(std::uint64_t ticks) { body_.Stamp(ticks); }
  bool IsDone() const { return body_.IsDone(); }

  /// The body was read to its end.
  void Finish() { body_.Finish(); }
  const BodyTime& time() const { return body_.time(); }
  const DumpingTime& dumping() const { return counter_.dumping(); }
  std::uint64_t repeated() const { return counter_.repeated(); }
  std::vector<std::uint32_t> TakeChanges() { return counter_.TakeChanges(); }

 private:
  HostCounter counter_;
  BodyWindow<HostCounter> body_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_HOST_COUNTER_H_
