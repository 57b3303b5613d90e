// Messages go out line by line, so that those of two processes do not mix within a line.
#include "cli/process/messages.h"

#include <unistd.h>

#include <iostream>
#include <sstream>

#include "cli/process/terminal.h"
#include "text/printable.h"

namespace orsa::kesncd::cli {

namespace {

bool isQuiet = false;  // of this process: remarks come from many places

}  // namespace

void Say(const std::string& subject, const std::string& text) {
  const std::string start =
      Bold(STDERR_FILENO, "kesncd:") + " " + (subject.empty() ? "" : Printable(subject) + ": ");
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
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
