#include "cli/commands/clock_comparison.h"

#include <array>
#include <charconv>
#include <cmath>

#include "cli/process/messages.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

namespace {

constexpr double kTolerance = 0.1;

std::string Megahertz(double frequency) {
  constexpr int kDigits = 6;
  std::array<char, 32> text{};
  const auto end =
      std::to_chars(text.begin(), text.end(), frequency, std::chars_format::general, kDigits);
  return std::string(text.data(), end.ptr) + " MHz";
}

}  // namespace

void SayWrongClocks(const std::string& dump, const std::map<std::string, double>& clocks,
                    const std::map<std::string, double>& inDump) {
  using namespace orsa::kesncd;
  if (timeScale == 0.0 || endCycle == startCycle) return;
  for (const auto& [name, promised] : clocks) {
    const auto found = inDump.find(name);
    if (found == inDump.end() || promised < 0) continue;
    if (std::abs(found->second - promised) <= kTolerance * promised) continue;
    Remark(dump, "clock " + name + " runs at " + Megahertz(found->second) + " here, but at " +
                     Megahertz(promised) +
                     " in the timing report: is its period in the test bench right?");
  }
}

}  // namespace orsa::kesncd::cli
