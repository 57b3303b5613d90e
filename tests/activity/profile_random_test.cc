// Toggles over time, by values and at the peak, against exact activity: random dumps with pauses,
// vectors of odd widths, excursions through x and codes with names in several modules are cut as
// `kesncd profile` cuts them, and each piece must be what activity counts in that window alone.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <string>

#include "activity/activity_rows.h"
#include "activity/profile/profile_run.h"
#include "tests/support/text_stream.h"

namespace orsa::kesncd {
namespace {

/// A dump in ticks of a femtosecond. Its first name is "cut", of code 0: a clock by its lowest bit,
/// a state by all of them.
class RandomDump {
 public:
  explicit RandomDump(unsigned seed) : random_(seed) {
    // Late times show where sums of times overflow.
    const std::uint64_t starts[] = {0, 7, std::uint64_t{1} << 63U, UINT64_MAX - 3000};
    now_ = starts[seed % 4];
    longestStep_ = seed % 3 == 0 ? 1 : 40;
    WriteHeader();
    for (std::uint64_t items = Below(6); items > 0; --items) WriteItem();
    for (std::uint64_t step = 0, steps = 2 + Below(60); step < steps; ++step) {
      text += "#" + std::to_string(now_) + "\n";
      for (std::uint64_t items = Below(7); items > 0; --items) WriteItem();
      if (Below(12) == 0) text += "#" + std::to_string(now_ - std::min(now_, Below(3))) + "\n";
      if (Below(4) == 0) WriteItem();
      EndStep();
      values.emplace_back(now_, value_);
      now_ += 1 + Below(longestStep_);
    }
  }

  std::uint64_t first() const { return values.front().first; }
  std::uint64_t last() const { return values.back().first; }
  /// A window, or none, with both ends in the dump.
  TimeWindow SomeWindow() {
    if (Below(2) == 0) return {};
    const std::uint64_t begin = first() + Below(last() - first());
    return {begin, begin + 1 + Below(last() - begin)};
  }
  std::uint64_t Below(std::uint64_t limit) { return random_() % limit; }

  std::string text;
  std::uint32_t width = 1;                                    // of the signal that cuts
  std::vector<std::pair<std::uint64_t, std::string>> values;  // stamps, and its value after each
  std::vector<std::uint64_t> edges;                           // where its lowest bit rises

 private:
  void WriteHeader() {
    static constexpr std::uint32_t kWidths[] = {1, 1, 1, 3, 63, 64, 65, 130};
    width = Below(2) == 0 ? 1 : 2;
    value_ = std::string(width, 'x');
    text = "$timescale 1fs $end\n$var wire " + std::to_string(width) + " ! cut $end\n";
    const std::uint64_t codes = 1 + Below(5);
    std::uint64_t depth = 0;
    for (std::uint64_t names = codes + Below(12); names > 0; --names) {
      if (Below(3) == 0 && depth < 4 && ++depth != 0) text += "$scope module m $end\n";
      const std::uint64_t code = Below(codes);
      // Code 0 is as wide as the signal that cuts or wider, others have names of several widths.
      const std::uint32_t own = Below(3) == 0 ? kWidths[Below(8)] : kWidths[code + 2];
      text += "$var wire " + std::to_string(own) + " " + static_cast<char>('!' + code) + " q" +
              std::to_string(names) + " $end\n";
      if (Below(3) == 0 && depth > 0 && depth-- != 0) text += "$upscope $end\n";
      declared_ |= 1U << code;
    }
    text += "$enddefinitions $end\n";
    declared_ |= 1;
  }

  void WriteItem() {
    if (Below(15) == 0) {
      text += isObserving_ ? "$dumpoff\n" : "$dumpon\n";
      if (isObserving_) {
        EndStep();
        value_ = std::string(width, 'x');
        known_ = 'x';
      }
      isObserving_ = !isObserving_;
      return;
    }
    const std::uint64_t code = Below(5);
    if ((declared_ >> code & 1) == 0) return;
    std::string bits;
    const std::uint64_t length = Below(3) == 0 ? 1 : 1 + Below(code == 0 ? 3 : 140);
    for (std::uint64_t i = 0; i < length; ++i) bits += "01010101xz"[Below(10)];
    const char name = static_cast<char>('!' + code);
    text += length == 1 && Below(2) == 0 ? bits + name + "\n" : "b" + bits + " " + name + "\n";
    if (code != 0 || !isObserving_) return;
    const char fill = bits.front() == '1' ? '0' : bits.front();
    if (bits.size() < width) bits.insert(0, width - bits.size(), fill);
    value_ = bits.substr(bits.size() - width);
  }

