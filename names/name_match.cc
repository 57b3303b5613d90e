// Whether a name of the dump means an object of the design.
//
// A range stands for all its indices, and a corrupt one such as [2147483647:0] for very many, so
// the indices are never walked: the index that the design name holds is read and looked for in
// the range.
#include "names/name_match.h"

#include <algorithm>
#include <cctype>
#include <limits>

namespace orsa::kesncd {

namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::int64_t kMostIndex = std::numeric_limits<int>::max();

/// How the characters of two names are compared.
class Comparison {
 public:
  explicit Comparison(bool exact) : exact_(exact) {}

  // The locale's rule for letters, as in strcasecmp.
  bool Same(char a, char b) const { return exact_ ? a == b : Lower(a) == Lower(b); }

  // Only a design's name is flattened; a "/" in a dump's name is a character of it.
  bool Same(std::string_view name, std::string_view design, Slashes slashes) const {
    const bool flat = slashes == Slashes::Flat;
    return std::equal(name.begin(), name.end(), design.begin(), design.end(),
                      [this, flat](char a, char b) { return Same(a, flat && b == '/' ? '_' : b); });
  }

  // A comparison that ignores letter case is one of C strings, which end at a NUL.
  std::string_view Seen(std::string_view name) const { return SeenPart(name, exact_); }

 private:
  static int Lower(char c) { return std::tolower(static_cast<unsigned char>(c)); }

  bool exact_;
};

/// `name` is the design name as it stands or flattened, either of them also with an "I" after it.
/// "u1/q", "u1_q", "u1/qI" and "u1_qI" all mean "u1/q".
bool IsPlainMatch(std::string_view name, std::string_view design, const Comparison& compare) {
  name = compare.Seen(name);
  const std::string_view seen = compare.Seen(design);
  // After a NUL the "I" is out of sight. One character longer can only be the letter.
  if (seen.size() == design.size() && name.size() == seen.size() + 1) {
    if (!compare.Same(name.back(), kExtraLetter)) return false;
    name.remove_suffix(1);
  }
  return compare.Same(name, seen, Slashes::Kept) || compare.Same(name, seen, Slashes::Flat);
}

/// "cnt[3]" is "cnt[3]" or "cnt_3_" in a design.
bool IsBitMatch(std::string_view name, std::string_view design, const Comparison& compare) {
  if (IsPlainMatch(name, design, compare)) return true;
  const std::optional<std::string> rewritten = RewriteBitIndex(name);
  return rewritten && IsPlainMatch(*rewritten, design, compare);
}

/// "data[7:0]" matches "data[5]", whatever the range's size.
bool IsRangeMatch(const DumpName& range, std::string_view design, const Comparison& compare) {
  if (compare.Seen(range.text).size() < range.text.size()) {  // the index is out of sight
    return IsPlainMatch(range.text, design, compare);
  }
  // As it stands and flattened: the index may be parted by what becomes a "_".
  const auto matches = [&](Slashes slashes) {
    const std::optional<IndexedName> bit = SplitIndex(compare.Seen(design), slashes);
    return bit && range.low <= bit->index && bit->index <= range.high &&
           compare.Same(range.text, bit->base, slashes);
  };
  return matches(Slashes::Kept) || matches(Slashes::Flat);
}

/// A bound of a range: blanks, a sign, digits; clamped to 32 bits, 0 without a digit. As the C
/// library reads an int from a text, up to the ":" or the "]".
std::int64_t ReadBound(std::string_view text) {
  std::size_t at = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
  const bool negative = at < text.size() && text[at] == '-';
  if (negative || (at < text.size() && text[at] == '+')) ++at;
  std::int64_t value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    // One more than the largest, which a negative bound may need.
    value = std::min<std::int64_t>(10 * value + (text[at] - '0'), kMostIndex + 1);
  }
  return negative ? -value : std::min(value, kMostIndex);
}

