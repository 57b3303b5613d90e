// Comparing names in pieces: runs of digits by value, all else character by character.
#include "names/name_order.h"

#include <algorithm>

namespace orsa::kesncd {

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

/// Takes the number that a text begins with, without leading zeros. Numbers are compared as texts,
/// so that none is too long.
std::string_view TakeDigits(std::string_view& text) {
  while (text.size() > 1 && text[0] == '0' && IsDigit(text[1])) text.remove_prefix(1);
  const auto* const end = std::find_if_not(text.begin(), text.end(), IsDigit);
  const std::string_view number = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(number.size());
  return number;
}

}  // namespace

bool IsNameBefore(std::string_view a, std::string_view b) {
  const std::string_view wholeA = a;
  const std::string_view wholeB = b;
  while (!a.empty() && !b.empty()) {
    if (IsDigit(a.front()) && IsDigit(b.front())) {
      const std::string_view left = TakeDigits(a);
      // Without zeros in front the longer one is larger.
      const std::string_view right = TakeDigits(b);
      if (left.size() != right.size()) return left.size() < right.size();
      if (left != right) return left < right;
      continue;
    }
    // By their bytes, so that the order is the same on every machine and in every locale.
    if (a.front() != b.front()) {
      return static_cast<unsigned char>(a.front()) < static_cast<unsigned char>(b.front());
    }
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
  // The one that is the other's start comes first.
  if (a.empty() != b.empty()) return a.empty();
  return wholeA < wholeB;  // they differ in leading zeros, if at all
}

}  // namespace orsa::kesncd