  void EndStep() {
    if (value_.back() == '1' && known_ == '0') edges.push_back(now_);
    if (value_.back() <= '1') known_ = value_.back();
  }

  std::mt19937 random_;
  std::uint64_t now_ = 0;
  std::uint64_t longestStep_ = 1;
  std::uint64_t declared_ = 0;  // codes
  bool isObserving_ = true;
  std::string value_;
  char known_ = 'x';
};

ProfileOptions OptionsFor(const RandomDump& dump, const TimeWindow& window) {
  ProfileOptions options;
  options.counting.dump = "d";
  options.counting.window = window;
  options.depth = UINT32_MAX;
  options.signal = [&dump](const Declarations&) { return CuttingSignal{0, dump.width}; };
  return options;
}

ActivityResult ActivityBetween(const RandomDump& dump, const TimeWindow& window) {
  TextSource source(dump.text);
  ActivityOptions options;
  options.dump = "d";
  options.window = window;
  return CountActivity(source, options);
}

std::vector<std::uint64_t> TogglesIn(const ActivityResult& activity, const ModuleTree& modules) {
  const std::vector<ActivitySums> sums = ActivityRows(activity).ModuleSums();
  std::vector<std::uint64_t> toggles;
  for (const std::uint32_t scope : modules.scopes)
    toggles.push_back(static_cast<std::uint64_t>(sums[scope].tc));
  return toggles;
}

template <class Figures>
ProfileRun<Figures> Counted(const RandomDump& dump, const ProfileOptions& options,
                            ProfileRun<Figures> (*count)(ByteSource&, const ProfileOptions&)) {
  TextSource source(dump.text, 100);
  return count(source, options);
}

/// The same by one thread or by several, which cut the dump where they may: seeds take turns.
template <class Count>
auto CountedBy(unsigned seed, const RandomDump& dump, ProfileOptions options, Count count) {
  TextSource source(dump.text, 100);
  if (seed % 2 == 0) return count(source, options);
  TextFile file(dump.text);
  options.counting.jobs = 2 + seed % 7;
  return count(file, options);
}

/// Each window has the toggles and the observed time that activity has in it alone, and no time is
/// between windows, or before and after them.
void ExpectWindowsOfActivity(const RandomDump& dump, const ProfileRun<Profile>& run) {
  const Profile& profile = run.figures;
  EXPECT_EQ(run.base.lastTick > run.base.firstTick, profile.windows() > 0);
  if (profile.windows() == 0) return;
  EXPECT_EQ(profile.edges.front(), run.base.firstTick);
  EXPECT_EQ(profile.edges.back(), run.base.lastTick);
  for (std::size_t window = 0; window < profile.windows(); ++window) {
    const TimeWindow time{profile.edges[window], profile.edges[window + 1]};
    ASSERT_LT(*time.begin, *time.end);
    const ActivityResult activity = ActivityBetween(dump, time);
    ASSERT_EQ(profile.observed[window], activity.observedTicks) << window;
    const std::vector<std::uint64_t> expected = TogglesIn(activity, profile.modules);
    for (std::size_t module = 0; module < expected.size(); ++module)
      ASSERT_EQ(profile.TogglesOf(module, window), expected[module]) << module << " " << window;
  }
}

TEST(RandomProfile, WindowsHaveTheActivityBetweenTheirEdges) {
  for (unsigned seed = 0; seed < 120; ++seed) {
    SCOPED_TRACE(seed);
    RandomDump dump(seed);
    ProfileOptions options = OptionsFor(dump, dump.SomeWindow());
    options.parts = 1 + dump.Below(9);
    if (seed % 3 == 0) options.last = dump.last();
    if (seed % 3 == 1) options.length = 1 + (dump.last() - dump.first()) / options.parts;
    const ProfileRun<Profile> run = Counted<Profile>(dump, options, CountProfile);
    EXPECT_TRUE(run.wasLastRight);
    ExpectWindowsOfActivity(dump, run);
    const std::uint64_t begin = run.base.firstTick;
    const std::uint64_t span = run.base.lastTick - begin;
    const std::vector<std::uint64_t>& edges = run.figures.edges;
    EXPECT_LE(run.figures.windows(), options.length ? options.parts + 1 : options.parts);
    for (std::size_t edge = 0; edge + 1 < edges.size(); ++edge) {
      if (options.length) {
        EXPECT_EQ(edges[edge], begin + edge * *options.length);
      } else if (options.last) {
        const std::uint64_t parts = std::min(options.parts, span);
        EXPECT_EQ(run.figures.windows(), parts);
        EXPECT_EQ(edges[edge], begin + edge * span / parts);
      } else {  // what is folded has windows of one length, the last one of it or shorter
        EXPECT_EQ(edges[edge] - begin, edge * (edges[1] - begin));
        EXPECT_LE(edges.back() - edges[edge], (edges.size() - 1 - edge) * (edges[1] - begin));
      }
    }
  }
}

TEST(RandomProfile, FoldedWindowsAreNearlyAsManyAsAskedFor) {
  for (const std::uint64_t span : {100U, 999U, 1000U, 1600U, 1601U, 31999U, 32000U, 1234567U}) {
    std::string text = "$var wire 1 ! a $end $enddefinitions $end\n";
    for (std::uint64_t time = 0; time <= span; time += 1 + span / 5000)
      text += "#" + std::to_string(time) + "\n" + (time % 2 == 0 ? "0!\n" : "1!\n");
    TextSource dump(text + "#" + std::to_string(span) + "\n");
    ProfileOptions options;
    options.parts = 100;
    const Profile profile = CountProfile(dump, options).figures;
    EXPECT_LE(profile.windows(), 100U) << span;
    EXPECT_GE(profile.windows(), 88U) << span;
    EXPECT_EQ(profile.isFolded, span % 100 != 0 || profile.windows() != 100) << span;
  }
}

TEST(RandomProfile, SaysWhereAnotherLastStampWasExpected) {
  for (unsigned seed = 0; seed < 40; ++seed) {
    SCOPED_TRACE(seed);
    RandomDump dump(seed);
    ProfileOptions options = OptionsFor(dump, {});
    options.last = dump.first() + dump.Below(2 * (dump.last() - dump.first()));
    if (*options.last < dump.first()) options.last = UINT64_MAX;
    const ProfileRun<Profile> run = Counted<Profile>(dump, options, CountProfile);
    EXPECT_EQ(run.wasLastRight, *options.last == dump.last());
    const std::vector<std::uint64_t>& all = run.figures.toggles.front();
    EXPECT_EQ(std::accumulate(all.begin(), all.end(), std::uint64_t{0}),
              TogglesIn(ActivityBetween(dump, {}), run.figures.modules).front());
  }
}

TEST(RandomProfile, ActivityBesideAProfileIsTheSame) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE(seed);
    RandomDump dump(seed);
    const TimeWindow window = dump.SomeWindow();
    const ProfileRun<Profile> run =
        Counted<Profile>(dump, OptionsFor(dump, window), CountActivityAndProfile);
    const ActivityResult alone = ActivityBetween(dump, window);
    EXPECT_EQ(run.base.bits, alone.bits);
    EXPECT_EQ(run.base.observedTicks, alone.observedTicks);
    std::uint64_t toggles = 0;
    for (const auto& row : run.figures.toggles)
      toggles = std::accumulate(row.begin(), row.end(), toggles);
    EXPECT_EQ(toggles, TogglesIn(alone, run.figures.modules).front());
  }
}

