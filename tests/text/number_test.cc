// Numbers of dumps and results: what a line reader scans, and what a result writes reads back.
#include "text/number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <tuple>

namespace orsa::kesncd {
namespace {

constexpr double kUntouched = -77;

TEST(Number, ScansDoublesAsTheCLibraryDoes) {
  const std::pair<const char*, double> rows[] = {
      {"0", 0},
      {"5000", 5000},
      {"000000000000000000007", 7},
      {"999999999999999", 999999999999999.0},
      {"9007199254740993", 9007199254740992.0},  // beyond what a double tells apart
      {"18446744073709551615", 18446744073709551616.0},
      {"1.5ns", 1.5},
      {"12 ", 12},
      {" \t12", 12},
      {"+3", 3},
      {"-3.", -3},
      {".5", 0.5},
      {"1e3x", 1000},
      {"0x1p4", 16},
      {"1,5", 1},
      {"1e999", std::numeric_limits<double>::infinity()},
      {"1e-999", 0},
      {"-inf", -std::numeric_limits<double>::infinity()},
      {"", kUntouched},
      {"x", kUntouched},
      {"-", kUntouched},
      {".", kUntouched},
      {"#1", kUntouched},
  };
  for (const auto& [text, value] : rows) {
    double scanned = kUntouched;
    EXPECT_EQ(ScanDouble(text, scanned), value != kUntouched) << text;
    EXPECT_EQ(scanned, value) << text;
  }
}

// Stamps take a short way of their own, which must not be another one.
TEST(Number, ScansRandomStampsAsTheCLibraryDoes) {
  std::mt19937_64 random(1);
  for (int trial = 0; trial < 20000; ++trial) {
    std::string text = std::to_string(random() >> random() % 64);
    if (random() % 4 == 0) text.insert(random() % (text.size() + 1), 1, "0.-e x"[random() % 6]);
    double expected = kUntouched;
    const bool isNumber = std::sscanf(text.c_str(), "%lf", &expected) == 1;
    double scanned = kUntouched;
    ASSERT_EQ(ScanDouble(text.c_str(), scanned), isNumber) << text;
    ASSERT_EQ(scanned, expected) << text;
  }
}

TEST(Number, ScansIntegersOf32Bits) {
  const std::pair<const char*, int> rows[] = {
      {"7", 7},
      {"-7", -7},
      {" 07]", 7},
      {"", 0},
      {"x", 0},
      {"+", 0},
      {"4294967295", -1},
      {"2147483648", INT32_MIN},
      {"-2147483649", INT32_MAX},
      {"3:0", 3},
      {"99999999999999999999", -1},
  };
  for (const auto& [text, value] : rows) EXPECT_EQ(ScanInt(text), value) << text;
}

TEST(Number, ShortestTextReadsBackToTheLastBit) {
  std::mt19937_64 random(2);
  const auto reads = [](const std::string& text) { return std::strtod(text.c_str(), nullptr); };
  for (int trial = 0; trial < 20000; ++trial) {
    const std::uint64_t bits = random();
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    ASSERT_EQ(reads(ShortestText(value)), value);
    ASSERT_LE(ShortestText(value).size(), 24U);
    // Rounded to so many digits that none is lost, and to few: as printf rounds.
    ASSERT_EQ(reads(RoundedText(value, 17)), value);
    char rounded[40];
    std::snprintf(rounded, sizeof rounded, "%.3e", value);
    ASSERT_EQ(reads(RoundedText(value, 4)), reads(rounded)) << rounded;
    ASSERT_LE(RoundedText(value, 4).size(), 20U);
  }
}

TEST(Number, WritesExtremesInFull) {
  struct Row {
    double value;
    std::string fixed, display, rounded;
  };
  const double most = std::numeric_limits<double>::max();
  const Row rows[] = {
      {0, "0.000000", "0", "0"},
      {33.333333, "33.333333", "33.3333", "33.33"},
      {0.0005, "0.000500", "0.0005", "0.0005"},
      {99999.6, "99999.600000", "99999.6", "100000"},
      {1e6, "1000000.000000", "1e+06", "1000000"},
      {123456789, "123456789.000000", "1.23457e+08", "123500000"},
      {-2.5e-10, "-0.000000", "-2.5e-10", "-2.5e-10"},
      {9.99996e14, "999996000000000.000000", "9.99996e+14", "1e+15"},
      {INFINITY, "inf", "inf", "inf"},
      {-INFINITY, "-inf", "-inf", "-inf"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(FixedText(row.value), row.fixed);
    EXPECT_EQ(DisplayText(row.value), row.display);
    EXPECT_EQ(RoundedText(row.value, 4), row.rounded);
  }
  const std::tuple<double, int, const char*> rounded[] = {
      {33.333333, 1, "30"},         {99999, 4, "100000"},
      {123456.5, 7, "123456.5"},    {0.1 + 0.2, 17, "0.30000000000000004"},
      {1e14, 4, "100000000000000"}, {1e15, 4, "1e+15"},
      {5e-324, 4, "5e-324"},        {1.23456e308, 4, "1.235e+308"}};
  for (const auto& [value, digits, text] : rounded) EXPECT_EQ(RoundedText(value, digits), text);
  EXPECT_EQ(FixedText(-most).size(), 1U + 309 + 7);
  EXPECT_EQ(FixedText(-most).substr(0, 9), "-17976931");
}

}  // namespace
}  // namespace orsa::kesncd
