// The scope of a dump that a user names, and what is said where that is not clear.
//
// Every option that names a scope comes here (--top, --module, --scope, --strip), so that "soc"
// means the same scope to all commands. Two rules: an option that only proposes a starting point
// takes the best of several scopes and says so (ChosenScope); one that decides what is left out of
// a file for another tool must be unambiguous (OnlyScope).
#ifndef KESNCD_CLI_SELECTION_SCOPE_CHOICE_H_
#define KESNCD_CLI_SELECTION_SCOPE_CHOICE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "vcd/declarations.h"

namespace orsa::kesncd::cli {

/// The one scope that a text means: a path from the top, else the end of a path or a name where
/// only one scope has it; "/" is all of the dump. Throws Failure with NothingMatched where there is
/// none, or where there are several, with their paths. `dump` is what messages call the dump. The
/// result is an index into `declarations.scopes`.
std::uint32_t OnlyScope(const std::string& dump, const Declarations& declarations,
                        const std::string& text);

/// The scope that a text means, as every option for a module takes it: a path, the end of one or a
/// name, "/" for the variables outside every scope; an empty text proposes one that declares
/// variables. Says which one it took where several are meant. Throws Failure with NothingMatched,
/// and what may have been meant, where there is none. Of several the outermost with variables of
/// its own is taken, since a scope without any has nothing to show.
std::uint32_t ChosenScope(const std::string& dump, const Declarations& declarations,
                          const std::string& text);

/// The first of many names for a message, twelve at most, and how many more there are: "a, b, c and
/// 17 more".
std::string ShortList(const std::vector<std::string>& names);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_SELECTION_SCOPE_CHOICE_H_
