// Rows of two runs side by side.
#include "activity/run_comparison.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "activity/activity_rows.h"
#include "text/failure.h"

namespace orsa::kesncd {

namespace {

/// Numbers of scopes that two runs share, by path. Calling order: NumbersOf for each run; equal
/// paths get equal numbers. Paths themselves are not made: they would be long.
class CommonScopes {
 public:
  /// By scope of the run.
  std::vector<std::uint32_t> NumbersOf(const Declarations& declarations) {
    std::vector<std::uint32_t> numbers{Declarations::kDump};
    // A scope comes after the one around it, whose number is known.
    for (std::uint32_t id = 1; id < declarations.scopes.size(); ++id) {
      // "7/fifo": the parent's number and the name.
      const DumpScope& scope = declarations.scopes[id];
      // Numbers begin at 1; 0 is the whole dump.
      const std::string key = std::to_string(numbers[scope.parent]) + "/" + scope.name;
      const auto next = static_cast<std::uint32_t>(numbers_.size() + 1);
      numbers.push_back(numbers_.try_emplace(key, next).first->second);
    }
    return numbers;
  }

 private:
  // From parent's number and name to the number.
  std::unordered_map<std::string, std::uint32_t> numbers_;
};

/// A row of one run, ready to be compared.
struct Measured {
  std::string key;  // equal for rows of equal paths
  bool isModule = false;
  std::uint32_t id = 0;
  std::uint32_t depth = 0;
  // Means per bit.
  RunDifference::Rates rates;
  double own = 0;  // toggles a microsecond, or a tick, of what is not driven elsewhere
};

/// Toggles that a module has from codes which a scope outside of it drives: its inputs say what
/// happens there. A code is known to be driven where it is a register, and a wire elsewhere.
/// Without this a clock tree that stops would rank every module that it goes to as high as what
/// drives it. Calling order: construct, Of for each scope. `result` must outlive it.
class InputToggles {
 public:
  explicit InputToggles(const ActivityResult& result)
      : result_(result),
        scopes_(result.declarations.scopes),
        toggles_(scopes_.size()),
        marked_(scopes_.size(), UINT32_MAX) {
    const std::vector<DumpVariable>& variables = result.declarations.variables;
    for (const std::string& type : result.declarations.types) {
      // The types by which simulators declare what a process assigns.
      isRegister_.push_back(type == "reg" || type == "logic" || type == "bit" || type == "integer");
    }
    // Variables of one code side by side.
    std::vector<std::uint32_t> byCode(variables.size());
    std::iota(byCode.begin(), byCode.end(), 0U);
    std::stable_sort(byCode.begin(), byCode.end(), [&](std::uint32_t a, std::uint32_t b) {
      return variables[a].codeId < variables[b].codeId;
    });
    for (std::size_t begin = 0, end = 0; begin < byCode.size(); begin = end) {
      const std::uint32_t codeId = variables[byCode[begin]].codeId;
      while (end < byCode.size() && variables[byCode[end]].codeId == codeId) ++end;
      // With one name only it is no port, so nothing comes from elsewhere.
      if (end - begin > 1) TakeCode(std::span(byCode).subspan(begin, end - begin));
    }
  }

  // Toggles of all bits that come from outside, of the scope and all below it.
  WideCount Of(std::uint32_t scope) const { return toggles_[scope]; }

 private:
  static constexpr int kMostScopes = 64;  // that a walk goes up: more than a design nests

  /// `names` are the variables of one code.
  void TakeCode(std::span<const std::uint32_t> names) {
    const std::vector<DumpVariable>& variables = result_.declarations.variables;
    // Found where exactly one scope declares it as a register.
    std::optional<std::uint32_t> driver;
    for (const std::uint32_t id : names) {
      if (!isRegister_[variables[id].typeId] || driver == variables[id].scope) continue;
      // Two drivers: not known which of them it is.
      if (driver) return;
      driver = variables[id].scope;
    }
    if (!driver) return;
    // Toggles of the code, all of its bits.
    const std::uint32_t codeId = variables[names.front()].codeId;
    WideCount toggles = 0;
    for (const BitFigures& bit : result_.BitsOf(codeId)) toggles += bit.tc;
    // The driver and what is around it have the toggles as their own.
    Mark(*driver, codeId, 0);
    // All others have them as inputs.
    for (const std::uint32_t id : names) Mark(variables[id].scope, codeId, toggles);
  }