TEST(RandomProfile, ClockRowsEndWhereTheClockRises) {
  for (unsigned seed = 0; seed < 160; ++seed) {
    SCOPED_TRACE(seed);
    RandomDump dump(seed / 2);
    const ProfileRun<Profile> run = CountedBy(
        seed, dump, OptionsFor(dump, dump.SomeWindow()),
        [](auto& from, const ProfileOptions& how) { return CountClockProfile(from, how); });
    ExpectWindowsOfActivity(dump, run);
    std::vector<std::uint64_t> expected{run.base.firstTick};
    for (const std::uint64_t edge : dump.edges)
      if (run.base.firstTick < edge && edge < run.base.lastTick) expected.push_back(edge);
    if (run.base.lastTick > run.base.firstTick) {
      expected.push_back(run.base.lastTick);
      EXPECT_EQ(run.figures.edges, expected);
    }
  }
}

/// Observed time and toggles by module for each value, step by step.
std::map<std::string, ValueSplit::Part> PlainSplit(const RandomDump& dump, const TimeWindow& window,
                                                   const ModuleTree& modules) {
  std::map<std::string, ValueSplit::Part> parts;
  for (std::size_t step = 0; step + 1 < dump.values.size(); ++step) {
    const std::uint64_t begin = std::max(dump.values[step].first, window.begin.value_or(0));
    const std::uint64_t end =
        std::min(dump.values[step + 1].first, window.end.value_or(UINT64_MAX));
    if (begin >= end) continue;
    const ActivityResult activity = ActivityBetween(dump, {begin, end});
    if (activity.observedTicks == 0) continue;
    ValueSplit::Part& part = parts[dump.values[step].second];
    part.value = dump.values[step].second;
    part.observed += activity.observedTicks;
    const std::vector<std::uint64_t> toggles = TogglesIn(activity, modules);
    part.toggles.resize(toggles.size());
    std::transform(toggles.begin(), toggles.end(), part.toggles.begin(), part.toggles.begin(),
                   std::plus<>());
  }
  return parts;
}

