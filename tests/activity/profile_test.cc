// Toggles over time from the inside: exact edges, modules that share signals of several widths, the
// search for a peak where there is little room, and bounds on memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "activity/activity_rows.h"
#include "activity/profile/peak_search.h"
#include "activity/profile/profile_counter.h"
#include "activity/profile/profile_run.h"
#include "activity/profile/time_grid.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"

namespace orsa::kesncd {
namespace {

TEST(TimeGrid, HasEveryTickInItsWindow) {
  for (std::uint64_t span = 1; span < 40; ++span) {
    for (std::uint64_t parts = 1; parts <= span; ++parts) {
      const TimeGrid grid{7, span, parts};
      EXPECT_EQ(grid.Edge(parts), 7 + span);
      for (std::uint64_t tick = 8; tick <= 7 + span; ++tick) {
        const std::uint64_t window = grid.WindowOf(tick);
        ASSERT_TRUE(grid.Edge(window) < tick && tick <= grid.Edge(window + 1))
            << span << " " << tick;
      }
    }
  }
  const TimeGrid whole{0, UINT64_MAX, 200};
  EXPECT_EQ(whole.WindowOf(UINT64_MAX), 199U);
  EXPECT_EQ(whole.Edge(200), UINT64_MAX);
  EXPECT_EQ((TimeGrid{5, UINT64_MAX, 1}).Edge(2), UINT64_MAX);
}

// Codes with names of several widths anywhere in a tree, each bit with random toggles.
TEST(ModuleShares, SumAsModulesOfActivityDo) {
  std::mt19937 random(1);
  const auto below = [&](std::uint32_t limit) {
    return static_cast<std::uint32_t>(random() % limit);
  };
  for (int trial = 0; trial < 300; ++trial) {
    ActivityResult result;
    Declarations& declarations = result.declarations;
    declarations.types = {"wire", "real"};
    declarations.scopes.resize(1 + below(12));
    for (std::uint32_t scope = 1; scope < declarations.scopes.size(); ++scope) {
      declarations.scopes[scope].parent = below(scope);
      declarations.scopes[declarations.scopes[scope].parent].scopes.push_back(scope);
    }
    const std::uint32_t codes = 1 + below(4);
    for (std::uint32_t code = 0; code < codes; ++code)
      (void)declarations.codes.Add(std::to_string(code));
    for (std::uint32_t id = 0; id < 20; ++id) {
      DumpVariable variable;
      variable.name = "v";
      variable.width = below(5);
      variable.typeId = below(10) == 0 ? 1 : 0;
      variable.codeId = below(codes);
      variable.scope = below(static_cast<std::uint32_t>(declarations.scopes.size()));
      declarations.scopes[variable.scope].variables.push_back(id);
      declarations.variables.push_back(variable);
    }
    const CodeBits bits(declarations);
    result.firstBit = bits.all();
    result.bits.resize(bits.bits());
    for (BitFigures& bit : result.bits) bit.tc = below(1000);
    const ModuleTree tree = ModulesIn(declarations, Declarations::kDump, UINT32_MAX);
    const auto sumsOf = [&](const ModuleShares& shares) {
      std::vector<std::uint64_t> sums(2 * tree.size());
      for (std::uint32_t code = 0; code < codes; ++code) {
        for (const ModuleShare& share : shares.Of(code)) {
          for (std::uint32_t bit = share.from; bit < share.to; ++bit) {
            sums[share.module] +=
                static_cast<std::uint64_t>(std::int64_t{share.times}) * result.BitsOf(code)[bit].tc;
          }
        }
      }
      return sums;
    };
    std::vector<std::uint64_t> sums = sumsOf(ModuleShares::ByBoth(declarations, bits, tree));
    const std::vector<std::uint64_t> owned =
        sumsOf(ModuleShares::ByOwner(declarations, bits, tree));
    EXPECT_EQ(std::vector(sums.begin(), sums.begin() + static_cast<std::ptrdiff_t>(tree.size())),
              [&] {
                auto named = sumsOf(ModuleShares::ByName(declarations, tree));
                named.resize(tree.size());
                return named;
              }());
    for (std::size_t module = 0; module < tree.size(); ++module) {
      ASSERT_EQ(sums[module] + sums[tree.size() + module], owned[module]) << trial;
    }
    sums.resize(tree.size());
    tree.AddUp(sums);
    const std::vector<ActivitySums> expected = ActivityRows(result).ModuleSums();
    for (std::uint32_t module = 0; module < tree.size(); ++module) {
      ASSERT_EQ(sums[module], static_cast<std::uint64_t>(expected[tree.scopes[module]].tc))
          << trial;
    }
  }
}

// One bit that toggles at the given times.
std::string Toggling(const std::vector<std::uint64_t>& times) {
  std::string dump = "$timescale 1fs $end $var wire 1 ! a $end $enddefinitions $end\n#0\n0!\n";
  char value = '0';
  for (const std::uint64_t time : times) {
    value = value == '0' ? '1' : '0';
    dump += "#" + std::to_string(time) + "\n" + value + "!\n";
  }
  return dump;
}

TEST(PeakSearch, StaysNearThePeakWithLittleRoom) {
  std::mt19937 random(1);
  for (int trial = 0; trial < 100; ++trial) {
    std::vector<std::uint64_t> times;
    std::uint64_t now = 0;
    for (int i = 0; i < 400; ++i)
      times.push_back(now += 1 + random() % (i / 100 % 2 == 0 ? 3 : 30));
    TextSource dump(Toggling(times));
    DumpWords words(dump);
    const Declarations declarations = ReadDeclarations(words, "d");
    const ModuleTree tree = ModulesIn(declarations, Declarations::kDump, 0);
    const CodeBits codes(declarations);
    const ModuleShares shares = ModuleShares::ByName(declarations, tree);
    constexpr std::uint64_t kLength = 100;
    PeakSearch search(codes, shares, {}, kLength, trial % 2 == 0 ? 16 : 1000);
    DumpItems items(words, declarations);
    ReadBody(items, search);
    const Peak peak = search.Finish();
    const auto within = [&](std::uint64_t begin, std::uint64_t end) {
      return static_cast<std::uint64_t>(std::count_if(
          times.begin(), times.end(), [&](std::uint64_t t) { return begin < t && t <= end; }));
    };
    std::uint64_t most = 0;
    for (const std::uint64_t end : times)
      most = std::max(most, within(end - std::min(end, kLength), end));
    EXPECT_EQ(within(peak.begin, peak.end), peak.toggles) << trial;
    EXPECT_LE(peak.end - peak.begin, kLength);
    EXPECT_EQ(peak.grain > 1, trial % 2 == 0);
    if (trial % 2 == 0) {
      EXPECT_GE(peak.toggles * 10, most * 7) << trial;
    } else {
      EXPECT_EQ(peak.toggles, most) << trial;
    }
  }
}

/// A dump of 120 steps whose signals change once each, so that no stretch but the first knows what
/// toggles in it. 30 steps with few toggles come fast, one after the other.
std::string ChangingOnce(std::mt19937& random, int fastFrom) {
  std::string names, zeros, steps;
  std::uint64_t now = 0;
  for (int step = 0; step < 120; ++step) {
    const std::string code = "v" + std::to_string(step);
    const bool isFast = step >= fastFrom && step < fastFrom + 30;
    const std::size_t width = isFast ? 1 : 1 + random() % 30;
    now += 1 + random() % (isFast ? 3 : 40);
    names += "$var wire " + std::to_string(width) + " " + code + " " + code + " $end\n";
    zeros += "b0 " + code + "\n";
    steps += "#" + std::to_string(now) + "\nb" + std::string(width, '1') + " " + code + "\n";
  }
  return "$timescale 1fs $end\n" + names + "$enddefinitions $end\n#0\n" + zeros + steps;
}

// Also where one reading rounds steps, be it to the end or from the middle on, and a thread would
// not have to.
TEST(PeakSearch, FindsTheSameByThreadsWithMuchRoomAndWithLittle) {
  std::mt19937 random(1);
  for (int trial = 0; trial < 40; ++trial) {
    const std::string text = ChangingOnce(random, trial % 4 < 2 ? 5 : 80);
    ProfileOptions options;
    options.length = 100;
    options.mostSteps = trial % 2 == 0 ? 1000 : 24;
    TextSource source(text);
    const Peak whole = FindPeak(source, options).figures;
    EXPECT_EQ(whole.grain > 1, trial % 2 == 1);
    TextFile file(text);
    for (options.counting.jobs = 2; options.counting.jobs < 7; ++options.counting.jobs) {
      const Peak parted = FindPeak(file, options).figures;
      ASSERT_EQ(parted.toggles, whole.toggles) << trial << " by " << options.counting.jobs;
      ASSERT_EQ(parted.begin, whole.begin);
      ASSERT_EQ(parted.end, whole.end);
      ASSERT_EQ(parted.grain, whole.grain);
    }
  }
}

TEST(Profile, RefusesMoreSumsThanThereIsRoomFor) {
  const std::string text = Toggling({1, 5, 1000000});
  const auto windows = [&](std::uint64_t length, std::uint64_t mostCells) {
    TextSource dump(text);
    ProfileOptions options;
    options.counting.dump = "d";
    options.length = length;
    options.mostCells = mostCells;
    return CountProfile(dump, options).figures.windows();
  };
  EXPECT_EQ(windows(10, 200000), 100000U);
  EXPECT_THROW(windows(1, 200000), Failure);
}

TEST(Profile, FindsTheLastStampOfADumpsEnd) {
  struct Row {
    const char* tail;
    std::optional<std::uint64_t> last;
  };
  for (const Row& row : {Row{"\n#5\n1!\n#17\n0!\n", 17},
                         {"\n#5\n1!\n#17", 5},
                         {"\n#5 1!\n#x\n", 5},
                         {"\n#99999999999999999999\n#7", std::nullopt},
                         {"#5", std::nullopt},
                         {"", std::nullopt}}) {
    EXPECT_EQ(LastStampIn(row.tail), row.last) << row.tail;
  }
}

}  // namespace
}  // namespace orsa::kesncd
