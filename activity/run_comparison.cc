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

/// Numbers of scopes that two runs share, by path.
class CommonScopes {
 public:
  std::vector<std::uint32_t> NumbersOf(const Declarations& declarations) {
    std::vector<std::uint32_t> numbers{Declarations::kDump};
    for (std::uint32_t id = 1; id < declarations.scopes.size(); ++id) {
      const DumpScope& scope = declarations.scopes[id];
      const std::string key = std::to_string(numbers[scope.parent]) + "/" + scope.name;
      const auto next = static_cast<std::uint32_t>(numbers_.size() + 1);
      numbers.push_back(numbers_.try_emplace(key, next).first->second);
    }
    return numbers;
  }

 private:
  std::unordered_map<std::string, std::uint32_t> numbers_;
};

struct Measured {
  std::string key;  // equal for rows of equal paths
  bool isModule = false;
  std::uint32_t id = 0;
  std::uint32_t depth = 0;
  RunDifference::Rates rates;
  double own = 0;  // toggles a microsecond, or a tick, of what is not driven elsewhere
};

/// Toggles that a module has from codes which a scope outside of it drives: its inputs say what
/// happens there. A code is known to be driven where it is a register, and a wire elsewhere.
class InputToggles {
 public:
  explicit InputToggles(const ActivityResult& result)
      : result_(result),
        scopes_(result.declarations.scopes),
        toggles_(scopes_.size()),
        marked_(scopes_.size(), UINT32_MAX) {
    const std::vector<DumpVariable>& variables = result.declarations.variables;
    for (const std::string& type : result.declarations.types) {
      isRegister_.push_back(type == "reg" || type == "logic" || type == "bit" || type == "integer");
    }
    std::vector<std::uint32_t> byCode(variables.size());
    std::iota(byCode.begin(), byCode.end(), 0U);
    std::stable_sort(byCode.begin(), byCode.end(), [&](std::uint32_t a, std::uint32_t b) {
      return variables[a].codeId < variables[b].codeId;
    });
    for (std::size_t begin = 0, end = 0; begin < byCode.size(); begin = end) {
      const std::uint32_t codeId = variables[byCode[begin]].codeId;
      while (end < byCode.size() && variables[byCode[end]].codeId == codeId) ++end;
      if (end - begin > 1) TakeCode(std::span(byCode).subspan(begin, end - begin));
    }
  }

  WideCount Of(std::uint32_t scope) const { return toggles_[scope]; }

 private:
  static constexpr int kMostScopes = 64;  // that a walk goes up: more than a design nests

  void TakeCode(std::span<const std::uint32_t> names) {
    const std::vector<DumpVariable>& variables = result_.declarations.variables;
    std::optional<std::uint32_t> driver;
    for (const std::uint32_t id : names) {
      if (!isRegister_[variables[id].typeId] || driver == variables[id].scope) continue;
      if (driver) return;
      driver = variables[id].scope;
    }
    if (!driver) return;
    const std::uint32_t codeId = variables[names.front()].codeId;
    WideCount toggles = 0;
    for (const BitFigures& bit : result_.BitsOf(codeId)) toggles += bit.tc;
    Mark(*driver, codeId, 0);
    for (const std::uint32_t id : names) Mark(variables[id].scope, codeId, toggles);
  }

  /// Adds to a scope and those around it, up to the first that was marked for the code.
  void Mark(std::uint32_t scope, std::uint32_t codeId, WideCount toggles) {
    for (int i = 0; i < kMostScopes && marked_[scope] != codeId; ++i) {
      marked_[scope] = codeId;
      toggles_[scope] += toggles;
      scope = scopes_[scope].parent;
    }
  }

  const ActivityResult& result_;
  const std::vector<DumpScope>& scopes_;
  std::vector<WideCount> toggles_;
  std::vector<std::uint32_t> marked_;  // by scope, the last code
  std::vector<bool> isRegister_;
};