TEST(RandomProfile, EachValueHasTheActivityOfTheTimeItHolds) {
  for (unsigned seed = 0; seed < 160; ++seed) {
    SCOPED_TRACE(seed);
    RandomDump dump(seed / 2);
    ProfileOptions options = OptionsFor(dump, dump.SomeWindow());
    options.mostValues = seed % 4 < 2 ? 2 : 100;
    const ValueSplit split =
        CountedBy(seed, dump, options, [](auto& from, const ProfileOptions& how) {
          return CountByValue(from, how);
        }).figures;
    auto expected = PlainSplit(dump, options.counting.window, split.modules);
    EXPECT_EQ(split.others, expected.size() - std::min(expected.size(), options.mostValues));
    std::uint64_t shortest = UINT64_MAX;
    for (const ValueSplit::Part& part : split.parts) {
      if (part.value.empty()) continue;
      EXPECT_EQ(part.observed, expected[part.value].observed) << part.value;
      EXPECT_EQ(part.toggles, expected[part.value].toggles) << part.value;
      shortest = std::min(shortest, part.observed);
      expected.erase(part.value);
    }
    if (split.others == 0) continue;
    ValueSplit::Part others;
    others.toggles.resize(split.modules.size());
    for (const auto& [value, part] : expected) {
      EXPECT_LE(part.observed, shortest);
      others.observed += part.observed;
      std::transform(part.toggles.begin(), part.toggles.end(), others.toggles.begin(),
                     others.toggles.begin(), std::plus<>());
    }
    EXPECT_EQ(split.parts.back().value, "");
    EXPECT_EQ(split.parts.back().observed, others.observed);
    EXPECT_EQ(split.parts.back().toggles, others.toggles);
  }
}

TEST(RandomProfile, NoStretchTogglesMoreThanThePeak) {
  for (unsigned seed = 0; seed < 160; ++seed) {
    SCOPED_TRACE(seed);
    RandomDump dump(seed / 2);
    const TimeWindow window = dump.SomeWindow();
    ProfileOptions options = OptionsFor(dump, window);
    options.depth = 0;
    options.length = 1 + dump.Below(120);
    const ProfileRun<Peak> run =
        CountedBy(seed, dump, options,
                  [](auto& from, const ProfileOptions& how) { return FindPeak(from, how); });
    const Peak& peak = run.figures;
    const auto within = [&](std::uint64_t begin, std::uint64_t end) {
      return TogglesIn(ActivityBetween(dump, {begin, end}), {{Declarations::kDump}, {}, {}, {}})
          .front();
    };
    std::uint64_t most = 0;
    for (const auto& [time, value] : dump.values) {
      if (time <= run.base.firstTick || time > run.base.lastTick) continue;
      most =
          std::max(most, within(time - std::min(time - run.base.firstTick, *options.length), time));
    }
    EXPECT_EQ(peak.toggles, most);
    EXPECT_EQ(peak.grain, 1U);
    EXPECT_GE(peak.begin, run.base.firstTick);
    EXPECT_LE(peak.end, run.base.lastTick);
    EXPECT_LE(peak.end - peak.begin, *options.length);
    if (peak.end > peak.begin) {
      EXPECT_EQ(within(peak.begin, peak.end), most);
    }
  }
}

}  // namespace
}  // namespace orsa::kesncd
