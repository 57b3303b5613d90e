// What a stream of the program's leads to.
#ifndef KESNCD_CLI_PROCESS_TERMINAL_H_
#define KESNCD_CLI_PROCESS_TERMINAL_H_

#include <string>

namespace orsa::kesncd::cli {

/// Whether a descriptor leads to a terminal. A person may be looking there, so progress is shown,
/// texts are made harmless, and a binary database is refused.
bool IsTerminal(int file);

/// The text between the terminal's codes for bold where the stream leads to a terminal that has
/// them; else, and where NO_COLOR (unless it is empty) or TERM=dumb asks for that, as it is.
std::string Bold(int file, const std::string& text);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_TERMINAL_H_
