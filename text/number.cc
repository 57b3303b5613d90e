// Scanning and writing numbers as the C library does in its own locale.
#include "text/number.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace orsa::kesncd {

namespace {

/// The locale in which all numbers are read and written: a decimal point, no grouping.
locale_t CLocale() {
  // The "C" locale object is built into the C library: nothing is allocated or lost here.
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

/// Takes a text of digits only, as time stamps are, so few that each step is exact. False, with
/// `value` untouched, for any other text, which scanf then judges.
bool ScanDigits(const char* text, double& value) {
  // Every integer below 10^15 is a double without rounding, so the result is scanf's to the last
  // bit.
  constexpr int kExactDigits = 15;
  std::int64_t number = 0;
  int count = 0;
  for (; text[count] >= '0' && text[count] <= '9' && count < kExactDigits; ++count) {
    number = 10 * number + (text[count] - '0');
  }
  // Longer numbers, signs, fractions and exponents are rare in a dump.
  if (count == 0 || text[count] != '\0') return false;
  value = static_cast<double>(number);
  return true;
}

}  // namespace

/// Of this thread only: the host's other threads keep their locale.
CLocaleScope::CLocaleScope() : host_(uselocale(CLocale())) {}

CLocaleScope::~CLocaleScope() {
  uselocale(host_);
}

bool ScanDouble(const char* text, double& value) {
  if (ScanDigits(text, value)) return true;
  const CLocaleScope scope;
  // Dumps are read by what scanf takes for a number, prefixes and all, so scanf itself decides.
  return std::sscanf(text, "%lf", &value) == 1;  // NOLINT(cert-err34-c)
}

int ScanInt(const char* text) {
  // Cut, not clamped: widths and bit numbers outside 32 bits wrap around as they always have.
  return static_cast<int>(static_cast<std::uint32_t>(std::strtol(text, nullptr, 10)));
}

std::string FixedText(double value) {
  const CLocaleScope scope;
  std::array<char, 400> text{};  // the largest double has 309 digits before its point
  (void)std::snprintf(text.data(), text.size(), "%f", value);
  return text.data();
}

std::string DisplayText(double value) {
  const CLocaleScope scope;
  // The longest text has a sign, six digits, a point and an exponent: "-1.23457e-308".
  std::array<char, 32> text{};
  (void)std::snprintf(text.data(), text.size(), "%g", value);
  return text.data();
}

std::string ShortestText(double value) {
  std::string text;
  AppendShortest(text, value);
  return text;
}

void AppendShortest(std::string& to, double value) {
  std::array<char, 32> text;
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
  to.append(text.data(), result.ptr);
}

void AppendDigits(std::string& to, std::uint64_t number) {
  std::array<char, 20> text;
  const auto result = std::to_chars(text.data(), text.data() + text.size(), number);
  to.append(text.data(), result.ptr);
}

std::string RoundedText(double value, int digits) {
  // Sizes between these bounds are shown in plain digits; outside, a row of zeros would hide the
  // size.
  constexpr double kLeastPlain = 1e-9;
  constexpr double kMostPlain = 1e15;
  std::array<char, 64> text{};
  char* const end = text.data() + text.size();
  // Rounded by way of a text: multiplying by a power of ten first would round twice.
  const auto rounding =
      std::to_chars(text.data(), end, value, std::chars_format::scientific, digits - 1);
  double rounded = value;
  (void)std::from_chars(text.data(), rounding.ptr, rounded);
  const double size = std::abs(rounded);
  if (size != 0 && (size < kLeastPlain || size >= kMostPlain)) return ShortestText(rounded);
  const auto result = std::to_chars(text.data(), end, rounded, std::chars_format::fixed);
  return {text.data(), result.ptr};
}

}  // namespace orsa::kesncd
