// Counting by the rule of hosts: a taker for the body, and what is said about it.
#include "activity/host_run.h"

#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "free_format/host_rule.h"
#include "free_format/remarks.h"
#include "text/failure.h"
#include "vcd/time_text.h"

namespace orsa::kesncd {

namespace {

/// Counts what BodyWindow lets through.
class HostCounter {
 public:
  explicit HostCounter(std::size_t codes) : cells_(codes) {}

  void Fetch(std::uint32_t codeId) const { __builtin_prefetch(&cells_[codeId], 1); }
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

std::vector<std::string> RemarksOn(const Declarations& declarations, const ItemTallies& items,
                                   const BodyTime& time, const HostCounter& counter) {
  std::vector<std::string> remarks = ReadingRemarks(declarations, items);
  if (time.isEndCut) {
    remarks.emplace_back("the window ends after the dump: it is cut back to the dump's end");
  }
  if (counter.dumping().OffTicks() > 0) {
    remarks.push_back("dumping was off for " +
                      OffText(counter.dumping(), time.last - time.first, counter.repeated()));
  }
  return remarks;
}

std::string WhyUnknown(const Declarations& declarations, const BodyTime& time) {
  constexpr char kRemedy[] = ", so no frequency is known; kesncd prepare --timescale gives one";
  if (!declarations.tick && declarations.timescale.empty()) {
    return std::string("it has no time scale") + kRemedy;
  }
  if (!declarations.tick) {
    return "its time scale \"" + declarations.timescale.substr(0, 40) + "\" is not understood" +
           kRemedy;
  }
  if (time.stamps == 0) return "it has no time stamp, so no frequency is known";
  if (time.first == time.last) return "it spans no time, so no frequency is known";
  return "";
}

}  // namespace

HostRun ReadHostRun(ByteSource& dump, const std::string& name, const TimeWindow& window,
                    std::size_t block) {
  DumpWords words(dump, block, block / 4);
  HostRun run;
  run.declarations = ReadDeclarations(words, name);
  const TickWindow ticks = WindowInTicks(window, run.declarations.tick, name);
  DumpItems items(words, run.declarations);
  HostCounter counter(run.declarations.codes.size());
  BodyWindow<HostCounter> body(ticks, counter);
  ReadBody(items, body);
  body.Finish();
  const BodyTime& time = body.time();
  if (!time.isOpen) {
    throw Failure(FailureKind::NothingMatched, name + ": nothing lies in the window");
  }
  run.changes = counter.TakeChanges();
  run.firstTick = static_cast<double>(time.first);
  run.lastTick = static_cast<double>(time.last);
  run.spanTicks = static_cast<double>(time.last - time.first);
  if (run.declarations.tick) run.nsPerTick = Nanoseconds(*run.declarations.tick);
  run.whyUnknown = WhyUnknown(run.declarations, time);
  run.remarks = RemarksOn(run.declarations, items.tallies(), time, counter);
  return run;
}

}  // namespace orsa::kesncd
