// Patterns for paths of a dump's names, as a user of many signals writes them: "tb/*/clk",
// "**/fifo_*/q[[]3]".
#ifndef KESNCD_NAMES_PATH_GLOB_H_
#define KESNCD_NAMES_PATH_GLOB_H_

#include <bitset>
#include <string>
#include <string_view>
#include <vector>

namespace orsa::kesncd {

/// A pattern with "*" for any characters of one part of a path, "?" for one of them, "[a-z]" and
/// "[!a-z]" for one of a set, and "**" for any characters, also of several parts; "**/" may stand
/// for nothing. A backslash before one of these takes it as it is. A pattern without "/" means the
/// last part of a path, wherever it is; any other one means the whole path.
///
/// A name with an index looks like a pattern with a set, so a pattern that is the path or its last
/// part letter by letter matches it too. The time is in proportion to pattern and path. Construct
/// it once, and ask Matches for each path.
class PathGlob {
 public:
  explicit PathGlob(std::string_view pattern);

  /// Whether the path matches whose last part begins at `name`. Letter case counts.
  bool Matches(std::string_view path, std::size_t name) const;

 private:
  // WholeParts is "**/" at the start of a part, ManyParts any other "**".
  enum class Kind { Character, One, Set, Many, ManyParts, WholeParts };
  // A step takes one character; the "many" ones take any number of them.
  struct Step {
    Kind kind;
    // Used by Kind::Character.
    unsigned char character = 0;
    // Used by Kind::Set; it never holds "/".
    std::bitset<256> set{};
  };

  std::size_t AddSet(std::string_view rest);
  bool MatchesSteps(std::string_view text) const;
  // Marks what is reached before the first character, or after one.
  void Enter(std::vector<bool>& reached, std::size_t step) const;
  void Advance(const std::vector<bool>& from, std::vector<bool>& to, unsigned char c) const;

  // Kept for paths that are the pattern letter by letter.
  const std::string pattern_;
  // Without a "/" only the last part of a path counts.
  const bool isName_;
  std::vector<Step> steps_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_NAMES_PATH_GLOB_H_
