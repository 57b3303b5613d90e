// Scopes by what a user calls them: a name, a path, or the end of a path that makes it unique.
#ifndef KESNCD_NAMES_SCOPE_SEARCH_H_
#define KESNCD_NAMES_SCOPE_SEARCH_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vcd/declarations.h"

namespace orsa::kesncd {

/// The indices of the scopes that a text means, outermost first and among those in the dump's
/// order. A path from a top-level scope on means that scope alone; any other text means every scope
/// whose path ends in it: "u1" and "soc/u1" mean tb/soc/u1. "/" parts the names; letter case
/// counts.
std::vector<std::uint32_t> FindScopes(const Declarations& declarations, std::string_view text);

/// Short paths (see ShortPathOf) of a few scopes whose names look like the last part of the text,
/// for a message that says what may have been meant.
std::vector<std::string> NearScopes(const Declarations& declarations, std::string_view text);

/// The scope and those below it, outermost first and among those in the dump's order. `top` comes
/// first.
std::vector<std::uint32_t> ScopesByDepth(const Declarations& declarations, std::uint32_t top);

/// The scope and those below it, each before the scopes in it: the order in which a dump declares
/// them.
std::vector<std::uint32_t> ScopesInOrder(const Declarations& declarations, std::uint32_t top);

/// Whether two names differ by little: letter case, or a few letters of a longer one. For proposals
/// in messages only.
bool LooksLike(std::string_view name, std::string_view meant);

}  // namespace orsa::kesncd

#endif  // KESNCD_NAMES_SCOPE_SEARCH_H_
