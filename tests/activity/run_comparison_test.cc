// What a comparison of two runs reports, and in which order.
#include "activity/run_comparison.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "tests/support/small_dumps.h"
#include "text/failure.h"

namespace orsa::kesncd {
namespace {

/// A run of 100 ticks whose signals, by code, are 0 until they toggle at these times.
std::string Toggling(const std::string& declared, const std::map<char, std::vector<int>>& toggles) {
  std::map<int, std::string> at{{0, ""}, {100, ""}};
  for (const auto& [code, times] : toggles) {
    bool isHigh = false;
    at[0] += std::string(" 0") + code;
    for (const int time : times) {
      isHigh = !isHigh;
      at[time] += std::string(isHigh ? " 1" : " 0") + code;
    }
  }
  std::string body;
  for (const auto& [time, changes] : at) body += " #" + std::to_string(time) + changes;
  return declared + " ;" + body;
}

/// So many toggles, the share of time at 1 being a half for 9 and for 10 of them.
std::vector<int> Every10(int count) {
  std::vector<int> times;
  for (int i = 1; i <= count; ++i) times.push_back(10 * i);
  return times;
}

/// "vanished tb/q 1": the change, the path and the share by which it differs.
std::string DifferencesText(const std::string& before, const std::string& after, double threshold,
                            RunComparison* comparison = nullptr) {
  const ActivityResult first = Counted(before);
  const ActivityResult second = Counted(after);
  RunComparison of = CompareRuns(first, second, threshold);
  std::ostringstream text;
  text.precision(3);
  for (const RunDifference& row : of.differences) {
    static constexpr const char* kKinds[] = {"changed ", "appeared ", "vanished "};
    text << (text.tellp() > 0 ? ", " : "") << kKinds[static_cast<int>(row.kind)]
         << PathOf(row, first, second) << ' ' << row.share;
  }
  if (comparison != nullptr) *comparison = std::move(of);
  return text.str();
}

struct ComparisonRow {
  std::string before, after;
  double threshold;
  std::string differences;
};

void ExpectDifferences(const std::vector<ComparisonRow>& rows) {
  for (const ComparisonRow& row : rows) {
    EXPECT_EQ(DifferencesText(row.before, row.after, row.threshold), row.differences)
        << row.before << "\n"
        << row.after << "\n"
        << row.threshold;
  }
}

const std::string kOne = "1us tb{ reg:1:a:a }";

TEST(RunComparison, ReportsWhatIsAboveTheThreshold) {
  const std::string ten = Toggling(kOne, {{'a', Every10(10)}});
  const std::string nine = Toggling(kOne, {{'a', Every10(9)}});
  const std::string none = Toggling(kOne, {{'a', {}}});
  const std::string high90 = Toggling(kOne, {{'a', {10}}});
  const std::string high80 = Toggling(kOne, {{'a', {20}}});
  ExpectDifferences({
      {ten, ten, 0, ""},
      {none, none, 0, ""},
      {ten, nine, 0.1, ""},  // by a tenth of the larger, which is not more than a tenth
      {nine, ten, 0.1, ""},
      {ten, nine, 0.0999, "changed tb 0.1, changed tb/a 0.1"},
      {nine, ten, 0, "changed tb 0.1, changed tb/a 0.1"},
      {ten, none, 0.99, "changed tb 1, changed tb/a 1"},
      {none, ten, 0.99, "changed tb 1, changed tb/a 1"},
      {none, ten, 1, ""},
      // As many toggles, but longer at 0.
      {high90, high80, 0.111, "changed tb 0.111, changed tb/a 0.111"},
      {high90, high80, 0.112, ""},
  });
}

TEST(RunComparison, ComparesRatesOfTimeWhateverTheTick) {
  const std::string unscaled = "- tb{ reg:1:a:a }";
  const std::string tens = "10us tb{ reg:1:a:a } ; #0 0a #1 1a #2 0a #10";
  ExpectDifferences({
      {Toggling(kOne, {{'a', {10, 20}}}), tens, 0, ""},
      {Toggling(kOne, {{'a', {10, 20}}}), kOne + "; #0 0a #10 1a #20 0a #30 1a #40 0a #200", 0, ""},
      {Toggling(unscaled, {{'a', {10, 20}}}), unscaled + "; #5 0a #15 1a #25 0a #55 1a #105 0a",
       0.5, "changed tb 0.833, changed tb/a 0.833"},
      // Rates are quotients, here of 0.1 * 3 and 0.001 * 300.
      {"100ns tb{ reg:1:a:a } ; #0 0a #1 1a #3", "1ns tb{ reg:1:a:a } ; #0 0a #100 1a #300", 0, ""},
      // What was observed for no time has no rates, which differ from any that are known.
      {kOne + "; #5 0a", kOne + "; #9 1a", 0, ""},
      {kOne + "; #5 0a", Toggling(kOne, {{'a', {10}}}), 0.5, "changed tb 1, changed tb/a 1"},
      {Toggling(kOne, {{'a', {}}}), kOne + "; #5 0a", 0.5, "changed tb 1, changed tb/a 1"},
  });
  for (const bool isFirst : {true, false}) {
    const std::string scaled = Toggling(kOne, {});
    const std::string other = Toggling(unscaled, {});
    EXPECT_THROW(DifferencesText(isFirst ? scaled : other, isFirst ? other : scaled, 0), Failure);
  }
}

TEST(RunComparison, ReportsWhatOnlyOneRunHas) {
  const std::string two = "1us tb{ reg:1:a:a reg:1:b:b }";
  const std::string other = "1us tb{ reg:1:a:a reg:1:c:c }";
  const std::string inner = "1us tb{ reg:1:a:a u{ reg:1:b:b } }";
  const std::string twice = "1us tb{ reg:1:a:a reg:1:b:a }";
  ExpectDifferences({
      // The module around them toggles as it did.
      {Toggling(two, {{'a', {5}}, {'b', {10, 20}}}), Toggling(other, {{'a', {5}}, {'c', {10, 20}}}),
       0, "vanished tb/b 1, appeared tb/c 1"},
      {Toggling(two, {{'b', {10, 20}}}), Toggling(other, {{'c', {10, 20, 30}}}), 1,
       "appeared tb/c 1, vanished tb/b 1"},
      {Toggling(inner, {{'a', {5}}, {'b', {10, 15}}}), Toggling(kOne, {{'a', {5}}}), 0.9,
       "vanished tb/u 1, vanished tb/u/b 1"},
      // A threshold hides nothing that only one has, not even what is still.
      {Toggling(kOne, {{'a', {}}}), Toggling(inner, {{'a', {}}, {'b', {}}}), 1,
       "appeared tb/u 1, appeared tb/u/b 1"},
      // Of a name that a scope has twice, the second is the second's.
      {Toggling(twice, {{'a', {5}}, {'b', {10, 20}}}), Toggling(kOne, {{'a', {5}}}), 0.99,
       "vanished tb/a 1"},
      {Toggling(kOne, {{'a', {5}}}), Toggling(twice, {{'a', {5}}, {'b', {10, 20}}}), 0.99,
       "appeared tb/a 1"},
  });
  RunComparison comparison;
  DifferencesText(Toggling(inner, {}), Toggling(other, {}), 0, &comparison);
  EXPECT_EQ(comparison.signals, 3U);
  EXPECT_EQ(comparison.modules, 2U);
  DifferencesText(Toggling(kOne, {}), Toggling(twice, {}), 0, &comparison);
  EXPECT_EQ(comparison.differences.at(0).id, 1U);
}

TEST(RunComparison, PutsFirstWhatExplainsMost) {
  const std::string blocks = "1us tb{ reg:1:a:a u{ reg:1:b:b reg:1:c:c } v{ reg:1:d:d } }";
  const std::string driven = "1us tb{ reg:1:a:clk u{ wire:1:a:clk reg:1:b:q } }";
  const std::string undriven = "1us tb{ wire:1:a:clk u{ wire:1:a:clk reg:1:b:q } }";
  const std::string twice = "1us tb{ u{ reg:1:a:clk reg:1:b:q } v{ reg:1:a:clk } }";
  const std::vector<int> ten = Every10(10);
  ExpectDifferences({
      // A block that stopped comes before its parts, and these before what is around them.
      {Toggling(blocks, {{'a', ten}, {'b', ten}, {'c', ten}, {'d', ten}}),
       Toggling(blocks, {{'a', ten}, {'b', {}}, {'c', {}}, {'d', ten}}), 0.4,
       "changed tb/u 1, changed tb/u/b 1, changed tb/u/c 1, changed tb 0.5"},
      {Toggling(blocks, {{'a', ten}, {'b', ten}, {'c', ten}, {'d', Every10(9)}}),
       Toggling(blocks, {{'a', ten}, {'b', Every10(5)}, {'c', ten}, {'d', {}}}), 0.3,
       "changed tb/v 1, changed tb/v/d 1, changed tb 0.359, changed tb/u/b 0.5"},
      // A clock that is driven outside says nothing of the block that it is an input of.
      {Toggling(driven, {{'a', ten}, {'b', {50, 90}}}),
       Toggling(driven, {{'a', {}}, {'b', {50, 90}}}), 0.5,
       "changed tb/u/clk 1, changed tb/clk 1, changed tb 0.833, changed tb/u 0.833"},
      // Nor of one that two blocks drive is it known whose it is.
      {Toggling(twice, {{'a', ten}, {'b', {50, 90}}}),
       Toggling(twice, {{'a', {}}, {'b', {50, 90}}}), 0.5,
       "changed tb/v 1, changed tb/u/clk 1, changed tb/v/clk 1, changed tb/u 0.833, changed tb "
       "0.833"},
      // Where nobody says who drives it, the block counts as much as what is around it.
      {Toggling(undriven, {{'a', ten}, {'b', {50, 90}}}),
       Toggling(undriven, {{'a', {}}, {'b', {50, 90}}}), 0.5,
       "changed tb/u/clk 1, changed tb/clk 1, changed tb/u 0.833, changed tb 0.833"},
  });
}

}  // namespace
}  // namespace orsa::kesncd
