// Completion for fish: a line for each command and option.
#include <algorithm>
#include <ostream>

#include "cli/pages/pages.h"

namespace orsa::kesncd::cli {

namespace {

std::string Quoted(const std::string& text) {
  std::string out = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') out += '\\';
    out += c;
  }
  return out + "'";
}

void WriteOption(std::ostream& out, const std::string& start, const OptionRow& option) {
  out << start;
  for (const std::string& flag : option.flags) {
    const bool isLong = flag.rfind("--", 0) == 0;
    out << (isLong ? " -l " : " -s ") << flag.substr(isLong ? 2 : 1);
  }
  if (!option.choices.empty()) {
    out << " -x -a " << Quoted(Join(option.choices, " "));
  } else if (!option.argument.empty()) {
    out << (option.TakesFile() ? " -r -F" : " -x");
  }
  out << " -d " << Quoted(option.help) << "\n";
}

void WriteCommand(std::ostream& out, const std::string& program, const CommandRow& command) {
  const std::string start =
      "complete -c " + program + " -n '__fish_seen_subcommand_from " + command.name + "'";
  const bool takesFiles = std::any_of(command.operands.begin(), command.operands.end(),
                                      [](const OptionRow& row) { return row.TakesFile(); });
  if (takesFiles) out << start << " -F\n";
  for (const OptionRow& option : command.options) WriteOption(out, start, option);
}

}  // namespace

void WriteFishCompletion(std::ostream& out, const OptionTable& table) {
  const std::string start = "complete -c " + table.program.name + " -n __fish_use_subcommand";
  out << "# fish completion for " << table.program.name << "\n\n"
      << "complete -c " << table.program.name << " -f\n";
  for (const OptionRow& option : table.program.options) WriteOption(out, start, option);
  for (const CommandRow& command : table.commands) {
    out << start << " -a " << command.name << " -d " << Quoted(command.summary) << "\n";
  }
  for (const CommandRow& command : table.commands) WriteCommand(out, table.program.name, command);
}

}  // namespace orsa::kesncd::cli