/// Reads an index that is written as an integer of 32 bits is. "5" and "-5"; not "+5", "05", "-0"
/// or a number beyond 32 bits.
std::optional<std::int64_t> ReadIndex(std::string_view text) {
  // 2147483648 has ten digits.
  constexpr std::size_t kMostDigits = 10;
  const bool negative = !text.empty() && text.front() == '-';
  const std::string_view digits = text.substr(negative ? 1 : 0);
  if (digits.empty() || digits.size() > kMostDigits) return std::nullopt;
  if (digits.front() == '0' && text.size() > 1) return std::nullopt;
  std::int64_t value = 0;
  for (const char digit : digits) value = 10 * value + (digit - '0');
  if (value > kMostIndex + (negative ? 1 : 0)) return std::nullopt;
  return negative ? -value : value;
}

}  // namespace

/// A NUL ends what a comparison without letter case sees.
std::string_view SeenPart(std::string_view name, bool exact) {
  return exact ? name : name.substr(0, name.find('\0'));
}

DumpName ParseDumpName(std::string_view name) {
  using Kind = DumpName::Kind;
  // Without a ":" there is no range, so brackets are part of the name.
  if (name.find(':') == kNone) return {Kind::Plain, name};
  // A range is never compared whole: what stands after its last ']' is dropped.
  name = name.substr(0, name.rfind(']'));
  const std::size_t bracket = name.rfind('[');
  if (bracket == kNone) return {Kind::Nothing, {}};
  // The ":" stood after the last "]", and was dropped.
  const std::size_t colon = name.find(':');
  if (colon == kNone) return {Kind::Plain, name};
  // "a:b[3]" has its ":" outside the brackets.
  if (colon < bracket) return {Kind::Nothing, {}};
  const std::int64_t first = ReadBound(name.substr(bracket + 1, colon - bracket - 1));
  const std::int64_t second = ReadBound(name.substr(colon + 1));
  return {Kind::Range, name.substr(0, bracket), std::min(first, second), std::max(first, second)};
}

/// Only the last bracket is rewritten: "mem[0][3]" is "mem[0]_3_".
std::optional<std::string> RewriteBitIndex(std::string_view name) {
  if (name.empty() || name.back() != ']') return std::nullopt;
  const std::size_t bracket = name.rfind('[');
  if (bracket == kNone) return std::nullopt;
  std::string rewritten(name);
  rewritten[bracket] = '_';
  rewritten.back() = '_';
  return rewritten;
}

std::optional<IndexedName> SplitIndex(std::string_view design, Slashes slashes) {
  // A "/" reads as "_" where names are flattened.
  const auto read = [slashes](char c) { return slashes == Slashes::Flat && c == '/' ? '_' : c; };
  if (design.empty()) return std::nullopt;
  const char close = read(design.back());
  if (close != ']' && close != '_') return std::nullopt;
  const std::string_view text = design.substr(0, design.size() - 1);
  // The end of what stands before the digits.
  const std::size_t last = text.find_last_not_of("0123456789");
  if (last == kNone) return std::nullopt;
  const std::size_t open = text[last] == '-' && last > 0 ? last - 1 : last;
  // Brackets or "_" on both sides, not one of each.
  if (read(text[open]) != (close == ']' ? '[' : '_')) return std::nullopt;
  const std::optional<std::int64_t> index = ReadIndex(text.substr(open + 1));
  if (!index) return std::nullopt;
  return IndexedName{text.substr(0, open), *index};
}

bool NamesMatch(std::string_view dumpName, std::string_view designName, bool exact) {
  const Comparison compare(exact);
  const DumpName name = ParseDumpName(dumpName);
  // What a dump's name stands for decides how it is compared.
  switch (name.kind) {
    case DumpName::Kind::Nothing:
      return false;
    case DumpName::Kind::Plain:
      return IsBitMatch(name.text, designName, compare);
    case DumpName::Kind::Range:
      return IsRangeMatch(name, designName, compare);
  }
  return false;
}

}  // namespace orsa::kesncd
