// The flat run: dump to topMod, topMod to the signal-frequency map and the activity file.
#include <cstdio>
#include <map>
#include <set>

#include "kesncd/kesncd.h"
#include "kesncd/model/activity_file.h"
#include "kesncd/run_messages.h"
#include "names/design_names.h"
#include "text/file.h"

namespace orsa::kesncd {

namespace {

/// Counted before anything is entered, and no further than the limit.
bool TooManyBusBits() {
  std::uint64_t bits = 0;
  for (int i = 0; i < topMod.GetSignalSize() && bits <= kMostFlatNames; ++i) {
    bits += RewriteName(topMod.GetSignalName(i)).RangeSize();
  }
  return bits > kMostFlatNames;
}

using Frequencies = std::map<std::string, double>;

/// Enters the bits of one bus: construct and Enter once. Taken in the order of their names ("d_1",
/// "d_10", "d_2"), each goes right after the one before, which takes constant time; searching the
/// map for each of a million bits would not.
class BusEntry {
 public:
  BusEntry(const DesignNames& names, double frequency, Frequencies& frequencies)
      : names_(names),
        frequency_(frequency),
        frequencies_(frequencies),
        next_(frequencies.lower_bound(names.base)) {}

  // In the order of texts, which for numbers of different lengths is not that of values.
  void Enter() {
    // Of [1000000:999998] nearly all that a walk by digits meets lies below the range.
    if (names_.low < 0 || names_.low > static_cast<std::int64_t>(names_.RangeSize())) {
      for (std::int64_t bit = names_.low; bit <= names_.high; ++bit) EnterBit(bit);
      return;
    }
    // 0 is no start of longer numbers.
    if (names_.low == 0) EnterBit(0);
    for (std::int64_t digit = 1; digit <= 9; ++digit) EnterFrom(digit);
  }

 private:
  /// Enters the bits whose numbers begin with these digits. 1, 10, 100, ..., 101, ..., 11, ...: a
  /// number before all that it begins.
  void EnterFrom(std::int64_t number) {  // NOLINT(misc-no-recursion): a level a digit
    // All longer ones are larger still.
    if (number > names_.high) return;
    if (number >= names_.low) EnterBit(number);
    for (std::int64_t digit = 0; digit <= 9; ++digit) EnterFrom(10 * number + digit);
  }
  // A name that is there keeps its frequency; the hint moves past it either way.
  void EnterBit(std::int64_t bit) {
    next_ = frequencies_.emplace_hint(next_, names_.base + std::to_string(bit), frequency_);
    ++next_;
  }

  const DesignNames& names_;
  const double frequency_;
  Frequencies& frequencies_;
  Frequencies::iterator next_;
};

/// Enters a signal under its design-style names; names that are there keep their frequency.
void EnterSignal(int index, Frequencies& frequencies) {
  const DesignNames names = RewriteName(topMod.GetSignalName(index));
  const double frequency = topMod.GetSignalFreq(index);
  if (names.isRange) {
    BusEntry(names, frequency, frequencies).Enter();
  } else {
    frequencies.emplace(names.base, frequency);
  }
}

}  // namespace

/// Nothing is taken back when a run fails halfway: topMod shows what was read.
bool KesNCD::ReadVCD(const std::set<std::string>& signals, std::string& message) {
  if (vcdFile.empty()) {
    message = kNoDump;
    return false;
  }
  File dump = OpenForReading(vcdFile);
  if (dump == nullptr) {
    message = CannotOpen(vcdFile);
    return false;
  }
  // The module starts empty; span and time scale go on from earlier readings.
  topMod.Clear();
  ParseVcdFile2(dump.get(), signals);
  // Asked before the stream is closed.
  const bool failed = std::ferror(dump.get()) != 0;
  dump.reset();
  // Whether this dump or an earlier one matched does not matter, as hosts expect.
  if (isTopModNameEverMatched == 0) {
    message = kTopModuleNotMatched;
    return false;
  }
  if (failed) {
    message = CannotRead(vcdFile);
    return false;
  }
  if (TooManyBusBits()) {
    message = kTooManyBits;
    return false;
  }
  // Made apart, so that a failure leaves the map of the run before.
  Frequencies frequencies;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) EnterSignal(i, frequencies);
  signalFreqs.swap(frequencies);
  // A place that cannot be written is passed over: the frequencies are good all the same.
  ReplaceActivityFile(topMod, vcdFile + ".txt");
  if (debug != 0) topMod.PrintMod();
  return true;
}

}  // namespace orsa::kesncd
