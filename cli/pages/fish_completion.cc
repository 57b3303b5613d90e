// Completion for fish: a line for each command and option.
//
// Lines such as
//
//   complete -c kesncd -n __fish_use_subcommand -a flat -d 'Toggle frequencies of ...'
//   complete -c kesncd -n '__fish_seen_subcommand_from flat' -l top -x -d 'module whose ...'
#include <algorithm>
#include <ostream>

#include "cli/pages/pages.h"

namespace orsa::kesncd::cli {

namespace {

/// In single quotes, where only a quote and a backslash have to be escaped.
std::string FishText(const std::string& text) {
  std::string out = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') out += '\\';
    out += c;
  }
  return out + "'";
}

/// `start` says for which command the line counts.
void WriteOption(std::ostream& out, const std::string& start, const Option& option) {
  out << start;
  for (const std::string& flag : option.flags) {
    const bool isLong = flag.rfind("--", 0) == 0;
    // -l for a long flag, -s for a single letter.
    out << (isLong ? " -l " : " -s ") << flag.substr(isLong ? 2 : 1);
  }
  // -x: a value is needed and no file; -a: these are the ones to offer; -F: files too.
  if (!option.choices.empty()) {
    out << " -x -a " << FishText(Join(option.choices, " "));
  } else if (!option.argument.empty()) {
    out << (option.alsoAlone ? "" : option.isFile ? " -r -F" : " -x");
  }
  out << " -d " << FishText(option.help) << "\n";
}

/// The lines of one command.
void WriteCommand(std::ostream& out, const std::string& program, const Command& command) {
  const std::string start =
      "complete -c " + program + " -n '__fish_seen_subcommand_from " + command.name() + "'";
  // Fish offers files only where it is told to, because of the -f below.
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
