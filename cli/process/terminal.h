// What a stream of the program's leads to.
#ifndef KESNCD_CLI_PROCESS_TERMINAL_H_
#define KESNCD_CLI_PROCESS_TERMINAL_H_

#include <string>

namespace orsa::kesncd::cli {

bool IsTerminal(int file);

/// The text in bold where the stream leads to a terminal that shows it, and nobody asked by
/// NO_COLOR or TERM=dumb to leave texts as they are.
std::string Bold(int file, const std::string& text);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_TERMINAL_H_
