// The small texts of a dump: times, names of bits, values and keywords, each against a plain
// account of what it means.
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <random>
#include <string>

#include "vcd/bit_names.h"
#include "vcd/dump_keywords.h"
#include "vcd/time_text.h"
#include "vcd/time_units.h"
#include "vcd/value_alphabet.h"

namespace orsa::kesncd {
namespace {

TEST(TimeTexts, AreWholeFemtoseconds) {
  const std::pair<std::string, std::optional<std::uint64_t>> rows[] = {
      {"1fs", 1},
      {"1.5us", 1'500'000'000},
      {"10PS", 10'000},
      {"00.001ns", 1'000},
      {".5Ms", 500'000'000'000},
      {"5.ns", 5'000'000},
      {"1.0000000000000000000fs", 1},  // zeros are no part of a femtosecond
      {"0s", 0},
      {"18446s", 18'446'000'000'000'000'000U},
      {"18446.744073709551615s", UINT64_MAX},
      {"18446.744073709551616s", {}},
      {"18447s", {}},
      {"18446744073709551616fs", {}},
      {"1.5fs", {}},
      {"0.0000001ps", {}},
      {"", {}},
      {"ns", {}},
      {".ns", {}},
      {"5", {}},
      {"-5ns", {}},
      {"+5ns", {}},
      {"5 ns", {}},
      {"5nss", {}},
      {"5m", {}},
      {"1e3ns", {}},
      {"1,5ns", {}},
      {"1.5.ns", {}},
      {std::string("5ns\0", 4), 5'000'000},  // a text ends at its first NUL byte
  };
  for (const auto& [text, time] : rows) EXPECT_EQ(Femtoseconds(text), time) << text;
}

TEST(TimeTexts, ReadBackToTheSameTime) {
  std::mt19937_64 random(1);
  for (int trial = 0; trial < 20000; ++trial) {
    std::uint64_t time = random() >> random() % 64;
    for (int zeros = static_cast<int>(random() % 16); zeros > 0 && time < UINT64_MAX / 10; --zeros)
      time *= 10;
    const std::string text = TimeText(time);
    ASSERT_EQ(Femtoseconds(text), time) << text;
    // No larger unit leaves it whole.
    ASSERT_FALSE(text.size() > 5 && text.compare(text.size() - 5, 3, "000") == 0 &&
                 text.back() == 's' && text[text.size() - 2] != '0')
        << text;
    double number = std::strtod(text.c_str(), nullptr);
    const std::string unit = text.substr(text.find_first_not_of("0123456789"));
    ASSERT_TRUE(ConvertToNanoseconds(number, unit.c_str(), UnitCase::Exact));
    ASSERT_EQ(Nanoseconds(time), number) << text;
  }
  double number = 3;
  EXPECT_FALSE(ConvertToNanoseconds(number, "NS", UnitCase::Exact));
  EXPECT_TRUE(ConvertToNanoseconds(number, "Us", UnitCase::Ignored));
  EXPECT_EQ(number, 3000);
  EXPECT_FALSE(ConvertToNanoseconds(number, "", UnitCase::Ignored));
}

/// All names of a variable's bits, the lowest first.
std::string NamesOf(const std::string& name, std::uint32_t nameWord, std::uint32_t width) {
  const BitNames names(name, nameWord, width);
  std::string all;
  for (std::uint32_t bit = 0; bit < names.width(); ++bit) {
    if (bit > 0) all += ' ';
    names.AppendName(bit, all);
  }
  return all;
}

TEST(BitNames, AreThoseThatADesignerWrote) {
  struct Row {
    std::string name;
    std::uint32_t width;
    std::string bits;
  };
  const std::string digits = "1000000000000000000000";
  const Row rows[] = {
      {"q", 1, "q"},
      {"q", 3, "q[0] q[1] q[2]"},
      {"q[2:0]", 3, "q[0] q[1] q[2]"},
      {"q[0:2]", 3, "q[2] q[1] q[0]"},
      {"q[5:4]", 3, "q[4] q[5] q[6]"},  // more bits than the range: it goes on
      {"q[7:0]", 2, "q[0] q[1]"},
      {"q[3]", 1, "q[3]"},
      {"q[3]", 2, "q[3][0] q[3][1]"},  // a word of a memory
      {"m[3][1:0]", 2, "m[3][0] m[3][1]"},
      {"q[-1:1]", 3, "q[1] q[0] q[-1]"},
      {"q[1:-1]", 3, "q[-1] q[0] q[1]"},
      {"q[+2:+1]", 2, "q[1] q[2]"},
      {"q[-0:1]", 2, "q[1] q[0]"},
      {"q[01:00]", 2, "q[0] q[1]"},
      {"q[]", 1, "q[]"},
      {"q[a]", 1, "q[a]"},
      {"q[1:]", 2, "q[1:][0] q[1:][1]"},
      {"q[1:0", 2, "q[1:0[0] q[1:0[1]"},
      {"q[1:0]x", 2, "q[1:0]x[0] q[1:0]x[1]"},
      {"q[2:1:0]", 2, "q[2:1:0][0] q[2:1:0][1]"},
      {"q[1-0]", 2, "q[1-0][0] q[1-0][1]"},
      {"[1:0]", 2, "[0] [1]"},
      {"q[" + digits + "]", 1, "q[" + digits + "]"},
      {"q[" + digits + ":0]", 2, "q[0] q[1]"},
      {"q[0:" + digits + "]", 2, "q[" + digits + "] q[999999999999999999999]"},
      {"q[0:-" + digits + "]", 2, "q[-" + digits + "] q[-999999999999999999999]"},
      {"q[-" + digits + ":0]", 2, "q[0] q[-1]"},
  };
  for (const Row& row : rows) {
    const auto word = static_cast<std::uint32_t>(row.name.size());
    EXPECT_EQ(NamesOf(row.name, word, row.width), row.bits) << row.name;
  }
  // In an escaped name only a range that is a word of its own counts.
  EXPECT_EQ(NamesOf("\\q[1:0]", 7, 2), "\\q[1:0][0] \\q[1:0][1]");
  EXPECT_EQ(NamesOf("\\q[1:0]", 2, 2), "\\q[0] \\q[1]");
  EXPECT_EQ(NamesOf("\\a[3][1:0]", 5, 2), "\\a[3][0] \\a[3][1]");
}

__extension__ using Wide = __int128;

std::string WideText(Wide value) {
  if (value < 0) return "-" + WideText(-value);
  std::string text(1, static_cast<char>('0' + static_cast<int>(value % 10)));
  return value < 10 ? text : WideText(value / 10) + text;
}

// Indices of up to 30 digits, far beyond any number that a processor adds at once.
TEST(BitNames, CountOnFromIndicesOfAnyLength) {
  std::mt19937_64 random(2);
  const auto index = [&] {
    Wide value = static_cast<Wide>(random() >> 2) * random();
    for (std::size_t cut = random() % 30; cut > 0; --cut) value /= 10;
    if (random() % 3 == 0) value -= value % 1000;  // where taking off one changes many digits
    if (random() % 9 == 0) {                       // where adding one makes the number longer
      value = 1;
      for (std::size_t digits = 19 + random() % 15; digits > 0; --digits) value *= 10;
      value -= 1 + random() % 1000;
    }
    return value % 2 == 0 ? value : -value;
  };
  for (int trial = 0; trial < 20000; ++trial) {
    const Wide left = index();
    const Wide right = random() % 4 == 0 ? left + static_cast<int>(random() % 9) - 4 : index();
    const std::string name = "q[" + WideText(left) + ":" + WideText(right) + "]";
    const BitNames names(name, 1, UINT32_MAX);
    for (const std::uint32_t bit : {0U, 1U, 999U, UINT32_MAX - 1}) {
      const bool isSmall = right > -Wide{UINT32_MAX} && right < Wide{UINT32_MAX};
      if (WideText(right).size() > 18 && isSmall) continue;
      const Wide expected = left < right ? right - bit : right + bit;
      ASSERT_EQ(names.Index(bit), WideText(expected)) << name << " " << bit;
    }
  }
}

TEST(BitNames, TellTypesWithoutBits) {
  for (const char* type : {"real", "REALTIME", "String", "event", "parameter"})
    EXPECT_FALSE(TypeHasBits(type)) << type;
  for (const char* type : {"", "wire", "reg", "integer", "re", "realx", "strings", "par\x41meter2"})
    EXPECT_TRUE(TypeHasBits(type)) << type;
}

/// What a character of a value means, one by one.
char PlainBit(char c) {
  switch (c) {
    case '0':
    case 'L':
    case 'l':
      return '0';
    case '1':
    case 'H':
    case 'h':
      return '1';
    case 'z':
    case 'Z':
      return 'z';
    default:
      return 'x';
  }
}

TEST(Values, AreZeroOneXAndZ) {
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    EXPECT_EQ(In(kBitValues, c), PlainBit(c)) << byte;
    const bool isScalar = c != '\0' && std::string("01xXzZHhLlUuWw-").find(c) != std::string::npos;
    EXPECT_EQ(In(kScalarValues, c), isScalar ? PlainBit(c) : '\0') << byte;
  }
  const std::pair<std::string, char> states[] = {
      {"DdLl0", '0'}, {"UuHh1", '1'}, {"TZF", 'z'}, {"NXABCf?xz ", 'x'}};
  for (const auto& [characters, value] : states) {
    for (const char c : characters) {
      EXPECT_EQ(In(kPortStates, c), value) << c;
    }
  }
}

// Eight characters that are all 0 or 1 are copied at once: at every place and length.
TEST(Values, AreTranslatedOneByOneWhereverTheyAre) {
  std::mt19937 random(3);
  for (int trial = 0; trial < 20000; ++trial) {
    std::string value(random() % 40, '0');
    for (char& c : value) c = random() % 20 == 0 ? static_cast<char>(random()) : "01"[random() % 2];
    std::string expected = value;
    for (char& c : expected) c = PlainBit(c);
    std::string translated(value.size() + 2, '#');
    Translate(value, translated.data() + 1, kBitValues);
    ASSERT_EQ(translated, "#" + expected + "#");
  }
}

TEST(Keywords, AreTakenWholeAndInAnyCase) {
  const std::pair<std::string_view, Keyword> rows[] = {
      {"$end", Keyword::End},
      {"$END", Keyword::End},
      {"$enddefinitions", Keyword::EndDefinitions},
      {"$dumpports", Keyword::DumpVars},
      {"$dumpportsoff", Keyword::DumpOff},
      {"$DumpOn", Keyword::DumpOn},
      {"$vcdclose", Keyword::Close},
      {"$version", Keyword::Text},
      {"$attrbegin", Keyword::Section},
      {"$ends", Keyword::Section},
      {"$en", Keyword::Section},
      {"$", Keyword::None},
      {"$$", Keyword::None},
      {"$1", Keyword::None},
      {"end", Keyword::None},
      {"", Keyword::None},
      {" $end", Keyword::None},
  };
  for (const auto& [word, keyword] : rows) EXPECT_EQ(KeywordOf(word), keyword) << word;
  EXPECT_TRUE(IsPlainKeyword("$dumpoff"));
  for (const char* word : {"$DUMPOFF", "$dumpportsoff", "$attrbegin", "$"})
    EXPECT_FALSE(IsPlainKeyword(word)) << word;
  for (const char* word : {"$dumpvars", "$dumpall", "$dumpon", "$dumpoff"}) {
    EXPECT_TRUE(IsDumpCommand(KeywordOf(word)) && StartsSection(KeywordOf(word))) << word;
  }
  for (const char* word : {"$end", "$comment", "$var", "1!", "$vcdclose"})
    EXPECT_FALSE(IsDumpCommand(KeywordOf(word))) << word;
  EXPECT_FALSE(StartsSection(Keyword::End));
  EXPECT_TRUE(StartsSection(Keyword::Comment));
}

}  // namespace
}  // namespace orsa::kesncd
