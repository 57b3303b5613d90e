// Tests of exact activity: known answers, a plain account of random changes that is kept straight
// from the definitions, and parts of bodies against the whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <deque>
#include <map>
#include <random>
#include <sstream>

#include "activity/activity_counter.h"
#include "activity/activity_rows.h"
#include "activity/activity_run.h"
#include "tests/support/case_files.h"
#include "tests/support/plain_activity.h"
#include "tests/support/sanitizer_share.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"

namespace orsa::kesncd {
namespace {

using support::Event;
using support::PlainFigures;

void Give(const Event& event, ActivityCounter& counter) {
  if (event.kind == Event::Stamp) counter.Stamp(event.ticks);
  if (event.kind == Event::Off) counter.Command(Keyword::DumpOff);
  if (event.kind == Event::On) counter.Command(Keyword::DumpOn);
  if (event.kind != Event::Value) return;
  if (event.value.size() == 1)
    counter.Scalar(event.codeId, event.value[0]);
  else
    counter.Vector(event.codeId, event.value);
}

Declarations Declare(const std::vector<std::uint32_t>& widths) {
  Declarations declarations;
  declarations.scopes.emplace_back();
  declarations.types = {"wire"};
  for (const std::uint32_t width : widths) {
    DumpVariable variable;
    variable.name = "v" + std::to_string(declarations.variables.size());
    variable.width = width;
    variable.codeId = declarations.codes.Add(variable.name);
    declarations.scopes[0].variables.push_back(variable.codeId);
    declarations.variables.push_back(variable);
  }
  return declarations;
}

// Random changes, with everything that may be odd about them.
class Random {
 public:
  explicit Random(unsigned seed) : random_(seed) {}
  std::uint64_t Below(std::uint64_t limit) { return random_() % limit; }
  bool Chance(unsigned percent) { return Below(100) < percent; }

  std::string Value(std::uint32_t width) {
    static constexpr std::string_view kBits[] = {"01", "0001", "01xz", "01z", "x"};
    const std::string_view bits = kBits[Below(knowsAll_ ? 2 : std::size(kBits))];
    const std::uint64_t lengths[] = {width, width, width, 1, 1 + Below(width), width + Below(70)};
    std::string value(lengths[Below(std::size(lengths))], '0');
    for (char& c : value) c = bits[Below(bits.size())];
    return value;
  }

  std::vector<Event> Body(const std::vector<std::uint32_t>& widths) {
    std::vector<Event> events;
    const std::uint64_t steps[] = {1, 3, 100, std::uint64_t{1} << 33};
    const std::uint64_t step = steps[Below(std::size(steps))];
    const unsigned off = Chance(50) ? 4 : 0;
    std::uint64_t now = Below(20);
    // Now and then nothing but 0 and 1, and enough changes of one code to fill small counters.
    knowsAll_ = Chance(20);
    const bool isLong = Chance(10);
    const std::uint64_t count = Below(isLong ? 3000 : 400);
    const std::uint64_t often = Below(widths.size());
    for (std::uint64_t i = 0; i < count; ++i) {
      const auto codeId =
          static_cast<std::uint32_t>(isLong && Chance(90) ? often : Below(widths.size()));
      if (Chance(off)) {
        events.push_back({Chance(50) ? Event::Off : Event::On, 0, "", 0});
      } else if (Chance(40)) {
        now += Below(step + 1);
        events.push_back({Event::Stamp, 0, "", Chance(5) ? now / 2 : now});
      } else {
        events.push_back({Event::Value, codeId, Value(widths[codeId]), 0});
      }
    }
    return events;
  }

  ActivityWindow Window(const std::vector<Event>& events) {
    std::uint64_t last = 1;
    for (const Event& event : events) last = std::max(last, event.ticks);
    if (Chance(40)) return {};
    const std::uint64_t a = Below(last + 2), b = Below(last + 2);
    return {std::min(a, b), std::max(a, b)};
  }

