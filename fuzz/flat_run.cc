// The flat run, from a path to the map and the activity file. The map is built again as one would
// write it down first, from the signals that the reader leaves. The first option names the top
// module, the others are the selection.
#include <algorithm>
#include <cstdlib>
#include <optional>

#include "fuzz/target.h"
#include "kesncd/kesncd.h"
#include "tests/support/input.h"
#include "tests/support/reader_state.h"
#include "tests/support/require.h"
#include "tests/support/streams.h"

namespace {

using namespace orsa::kesncd;
using Map = std::map<std::string, double>;

constexpr long kMostBits = 16777216;  // where the run refuses
constexpr long kMostBuilt = 20000;    // what is worth the time here

int Number(const std::string& text) {
  return static_cast<int>(static_cast<unsigned>(std::strtol(text.c_str(), nullptr, 10)));
}

struct Bits {
  std::string base;
  long low = 0;
  long high = -1;
};

/// The bits of a range, nothing for a single name.
std::optional<Bits> BitsOf(std::string name) {
  name = name.substr(0, name.find(']'));
  const std::size_t bracket = name.find('[');
  const std::size_t colon = name.find(':');
  if (bracket == std::string::npos || colon == std::string::npos) return std::nullopt;
  const std::string left =
      name.substr(bracket + 1, colon < bracket ? std::string::npos : colon - bracket - 1);
  const long first = Number(left);
  const long second = Number(name.substr(colon + 1));
  return Bits{name.substr(0, bracket) + "_", std::min(first, second), std::max(first, second)};
}

std::string SingleName(std::string name) {
  name = name.substr(0, name.find(']'));
  if (name.find('[') != std::string::npos) name[name.find('[')] = '_';
  return name;
}

long CountBits() {
  long bits = 0;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    if (const auto range = BitsOf(topMod.GetSignalName(i))) bits += range->high - range->low + 1;
  }
  return bits;
}

Map BuildMap() {
  Map map;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    const std::string name = topMod.GetSignalName(i);
    const double frequency = support::PlainFrequency(topMod.GetSignalChange(i));
    const auto range = BitsOf(name);
    if (!range) map.insert({SingleName(name), frequency});
    for (long bit = range ? range->low : 1; range && bit <= range->high; ++bit) {
      map.insert({range->base + std::to_string(bit), frequency});
    }
  }
  return map;
}

void CheckActivityFile() {
  const support::MemoryFile file;
  topMod.DumpIntoFile(file.Path());
  std::string expected = "module | " + topMod.GetName() + "\n";
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    char number[400];
    std::snprintf(number, sizeof number, "%f", topMod.GetSignalFreq(i));
    expected += "signal | " + topMod.GetSignalName(i) + " | " + number + "\n";
  }
  support::Require(file.Text() == expected, "the activity file");
}

}  // namespace

void CheckInput(std::string_view bytes) {
  const support::Input input(bytes);
  const support::MemoryFile file(input.text);
  ResetReaderState();
  KesNCD analyser;
  analyser.SetTopModule(input.Option(0, "top"));
  analyser.ParseVcdFile2(TextStream(input.text), input.OptionsFrom(1));
  const std::string state = support::StateText();
  const long bits = CountBits();
  if (bits > kMostBuilt && bits <= kMostBits) return;
  ResetReaderState();
  analyser.SetTopModule(input.Option(0, "top"));
  const Map before{{"before", 1.0}};
  analyser.signalFreqs = before;
  std::string message = "untouched";
  const bool done = analyser.SetVCDFile(file.Path(), input.OptionsFrom(1), message);
  support::Require(support::StateText() == state, "the run reads as its reader");
  support::Require(done == (isTopModNameEverMatched != 0 && bits <= kMostBits), "the run's result");
  support::Require((message == "untouched") == done, "a message is for failures");
  const Map expected = done ? BuildMap() : before;
  support::Require(std::equal(expected.begin(), expected.end(), analyser.signalFreqs.begin(),
                              analyser.signalFreqs.end(),
                              [](const auto& a, const auto& b) {
                                return a.first == b.first && support::Same(a.second, b.second);
                              }),
                   "the map of frequencies");
  if (done) CheckActivityFile();
}
