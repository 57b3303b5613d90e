// Which clocks of the report run at another frequency in the dump, and what to say of each.
#include "cli/exact_figures/clock_comparison.h"

#include <array>
#include <charconv>
#include <cmath>
#include <variant>

#include "cli/process/messages.h"
#include "names/signal_search.h"

namespace orsa::kesncd::cli {

namespace {

// A tenth of the report's frequency: achieved frequencies of a report and rounded periods of a test
// bench differ by less.
constexpr double kTolerance = 0.1;

/// Six significant digits: "33.3333 MHz".
std::string Megahertz(double frequency) {
  constexpr int kDigits = 6;
  std::array<char, 32> text{};
  const auto end =
      std::to_chars(text.begin(), text.end(), frequency, std::chars_format::general, kDigits);
  return std::string(text.data(), end.ptr) + " MHz";
}

}  // namespace

/// All names in one walk over the declarations.
std::map<std::string, double> ClocksInDump(const Figures& figures, std::uint32_t top,
                                           const std::map<std::string, double>& clocks) {
  std::vector<std::string> names;
  names.reserve(clocks.size());
  // The report's frequencies do not matter for finding.
  for (const auto& [name, promised] : clocks) names.push_back(name);
  const SignalSearch search(figures.run.declarations, top, true, names);
  std::map<std::string, double> found;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const SignalAnswer& answer = search.Answer(i);
    // Not declared at or below `top`: extract's clock may be another module's.
    if (answer.variables.empty()) continue;
    const Cell frequency =
        figures.FrequencyOf(figures.run.declarations.variables[answer.variables.front()]);
    if (const double* const known = std::get_if<double>(&frequency)) {
      found.emplace(names[i], *known);
    }
  }
  return found;
}

/// Only what differs is said: a user reads what a remark is about.
void SayWrongClocks(const std::string& dump, const std::map<std::string, double>& clocks,
                    const std::map<std::string, double>& inDump) {
  for (const auto& [name, promised] : clocks) {
    const auto found = inDump.find(name);
    // The library marks what a report does not say by a frequency below 0.
    if (found == inDump.end() || promised < 0) continue;
    if (std::abs(found->second - promised) <= kTolerance * promised) continue;
    Remark(dump, "clock " + name + " runs at " + Megahertz(found->second) + " here, but at " +
                     Megahertz(promised) +
                     " in the timing report: is its period in the test bench right?");
  }
}

}  // namespace orsa::kesncd::cli
