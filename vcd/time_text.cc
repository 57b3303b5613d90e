// Times are whole femtoseconds, so that none is rounded on its way from a text to a window.
#include "vcd/time_text.h"

#include <cstddef>
#include <iterator>
#include <utility>

#include "vcd/time_units.h"

namespace orsa::kesncd {

namespace {

constexpr char kDigits[] = "0123456789";

/// Appends a decimal digit; false where the number gets too large. 2^64 femtoseconds are a little
/// over five hours.
bool Append(std::uint64_t& number, int digit) {
  return !__builtin_mul_overflow(number, 10U, &number) &&
         !__builtin_add_overflow(number, static_cast<unsigned>(digit), &number);
}

/// The femtoseconds in "whole.fraction" of a unit that has so many `zeros` in femtoseconds: 1.5
/// with 9 zeros is 1500000000. Nothing where a part of a femtosecond would be lost.
std::optional<std::uint64_t> Scale(std::string_view whole, std::string_view fraction, int zeros) {
  std::uint64_t value = 0;
  for (const char c : whole) {
    if (!Append(value, c - '0')) return {};
  }
  // "1.50" is no more exact than "1.5".
  while (!fraction.empty() && fraction.back() == '0') fraction.remove_suffix(1);
  if (fraction.size() > static_cast<std::size_t>(zeros)) return {};
  // The point moves to the right by as many digits as the unit has zeros.
  for (std::size_t i = 0; i < static_cast<std::size_t>(zeros); ++i) {
    if (!Append(value, i < fraction.size() ? fraction[i] - '0' : 0)) return {};
  }
  return value;
}

}  // namespace

/// Digits, a fraction if any, and a unit right after them; no sign, exponent or blank.
std::optional<std::uint64_t> Femtoseconds(std::string_view text) {
  const std::string_view whole = text.substr(0, text.find_first_not_of(kDigits));
  text.remove_prefix(whole.size());
  std::string_view fraction;
  if (!text.empty() && text.front() == '.') {
    fraction = text.substr(1, text.substr(1).find_first_not_of(kDigits));
    text.remove_prefix(1 + fraction.size());
  }
  // "." alone is no number, while ".5" and "5." are.
  if (whole.empty() && fraction.empty()) return {};
  const TimeUnit* const unit = FindTimeUnit(std::string(text).c_str(), UnitCase::Ignored);
  if (unit == nullptr) return {};
  return Scale(whole, fraction, unit->zeros);
}

namespace {

/// The largest unit that leaves the time whole, and how many of it there are. 100000 femtoseconds
/// are 100 ps; 0 is "0s".
std::pair<const TimeUnit*, std::uint64_t> WholeUnits(std::uint64_t femtoseconds) {
  for (const TimeUnit& unit : kTimeUnits) {
    std::uint64_t size = 1;
    for (int i = 0; i < unit.zeros; ++i) size *= 10;
    if (femtoseconds % size == 0) return {&unit, femtoseconds / size};
  }
  return {std::end(kTimeUnits) - 1, femtoseconds};  // not reached: the last unit divides everything
}

}  // namespace

std::string TimeText(std::uint64_t femtoseconds) {
  const auto [unit, count] = WholeUnits(femtoseconds);
  return std::to_string(count) + unit->text;
}

double Nanoseconds(std::uint64_t femtoseconds) {
  const auto [unit, count] = WholeUnits(femtoseconds);
  // A count of the same unit and the same factor as ConvertToNanoseconds has for that text.
  return static_cast<double>(count) * unit->nanoseconds;
}

}  // namespace orsa::kesncd