 private:
  std::mt19937_64 random_;
  bool knowsAll_ = false;
};

ActivityPart Count(std::span<const Event> events, const CodeBits& codes,
                   const ActivityWindow& window) {
  ActivityCounter counter(codes, window);
  for (const Event& event : events) Give(event, counter);
  return counter.TakePart();
}

ActivityResult Finish(ActivityPart part, const CodeBits& codes, const ActivityWindow& window) {
  ActivityResult result;
  std::move(part).Finish(codes, window, result);
  return result;
}

constexpr unsigned kBodies = 1500 / kSanitizerShare;
const std::vector<std::uint32_t> kWidths{1, 1, 2, 7, 12, 33, 64, 70, 130};

TEST(ActivityCore, AgreesWithPlainAccount) {
  const Declarations declarations = Declare(kWidths);
  const CodeBits codes(declarations);
  for (unsigned seed = 0; seed < kBodies; ++seed) {
    Random random(seed);
    const std::vector<Event> events = random.Body(kWidths);
    const ActivityWindow window = random.Window(events);
    const ActivityResult result = Finish(Count(events, codes, window), codes, window);
    ASSERT_TRUE(result.bits == PlainFigures(events, kWidths, window)) << "seed " << seed;
    const BitFigures& bit = result.bits[0];
    ASSERT_EQ(bit.t0 + bit.t1 + bit.tx + bit.tz, result.observedTicks) << "seed " << seed;
  }
}

/// Cuts the body before some of the stamps that are larger than all before.
std::deque<ActivityPart> PartsOf(const std::vector<Event>& events, const CodeBits& codes,
                                 const ActivityWindow& window, Random& random) {
  std::deque<ActivityPart> parts;
  std::size_t begin = 0;
  std::optional<std::uint64_t> largest;
  const unsigned often = random.Chance(50) ? 10 : 80;
  for (std::size_t i = 0; i < events.size(); ++i) {
    if (events[i].kind != Event::Stamp) continue;
    if (largest && events[i].ticks > *largest && random.Chance(often)) {
      parts.push_back(Count(std::span(events).subspan(begin, i - begin), codes, window));
      if (random.Chance(10)) parts.emplace_back();  // a part without a stamp
      begin = i;
    }
    largest = std::max(largest.value_or(0), events[i].ticks);
  }
  parts.push_back(Count(std::span(events).subspan(begin), codes, window));
  return parts;
}

TEST(ActivityCore, PartsAddUpInAnyOrder) {
  const Declarations declarations = Declare(kWidths);
  const CodeBits codes(declarations);
  for (unsigned seed = 0; seed < kBodies; ++seed) {
    Random random(seed);
    const std::vector<Event> events = random.Body(kWidths);
    const ActivityWindow window = random.Window(events);
    const ActivityResult whole = Finish(Count(events, codes, window), codes, window);
    std::deque<ActivityPart> parts = PartsOf(events, codes, window, random);
    while (parts.size() > 1) {
      const std::size_t at = random.Below(parts.size() - 1);
      ASSERT_TRUE(parts[at].CanPrecede(parts[at + 1]));
      parts[at].Add(codes, std::move(parts[at + 1]));
      parts.erase(parts.begin() + static_cast<std::ptrdiff_t>(at) + 1);
    }
    const ActivityResult sum = Finish(std::move(parts[0]), codes, window);
    ASSERT_TRUE(sum.bits == whole.bits) << "seed " << seed;
    ASSERT_EQ(sum.observedTicks, whole.observedTicks) << "seed " << seed;
    ASSERT_EQ(sum.firstTick, whole.firstTick) << "seed " << seed;
    ASSERT_EQ(sum.lastTick, whole.lastTick) << "seed " << seed;
    ASSERT_EQ(sum.notes.pauses, whole.notes.pauses) << "seed " << seed;
    ASSERT_EQ(sum.notes.backwardStamps, whole.notes.backwardStamps) << "seed " << seed;
  }
}

TEST(ActivityCore, ReadsVectorValues) {
  struct Row {
    std::string_view value;
    std::uint32_t width;
    std::uint64_t high, unknown;
  };
  const Row rows[] = {
      {"1", 4, 1, 0},      {"x1", 4, 1, 14},    {"z0", 4, 14, 14},       {"10110", 3, 6, 0},
      {"hLuW-", 5, 16, 7}, {"X", 64, 0, ~0ULL}, {"Z", 64, ~0ULL, ~0ULL},
  };
  for (const Row& row : rows) {
    ValueWord word;
    ReadVectorValue(row.value, row.width, &word);
    EXPECT_TRUE((word == ValueWord{row.high, row.unknown})) << row.value;
  }
  Random random(1);
  for (int i = 0; i < 20000; ++i) {
    const auto width = static_cast<std::uint32_t>(1 + random.Below(200));
    std::string value = random.Value(width);
    if (random.Chance(30)) value[random.Below(value.size())] = "XZhLuW-_\x80"[random.Below(9)];
    std::array<ValueWord, 4> fast, plain;
    ReadVectorValue(value, width, fast.data());
    ReadVectorValuePlainly(value, width, plain.data());
    ASSERT_TRUE(fast == plain) << value << " in " << width;
  }
}

// Values stand in memory of their own, so that a sanitizer sees a byte read beyond them.
TEST(ActivityCore, ReadsBinaryValuesEitherWay) {
  Random random(2);
  for (std::size_t length = 1; length <= 65; ++length) {
    std::uint64_t number = 0;
    std::vector<char> value;
    for (std::size_t i = 0; i < length; ++i) {
      value.push_back(random.Chance(50) ? '1' : '0');
      number = number << 1 | (value.back() == '1' ? 1U : 0U);
    }
    const std::string_view text(value.data(), length);
    for (const bool isWide : {false, HasWideLanes()}) {
      std::uint64_t bits = 0;
      ASSERT_EQ(ReadBinaryValue(text, bits, isWide), length <= 64) << text;
      ASSERT_EQ(bits, length <= 64 ? number : 0) << text;
      for (char& c : value) {
        const char kept = std::exchange(c, "xzX/2"[random.Below(5)]);
        ASSERT_FALSE(ReadBinaryValue(text, bits, isWide)) << text;
        c = kept;
      }
    }
  }
}

TEST(ActivityCore, CountsVectorsEitherWay) {
  if (!HasWideLanes()) GTEST_SKIP() << "the processor has one way only";
  for (const std::uint32_t width : {2U, 15U, 16U, 17U, 33U, 63U, 64U}) {
    Random random(width);
    CountedStep step;
    VectorCounter counters[] = {VectorCounter(step, false), VectorCounter(step, true)};
    std::vector<BitFigures> figures[2] = {std::vector<BitFigures>(width),
                                          std::vector<BitFigures>(width)};
    ValueWord value;
    for (std::size_t i = 0; i < 2; ++i) {
      counters[i].Add(0, width);
      counters[i].Begin(0, &value, figures[i].data());
    }
    for (int change = 0; change < 4000; ++change) {
      ++step.number;
      step.ticks += random.Chance(1) ? std::uint64_t{3} << 30 : random.Below(100000);
      step.counts = random.Chance(1) != step.counts;
      // Of some values few bits change, of others any.
      const std::uint64_t few = std::uint64_t{1} << random.Below(width);
      const std::uint64_t given = random.Chance(50) ? value.high ^ few : random.Below(UINT64_MAX);
      value.high = given & LowBits(width);
      for (std::size_t i = 0; i < 2; ++i) counters[i].Write(0, given, figures[i].data());
    }
    std::vector<BitEdge> edges[2] = {std::vector<BitEdge>(width), std::vector<BitEdge>(width)};
    for (std::size_t i = 0; i < 2; ++i) counters[i].Leave(0, figures[i].data(), edges[i].data());
    ASSERT_TRUE(figures[0] == figures[1]) << width;
    ASSERT_TRUE(edges[0] == edges[1]) << width;
    ASSERT_GT(figures[0][width - 1].tc, 100U);
  }
}

TEST(ActivityCore, NamesBits) {
  struct Row {
    std::string_view name;
    std::uint32_t nameWord, width;
    std::string_view bits;  // the leftmost one first
  };
  const Row rows[] = {
      {"q", 1, 1, "q"},
      {"q", 1, 2, "q[1] q[0]"},
      {"q[3]", 4, 1, "q[3]"},
      {"q[+03]", 6, 1, "q[3]"},
      {"q[-0]", 5, 1, "q[0]"},
      {"q[0:1]", 1, 2, "q[0] q[1]"},
      {"q[-1:-2]", 1, 2, "q[-1] q[-2]"},
      {"q[0:-1]", 1, 2, "q[0] q[-1]"},
      {"q[7:4]", 1, 2, "q[5] q[4]"},  // the width decides
      {"q[4:7]", 1, 2, "q[6] q[7]"},
      {"q[4:4]", 1, 2, "q[5] q[4]"},
      {"q[3:0]", 1, 1, "q[0]"},
      {"mem[3]", 3, 2, "mem[3][1] mem[3][0]"},
      {"mem[3][1:0]", 3, 2, "mem[3][1] mem[3][0]"},
      {"q[3:0]_q", 8, 2, "q[3:0]_q[1] q[3:0]_q[0]"},
      {"q[a]", 4, 1, "q[a]"},
      {"q[]", 3, 1, "q[]"},
      {"q[1:2:3]", 8, 1, "q[1:2:3]"},
      {"\\q[1:0]", 7, 2, "\\q[1:0][1] \\q[1:0][0]"},  // one word: the range is the name's
      {"\\q[1:0]", 2, 2, "\\q[1] \\q[0]"},
      {"\\m[2][1:0]", 2, 1, "\\m[2][1:0]"},  // "[2][1:0]" is one word, and no range
      {"\\m[2][1:0]", 5, 2, "\\m[2][1] \\m[2][0]"},
      {"q[99999999999999999999:0]", 1, 1, "q[0]"},
      {"q[0:99999999999999999999]", 1, 2, "q[99999999999999999998] q[99999999999999999999]"},
      {"q[99999999999999999999:99999999999999999999]", 1, 2,
       "q[100000000000000000000] q[99999999999999999999]"},
      {"q[0:-10000000000000000000]", 1, 2, "q[-9999999999999999999] q[-10000000000000000000]"},
  };
  for (const Row& row : rows) {
    const BitNames names(row.name, row.nameWord, row.width);
    std::string bits;
    for (std::uint32_t bit = names.width(); bit-- > 0;) {
      names.AppendName(bit, bits);
      if (bit > 0) bits += ' ';
    }
    EXPECT_EQ(bits, row.bits) << row.name;
  }
  for (const char* type : {"real", "REALTIME", "String", "event", "parameter"}) {
    EXPECT_FALSE(TypeHasBits(type)) << type;
  }
  for (const char* type : {"wire", "time", "real2", "reals", ""})
    EXPECT_TRUE(TypeHasBits(type)) << type;
}

// What a dump gives, "counted" or "counted from 4 to 8": the observed ticks, and a row for each
// bit.
std::string CountedText(const std::string& dump, const std::string& title) {
  ActivityOptions options;
  options.dump = "d.vcd";
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
  if (std::sscanf(title.c_str(), "counted from %" SCNu64 " to %" SCNu64, &begin, &end) == 2) {
    options.window = {begin, end};
  }
  std::ostringstream text;
  TextSource source(dump);
  try {
    const ActivityResult result = CountActivity(source, options);
    text << "observed " << result.observedTicks << " of " << result.firstTick << " to "
         << result.lastTick << '\n';
    const ActivityRows rows(result);
    rows.ForEachSignal(Declarations::kDump, [&](const SignalRow& row) {
      for (std::uint32_t bit = row.names.width(); bit-- > 0;) {
        if (row.IsRepeated(bit)) continue;
        const BitFigures& f = row.figures[bit];
        std::string name;
        row.names.AppendName(bit, name);
        text << name << ' ' << f.t0 << ' ' << f.t1 << ' ' << f.tx << ' ' << f.tz << ' ' << f.tc
             << ' ' << f.ig << '\n';
      }
    });
    for (const std::string& remark : RemarksOn(result)) text << "! " << remark << '\n';
  } catch (const Failure& failure) {
    text << (failure.kind() == FailureKind::NothingMatched ? "nothing: " : "unusable: ")
         << failure.what() << '\n';
  }
  return text.str();
}

TEST(ActivityCases, GiveWhatStandsBesideThem) {
  ExpectCases("tests/cases/activity.txt",
              [](const Case& of, const std::string& title) { return CountedText(of.dump, title); });
}

}  // namespace
}  // namespace orsa::kesncd
