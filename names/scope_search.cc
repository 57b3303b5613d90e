// Looking scopes up by paths and parts of paths.
#include "names/scope_search.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace orsa::kesncd {

namespace {

/// Whole goes before End: a path from the top means one scope only.
enum class PathMatch { None, End, Whole };

/// How the text stands to the path of a scope. A scope's name may hold a "/" itself, so names are
/// compared rather than parts of the text. From the last name back, so that a scope is left at the
/// first name that differs.
PathMatch MatchPath(const Declarations& declarations, std::uint32_t scope, std::string_view text) {
  while (scope != Declarations::kDump) {
    const std::string& name = declarations.scopes[scope].name;
    scope = declarations.scopes[scope].parent;
    // The text is used up: either the whole path, or its end.
    if (text == name) return scope == Declarations::kDump ? PathMatch::Whole : PathMatch::End;
    // The name must end what is left, with a "/" before it.
    if (text.size() <= name.size() || !text.ends_with(name)) return PathMatch::None;
    text.remove_suffix(name.size());
    if (text.back() != '/') return PathMatch::None;
    text.remove_suffix(1);
  }
  return PathMatch::None;
}

/// Only for comparing; names are shown as they are.
std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

/// How many letters must change, come or go to make one text of the other. One row of the table at
/// a time: row[j] is the distance of the part of a so far to j letters of b.
std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

std::vector<std::uint32_t> ScopesByDepth(const Declarations& declarations, std::uint32_t top) {
  // A queue that is walked while it grows.
  std::vector<std::uint32_t> scopes{top};
  for (std::size_t i = 0; i < scopes.size(); ++i) {
    const auto& below = declarations.scopes[scopes[i]].scopes;
    scopes.insert(scopes.end(), below.begin(), below.end());
  }
  return scopes;
}

std::vector<std::uint32_t> ScopesInOrder(const Declarations& declarations, std::uint32_t top) {
  std::vector<std::uint32_t> scopes;
  // A stack: scopes may nest deeper than calls can.
  std::vector<std::uint32_t> pending{top};
  while (!pending.empty()) {
    const std::uint32_t scope = pending.back();
    pending.pop_back();
    scopes.push_back(scope);
    const auto& below = declarations.scopes[scope].scopes;
    // The last of them goes in first, so that the first comes out first.
    pending.insert(pending.end(), below.rbegin(), below.rend());
  }
  return scopes;
}

std::vector<std::uint32_t> FindScopes(const Declarations& declarations, std::string_view text) {
  std::vector<std::uint32_t> found;
  for (const std::uint32_t scope : ScopesByDepth(declarations, Declarations::kDump)) {
    const PathMatch match = MatchPath(declarations, scope, text);
    // A whole path is one scope's, so nothing else can be meant.
    if (match == PathMatch::Whole) return {scope};
    if (match == PathMatch::End) found.push_back(scope);
  }
  return found;
}

bool LooksLike(std::string_view name, std::string_view meant) {
  // The time grows with the product of both lengths.
  constexpr std::size_t kLongest = 64;
  constexpr std::size_t kLettersAnEdit = 3;
  if (name.empty() || meant.empty() || std::max(name.size(), meant.size()) > kLongest) return false;
  const std::string a = Lower(name);
  const std::string b = Lower(meant);
  return a == b || EditDistance(a, b) <= std::max(a.size(), b.size()) / kLettersAnEdit;
}

std::vector<std::string> NearScopes(const Declarations& declarations, std::string_view text) {
  constexpr std::size_t kMost = 5;
  constexpr std::size_t kMostLooked = 100000;  // names of a dump may be as many as it likes
  // "." too, as some users write paths.
  const std::string_view last = text.substr(text.find_last_of("/.") + 1);
  std::vector<std::string> near;
  const std::size_t end = std::min(declarations.scopes.size(), kMostLooked);
  for (std::uint32_t i = 1; i < end && near.size() < kMost; ++i) {
    if (LooksLike(declarations.scopes[i].name, last)) near.push_back(declarations.ShortPathOf(i));
  }
  return near;
}

}  // namespace orsa::kesncd
