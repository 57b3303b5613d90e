// Pins of equal figures go into one command: most nets of a design share theirs with many others,
// and a tool reads one long list much faster than as many commands.
#include "export/tcl_writer.h"

#include <algorithm>
#include <tuple>

#include "text/failure.h"
#include "text/number.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd {

namespace {

constexpr std::size_t kTclBlock = std::size_t{1} << 16;  // characters written at once

/// What the stream throws passes through.
void Flush(std::string& text, std::ostream& out) {
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  text.clear();
}

/// Adds the names of the scopes from the one at `from` down to `scope`, each with a slash after it.
/// A scope's parents lead upwards, so the way is found backwards.
void AppendScopes(const Declarations& declarations, std::uint32_t scope, std::uint32_t from,
                  std::string& path) {
  std::vector<std::uint32_t> way;
  for (; scope != from && scope != Declarations::kDump; scope = declarations.scopes[scope].parent) {
    way.push_back(scope);
  }
  for (auto step = way.rbegin(); step != way.rend(); ++step) {
    const std::string_view name = declarations.scopes[*step].name;
    // Without the backslash of an escaped name, as below.
    path += name.substr(name.front() == '\\' ? 1 : 0);
    path += '/';
  }
}

/// By scope, whether it is in the subtree. A scope is declared after the one that it is in.
std::vector<bool> ScopesIn(const Declarations& declarations, std::uint32_t scope) {
  std::vector<bool> inside(declarations.scopes.size());
  inside[scope] = true;
  for (std::size_t i = scope + std::size_t{1}; i < inside.size(); ++i) {
    inside[i] = inside[declarations.scopes[i].parent];
  }
  return inside;
}

}  // namespace

std::string TclElement(std::string_view name) {
  // A list element is a word: only what would end or begin one has to be escaped.
  std::string element;
  for (const char c : name) {
    const bool opensWord = element.empty() && c == '"';
    const bool isSpecial = c == '\\' || c == '{' || c == '}';
    if (opensWord || isSpecial) element += '\\';
    element += c;
  }
  return element.empty() ? "{}" : element;
}

TclActivity::TclActivity(const ActivityResult& result, const TclRates& rates) : rates_(rates) {
  // Both would divide by 0 below.
  if (result.observedTicks == 0) {
    throw Failure(FailureKind::Unusable, "no time was observed, so there are no rates");
  }
  if (!result.tick) {
    throw Failure(FailureKind::Unusable, "the dump has no time scale, so there are no rates");
  }
  femtoseconds_ = static_cast<double>(*result.tick);
}

double TclActivity::PeriodsOf(const Pin& pin) const {
  // Ticks to femtoseconds to periods, then stretched as the design's clock asks.
  return static_cast<double>(pin.observed) * femtoseconds_ / static_cast<double>(rates_.period) *
         static_cast<double>(rates_.scaleNumerator) / static_cast<double>(rates_.scaleDenominator);
}

void TclActivity::Write(
    std::ostream& out,
    const std::function<void(std::uint64_t pin, std::string& path)>& appendPath) {
  // Busiest first: a user who opens the file sees what matters.
  std::stable_sort(pins_.begin(), pins_.end(), [](const Pin& a, const Pin& b) {
    return std::tie(b.toggles, b.ticksAtOne, b.observed) <
           std::tie(a.toggles, a.ticksAtOne, a.observed);
  });
  // "1ns", or "cycle of clk, 2ns".
  const std::string period = rates_.clock.empty()
                                 ? rates_.periodText
                                 : "cycle of " + rates_.clock + ", " + rates_.periodText;
  std::string text = "# kesncd " + rates_.version + ": exact activity of a simulation.\n";
  text += "# -activity is toggles per " + period + "; -duty is the share of time at 1.\n";
  std::string path;
  for (std::size_t i = 0; i < pins_.size(); ++i) {
    const Pin& pin = pins_[i];
    // Neighbours of the sorted pins: whether a command ends between them.
    const auto differs = [&pin](const Pin& other) {
      return std::tie(other.toggles, other.ticksAtOne, other.observed) !=
             std::tie(pin.toggles, pin.ticksAtOne, pin.observed);
    };
    // The first pin of its figures.
    if (i == 0 || differs(pins_[i - 1])) text += "set_power_activity -pins [get_pins {\n";
    path.clear();
    appendPath(pin.pin, path);
    text += "  " + TclElement(path) + '\n';
    // The last one. Numbers as short as possible that still give the same double.
    if (i + 1 == pins_.size() || differs(pins_[i + 1])) {
      text += "}] -activity " + ShortestText(static_cast<double>(pin.toggles) / PeriodsOf(pin));
      text +=
          " -duty " +
          ShortestText(static_cast<double>(pin.ticksAtOne) / static_cast<double>(pin.observed)) +
          '\n';
    }
    // A command may be longer than a block; that does no harm.
    if (text.size() >= kTclBlock) Flush(text, out);
  }
  Flush(text, out);
}

/// Bits are gathered first, as equal ones from anywhere go into one command.
void WriteTcl(const ActivityResult& result, const TclOptions& options, std::ostream& out) {
  const Declarations& declarations = result.declarations;
  const std::vector<bool> inside = ScopesIn(declarations, options.scope);
  TclActivity activity(result, options.rates);
  std::uint64_t bits = 0;
  for (std::uint32_t id = 0; id < declarations.variables.size(); ++id) {
    const DumpVariable& variable = declarations.variables[id];
    const bool isKept = options.kept.empty() || options.kept[id];
    // Another scope, not kept, or a real and the like.
    if (!isKept || !inside[variable.scope] || !TypeHasBits(declarations.TypeOf(variable))) continue;
    const std::span<const BitFigures> figures = result.BitsOf(variable.codeId);
    // The variable and the bit in one number: both have 32 bits.
    for (std::uint32_t bit = variable.width; bit-- > 0; ++bits) {
      activity.Add(figures[bit], (std::uint64_t{id} << 32) | bit);
    }
  }
  if (bits == 0) throw Failure(FailureKind::NothingMatched, "there is no bit to write");
  // Where paths begin: after the design's own scope, or at the top.
  const std::uint32_t from = options.stripsWay ? options.scope : Declarations::kDump;
  // The two halves of the number again.
  activity.Write(out, [&](std::uint64_t pin, std::string& path) {
    const DumpVariable& variable = declarations.variables[pin >> 32];
    AppendScopes(declarations, variable.scope, from, path);
    const std::size_t start = path.size();
    BitNames(variable).AppendName(static_cast<std::uint32_t>(pin), path);
    // The backslash of an escaped name is VCD's, not part of it.
    if (path[start] == '\\') path.erase(start, 1);
  });
}

}  // namespace orsa::kesncd
