// The signal of a dump that a user names, and what is said where that is not clear.
#ifndef KESNCD_CLI_SELECTION_SIGNAL_CHOICE_H_
#define KESNCD_CLI_SELECTION_SIGNAL_CHOICE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "vcd/declarations.h"

namespace orsa::kesncd::cli {

/// The one variable that a text means, as `kesncd find` takes names, or without a bus's range.
/// Throws Failure with NothingMatched where there is none with bits, or where there are several,
/// with their paths.
const DumpVariable& OnlySignal(const std::string& dump, const Declarations& declarations,
                               const std::string& text);

/// The paths of variables, for a message.
std::string PathsOf(const std::vector<std::uint32_t>& variables, const Declarations& declarations);

/// Whether a designer says by a signal's name that it is a clock.
bool IsClockName(std::string name);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_SELECTION_SIGNAL_CHOICE_H_
