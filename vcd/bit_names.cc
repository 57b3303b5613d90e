// How the last bracket of a variable's name and its width make the names of its bits.
#include "vcd/bit_names.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace orsa::kesncd {

namespace {

// A width has 32 bits and 10^18 + 2^32 fits into 64; longer indices are computed as texts.
constexpr std::size_t kShortDigits = 18;  // with which adding a bit's number overflows nothing

/// An index as the dump writes it: a sign, and digits without zeros in front. Kept as text, since a
/// hostile dump may write an index of any length.
struct IndexText {
  bool isNegative = false;
  std::string_view digits;
};

/// Takes an index off the front of `text`; false where there is none. "+3", "-0" and "007" are
/// taken too, and give "3", "0" and "7": what a bit is called must not depend on how its range is
/// written.
bool TakeIndex(std::string_view& text, IndexText& index) {
  index.isNegative = !text.empty() && text.front() == '-';
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
  const std::size_t length = std::min(text.find_first_not_of("0123456789"), text.size());
  if (length == 0) return false;
  index.digits = text.substr(0, length);
  text.remove_prefix(length);
  const std::size_t zeros = index.digits.find_first_not_of('0');
  // The last zero stays: it is the number.
  index.digits.remove_prefix(std::min(zeros, index.digits.size() - 1));
  if (index.digits == "0") index.isNegative = false;
  return true;
}

/// Whether the digits of `a` are a smaller number than those of `b`. Both without zeros in front,
/// so that the longer one is the larger one.
bool AreSmaller(std::string_view a, std::string_view b) {
  return a.size() != b.size() ? a.size() < b.size() : a < b;
}

/// Whether `a` is the smaller index; of two below zero it is the one with more in its digits.
bool IsLess(const IndexText& a, const IndexText& b) {
  if (a.isNegative != b.isNegative) return a.isNegative;
  return a.isNegative ? AreSmaller(b.digits, a.digits) : AreSmaller(a.digits, b.digits);
}

/// Adds to, or takes from, a number of any length; the number is larger than what is taken. As on
/// paper, from the last digit on; `carry` may have many digits at first, for `by` goes into the
/// last place at once.
std::string Moved(std::string digits, std::uint32_t by, bool isAdded) {
  std::int64_t carry = isAdded ? std::int64_t{by} : -std::int64_t{by};
  for (std::size_t i = digits.size(); i-- > 0 && carry != 0;) {
    const std::int64_t sum = digits[i] - '0' + carry;
    // A digit stays 0 to 9: the division rounds down below zero as well.
    carry = sum >= 0 ? sum / 10 : -((9 - sum) / 10);
    digits[i] = static_cast<char>('0' + (sum - 10 * carry));
  }
  if (carry > 0) digits.insert(0, std::to_string(carry));
  // Zeros in front may be left where something was taken from "1000".
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
  return digits;
}

}  // namespace

bool TypeHasBits(std::string_view type) {
  // In small letters; "Real" and "EVENT" are met too.
  static constexpr std::array<std::string_view, 5> kWithout{"real", "realtime", "string", "event",
                                                            "parameter"};
  return std::none_of(kWithout.begin(), kWithout.end(), [type](std::string_view without) {
    return std::equal(type.begin(), type.end(), without.begin(), without.end(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a | 0x20 : a) == b; });
  });
}

BitNames::BitNames(std::string_view name, std::uint32_t nameWord, std::uint32_t width)
    : base_(name), width_(width) {
  // The last bracket is the one of the bits: in "mem[3][7:0]" it is the word's, "[7:0]" the bits'.
  const std::size_t open = name.rfind('[');
  // "\a[3]" is one escaped name; only "\a [3:0]" has a range after it.
  const bool isEscaped = !name.empty() && name.front() == '\\';
  if (open != std::string_view::npos && (!isEscaped || open == nameWord) &&
      TakeBracket(name.substr(open))) {
    base_ = name.substr(0, open);
  } else {
    // No range: the bits of "count", 4 wide, are count[3] to count[0].
    isIndexed_ = width > 1;
  }
}

/// Takes the indices of the bits from "[3:0]" or "[3]"; false where these characters say none.
bool BitNames::TakeBracket(std::string_view bracket) {
  if (bracket.size() < 3 || bracket.back() != ']') return false;
  bracket = bracket.substr(1, bracket.size() - 2);
  IndexText left;
  if (!TakeIndex(bracket, left)) return false;
  // "[3]" alone is both ends.
  IndexText right = left;
  if (bracket.empty()) {
    if (width_ > 1) return false;  // one of a memory's words, not one of its bits
  } else {
    if (bracket.front() != ':') return false;
    bracket.remove_prefix(1);
    if (!TakeIndex(bracket, right) || !bracket.empty()) return false;
  }
  isIndexed_ = true;
  // [0:3]: the lowest bit has the largest index.
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
  if (isShort_) return std::to_string(ShortIndex(bit));
  // A width has 32 bits, so no sign changes on the way.
  const bool isNegative = longRight_.front() == '-';
  // Moving away from zero adds to the digits, moving towards it takes from them.
  const std::string moved =
      Moved(longRight_.substr(isNegative ? 1 : 0), bit, isNegative == isAscending_);
  return isNegative ? "-" + moved : moved;
}

std::optional<std::int64_t> BitNames::IndexNumber(std::uint32_t bit) const {
  if (!isIndexed_) return {};
  if (isShort_) return ShortIndex(bit);
  const std::string text = Index(bit);
  std::int64_t index = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
  if (error != std::errc() || end != text.data() + text.size()) return {};
  return index;
}

void BitNames::AppendName(std::uint32_t bit, std::string& text) const {
  text += base_;
  if (!isIndexed_) return;
  text += '[';
  text += Index(bit);
  text += ']';
}

}  // namespace orsa::kesncd
