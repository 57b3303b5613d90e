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

// More bits than any design has, few enough to hold: a damaged range such as [2147483647:0] must
// not fill the memory.
constexpr std::uint64_t kMostBusBits = 16777216;

bool TooManyBusBits() {
  std::uint64_t bits = 0;
  for (int i = 0; i < topMod.GetSignalSize() && bits <= kMostBusBits; ++i) {
    bits += RewriteName(topMod.GetSignalName(i)).RangeSize();
  }
  return bits > kMostBusBits;
}

/// Enters a signal under its design-style names; names that are there keep their frequency.
void EnterSignal(int index, std::map<std::string, double>& frequencies) {
  const DesignNames names = RewriteName(topMod.GetSignalName(index));
  const double frequency = topMod.GetSignalFreq(index);
  if (!names.isRange) {
    frequencies.emplace(names.base, frequency);
    return;
  }
  for (std::int64_t bit = names.low; bit <= names.high; ++bit) {
    frequencies.emplace(names.base + std::to_string(bit), frequency);
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
  std::map<std::string, double> frequencies;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) EnterSignal(i, frequencies);
  signalFreqs.swap(frequencies);
  // A place that cannot be written is passed over: the frequencies are good all the same.
  ReplaceActivityFile(topMod, vcdFile + ".txt");
  if (debug != 0) topMod.PrintMod();
  return true;
}

}  // namespace orsa::kesncd
