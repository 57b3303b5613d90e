// Completion for fish: a line for each command and option.
#include <algorithm>
#include <ostream>

#include "cli/pages/pages.h"

namespace orsa::kesncd::cli {

namespace {

std::string FishText(const std::string& text) {
  std::string out = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') out += '\\';
    out += c;
  }
  return out + "'";
}

void WriteOption(std::ostream& out, const std::string& start, const Option& option) {
  out << start;
  for (const std::string& flag : option.flags) {
    const bool isLong = flag.rfind("--", 0) == 0;
    out << (isLong ? " -l " : " -s ") << flag.substr(isLong ? 2 : 1);
  }
  if (!option.choices.empty()) {
    out << " -x -a " << FishText(Join(option.choices, " "));
  } else if (!option.argument.empty()) {
    out << (option.alsoAlone ? "" : option.isFile ? " -r -F" : " -x");
  }
  out << " -d " << FishText(option.help) << "\n";
}

void WriteCommand(std::ostream& out, const std::string& program, const Command& command) {
  const std::string start =
      "complete -c " + program + " -n '__fish_seen_subcommand_from " + command.name() + "'";
  const bool takesFiles = std::any_of(command.operands().begin(), command.operands().end(),
                                      [](const Option& row) { return row.isFile; });
  if (takesFiles) out << start << " -F\n";
  for (const Option& option : command.options()) WriteOption(out, start, option);
}

}  // namespace

void WriteFishCompletion(std::ostream& out, const CommandLine& line) {
  const std::string start = "complete -c " + line.program.name() + " -n __fish_use_subcommand";
  out << "# fish completion for " << line.program.name() << "\n\n"
      << "complete -c " << line.program.name() << " -f\n";
  for (const Option& option : line.program.options()) WriteOption(out, start, option);
  for (const Command& command : line.commands) {
    out << start << " -a " << command.name() << " -d " << FishText(command.summary()) << "\n";
  }
  for (const Command& command : line.commands) WriteCommand(out, line.program.name(), command);
}

}  // namespace orsa::kesncd::cli
