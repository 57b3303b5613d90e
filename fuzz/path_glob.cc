// Patterns for paths against a plain matcher. The first line is the pattern, the rest the path.
#include "names/path_glob.h"

#include <optional>
#include <vector>

#include "fuzz/target.h"
#include "tests/support/require.h"

namespace {

/// Tries every reading of a pattern, each place of both once.
class PlainGlob {
 public:
  PlainGlob(std::string_view pattern, std::string_view text)
      : pattern_(pattern), text_(text), known_((pattern.size() + 1) * (text.size() + 1)) {}

  bool Matches(std::size_t p, std::size_t t) {
    std::optional<bool>& known = known_[p * (text_.size() + 1) + t];
    if (!known) {
      const bool matches = Try(p, t);
      known = matches;
    }
    return *known;
  }

 private:
  bool Is(std::size_t p, std::string_view what) const {
    return pattern_.substr(p).starts_with(what);
  }

  bool Try(std::size_t p, std::size_t t) {
    const bool isEnd = t == text_.size();
    if (p == pattern_.size()) return isEnd;
    if ((p == 0 || pattern_[p - 1] == '/') && Is(p, "**/")) return TryParts(p + 3, t);
    if (Is(p, "**")) return Matches(p + 2, t) || (!isEnd && Matches(p, t + 1));
    const bool isInPart = !isEnd && text_[t] != '/';
    if (Is(p, "*")) return Matches(p + 1, t) || (isInPart && Matches(p, t + 1));
    if (Is(p, "?")) return isInPart && Matches(p + 1, t + 1);
    const std::size_t set = Is(p, "[") ? SetLength(p) : 0;
    if (set > 0) return isInPart && IsInSet(p, set, text_[t]) && Matches(p + set, t + 1);
    const bool isEscape =
        Is(p, "\\") && p + 1 < pattern_.size() &&
        std::string_view("*?[]\\").find(pattern_[p + 1]) != std::string_view::npos;
    const std::size_t length = isEscape ? 2 : 1;
    return !isEnd && text_[t] == pattern_[p + length - 1] && Matches(p + length, t + 1);
  }

  /// What comes after whole parts, of which there may be none.
  bool TryParts(std::size_t p, std::size_t t) {
    if (Matches(p, t)) return true;
    for (std::size_t end = t + 1; end <= text_.size(); ++end) {
      if (text_[end - 1] == '/' && Matches(p, end)) return true;
    }
    return false;
  }

  bool IsInverted(std::size_t p) const { return Is(p, "[!") || Is(p, "[^"); }

  std::size_t SetLength(std::size_t p) const {
    const std::size_t end = pattern_.find(']', p + (IsInverted(p) ? 3 : 2));
    return end == std::string_view::npos ? 0 : end + 1 - p;
  }

  bool IsInSet(std::size_t p, std::size_t length, char wanted) const {
    const auto c = static_cast<unsigned char>(wanted);
    const std::size_t end = p + length - 1;
    bool isIn = false;
    for (std::size_t at = p + (IsInverted(p) ? 2 : 1); at < end; ++at) {
      const auto first = static_cast<unsigned char>(pattern_[at]);
      const bool isRange = at + 2 < end && pattern_[at + 1] == '-';
      if (isRange) at += 2;
      isIn = isIn || (first <= c && c <= static_cast<unsigned char>(pattern_[at]));
    }
    return isIn != IsInverted(p);
  }

  const std::string_view pattern_;
  const std::string_view text_;
  std::vector<std::optional<bool>> known_;
};

}  // namespace

void CheckInput(std::string_view bytes) {
  constexpr std::size_t kLongest = 400;  // places of one in places of the other
  const std::size_t line = bytes.find('\n');
  if (line == std::string_view::npos || bytes.size() > kLongest) return;
  const std::string_view pattern = bytes.substr(0, line);
  const std::string_view path = bytes.substr(line + 1);
  const std::size_t slash = path.rfind('/');
  const std::size_t name = slash == std::string_view::npos ? 0 : slash + 1;
  const bool isName = pattern.find('/') == std::string_view::npos;
  const std::string_view text = isName ? path.substr(name) : path;
  const bool plain = text == pattern || PlainGlob(pattern, text).Matches(0, 0);
  support::Require(orsa::kesncd::PathGlob(pattern).Matches(path, name) == plain,
                   plain ? "the path matches" : "the path does not match");
}
