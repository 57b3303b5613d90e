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

// More bits than any design has, few enough to hold: a corrupt range such as [2147483647:0] must
// not fill the memory.
constexpr std::uint64_t kMostBusBits = 16777216;

bool TooManyBusBits() {
  std::uint64_t bits = 0;
  for (int i = 0; i < topMod.GetSignalSize() && bits <= kMostBusBits; ++i) {
    bits += RewriteName(topMod.GetSignalName(i)).RangeSize();
  }
  return bits > kMostBusBits;
}

using Frequencies = std::map<std::string, double>;

/// Enters the bits of one bus. Taken in the order of their names ("d_1", "d_10", "d_2"), each goes
/// right after the one before, where the map need not be searched.
class BusEntry {
 public:
  BusEntry(const DesignNames& names, double frequency, Frequencies& frequencies)
      : names_(names),
        frequency_(frequency),
        frequencies_(frequencies),
        next_(frequencies.lower_bound(names.base)) {}

  void Enter() {
    if (names_.low < 0 || names_.low > static_cast<std::int64_t>(names_.RangeSize())) {
      // The walk by digits would meet too many numbers below the range.
      for (std::int64_t bit = names_.low; bit <= names_.high; ++bit) EnterBit(bit);
      return;
    }
    if (names_.low == 0) EnterBit(0);
    for (std::int64_t digit = 1; digit <= 9; ++digit) EnterFrom(digit);
  }

 private:
  /// Enters the bits whose numbers begin with these digits.
  void EnterFrom(std::int64_t number) {  // NOLINT(misc-no-recursion): a level a digit
    if (number > names_.high) return;
    if (number >= names_.low) EnterBit(number);
    for (std::int64_t digit = 0; digit <= 9; ++digit) EnterFrom(10 * number + digit);
  }
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
  topMod.Clear();
  ParseVcdFile2(dump.get(), signals);
  const bool failed = std::ferror(dump.get()) != 0;
  dump.reset();
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
  Frequencies frequencies;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) EnterSignal(i, frequencies);
  signalFreqs.swap(frequencies);
  // A place that cannot be written is passed over: the frequencies are good all the same.
  ReplaceActivityFile(topMod, vcdFile + ".txt");
  if (debug != 0) topMod.PrintMod();
  return true;
}

}  // namespace orsa::kesncd
