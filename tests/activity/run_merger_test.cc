// Sums of runs that differ: in their ticks, in the signals they have, in the ranges of these.
#include "activity/run_merger.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <random>

#include "tests/support/sanitizer_share.h"
#include "tests/support/small_dumps.h"
#include "text/failure.h"

namespace orsa::kesncd {
namespace {

/// Runs are called a, b, c and so on.
RunMerger Merged(const std::vector<std::string>& runs) {
  RunMerger merger;
  for (const std::string& run : runs) {
    merger.Add(Counted(run), std::string(1, static_cast<char>('a' + merger.runs().size())));
  }
  return merger;
}

/// "a 2 tb/q": a lacks two signals, such as tb/q.
std::string LackingText(const RunMerger& merger) {
  std::string text;
  for (const LackingRun& run : merger.Lacking()) {
    text += (text.empty() ? "" : ", ") + run.run + ' ' + std::to_string(run.signals) + ' ' +
            run.example;
  }
  return text;
}

struct MergeRow {
  std::vector<std::string> runs;
  std::string figures;
  std::uint64_t observed;  // ticks
  std::uint64_t tick;      // femtoseconds; 0: not known
  std::string lacking = {};
};

void ExpectSums(const std::vector<MergeRow>& rows) {
  for (const MergeRow& row : rows) {
    RunMerger merger = Merged(row.runs);
    const std::string what = row.runs.back();
    EXPECT_EQ(LackingText(merger), row.lacking) << what;
    const ActivityResult sum = merger.Finish();
    EXPECT_EQ(FiguresText(sum), row.figures) << what;
    EXPECT_EQ(sum.observedTicks, row.observed) << what;
    EXPECT_EQ(sum.lastTick - sum.firstTick, row.observed) << what;
    EXPECT_EQ(sum.tick.value_or(0), row.tick) << what;
  }
}

const std::string kNs = "1ns tb{ reg:1:!:clk } ; #0 0! #10 1! #15 0! #20";

TEST(RunMerger, SumsTimesInTheFinestTick) {
  const std::string tens = "10ns tb{ reg:1:!:clk } ; #0 1! #3 0! #4";
  constexpr std::uint64_t kNanosecond = 1000000;
  ExpectSums({
      {{kNs}, "tb/clk 15 5 0 0 2 0", 20, kNanosecond},
      {{kNs, kNs}, "tb/clk 30 10 0 0 4 0", 40, kNanosecond},
      {{kNs, tens}, "tb/clk 25 35 0 0 3 0", 60, kNanosecond},
      {{tens, kNs, tens}, "tb/clk 35 65 0 0 4 0", 100, kNanosecond},
      // The finest tick is neither's own.
      {{"2ps tb{ reg:1:!:q } ; #0 0! #5 1! #10", "3ps tb{ reg:1:!:q } ; #1 0! #5 x! #6"},
       "tb/q 22 10 3 0 1 0",
       35,
       1000},
      {{"- tb{ reg:1:!:q } ; #7 0! #9 1! #10", "- tb{ reg:1:!:q } ; #0 z! #4"},
       "tb/q 2 1 0 4 1 0",
       7,
       0},
      // Without time there is nothing to add.
      {{kNs, "1ps tb{ reg:1:!:clk } ; #5 1!"}, "tb/clk 15000 5000 0 0 2 0", 20000, 1000},
      {{kNs, "1ns tb{ reg:1:!:clk } ; 1! 0!"}, "tb/clk 15 5 0 0 2 0", 20, kNanosecond},
      {{"1ns tb{ reg:1:!:q } ; #5 0!", "1ns tb{ reg:1:!:q } ; #9 1!"},
       "tb/q 0 0 0 0 0 0",
       0,
       kNanosecond},
  });
}

TEST(RunMerger, MatchesSignalsByScopeAndName) {
  const std::string body = "#0 0! 0% #4 1% #10";
  ExpectSums({
      // The order of the first run stays, whatever the next ones have.
      {{"- tb{ reg:1:!:a reg:1:%:b } ;" + body, "- tb{ reg:1:!:b reg:1:%:a } ;" + body},
       "tb/a 14 6 0 0 1 0, tb/b 14 6 0 0 1 0",
       20,
       0},
      {{"- tb{ reg:1:!:a u{ reg:1:%:q } } ;" + body, "- tb{ reg:1:!:a v{ reg:1:%:q } } ;" + body,
        "- tb{ reg:1:!:a } top{ reg:1:%:a } ;" + body},
       "tb/a 30 0 0 0 0 0, tb/u/q 4 6 0 0 1 0, tb/v/q 4 6 0 0 1 0, top/a 4 6 0 0 1 0",
       30,
       0,
       "a 2 tb/v/q, b 2 tb/u/q, c 2 tb/u/q"},
      // A name that a scope has twice: the first is the first's, the second the second's.
      {{"- tb{ reg:1:!:a reg:1:%:a } ;" + body, "- tb{ reg:1:&:c reg:1:!:a reg:1:%:a } ;" + body},
       "tb/a 20 0 0 0 0 0, tb/a 8 12 0 0 2 0, tb/c 0 0 10 0 0 0",
       20,
       0,
       "a 1 tb/c"},
      // A name that stands there twice for one code is one signal.
      {{"- tb{ reg:1:!:a reg:1:!:a } ;" + body, "- tb{ reg:1:!:a } ;" + body},
       "tb/a 20 0 0 0 0 0",
       20,
       0},
      // What has no bits is no signal here, and nobody lacks it.
      {{"- tb{ real:64:!:r reg:1:%:b } ; #0 r1 ! 0% #4 r2 ! 1% #10", "- tb{ reg:1:%:b } ;" + body},
       "tb/b 8 12 0 0 2 0",
       20,
       0},
      {{"- tb{ reg:1:%:r } ;" + body, "- tb{ real:64:!:r reg:1:%:b } ;" + body},
       "tb/r 4 6 0 0 1 0, tb/b 4 6 0 0 1 0",
       20,
       0,
       "a 1 tb/b, b 1 tb/r"},
  });
}

TEST(RunMerger, MatchesBitsWhereRangesDiffer) {
  const std::string low = "- tb{ reg:2:d:d[1:0] } ; #0 b00 d #4 b10 d #10";
  ExpectSums({
      {{low, "- tb{ reg:2:d:d[2:1] } ; #0 b01 d #5 b11 d #10"},
       "tb/d[1] 4 16 0 0 1 0, tb/d[0] 10 0 0 0 0 0, tb/d[2] 5 5 0 0 1 0",
       20,
       0,
       "a 1 tb/d[2], b 1 tb/d[0]"},
      // The same bits the other way around.
      {{"- tb{ reg:2:d:d[0:1] } ; #0 b01 d #10", "- tb{ reg:2:d:d[1:0] } ; #0 b01 d #20"},
       "tb/d[0] 10 20 0 0 0 0, tb/d[1] 20 10 0 0 0 0",
       30,
       0},
      // A register that the second run declares bit by bit, and the third as one again.
      {{low, "- tb{ reg:1:0:d[0] reg:1:1:d[1] } ; #0 00 11 #3 10 #5", low},
       "tb/d[1] 8 17 0 0 2 0, tb/d[0] 23 2 0 0 1 0",
       25,
       0},
      {{"- tb{ reg:2:d:d } ; #0 b1 d #4", "- tb{ reg:3:d:d } ; #0 b100 d #4"},
       "tb/d[1] 8 0 0 0 0 0, tb/d[0] 4 4 0 0 0 0, tb/d[2] 0 4 0 0 0 0",
       8,
       0,
       "a 1 tb/d[2]"},
      // A vector and a scalar of one name are two signals.
      {{"- tb{ reg:2:d:d[1:0] reg:1:e:d } ; #0 b11 d 0e #4", low},
       "tb/d[1] 4 10 0 0 1 0, tb/d[0] 10 4 0 0 0 0, tb/d 4 0 0 0 0 0",
       14,
       0,
       "b 1 tb/d"},
  });
}

// A module's bits are its codes: two names of one net are one bit, in a sum as in a run.
TEST(RunMerger, KeepsNamesOfOneNetTogetherWhereAllRunsDo) {
  const std::string one = "- tb{ reg:1:!:a u{ wire:1:!:b } } ; #0 0! #4 1! #10";
  const std::string two = "- tb{ reg:1:!:a u{ wire:1:%:b } } ; #0 0! 1% #4 1! #10";
  const std::string wide = "- tb{ reg:4:!:a u{ wire:2:!:b } } ; #0 b0 ! #4 b1111 ! #10";
  const struct {
    std::vector<std::string> runs;
    std::uint64_t bits, toggles;
  } rows[] = {
      {{one}, 1, 1},      {{one, one}, 1, 2}, {{one, two}, 2, 3},   {{two, one}, 2, 3},
      {{two, two}, 2, 2}, {{wide}, 4, 4},     {{wide, wide}, 4, 8}, {{one, two, one}, 2, 5},
  };
  for (const auto& row : rows) {
    const ActivityResult sum = Merged(row.runs).Finish();
    const ActivitySums tb = ActivityRows(sum).ModuleSums()[1];
    EXPECT_EQ(tb.bits, row.bits) << row.runs.back();
    EXPECT_EQ(tb.tc, row.toggles) << row.runs.back();
  }
}

// Rates of runs are compared in one tick, whichever came first.
TEST(RunMerger, NamesTheBusiestRun) {
  const std::string fine = "1ps tb{ reg:1:!:clk } ; #0 0! #1000 1! #5000";
  const std::string third = "1ns tb{ reg:1:!:clk } ; #0 0! #1 1! #2 0! #3 1! #20";
  const std::string still = "1ns tb{ reg:1:!:clk } ; #3 0!";
  const struct {
    std::vector<std::string> runs;
    std::uint32_t busiest;
    double togglesPerTick;
  } rows[] = {
      {{kNs}, 0, 0.1},
      {{kNs, fine, third}, 1, 0.0002},  // 0.1, 0.2 and 0.15 a nanosecond
      {{kNs, third, kNs, fine}, 3, 0.0002},
      {{kNs, third, third}, 1, 0.15},
      {{fine, kNs, third}, 0, 0.0002},
      {{still, kNs}, 1, 0.1},
      {{still, still}, 0, -1},
  };
  for (const auto& row : rows) {
    const BusiestRun busiest = Merged(row.runs).busiest().at(1);
    EXPECT_EQ(busiest.run, row.busiest) << row.runs.back();
    EXPECT_DOUBLE_EQ(busiest.togglesPerTick, row.togglesPerTick) << row.runs.back();
  }
}

TEST(RunMerger, RefusesWhatCannotBeSummed) {
  const std::string signal = " tb{ reg:1:!:clk } ; #0 0! #";
  const std::string most = "18446744073709551615";
  const std::string unscaled = "only some of the runs have a time scale";
  const std::string tooLong = "the runs are too long to be summed";
  const std::array<std::string, 3> rows[] = {
      {"1ns" + signal + "5", "-" + signal + "5", unscaled},
      {"-" + signal + "5", "1ns" + signal + "5", unscaled},
      {"1ns" + signal + most, "1ns" + signal + "1", tooLong},
      {"1s" + signal + "18447", "1fs" + signal + "1", tooLong},
      {"1fs" + signal + "1", "1s" + signal + "18447", tooLong},
  };
  for (const auto& [first, second, why] : rows) {
    try {
      (void)Merged({first, second});
      ADD_FAILURE() << first << " and " << second;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.kind(), FailureKind::Unusable);
      EXPECT_EQ(std::string(failure.what()).substr(0, why.size()), why);
    }
  }
  EXPECT_EQ(Merged({"1ns" + signal + most}).Finish().lastTick, UINT64_MAX);
}

using FiguresByBit = std::map<std::string, std::array<std::uint64_t, 6>>;

/// Adds the figures of a run, times in ticks that are so many times finer, bit by bit.
void AddByName(const ActivityResult& run, std::uint64_t factor, FiguresByBit& to) {
  std::istringstream words(FiguresText(run));
  std::string name;
  while (words >> name) {
    std::array<std::uint64_t, 6>& sums = to[name];
    for (std::size_t i = 0; i < sums.size(); ++i) {
      std::uint64_t figure = 0;
      words >> figure;
      words.ignore(1);  // the comma
      sums[i] += figure * (i < 4 ? factor : 1);
    }
  }
}

// The sum of random runs is that of their figures by name, also where sums are summed.
TEST(RunMerger, SumsRandomRunsByName) {
  std::mt19937 random(1);
  const std::pair<std::string, std::uint64_t> scales[] = {{"1ps", 1}, {"10ps", 10}, {"1ns", 1000}};
  for (int round = 0; round < 100 / kSanitizerShare; ++round) {
    RunMerger all, firsts, sums;
    FiguresByBit expected;
    for (int i = 0; i < 4; ++i) {
      const auto& [scale, factor] = scales[i == 0 ? 0 : random() % 3];
      const std::string run = RandomRun(random, scale);
      AddByName(Counted(run), factor, expected);
      all.Add(Counted(run), "r");
      if (i == 2) sums.Add(firsts.Finish(), "two");
      (i < 2 ? firsts : sums).Add(Counted(run), "r");
    }
    for (RunMerger* const merger : {&all, &sums}) {
      FiguresByBit merged;
      AddByName(merger->Finish(), 1, merged);
      ASSERT_EQ(merged, expected) << "round " << round;
    }
  }
}

}  // namespace
}  // namespace orsa::kesncd
