// Whether a name of the dump means an object of the design.
//
// A range stands for all its indices, and a damaged one such as [2147483647:0] for very many, so
// the indices are never walked: the index that the design name holds is read and looked for in
// the range.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <limits>
#include <string_view>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

/// How two names are compared: byte for byte, or as C strings that ignore letter case.
class Comparison {
 public:
  explicit Comparison(bool exact) : exact_(exact) {}

  /// The part of a name that takes part.
  std::string_view Seen(std::string_view name) const {
    return exact_ ? name : name.substr(0, name.find('\0'));
  }

  bool Same(char a, char b) const { return exact_ ? a == b : Lower(a) == Lower(b); }

  bool Same(std::string_view a, std::string_view b) const {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [this](char x, char y) { return Same(x, y); });
  }

  /// The same with every "/" of the design name read as "_".
  bool SameFlat(std::string_view name, std::string_view design) const {
    return std::equal(name.begin(), name.end(), design.begin(), design.end(),
                      [this](char x, char y) { return Same(x, y == '/' ? '_' : y); });
  }

 private:
  static int Lower(char c) { return std::tolower(static_cast<unsigned char>(c)); }

  bool exact_;
};

/// `name` is the design name as it stands or flattened, either of them with an "I" behind it.
bool IsPlainMatch(std::string_view name, std::string_view design, const Comparison& compare) {
  name = compare.Seen(name);
  const std::string_view seen = compare.Seen(design);
  // Behind a NUL the "I" is out of sight.
  if (seen.size() == design.size() && name.size() == seen.size() + 1) {
    if (!compare.Same(name.back(), 'I')) return false;
    name.remove_suffix(1);
  }
  return compare.Same(name, seen) || compare.SameFlat(name, seen);
}

/// A name without a ':': plain, or with the bit index at its end written "_3_" instead of "[3]".
bool IsBitMatch(std::string_view name, std::string_view design, const Comparison& compare) {
  if (IsPlainMatch(name, design, compare)) return true;
  if (name.empty() || name.back() != ']') return false;
  const std::size_t bracket = name.rfind('[');
  if (bracket == kNone) return false;
  std::string rewritten(name);
  rewritten[bracket] = '_';
  rewritten.back() = '_';
  return IsPlainMatch(rewritten, design, compare);
}

/// A bound of a range: blanks, a sign, digits; clamped to 32 bits, 0 without a digit.
std::int64_t ReadBound(std::string_view text) {
  constexpr std::int64_t kMost = std::numeric_limits<int>::max();
  std::size_t at = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
  const bool negative = at < text.size() && text[at] == '-';
  if (negative || (at < text.size() && text[at] == '+')) ++at;
  std::int64_t value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    value = std::min<std::int64_t>(10 * value + (text[at] - '0'), kMost + 1);
  }
  return negative ? -value : std::min(value, kMost);
}

/// Whether `text` is how an integer from `low` to `high` is written: no sign but '-', no leading
/// zero.
bool IsIndexIn(std::string_view text, std::int64_t low, std::int64_t high) {
  const std::string_view digits = text.substr(!text.empty() && text.front() == '-' ? 1 : 0);
  if (digits.empty() || digits.size() > 10) return false;
  if (digits.find_first_not_of("0123456789") != kNone) return false;
  if (digits.front() == '0' && text.size() > 1) return false;
  const std::int64_t value = ReadBound(text);
  // A bound of ten digits may lie beyond 32 bits and be clamped into the range.
  if (digits.size() == 10 &&
      digits > (digits.size() == text.size() ? "2147483647" : "2147483648")) {
    return false;
  }
  return low <= value && value <= high;
}

/// A range whose indices run from `low` to `high` behind `base`: some base[i] or base_i_ is the
/// design name, as it stands or flattened.
bool IsRangeMatch(std::string_view base, std::int64_t low, std::int64_t high,
                  std::string_view design, const Comparison& compare) {
  if (compare.Seen(base).size() < base.size()) return IsPlainMatch(base, design, compare);
  design = compare.Seen(design);
  if (design.size() < base.size() + 3) return false;
  const std::string_view start = design.substr(0, base.size());
  const std::string_view index = design.substr(base.size() + 1, design.size() - base.size() - 2);
  const char open = design[base.size()];
  const char close = design.back();
  const bool bracketed = open == '[' && close == ']';
  const bool rewritten = (open == '_' || open == '/') && (close == '_' || close == '/');
  if (!bracketed && !rewritten) return false;
  if (!IsIndexIn(index, low, high)) return false;
  const bool flattened = rewritten && (open == '/' || close == '/');
  return (!flattened && compare.Same(base, start)) || compare.SameFlat(base, start);
}

}  // namespace

bool VmodHier::IsNameEqual(const std::string& vcdName, const std::string& designName, bool exact) {
  const Comparison compare(exact);
  if (vcdName.find(':') == std::string::npos) return IsBitMatch(vcdName, designName, compare);
  // A range is never compared whole.
  const std::string_view name = std::string_view(vcdName).substr(0, vcdName.rfind(']'));
  const std::size_t bracket = name.rfind('[');
  if (bracket == kNone) return false;
  const std::size_t colon = name.find(':');
  if (colon == kNone) return IsBitMatch(name, designName, compare);
  if (colon < bracket) return false;
  const std::int64_t first = ReadBound(name.substr(bracket + 1, colon - bracket - 1));
  const std::int64_t second = ReadBound(name.substr(colon + 1));
  return IsRangeMatch(name.substr(0, bracket), std::min(first, second), std::max(first, second),
                      designName, compare);
}

}  // namespace orsa::kesncd
