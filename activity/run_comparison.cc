// Rows of two runs side by side.
#include "activity/run_comparison.h"

#include <algorithm>
#include <cmath>
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
  double bits = 0;
  RunDifference::Rates rates;
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
    for (std::uint32_t scope = 1; scope < modules.size(); ++scope) {
      depths[scope] = depths[result.declarations.scopes[scope].parent] + 1;
      if (modules[scope].bits == 0) continue;
      Add({std::to_string(numbers[scope]), true, scope, depths[scope], 0, {}}, modules[scope]);
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
           0,
           {}},
          sums);
    });
  }

  const std::vector<Measured>& rows() const { return rows_; }

 private:
  void Add(Measured row, const ActivitySums& sums) {
    row.bits = static_cast<double>(sums.bits);
    const WideCount ticks = sums.t0 + sums.t1 + sums.tx + sums.tz;
    if (ticks > 0) {
      row.rates.toggles =
          static_cast<double>(sums.tc) / (static_cast<double>(ticks) * microseconds_);
      row.rates.high = static_cast<double>(sums.t1) / static_cast<double>(ticks);
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
    const double toggles = ShareOf(before.rates.toggles, after.rates.toggles);
    row.share = std::max(toggles, ShareOf(before.rates.high, after.rates.high));
    if (row.share <= threshold_) return;
    Add(before, toggles, std::move(row));
  }
  void AddOnly(const Measured& only, RunDifference::Kind kind) {
    Count(only);
    RunDifference row;
    row.kind = kind;
    (kind == RunDifference::Kind::Vanished ? row.before : row.after) = only.rates;
    row.share = 1;
    Add(only, 1, std::move(row));
  }

  RunComparison Take() {
    std::stable_sort(result_.differences.begin(), result_.differences.end(), &IsBefore);
    return std::move(result_);
  }

 private:
  void Count(const Measured& row) { ++(row.isModule ? result_.modules : result_.signals); }

  void Add(const Measured& from, double share, RunDifference row) {
    row.isModule = from.isModule;
    row.id = from.id;
    row.depth = from.depth;
    const double lost = row.before.toggles.value_or(0) - row.after.toggles.value_or(0);
    row.weight = std::abs(lost) * from.bits * share;
    result_.differences.push_back(std::move(row));
  }

  /// Of rows that weigh the same the inner one says more, and of a module and its only signal the
  /// module.
  static bool IsBefore(const RunDifference& a, const RunDifference& b) {
    if (a.weight != b.weight) return a.weight > b.weight;
    if (a.share != b.share) return a.share > b.share;
    if (a.isModule != b.isModule) return a.isModule;
    return a.depth > b.depth;
  }

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
