// Which bits have rows, and the sums over them.
#include "activity/activity_rows.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace orsa::kesncd {

namespace {

constexpr double kFemtosecondsPerMicrosecond = 1e9;

/// `ticks` is how long the bits were observed, all of them together. Bits and ticks may be more
/// than a double's 53 bits hold exactly; the error is far below a digit that anybody reads.
ActivityRates RatesOver(double toggles, double ticksAtOne, double bits, WideCount ticks,
                        const ActivityResult& result) {
  ActivityRates rates;
  // Nothing was observed: no rate, rather than infinity.
  if (ticks == 0 || bits == 0) return rates;
  // Of merged runs some may lack a bit; else this is the observed time of all. The usual case is
  // computed without the division by bits, so that equal figures give equal rates.
  const bool isWhole = ticks == static_cast<WideCount>(bits) * result.observedTicks;
  const double observed =
      isWhole ? static_cast<double>(result.observedTicks) : static_cast<double>(ticks) / bits;
  // A share needs no time scale, so it is known without one too.
  rates.high = ticksAtOne / observed / bits;
  if (!result.tick) return rates;
  const double microseconds =
      observed * static_cast<double>(*result.tick) / kFemtosecondsPerMicrosecond;
  rates.toggleRate = toggles / microseconds / bits;
  rates.freqMhz = *rates.toggleRate / 2;
  return rates;
}

/// The codes of a module's tree at the width that it sees of each, and the sums over them. For
/// ModuleSums, one for each scope. Memory is one entry for a code and the scopes that are under
/// way.
struct ModuleCodes {
  std::unordered_map<std::uint32_t, std::uint32_t> widths;
  ActivitySums sums;

  // A code that is met again at a greater width adds only the bits that are new.
  void Add(std::uint32_t codeId, std::uint32_t width, const ActivityResult& result) {
    std::uint32_t& known = widths[codeId];
    if (width <= known) return;
    sums.Add(result.BitsOf(codeId).subspan(known, width - known));
    known = width;
  }
};

}  // namespace

/// In one go where 64 bits are enough, which is nearly always.
std::string WideText(WideCount count) {
  if (count <= UINT64_MAX) return std::to_string(static_cast<std::uint64_t>(count));
  std::string digits;
  do {
    digits.insert(digits.begin(), static_cast<char>('0' + static_cast<int>(count % 10)));
    count /= 10;
  } while (count != 0);
  return digits;
}

/// Times of a million bits may be beyond 64 bits, hence WideCount.
void ActivitySums::Add(std::span<const BitFigures> figures) {
  bits += figures.size();
  for (const BitFigures& bit : figures) {
    t0 += bit.t0;
    t1 += bit.t1;
    tx += bit.tx;
    tz += bit.tz;
    tc += bit.tc;
    ig += bit.ig;
  }
}

/// The ticks of all bits, for merged runs see RatesOver.
ActivityRates RatesOf(const ActivitySums& sums, const ActivityResult& result) {
  return RatesOver(static_cast<double>(sums.tc), static_cast<double>(sums.t1),
                   static_cast<double>(sums.bits), sums.t0 + sums.t1 + sums.tx + sums.tz, result);
}

ActivityRates RatesOf(const BitFigures& figures, const ActivityResult& result) {
  return RatesOver(static_cast<double>(figures.tc), static_cast<double>(figures.t1), 1,
                   WideCount{figures.t0} + figures.t1 + figures.tx + figures.tz, result);
}

namespace {

bool AreAll(const std::vector<bool>& repeated) {
  return std::find(repeated.begin(), repeated.end(), false) == repeated.end();
}

}  // namespace

bool SignalRow::IsWhollyRepeated() const {
  return repeated != nullptr && AreAll(*repeated);
}

bool ActivityRows::IsWhollyRepeated(std::uint32_t variableId) const {
  // Asked for each of a million signals, of which few or none share a code.
  if (repeated_.empty()) return false;
  const auto found = repeated_.find(variableId);
  return found != repeated_.end() && AreAll(found->second);
}

ActivityRows::ActivityRows(const ActivityResult& result) : result_(result) {
  for (const std::string& type : result.declarations.types) {
    typeHasBits_.push_back(TypeHasBits(type));
  }
  FindRepeated();
}

