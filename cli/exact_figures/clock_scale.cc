// Finding clocks in a dump, measuring their periods, and comparing them with the design's.
#include "cli/exact_figures/clock_scale.h"

#include <cmath>
#include <unordered_map>

#include "cli/process/messages.h"
#include "cli/selection/signal_choice.h"
#include "names/signal_search.h"
#include "text/failure.h"
#include "text/number.h"
#include "vcd/time_text.h"

namespace orsa::kesncd::cli {

namespace {

// Products of a time in ticks, a tick in femtoseconds and a number of edges do not fit 64 bits.
__extension__ using Wide = unsigned __int128;

/// A period in the dump as a quotient of femtoseconds: twice the time between a clock's first and
/// last edge by the number of edges after the first. Twice the time, so that both numbers are
/// whole.
struct Period {
  Wide time = 0;
  // Half periods, as a clock toggles twice in each. 0: unknown.
  std::uint64_t halves = 0;

  bool IsKnown() const { return halves > 0; }
  double Femtoseconds() const { return static_cast<double>(time) / static_cast<double>(halves); }
};

/// From the first edge to the last, not over the dump's whole time: a clock that starts late, or
/// stops, still has its period. Fewer than two toggles have no period.
Period MeasuredPeriod(const ToggleSpan& span, const ActivityResult& result) {
  if (!result.tick || span.toggles < 2) return {};
  // Of 5 toggles the 4 half periods between them.
  return {2 * Wide{span.last - span.first} * *result.tick, span.toggles - 1};
}

/// The quotient with both numbers small enough for what is multiplied with them. First by their
/// common divisor, which leaves nothing out; then, where they are still beyond 2^40, by halves,
/// rounded up so that neither becomes 0.
void SetQuotient(ClockScale& scale, Wide numerator, Wide denominator) {
  // Euclid's algorithm.
  Wide divisor = numerator;
  for (Wide rest = denominator; rest != 0;) {
    divisor %= rest;
    std::swap(divisor, rest);
  }
  numerator /= divisor;
  denominator /= divisor;
  // Times of 64 bits are multiplied by them, in 128.
  constexpr Wide kMost = Wide{1} << 40U;
  while (numerator > kMost || denominator > kMost) {
    numerator = (numerator + 1) / 2;
    denominator = (denominator + 1) / 2;
  }
  scale.numerator = static_cast<std::uint64_t>(numerator);
  scale.denominator = static_cast<std::uint64_t>(denominator);
}

}  // namespace

DesignClock DesignClockOf(const std::string& text) {
  const std::size_t equals = text.rfind('=');
  DesignClock clock;
  // "=2ns" has no name.
  if (equals != std::string::npos && equals > 0) {
    clock.name = clock.signal = text.substr(0, equals);
    clock.periodText = text.substr(equals + 1);
    clock.period = Femtoseconds(clock.periodText).value_or(0);
  }
  if (clock.period == 0) {
    throw Failure(FailureKind::Unusable,
                  "--clock: " + text + " is no clock with its period, such as clk=2ns");
  }
  return clock;
}

ClockCheck::ClockCheck(const ClockOptions& options)
    // FindIn and ScaleOf rely on the order: the clock to scale to comes first.
    : scales_(!options.clock.empty()), sdc_(options.sdc) {
  if (scales_) clocks_.push_back(DesignClockOf(options.clock));
  if (sdc_.empty()) return;
  const std::vector<DesignClock> clocks = SdcClocksOf(sdc_);
  if (clocks.empty()) Remark(sdc_, "no create_clock with a period");
  clocks_.insert(clocks_.end(), clocks.begin(), clocks.end());
}

std::vector<std::uint32_t> ClockCheck::FindIn(const Declarations& declarations,
                                              const std::string& dump) {
  // All together, in one walk over the declarations.
  std::vector<std::string> names;
  for (const DesignClock& clock : clocks_) names.push_back(clock.signal);
  const SignalSearch search(declarations, Declarations::kDump, true, names);
  std::vector<std::uint32_t> codes;
  std::unordered_map<std::uint32_t, std::size_t> places;  // by code, in `codes`
  for (std::size_t i = 0; i < clocks_.size(); ++i) {
    // Is the clock there, once, with one bit?
    const std::vector<std::uint32_t>& variables = search.Answer(i).variables;
    std::string fault;
    if (variables.empty() && clocks_[i].isVirtual) continue;
    if (variables.empty()) {
      fault = "has no clock " + names[i];
    } else if (variables.size() > 1) {
      fault = names[i];
      fault.append(" means several signals: ").append(PathsOf(variables, declarations));
    } else if (declarations.variables[variables.front()].width != 1) {
      fault = names[i] + " is no signal of one bit";
    }
    // A second clock of a code is not watched twice: places in `codes` are those in `watched`.
    if (fault.empty()) {
      const std::uint32_t codeId = declarations.variables[variables.front()].codeId;
      const auto [place, isNew] = places.try_emplace(codeId, codes.size());
      found_.push_back({clocks_[i], place->second});
      if (isNew) codes.push_back(codeId);
    } else if (scales_ && i == 0) {
      // Only the clock of --clock is needed for the result.
      throw Failure(FailureKind::NothingMatched, std::string(dump).append(": ").append(fault));
    } else {
      Remark(dump, std::string(fault).append(", a clock of ").append(sdc_));
    }
  }
  return codes;
}

ClockScale ClockCheck::ScaleOf(const ActivityResult& result, const std::string& dump) const {
  ClockScale scale;
  // FindIn would have thrown had it not found the clock of --clock, so it is the first of found_.
  if (scales_) {
    const Found& found = found_.front();
    const Period period = MeasuredPeriod(result.watched[found.watched], result);
    if (!period.IsKnown()) {
      throw Failure(FailureKind::NothingMatched,
                    dump + ": " + found.clock.name + " has no period: it " +
                        (result.tick ? "toggles less than twice" : "has no time scale"));
    }
    // Kept for results, which name the clock and its period.
    scale.clock = found.clock;
    // The design's period by the dump's: period / (time / halves).
    SetQuotient(scale, Wide{found.clock.period} * period.halves, period.time);
    // Said always: figures that were scaled must not be taken for the dump's own.
    Remark(dump, found.clock.name + " has a period of " +
                     TimeText(static_cast<std::uint64_t>(std::llround(period.Femtoseconds()))) +
                     " here: all times are multiplied by " + ShortestText(scale.Factor()) +
                     " to make it " + found.clock.periodText);
  }
  // Those of the constraints, after scaling.
  for (std::size_t i = scales_ ? 1 : 0; i < found_.size(); ++i) {
    Compare(found_[i], scale, result, dump);
  }
  return scale;
}

void ClockCheck::Compare(const Found& found, const ClockScale& scale, const ActivityResult& result,
                         const std::string& dump) const {
  // 1 %: constraints and test benches round periods.
  constexpr double kTolerated = 0.01;
  const Period period = MeasuredPeriod(result.watched[found.watched], result);
  if (!period.IsKnown()) {
    Remark(dump, "clock " + found.clock.name + " of " + sdc_ + " does not run here");
    return;
  }
  // As it would be with the design's clock.
  const double here = period.Femtoseconds() * scale.Factor();
  const double factor = static_cast<double>(found.clock.period) / here;
  if (std::abs(here - static_cast<double>(found.clock.period)) <=
      kTolerated * static_cast<double>(found.clock.period)) {
    return;
  }
  // With the option to paste, "--clock clk=2ns".
  Remark(dump, "clock " + found.clock.name + " has a period of " +
                   TimeText(static_cast<std::uint64_t>(std::llround(here))) + " here, but of " +
                   found.clock.periodText + " in " + sdc_ + ", " + RoundedText(factor, 4) +
                   " times as long; --clock " + found.clock.signal + "=" + found.clock.periodText +
                   " scales to it");
}

}  // namespace orsa::kesncd::cli