/// All rows of a run: modules before what is in them, then signals.
class MeasuredRun {
 public:
  MeasuredRun(const ActivityResult& result, CommonScopes& scopes) {
    constexpr double kMicrosecond = 1e9;  // in femtoseconds
    if (result.tick) {
      microseconds_ = static_cast<double>(*result.tick) / kMicrosecond;
    }
    const ActivityRows rows(result);
    const std::vector<std::uint32_t> numbers = scopes.NumbersOf(result.declarations);
    std::vector<std::uint32_t> depths(numbers.size());
    const std::vector<ActivitySums> modules = rows.ModuleSums();
    const InputToggles inputs(result);
    for (std::uint32_t scope = 1; scope < modules.size(); ++scope) {
      depths[scope] = depths[result.declarations.scopes[scope].parent] + 1;
      if (modules[scope].bits == 0) continue;
      const WideCount foreign = std::min(inputs.Of(scope), modules[scope].tc);
      Add({std::to_string(numbers[scope]), true, scope, depths[scope], {}, 0}, modules[scope],
          foreign);
    }
    rows.ForEachSignal(Declarations::kDump, [&](const SignalRow& row) {
      if (row.IsWhollyRepeated()) return;
      ActivitySums sums;
      sums.Add(row.figures);
      const std::uint32_t scope = row.variable.scope;
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
  void Add(Measured row, const ActivitySums& sums, WideCount foreign) {
    const WideCount ticks = sums.t0 + sums.t1 + sums.tx + sums.tz;
    if (ticks > 0) {
      row.rates.toggles =
          static_cast<double>(sums.tc) / (static_cast<double>(ticks) * microseconds_);
      row.rates.high = static_cast<double>(sums.t1) / static_cast<double>(ticks);
      row.own = static_cast<double>(sums.tc - foreign) * static_cast<double>(sums.bits) /
                (static_cast<double>(ticks) * microseconds_);
    }
    rows_.push_back(std::move(row));
  }

  double microseconds_ = 1;  // that a tick is; where nobody says it, rates are by ticks
  std::vector<Measured> rows_;
};

/// By how much of the larger one two values differ.
double ShareOf(const std::optional<double>& a, const std::optional<double>& b) {
  if (a.has_value() != b.has_value()) return 1;
  if (!a || *a == *b) return 0;
  return std::abs(*a - *b) / std::max(*a, *b);
}

class Comparison {
 public:
  explicit Comparison(double threshold) : threshold_(threshold) {}

  void Compare(const Measured& before, const Measured& after) {
    Count(before);
    RunDifference row;
    row.before = before.rates;
    row.after = after.rates;
    row.share = std::max(ShareOf(before.rates.toggles, after.rates.toggles),
                         ShareOf(before.rates.high, after.rates.high));
    if (row.share <= threshold_ + kRounding) return;
    Add(before, std::abs(before.own - after.own), std::max(before.own, after.own), row);
  }
  void AddOnly(const Measured& only, RunDifference::Kind kind) {
    Count(only);
    RunDifference row;
    row.kind = kind;
    (kind == RunDifference::Kind::Vanished ? row.before : row.after) = only.rates;
    row.share = 1;
    Add(only, only.own, only.own, row);
  }

  RunComparison Take() {
    std::stable_sort(result_.differences.begin(), result_.differences.end(), &IsBefore);
    return std::move(result_);
  }

 private:
  void Count(const Measured& row) { ++(row.isModule ? result_.modules : result_.signals); }

  /// `changed` are the toggles that came or went, of `all` that the row has.
  void Add(const Measured& from, double changed, double all, RunDifference row) {
    row.isModule = from.isModule;
    row.id = from.id;
    row.depth = from.depth;
    row.weight = all > 0 ? changed * changed / all : 0;
    result_.differences.push_back(row);
  }

  /// Of rows that weigh the same the inner one says more, and of a module and its only signal the
  /// module.
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
  std::unordered_map<std::string_view, std::vector<const Measured*>> byKey;
  for (auto row = second.rows().rbegin(); row != second.rows().rend(); ++row) {
    byKey[row->key].push_back(&*row);
  }
  Comparison comparison(threshold);
  for (const Measured& row : first.rows()) {
    const auto place = byKey.find(row.key);
    if (place == byKey.end() || place->second.empty()) {
      comparison.AddOnly(row, RunDifference::Kind::Vanished);
    } else {
      comparison.Compare(row, *place->second.back());
      place->second.pop_back();
    }
  }
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
