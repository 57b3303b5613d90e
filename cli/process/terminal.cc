// Asks the system and the environment whether text may be shown in bold.
#include "cli/process/terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace orsa::kesncd::cli {

namespace {

/// A variable of the environment; one that is not set reads as empty.
std::string_view Setting(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

bool IsTerminal(int file) {
  return isatty(file) == 1;
}

std::string Bold(int file, const std::string& text) {
  // Without TERM it is not known which codes the terminal takes.
  const bool isPlain = !IsTerminal(file) || !Setting("NO_COLOR").empty() ||
                       Setting("TERM").empty() || Setting("TERM") == "dumb";
  // ECMA-48: 1 is bold, 0 ends it.
  return isPlain ? text : "\033[1m" + text + "\033[0m";
}

}  // namespace orsa::kesncd::cli
