// How the last bracket of a variable's name and its width make the names of its bits.
#include "vcd/bit_names.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace orsa::kesncd {

namespace {

constexpr std::size_t kShortDigits = 18;  // with which adding a bit's number overflows nothing

/// An index as the dump writes it: a sign, and digits without zeros in front.
struct IndexText {
  bool isNegative = false;
  std::string_view digits;
};

/// Takes an index off the front of `text`; false where there is none.
bool TakeIndex(std::string_view& text, IndexText& index) {
  index.isNegative = !text.empty() && text.front() == '-';
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
  const std::size_t length = std::min(text.find_first_not_of("0123456789"), text.size());
  if (length == 0) return false;
  index.digits = text.substr(0, length);
  text.remove_prefix(length);
  const std::size_t zeros = index.digits.find_first_not_of('0');
  index.digits.remove_prefix(std::min(zeros, index.digits.size() - 1));
  if (index.digits == "0") index.isNegative = false;
  return true;
}

/// Whether the digits of `a` are a smaller number than those of `b`.
bool AreSmaller(std::string_view a, std::string_view b) {
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

bool IsLess(const IndexText& a, const IndexText& b) {
  if (a.isNegative != b.isNegative) return a.isNegative;
  return a.isNegative ? AreSmaller(b.digits, a.digits) : AreSmaller(a.digits, b.digits);
}

/// Adds to, or takes from, a number of any length; the number is larger than what is taken.
std::string Moved(std::string digits, std::uint32_t by, bool isAdded) {
  std::int64_t carry = isAdded ? std::int64_t{by} : -std::int64_t{by};
  for (std::size_t i = digits.size(); i-- > 0 && carry != 0;) {
    const std::int64_t sum = digits[i] - '0' + carry;
    carry = sum >= 0 ? sum / 10 : -((9 - sum) / 10);
    digits[i] = static_cast<char>('0' + (sum - 10 * carry));
  }
  if (carry > 0) digits.insert(0, std::to_string(carry));
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
  return digits;
}

}  // namespace

bool TypeHasBits(std::string_view type) {
  static constexpr std::array<std::string_view, 5> kWithout{"real", "realtime", "string", "event",
                                                            "parameter"};
  return std::none_of(kWithout.begin(), kWithout.end(), [type](std::string_view without) {
    return std::equal(type.begin(), type.end(), without.begin(), without.end(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a | 0x20 : a) == b; });
  });
}

BitNames::BitNames(std::string_view name, std::uint32_t nameWord, std::uint32_t width)
    : base_(name), width_(width) {
  const std::size_t open = name.rfind('[');
  const bool isEscaped = !name.empty() && name.front() == '\\';
  if (open != std::string_view::npos && (!isEscaped || open == nameWord) &&
      TakeBracket(name.substr(open))) {
    base_ = name.substr(0, open);
  } else {
    isIndexed_ = width > 1;
  }
}

/// Takes the indices of the bits from "[3:0]" or "[3]"; false where these characters say none.
bool BitNames::TakeBracket(std::string_view bracket) {
  if (bracket.size() < 3 || bracket.back() != ']') return false;
  bracket = bracket.substr(1, bracket.size() - 2);
  IndexText left;
  if (!TakeIndex(bracket, left)) return false;
  IndexText right = left;
  if (bracket.empty()) {
    if (width_ > 1) return false;  // one of a memory's words, not one of its bits
  } else {
    if (bracket.front() != ':') return false;
    bracket.remove_prefix(1);
    if (!TakeIndex(bracket, right) || !bracket.empty()) return false;
  }
  isIndexed_ = true;
  isAscending_ = IsLess(left, right);
  isShort_ = right.digits.size() <= kShortDigits;
  if (isShort_) {
    std::from_chars(right.digits.data(), right.digits.data() + right.digits.size(), right_);
    if (right.isNegative) right_ = -right_;
  } else {
    longRight_ = (right.isNegative ? "-" : "") + std::string(right.digits);
  }
  return true;
}

std::string BitNames::Index(std::uint32_t bit) const {
  if (isShort_) {
    return std::to_string(isAscending_ ? right_ - std::int64_t{bit} : right_ + std::int64_t{bit});
  }
  // A width has 32 bits, so no sign changes on the way.
  const bool isNegative = longRight_.front() == '-';
  const std::string moved =
      Moved(longRight_.substr(isNegative ? 1 : 0), bit, isNegative == isAscending_);
  return isNegative ? "-" + moved : moved;
}

void BitNames::AppendName(std::uint32_t bit, std::string& text) const {
  text += base_;
  if (!isIndexed_) return;
  text += '[';
  text += Index(bit);
  text += ']';
}

}  // namespace orsa::kesncd
