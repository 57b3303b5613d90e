// Messages go out line by line, so that those of two processes do not mix within a line.
#include "cli/process/messages.h"

#include <unistd.h>

#include <iostream>
#include <sstream>

#include "cli/process/terminal.h"
#include "text/printable.h"

namespace orsa::kesncd::cli {

namespace {

// Of the process, as remarks come from many places. Set while the command line is parsed, before
// any thread is started.
bool isQuiet = false;

}  // namespace

void Say(const std::string& subject, const std::string& text) {
  // "kesncd:" in bold on a terminal, so that messages stand out between rows. Names come from dumps
  // and command lines and may hold control characters, which Printable replaces.
  const std::string start =
      Bold(STDERR_FILENO, "kesncd:") + " " + (subject.empty() ? "" : Printable(subject) + ": ");
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    // One insertion a line: standard error is not buffered, so a line goes out in one piece.
    std::cerr << start + Printable(line) + "\n";
  }
}

void Remark(const std::string& subject, const std::string& text) {
  if (!isQuiet) Say(subject, text);
}

void SilenceRemarks() {
  isQuiet = true;
}

}  // namespace orsa::kesncd::cli
