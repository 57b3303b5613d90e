// Finding scopes by what a user calls them.
#include "cli/selection/scope_choice.h"

#include <algorithm>

#include "cli/process/messages.h"
#include "names/scope_search.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

/// Scopes with variables go before those without. `scopes` is not empty and outermost first, as
/// FindScopes gives it.
std::uint32_t BestOf(const Declarations& declarations, const std::vector<std::uint32_t>& scopes) {
  for (const std::uint32_t scope : scopes) {
    if (!declarations.scopes[scope].variables.empty()) return scope;
  }
  return scopes.front();
}

/// "x.vcd: u1 means 3 scopes; taken is tb/u1, not tb/a/u1, tb/b/u1"; nothing where there is but
/// one.
void SayWhichOf(const std::string& dump, const Declarations& declarations,
                const std::vector<std::uint32_t>& scopes, const std::string& text,
                std::uint32_t chosen) {
  std::vector<std::string> others;
  for (const std::uint32_t scope : scopes) {
    if (scope != chosen) others.push_back(declarations.ShortPathOf(scope));
  }
  if (others.empty()) return;
  Remark(dump, text + " means " + std::to_string(scopes.size()) + " scopes; taken is " +
                   declarations.ShortPathOf(chosen) + ", not " + ShortList(others));
}

/// Throws Failure with NothingMatched: "x.vcd: no scope sco; did you mean tb/soc?", or with a list
/// of scopes where nothing is near.
[[noreturn]] void FailUnknownScope(const std::string& dump, const Declarations& declarations,
                                   const std::string& text) {
  std::vector<std::string> near = NearScopes(declarations, text);
  // Nothing that looks like it: the scopes that could be chosen help more than a bare refusal. A
  // hundred are enough for the list, which shows twelve and counts the rest.
  std::string hint = "; did you mean " + ShortList(near) + "?";
  if (near.empty()) {
    for (std::uint32_t i = 1; i < declarations.scopes.size() && near.size() < 100; ++i) {
      if (!declarations.scopes[i].variables.empty()) near.push_back(declarations.ShortPathOf(i));
    }
    hint = "; its modules are " + ShortList(near);
  }
  throw Failure(FailureKind::NothingMatched, dump + ": no scope " + text + hint);
}

}  // namespace

std::uint32_t OnlyScope(const std::string& dump, const Declarations& declarations,
                        const std::string& text) {
  // Before any search: "/" means this also where a scope is called so.
  if (text == "/") return Declarations::kDump;
  const std::vector<std::uint32_t> scopes = FindScopes(declarations, text);
  if (scopes.empty()) FailUnknownScope(dump, declarations, text);
  if (scopes.size() == 1) return scopes.front();
  std::vector<std::string> paths;
  paths.reserve(scopes.size());
  for (const std::uint32_t scope : scopes) paths.push_back(declarations.ShortPathOf(scope));
  throw Failure(FailureKind::NothingMatched, dump + ": " + text + " means " +
                                                 std::to_string(scopes.size()) +
                                                 " scopes: " + ShortList(paths));
}

std::uint32_t ChosenScope(const std::string& dump, const Declarations& declarations,
                          const std::string& text) {
  // What the user left out is proposed, without a word here: the caller knows whether it matters.
  if (text.empty()) return OutermostWithVariables(declarations);
  if (text == "/") return Declarations::kDump;
  const std::vector<std::uint32_t> scopes = FindScopes(declarations, text);
  if (scopes.empty()) FailUnknownScope(dump, declarations, text);
  const std::uint32_t chosen = BestOf(declarations, scopes);
  SayWhichOf(dump, declarations, scopes, text, chosen);
  return chosen;
}

/// A message must not fill a screen, however many scopes a dump has.
std::string ShortList(const std::vector<std::string>& names) {
  constexpr std::size_t kShown = 12;
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), kShown); ++i) {
    text += (i == 0 ? "" : ", ") + names[i];
  }
  if (names.size() <= kShown) return text;
  return text + " and " + std::to_string(names.size() - kShown) + " more";
}

}  // namespace orsa::kesncd::cli
