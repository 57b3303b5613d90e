// Lists of numbers in one cell of a database, such as a module's toggles by window: "[0,12,7]".
//
// JSON has the same form, so SQLite can take a list apart for those who ask in SQL.
#ifndef KESNCD_DATABASE_NUMBER_LIST_H_
#define KESNCD_DATABASE_NUMBER_LIST_H_

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orsa::kesncd {

/// Number is std::uint64_t, or std::int64_t for sums that may have wrapped around: a small number
/// below 0 is shorter than what it is without a sign.
template <class Number>
std::string NumberListText(const std::vector<std::uint64_t>& numbers) {
  // A sign, the digits and a comma.
  constexpr std::size_t kLongest = std::numeric_limits<std::uint64_t>::digits10 + 3;
  std::string text;
  for (const std::uint64_t number : numbers) {
    std::array<char, kLongest> digits;
    digits.front() = ',';
    char* const end =
        std::to_chars(digits.data() + 1, digits.data() + digits.size(), static_cast<Number>(number))
            .ptr;
    text.append(digits.data(), end);
  }
  if (text.empty()) text = "[";
  text.front() = '[';
  return text + ']';
}

/// The inverse; nothing for other texts, such as those with blanks, and for lists of more than
/// `most` numbers, which take no memory.
template <class Number>
std::optional<std::vector<std::uint64_t>> NumberListOf(std::string_view text, std::size_t most) {
  std::vector<std::uint64_t> numbers;
  if (text == "[]") return numbers;
  if (!text.starts_with('[') || !text.ends_with(']')) return {};
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end - 1) {
    if (*at != (numbers.empty() ? '[' : ',') || numbers.size() == most) return {};
    Number number = 0;
    // Stops at the bracket, if not before.
    const auto [next, error] = std::from_chars(at + 1, end, number);
    if (error != std::errc()) return {};
    numbers.push_back(static_cast<std::uint64_t>(number));
    at = next;
  }
  if (numbers.empty()) return {};
  return numbers;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_NUMBER_LIST_H_
