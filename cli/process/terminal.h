// What a stream of the program's leads to.
#ifndef KESNCD_CLI_PROCESS_TERMINAL_H_
#define KESNCD_CLI_PROCESS_TERMINAL_H_

#include <string>

namespace orsa::kesncd::cli {

/// Whether a descriptor leads to a terminal. A person may be looking there, so progress is shown,
/// texts are made harmless, and a binary database is refused.
bool IsTerminal(int file);

/// The text in bold where the stream leads to a terminal that shows it, and nobody asked by
/// NO_COLOR or TERM=dumb to leave texts as they are. The text as it is, or between the terminal's
/// codes for bold. NO_COLOR counts with any value but an empty one.
std::string Bold(int file, const std::string& text);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_TERMINAL_H_
