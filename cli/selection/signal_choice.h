// The signal of a dump that a user names, and what is said where that is not clear.
//
// Options that need exactly one signal use this, such as the one whose values a profile is divided
// by. They refuse what is ambiguous, since figures by the wrong signal look as good as by the right
// one.
#ifndef KESNCD_CLI_SELECTION_SIGNAL_CHOICE_H_
#define KESNCD_CLI_SELECTION_SIGNAL_CHOICE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "vcd/declarations.h"

namespace orsa::kesncd::cli {

/// The one variable that a text means, as `kesncd find` takes names, or without a bus's range.
/// Throws Failure with NothingMatched where there is none with bits, or where there are several,
/// with their paths, and for one bit of a bus, as figures are those of the whole. Reals, strings,
/// events and variables whose width is no positive number have no bits. The reference is into
/// `declarations`.
const DumpVariable& OnlySignal(const std::string& dump, const Declarations& declarations,
                               const std::string& text);

/// The paths of variables for a message, as ShortList shows them.
std::string PathsOf(const std::vector<std::uint32_t>& variables, const Declarations& declarations);

/// Whether a designer says by a signal's name that it is a clock. "clk" or "clock" anywhere in the
/// name, in any letter case: also "sys_clk_i" and "CLOCK_50". Used for proposals only.
bool IsClockName(std::string name);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_SELECTION_SIGNAL_CHOICE_H_