  /// Adds to a scope and those around it, up to the first that was marked for the code. Each scope
  /// once for a code, so that aliases do not count twice.
  void Mark(std::uint32_t scope, std::uint32_t codeId, WideCount toggles) {
    // The whole dump is its own parent, which the mark ends.
    for (int i = 0; i < kMostScopes && marked_[scope] != codeId; ++i) {
      marked_[scope] = codeId;
      toggles_[scope] += toggles;
      scope = scopes_[scope].parent;
    }
  }

  const ActivityResult& result_;
  const std::vector<DumpScope>& scopes_;
  std::vector<WideCount> toggles_;     // from outside, by scope
  std::vector<std::uint32_t> marked_;  // by scope, the last code
  std::vector<bool> isRegister_;
};

/// All rows of a run: modules before what is in them, then signals. Made in the constructor, then
/// read. Memory is in proportion to signals and modules.
class MeasuredRun {
 public:
  MeasuredRun(const ActivityResult& result, CommonScopes& scopes) {
    // Without a tick all rates are per tick, which suits two runs that both have none.
    constexpr double kMicrosecond = 1e9;  // in femtoseconds
    if (result.tick) {
      microseconds_ = static_cast<double>(*result.tick) / kMicrosecond;
    }
    const ActivityRows rows(result);
    // Numbers are shared with the other run.
    const std::vector<std::uint32_t> numbers = scopes.NumbersOf(result.declarations);
    std::vector<std::uint32_t> depths(numbers.size());
    const std::vector<ActivitySums> modules = rows.ModuleSums();
    const InputToggles inputs(result);
    // Scope 0 is no module.
    for (std::uint32_t scope = 1; scope < modules.size(); ++scope) {
      depths[scope] = depths[result.declarations.scopes[scope].parent] + 1;
      // Reals only, say.
      if (modules[scope].bits == 0) continue;
      // By the greatest width at which a module sees a code, sums may be less than what comes in.
      const WideCount foreign = std::min(inputs.Of(scope), modules[scope].tc);
      Add({std::to_string(numbers[scope]), true, scope, depths[scope], {}, 0}, modules[scope],
          foreign);
    }
    rows.ForEachSignal(Declarations::kDump, [&](const SignalRow& row) {
      // Declared twice in its scope.
      if (row.IsWhollyRepeated()) return;
      ActivitySums sums;
      sums.Add(row.figures);
      const std::uint32_t scope = row.variable.scope;
      // The name as it is declared, with its range: another range is another signal.
      Add({std::to_string(numbers[scope]) + "/" + row.variable.name,
           false,
           row.variableId,
           depths[scope] + 1,
           {},
           0},
          sums, 0);
    });
  }

  const std::vector<Measured>& rows() const { return rows_; }

 private:
  /// `foreign` toggles are left out of what the row weighs.
  void Add(Measured row, const ActivitySums& sums, WideCount foreign) {
    const WideCount ticks = sums.t0 + sums.t1 + sums.tx + sums.tz;
    // Unobserved rows have no rates; they differ from nothing but known ones.
    if (ticks > 0) {
      // Ticks are those of all bits together, so this is a mean per bit.
      row.rates.toggles =
          static_cast<double>(sums.tc) / (static_cast<double>(ticks) * microseconds_);
      row.rates.high = static_cast<double>(sums.t1) / static_cast<double>(ticks);
      // Of all bits, not per bit: a wide bus weighs more than one wire.
      row.own = static_cast<double>(sums.tc - foreign) * static_cast<double>(sums.bits) /
                (static_cast<double>(ticks) * microseconds_);
    }
    rows_.push_back(std::move(row));
  }

  double microseconds_ = 1;  // that a tick is; where nobody says it, rates are by ticks
  // Modules first, each before those in it, then signals.
  std::vector<Measured> rows_;
};

/// By how much of the larger one two values differ. 0 where both are the same or both unknown, 1
/// where only one is known.
double ShareOf(const std::optional<double>& a, const std::optional<double>& b) {
  if (a.has_value() != b.has_value()) return 1;
  if (!a || *a == *b) return 0;
  // Rates and duties are never negative, and two that differ are not both 0.
  return std::abs(*a - *b) / std::max(*a, *b);
}

/// Calling order: Compare and AddOnly for all rows, Take once.
class Comparison {
 public:
  explicit Comparison(double threshold) : threshold_(threshold) {}