/// Looks at variables that share their code with another one of the scope; few do. Two passes:
/// which scopes and codes have more than one variable, then these variables.
void ActivityRows::FindRepeated() {
  const std::vector<DumpVariable>& variables = result_.declarations.variables;
  // By code the last scope that had it, plus one; 0 for none.
  std::vector<std::uint32_t> lastScope(result_.firstBit.size(), 0);
  std::set<std::pair<std::uint32_t, std::uint32_t>> shared;  // scope and code
  for (const DumpScope& scope : result_.declarations.scopes) {
    for (const std::uint32_t id : scope.variables) {
      const DumpVariable& variable = variables[id];
      std::uint32_t& last = lastScope[variable.codeId];
      if (last == variable.scope + 1) shared.emplace(variable.scope, variable.codeId);
      last = variable.scope + 1;
    }
  }
  // By scope and code, in the order of the dump.
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::vector<std::uint32_t>> groups;
  for (std::uint32_t id = 0; id < variables.size() && !shared.empty(); ++id) {
    const std::pair key(variables[id].scope, variables[id].codeId);
    if (HasBits(variables[id]) && shared.contains(key)) groups[key].push_back(id);
  }
  for (const auto& [key, group] : groups) FindRepeatedIn(group);
}

/// Marks bits that an earlier one of the variables, all of one scope and code, has too.
void ActivityRows::FindRepeatedIn(std::span<const std::uint32_t> sameCode) {
  // The same base name in the same scope, with whatever ranges.
  std::map<std::string_view, std::vector<std::uint32_t>> byName;
  const std::vector<DumpVariable>& variables = result_.declarations.variables;
  for (const std::uint32_t id : sameCode) {
    byName[BitNames(variables[id]).Base()].push_back(id);
  }
  for (const auto& [name, group] : byName) {
    if (group.size() < 2) continue;
    // Which bit of the code, and under which index: both have to be the same.
    std::set<std::pair<std::uint32_t, std::string>> seen;
    for (const std::uint32_t id : group) {
      const BitNames names(variables[id]);
      std::vector<bool> repeated(names.width());
      for (std::uint32_t bit = 0; bit < names.width(); ++bit) {
        // True for all but the first that has it.
        repeated[bit] = !seen.emplace(bit, names.IsIndexed() ? names.Index(bit) : "").second;
      }
      if (std::find(repeated.begin(), repeated.end(), true) != repeated.end()) {
        repeated_.emplace(id, std::move(repeated));
      }
    }
  }
}

/// Rows are made as they are visited: of a million signals few are looked at twice.
SignalRow ActivityRows::RowOf(std::uint32_t variableId) const {
  const DumpVariable& variable = result_.declarations.variables[variableId];
  const auto repeated = repeated_.find(variableId);
  return {variableId, variable, BitNames(variable),
          // A variable sees the lowest bits of its code.
          result_.BitsOf(variable.codeId).first(variable.width),
          repeated == repeated_.end() ? nullptr : &repeated->second};
}

std::vector<bool> ActivityRows::ScopesIn(std::uint32_t scope) const {
  const std::vector<DumpScope>& scopes = result_.declarations.scopes;
  std::vector<bool> inside(scopes.size());
  inside[scope] = true;
  // A scope is declared after the one that it is in.
  for (std::uint32_t id = scope + 1; id < scopes.size(); ++id)
    inside[id] = inside[scopes[id].parent];
  return inside;
}

/// From the last scope to the first, so that a scope's inner ones are in it when its turn comes.
std::vector<ActivitySums> ActivityRows::ModuleSums() const {
  const Declarations& declarations = result_.declarations;
  // Moved from scope to scope; only those under way hold anything.
  std::vector<ModuleCodes> codes(declarations.scopes.size());
  std::vector<ActivitySums> sums(declarations.scopes.size());
  for (std::size_t scope = declarations.scopes.size(); scope-- > 0;) {
    ModuleCodes& own = codes[scope];
    // The scope's own variables.
    for (const std::uint32_t id : declarations.scopes[scope].variables) {
      const DumpVariable& variable = declarations.variables[id];
      if (HasBits(variable)) own.Add(variable.codeId, variable.width, result_);
    }
    // Sums of the scope are final here: all inner scopes come after it in the dump's order.
    sums[scope] = own.sums;
    if (scope == Declarations::kDump) break;
    // The smaller of the two sets goes into the other: no code moves more often than sets double.
    // What the scope has goes to the one around it.
    ModuleCodes& outer = codes[declarations.scopes[scope].parent];
    if (outer.widths.size() < own.widths.size()) std::swap(outer, own);
    for (const auto& [codeId, width] : own.widths) outer.Add(codeId, width, result_);
    own = {};
  }
  return sums;
}

}  // namespace orsa::kesncd
