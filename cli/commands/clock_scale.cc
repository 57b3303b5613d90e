// Finding a clock in a dump, measuring its period, and comparing it with the design's.
#include "cli/commands/clock_scale.h"

#include <numeric>
#include <span>

#include "activity/activity_rows.h"
#include "cli/commands/scope_choice.h"
#include "cli/process/messages.h"
#include "names/signal_search.h"
#include "text/failure.h"
#include "text/number.h"
#include "vcd/time_text.h"

namespace orsa::kesncd::cli {

namespace {

__extension__ using Wide = unsigned __int128;

Wide CommonDivisor(Wide a, Wide b) {
  while (b != 0) {
    a %= b;
    std::swap(a, b);
  }
  return a;
}

/// The quotient with both numbers small enough for what is multiplied with them.
void SetQuotient(ClockScale& scale, Wide numerator, Wide denominator) {
  const Wide divisor = CommonDivisor(numerator, denominator);
  numerator /= divisor;
  denominator /= divisor;
  constexpr Wide kMost = Wide{1} << 40U;
  while (numerator > kMost || denominator > kMost) {
    numerator = (numerator + 1) / 2;
    denominator = (denominator + 1) / 2;
  }
  scale.numerator = static_cast<std::uint64_t>(numerator);
  scale.denominator = static_cast<std::uint64_t>(denominator);
}

/// The variable that a clock's name means; kNone where none or several do, which are listed then.
std::uint32_t ClockCalled(const std::string& name, const ActivityResult& result,
                          const std::string& dump) {
  const SignalSearch search(result.declarations, Declarations::kDump, true, {name});
  const std::vector<std::uint32_t>& found = search.Answer(0).variables;
  if (found.size() == 1) return found.front();
  if (found.empty()) {
    throw Failure(FailureKind::NothingMatched, dump + ": has no clock " + name);
  }
  std::vector<std::string> paths;
  for (const std::uint32_t id : found) {
    paths.push_back(result.declarations.ShortPathOf(result.declarations.variables[id]));
  }
  throw Failure(FailureKind::NothingMatched,
                dump + ": " + name + " means several signals: " + ShortList(paths));
}

}  // namespace

DesignClock DesignClockOf(const std::string& text) {
  const std::size_t equals = text.rfind('=');
  DesignClock clock;
  if (equals != std::string::npos && equals > 0) {
    clock.name = text.substr(0, equals);
    clock.periodText = text.substr(equals + 1);
    clock.period = Femtoseconds(clock.periodText).value_or(0);
  }
  if (clock.period == 0) {
    throw Failure(FailureKind::Unusable, text + " is no clock with its period, such as clk=2ns");
  }
  return clock;
}

ClockScale ScaleTo(const DesignClock& clock, const ActivityResult& result,
                   const std::string& dump) {
  const DumpVariable& variable =
      result.declarations.variables[ClockCalled(clock.name, result, dump)];
  const std::span<const BitFigures> bits = result.BitsOf(variable.codeId);
  if (variable.width != 1 || bits.empty()) {
    throw Failure(FailureKind::Unusable, dump + ": " + clock.name + " is no signal of one bit");
  }
  if (!result.tick || bits.front().tc < 2) {
    throw Failure(FailureKind::NothingMatched, dump + ": " + clock.name +
                                                   " has no period: it toggles " +
                                                   std::to_string(bits.front().tc) + " times");
  }
  ClockScale scale;
  scale.clock = clock;
  SetQuotient(scale, Wide{clock.period} * bits.front().tc,
              2 * Wide{result.observedTicks} * *result.tick);
  Remark(dump, clock.name + " runs at " + clock.periodText + ": all times are multiplied by " +
                   ShortestText(scale.Factor()));
  return scale;
}

}  // namespace orsa::kesncd::cli