  /// Two rows of equal paths.
  void Compare(const Measured& before, const Measured& after) {
    Count(before);
    RunDifference row;
    row.before = before.rates;
    row.after = after.rates;
    // Either is enough: a clock that is gated has another rate, a reset that is held another duty.
    row.share = std::max(ShareOf(before.rates.toggles, after.rates.toggles),
                         ShareOf(before.rates.high, after.rates.high));
    if (row.share <= threshold_ + kRounding) return;
    Add(before, std::abs(before.own - after.own), std::max(before.own, after.own), row);
  }
  /// A row that one run has and the other has not, always a difference.
  void AddOnly(const Measured& only, RunDifference::Kind kind) {
    Count(only);
    RunDifference row;
    row.kind = kind;
    (kind == RunDifference::Kind::Vanished ? row.before : row.after) = only.rates;
    row.share = 1;
    Add(only, only.own, only.own, row);
  }

  // The gravest first; equal ones as they came.
  RunComparison Take() {
    std::stable_sort(result_.differences.begin(), result_.differences.end(), &IsBefore);
    return std::move(result_);
  }

 private:
  // Also of rows that do not differ.
  void Count(const Measured& row) { ++(row.isModule ? result_.modules : result_.signals); }

  /// `changed` are the toggles that came or went, of `all` that the row has.
  void Add(const Measured& from, double changed, double all, RunDifference row) {
    row.isModule = from.isModule;
    row.id = from.id;
    row.depth = from.depth;
    // The square by the whole: much that changed in a row that is little else.
    row.weight = all > 0 ? changed * changed / all : 0;
    result_.differences.push_back(row);
  }

  /// By weight, then by share. Of equal rows the inner one says more, and of a module and its only
  /// signal the module.
  static bool IsBefore(const RunDifference& a, const RunDifference& b) {
    if (a.weight != b.weight) return a.weight > b.weight;
    if (a.share != b.share) return a.share > b.share;
    if (a.isModule != b.isModule) return a.isModule;
    return a.depth > b.depth;
  }

  /// Rates are quotients: what differs by just the threshold, or not at all, may seem to differ by
  /// a little more.
  static constexpr double kRounding = 1e-15;

  const double threshold_;
  RunComparison result_;
};

}  // namespace

RunComparison CompareRuns(const ActivityResult& before, const ActivityResult& after,
                          double threshold) {
  if (before.tick.has_value() != after.tick.has_value()) {
    throw Failure(FailureKind::Unusable,
                  "only one of the two has a time scale: their rates cannot be compared");
  }
  CommonScopes scopes;
  const MeasuredRun first(before, scopes);
  const MeasuredRun second(after, scopes);
  // A path may stand for several rows: the n-th of one run is compared with the other's n-th.
  // Backwards, so that the first one is taken off the end first.
  std::unordered_map<std::string_view, std::vector<const Measured*>> byKey;
  for (auto row = second.rows().rbegin(); row != second.rows().rend(); ++row) {
    byKey[row->key].push_back(&*row);
  }
  Comparison comparison(threshold);
  // Rows of the run before find their partners.
  for (const Measured& row : first.rows()) {
    const auto place = byKey.find(row.key);
    if (place == byKey.end() || place->second.empty()) {
      comparison.AddOnly(row, RunDifference::Kind::Vanished);
    } else {
      comparison.Compare(row, *place->second.back());
      place->second.pop_back();
    }
  }
  // What is left of the run after has none. Each row is the end of its list when its turn comes, as
  // lists are in reverse order.
  for (const Measured& row : second.rows()) {
    std::vector<const Measured*>& left = byKey[row.key];
    if (left.empty() || left.back() != &row) continue;
    left.pop_back();
    comparison.AddOnly(row, RunDifference::Kind::Appeared);
  }
  return comparison.Take();
}

std::string PathOf(const RunDifference& difference, const ActivityResult& before,
                   const ActivityResult& after) {
  const bool isNew = difference.kind == RunDifference::Kind::Appeared;
  const Declarations& declarations = isNew ? after.declarations : before.declarations;
  return difference.isModule ? declarations.PathOf(difference.id)
                             : declarations.PathOf(declarations.variables[difference.id]);
}

}  // namespace orsa::kesncd
