// Patterns for paths, matched by following all their readings at once: no pattern of a user's makes
// a large dump's names take longer than the next.
#include "names/path_glob.h"

#include <algorithm>

namespace orsa::kesncd {

namespace {

// What a backslash makes plain.
constexpr std::string_view kSpecial = "*?[]\\";

}  // namespace

// NOLINTNEXTLINE(readability-function-cognitive-complexity): a branch for each kind of step
PathGlob::PathGlob(std::string_view pattern)
    : pattern_(pattern), isName_(pattern.find('/') == std::string_view::npos) {
  // Each round adds one step; a pattern of n characters has n steps at most.
  for (std::size_t at = 0; at < pattern.size();) {
    const std::string_view rest = pattern.substr(at);
    const bool isPartStart = at == 0 || pattern[at - 1] == '/';
    // "**/" takes whole parts or nothing: "**/q" is q at any depth, also at the top.
    if (isPartStart && rest.starts_with("**/")) {
      steps_.push_back({Kind::WholeParts});
      at += 3;
    } else if (rest.starts_with("**")) {
      steps_.push_back({Kind::ManyParts});
      at += 2;
    } else if (rest.front() == '*' || rest.front() == '?') {
      steps_.push_back({rest.front() == '*' ? Kind::Many : Kind::One});
      ++at;
      // A "[" that begins no set is a character.
    } else if (const std::size_t set = rest.front() == '[' ? AddSet(rest) : 0; set > 0) {
      at += set;
    } else {
      const bool isEscape = rest.front() == '\\' && rest.size() > 1 &&
                            kSpecial.find(rest[1]) != std::string_view::npos;
      steps_.push_back({Kind::Character, static_cast<unsigned char>(rest[isEscape ? 1 : 0])});
      at += isEscape ? 2 : 1;
    }
  }
}

/// Adds the set that a text begins with and returns its length; 0 where the bracket begins none.
/// "[!a-z]" and "[^a-z]" are the same.
std::size_t PathGlob::AddSet(std::string_view rest) {
  std::size_t at = 1;
  const bool isInverted = rest.size() > 1 && (rest[1] == '!' || rest[1] == '^');
  if (isInverted) ++at;
  const std::size_t end = rest.find(']', at + 1);  // a "]" at the start is one of the set
  if (end == std::string_view::npos) return 0;
  Step step{Kind::Set};
  // "a-z" is all between its ends; "z-a" is nothing, and a "-" at the end is itself.
  while (at < end) {
    const auto first = static_cast<unsigned char>(rest[at]);
    auto last = first;
    if (at + 2 < end && rest[at + 1] == '-') {
      at += 2;
      last = static_cast<unsigned char>(rest[at]);
    }
    for (unsigned c = first; c <= last; ++c) step.set.set(c);
    ++at;
  }
  if (isInverted) step.set.flip();
  // Also of an inverted set: no set reaches over the end of a part.
  step.set.reset('/');
  steps_.push_back(step);
  return end + 1;
}

/// Letter by letter first: "q[3]" means q[3], though as a pattern it means q3.
bool PathGlob::Matches(std::string_view path, std::size_t name) const {
  const std::string_view text = isName_ ? path.substr(name) : path;
  return text == pattern_ || MatchesSteps(text);
}

/// Marks a step as reached, and those after it that need no character. Steps that take nothing lead
/// on at once.
void PathGlob::Enter(std::vector<bool>& reached, std::size_t step) const {
  for (; !reached[step]; ++step) {
    reached[step] = true;
    // The end of the pattern is the place after its last step.
    if (step == steps_.size()) return;
    const Kind kind = steps_[step].kind;
    if (kind != Kind::Many && kind != Kind::ManyParts && kind != Kind::WholeParts) return;
  }
}

/// What is reached after one more character, from all that was reached before it.
void PathGlob::Advance(const std::vector<bool>& from, std::vector<bool>& to,
                       unsigned char c) const {
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    if (!from[i]) continue;
    const Step& step = steps_[i];
    switch (step.kind) {
      case Kind::Character:
        if (c == step.character) Enter(to, i + 1);
        break;
      case Kind::One:
        if (c != '/') Enter(to, i + 1);
        break;
      case Kind::Set:
        if (step.set[c]) Enter(to, i + 1);
        break;
      // It may take further characters: the same step stays reached, and so those after it.
      case Kind::Many:
        if (c != '/') Enter(to, i);
        break;
      // As above, but a "/" does not stop it.
      case Kind::ManyParts:
        Enter(to, i);
        break;
      case Kind::WholeParts:
        to[i] = true;  // the next step may begin only after a "/"
        if (c == '/') Enter(to, i + 1);
        break;
    }
  }
}

/// Time is steps times characters, with no way back.
bool PathGlob::MatchesSteps(std::string_view text) const {
  std::vector<bool> now(steps_.size() + 1);
  std::vector<bool> next(steps_.size() + 1);
  Enter(now, 0);
  for (const char c : text) {
    std::fill(next.begin(), next.end(), false);
    Advance(now, next, static_cast<unsigned char>(c));
    now.swap(next);
  }
  // The pattern must be used up together with the text.
  return now.back();
}

}  // namespace orsa::kesncd
