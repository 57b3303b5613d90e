// Clocks of reports.
#include "cli/exact_figures/report_clocks.h"

#include <algorithm>
#include <unordered_map>

#include "cli/input/list_file.h"
#include "cli/input/sdc_clocks.h"
#include "cli/process/messages.h"
#include "cli/selection/signal_choice.h"
#include "kesncd/kesncd.h"
#include "names/signal_search.h"

namespace orsa::kesncd::cli {

namespace {

// The period of 1 MHz, a microsecond, in femtoseconds.
constexpr double kMegahertzPeriod = 1e9;
// More would be dividers and gates of clocks, far down in the design.
constexpr std::size_t kMostByName = 12;

/// How many scopes are around: 1 for a top-level one, 0 for the whole dump.
std::size_t DepthOf(const Declarations& declarations, std::uint32_t scope) {
  std::size_t depth = 0;
  for (; scope != Declarations::kDump; scope = declarations.scopes[scope].parent) ++depth;
  return depth;
}

/// Edges a microsecond by two, from the first edge to the last: a dump seldom begins with an edge.
/// A clock that runs through half the dump has its true frequency this way, not half of it.
std::optional<double> FrequencyOf(const ToggleSpan& span, const ActivityResult& result) {
  if (!result.tick || span.toggles < 2) return {};
  const double microseconds = static_cast<double>(span.last - span.first) *
                              static_cast<double>(*result.tick) / kMegahertzPeriod;
  return static_cast<double>(span.toggles - 1) / 2 / microseconds;
}

}  // namespace

ReportClocks::ReportClocks(const std::string& sdc, const std::string& timing) {
  if (!sdc.empty()) {
    for (const DesignClock& clock : SdcClocksOf(sdc)) {
      // SdcClocksOf gives no clock without a period, so this divides by no 0.
      const double mhz = kMegahertzPeriod / static_cast<double>(clock.period);
      clocks_.push_back({clock.name, clock.signal, mhz, "SDC", clock.isVirtual});
    }
  }
  isByName_ = clocks_.empty();
  if (timing.empty()) return;
  // The library's own reader of timing reports; 0 is the lower of constraint and achieved.
  orsa::kesncd::KesNCD analyser;
  const TextByPath report(ReadText(timing));
  analyser.twrFile = report.path();
  analyser.ReadTWR2(0);
  for (const auto& [name, mhz] : analyser.clockFreqs) {
    // Below 0 is the library's word for "not said".
    clocks_.push_back({name, name, mhz >= 0 ? std::optional(mhz) : std::nullopt, "timing report"});
  }
  isByName_ = clocks_.empty();
}

std::vector<std::uint32_t> ReportClocks::FindIn(const Declarations& declarations,
                                                const std::string& dump) {
  std::vector<std::uint32_t> codes;
  if (isByName_) {
    clocks_.clear();
    FindByName(declarations, codes);
    return codes;
  }
  for (Clock& clock : clocks_) clock.isFound = false;
  std::vector<std::string> names;
  for (const Clock& clock : clocks_) names.push_back(clock.signal);
  const SignalSearch search(declarations, Declarations::kDump, true, names);
  std::unordered_map<std::uint32_t, std::size_t> places;  // by code, in `codes`
  for (std::size_t i = 0; i < clocks_.size(); ++i) {
    const std::vector<std::uint32_t>& found = search.Answer(i).variables;
    if (found.empty() && clocks_[i].isVirtual) continue;
    // An ambiguous clock is left out rather than guessed; it stays in the list without a frequency.
    if (found.size() != 1 || declarations.variables[found.front()].width != 1) {
      const std::string why = found.size() > 1
                                  ? " means several signals: " + PathsOf(found, declarations)
                                  : " is no signal of one bit here";
      Remark(dump, "clock " + names[i] + why);
      continue;
    }
    const std::uint32_t codeId = declarations.variables[found.front()].codeId;
    // Several clocks on one signal share a place.
    const auto [place, isNew] = places.try_emplace(codeId, codes.size());
    clocks_[i].watched = place->second;
    clocks_[i].isFound = true;
    if (isNew) codes.push_back(codeId);
  }
  return codes;
}

/// The outermost signals that are called like clocks, each once.
void ReportClocks::FindByName(const Declarations& declarations, std::vector<std::uint32_t>& codes) {
  struct Candidate {
    std::size_t depth;
    std::uint32_t variable;
  };
  std::vector<Candidate> candidates;
  for (std::uint32_t id = 0; id < declarations.variables.size(); ++id) {
    const DumpVariable& variable = declarations.variables[id];
    // One bit: "clk_div[3:0]" is a counter.
    if (variable.width != 1 || !IsClockName(variable.name)) continue;
    candidates.push_back({DepthOf(declarations, variable.scope), id});
  }
  // Outer ones first; of the same depth in the dump's order.
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const auto& one, const auto& other) { return one.depth < other.depth; });
  for (const Candidate& candidate : candidates) {
    const DumpVariable& variable = declarations.variables[candidate.variable];
    // An alias further in: the same clock again.
    if (std::find(codes.begin(), codes.end(), variable.codeId) != codes.end()) continue;
    if (codes.size() == kMostByName) break;
    // In the order of Clock's members: name, signal, mhz, source, isVirtual, watched, isFound.
    clocks_.push_back({declarations.ShortPathOf(variable), "", {}, "", false, codes.size(), true});
    codes.push_back(variable.codeId);
  }
}

std::vector<ReportFacts::Clock> ReportClocks::Measured(const ActivityResult& result) const {
  std::vector<ReportFacts::Clock> clocks;
  for (const Clock& clock : clocks_) {
    std::optional<double> mhz;
    if (clock.isFound) mhz = FrequencyOf(result.watched[clock.watched], result);
    // What is only called like a clock and does not run is none.
    if (!mhz && (clock.source.empty() || (clock.isVirtual && !clock.isFound))) continue;
    clocks.push_back({clock.name, mhz, clock.mhz, clock.source});
  }
  return clocks;
}

}  // namespace orsa::kesncd::cli
