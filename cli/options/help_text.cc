// Help in two columns that fit a terminal of 80 characters.
#include "cli/options/help_text.h"

#include <algorithm>

namespace orsa::kesncd::cli {

namespace {

// 26 characters for an option and its value, two blanks before the help.
constexpr std::size_t kColumn = 28;  // where the second column starts
constexpr std::size_t kWidth = 80;   // lines are shorter

/// A text broken at blanks, its lines after the first indented to the second column.
std::string Wrapped(const std::string& text) {
  std::string out;
  std::size_t column = kColumn;
  // Word by word: one that is longer than a line is alone on one.
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    if (at > 0 && column + 1 + (end - at) >= kWidth) {
      out += "\n" + std::string(kColumn, ' ');
      column = kColumn;
    } else if (at > 0) {
      out += ' ';
      ++column;
    }
    out.append(text, at, end - at);
    column += end - at;
    at = end + 1;
  }
  return out;
}

/// One row: "  what" up to the second column, or on a line of its own if it is too long.
std::string Line(const std::string& what, const std::string& help) {
  std::string line = "  " + what;
  // At least two blanks between the columns.
  if (line.size() + 2 > kColumn) {
    line += "\n" + std::string(kColumn, ' ');
  } else {
    line.append(kColumn - line.size(), ' ');
  }
  return line + Wrapped(help) + "\n";
}

/// Operands before options, each under a heading; a command without operands has none.
std::string Lines(const Command& command) {
  std::string lines = command.operands().empty() ? "" : "Operands:\n";
  for (const Option& operand : command.operands()) {
    lines += Line(OptionText(operand), HelpWithDefault(operand));
  }
  lines += (lines.empty() ? "" : "\n") + std::string("Options:\n");
  for (const Option& option : command.options()) {
    lines += Line(OptionText(option), HelpWithDefault(option));
  }
  return lines;
}

}  // namespace

/// An operand has no flags.
std::string OptionText(const Option& option) {
  if (option.flags.empty()) return option.argument + (option.repeats ? "..." : "");
  const std::string flags = Join(option.flags, ", ");
  // "--activity[=FILE]": the value may be left out.
  if (option.alsoAlone) return flags + "[=" + option.argument + "]";
  return flags + (option.argument.empty() ? "" : " " + option.argument);
}

/// A required operand needs no word: the usage line shows it.
std::string HelpWithDefault(const Option& option) {
  if (!option.flags.empty() && option.required) return option.help + " (required)";
  if (option.flags.empty() && !option.required && !option.repeats)
    return option.help + " (optional)";
  return option.help + (option.initial.empty() ? "" : " (default: " + option.initial + ")");
}

std::string UsageOf(const Command& command) {
  std::string text = "[OPTION]...";
  for (const Option& option : command.options()) {
    // Its longest flag says most.
    if (option.required) text += " " + option.flags.back() + " " + option.argument;
  }
  for (const Option& operand : command.operands()) {
    text += " " + (operand.required ? operand.argument : "[" + operand.argument + "]") +
            (operand.repeats ? "..." : "");
  }
  return text;
}

std::string HelpOf(const CommandLine& line) {
  const Command& program = line.program;
  std::string text = program.summary() + "\n" + program.text() + "\nUsage: " + program.name() +
                     " COMMAND [OPTION]... [OPERAND]...\n";
  // Only a program that takes a file in place of a command has this line.
  if (!line.commandOfFiles.empty()) {
    text += "       " + program.name() + " FILE      for " + program.name() + " " +
            line.commandOfFiles + " FILE\n";
  }
  text += "\nCommands:\n";
  for (const Command& command : line.commands) text += Line(command.name(), command.summary());
  return text + "\n" + Lines(program);
}

std::string HelpOf(const CommandLine& line, const Command& command) {
  return command.summary() + "\n" + command.text() + "\nUsage: " + line.program.name() + " " +
         command.name() + " " + UsageOf(command) + "\n\n" + Lines(command);
}

}  // namespace orsa::kesncd::cli
