// Completion for zsh, by its _arguments.
#include <ostream>

#include "cli/pages/pages.h"

namespace orsa::kesncd::cli {

namespace {

/// A text inside single quotes, where _arguments gives brackets and colons a meaning.
std::string ZshText(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '\'') {
      out += "'\\''";
    } else {
      if (c == '[' || c == ']' || c == ':' || c == '\\') out += '\\';
      out += c;
    }
  }
  return out;
}

/// ":message:action" of a value.
std::string Value(const Option& row) {
  if (row.argument.empty()) return "";
  const std::string action = !row.choices.empty() ? "(" + Join(row.choices, " ") + ")"
                             : row.isFile         ? "_files"
                                                  : " ";
  return (row.alsoAlone ? "::" : ":") + ZshText(row.argument) + ":" + action;
}

/// "'(-o --output)'{-o+,--output=}'[help]:FILE:_files'": each flag hides the others unless it may
/// come again, and a value may stand after it or be the next word.
std::string Entry(const Option& row) {
  if (row.flags.empty()) {
    return (row.repeats ? "'*" : row.required ? "'" : "':") + Value(row) + "'";
  }
  std::vector<std::string> forms;
  for (const std::string& flag : row.flags) {
    forms.push_back(flag + (row.argument.empty() ? ""
                            : row.alsoAlone      ? "=-"
                            : flag[1] == '-'     ? "="
                                                 : "+"));
  }
  const std::string once = "'" + (row.repeats ? "*" : "(" + Join(row.flags, " ") + ")");
  const std::string names = forms.size() == 1 ? forms[0] : "'{" + Join(forms, ",") + "}'";
  return once + names + "[" + ZshText(row.help) + "]" + Value(row) + "'";
}

void WriteEntries(std::ostream& out, const Command& command, const std::string& indent) {
  for (const Option& option : command.options()) out << " \\\n" << indent << Entry(option);
  for (const Option& operand : command.operands()) out << " \\\n" << indent << Entry(operand);
}

}  // namespace

void WriteZshCompletion(std::ostream& out, const CommandLine& line) {
  out << "#compdef " << line.program.name() << "\n\n"
      << "_kesncd() {\n"
      << "  local curcontext=$curcontext state line\n"
      << "  local -A opt_args\n"
      << "  local -a commands=(\n";
  for (const Command& command : line.commands) {
    out << "    '" << command.name() << ":" << ZshText(command.summary()) << "'\n";
  }
  out << "  )\n"
      << "  _arguments -C";
  WriteEntries(out, line.program, "    ");
  out << " \\\n    '1:command:->command' \\\n    '*::argument:->argument'\n"
      << "  case $state in\n"
      << "  command) _describe command commands || _files ;;\n"
      << "  argument)\n"
      << "    case $words[1] in\n";
  for (const Command& command : line.commands) {
    out << "    " << command.name() << ")\n      _arguments";
    WriteEntries(out, command, "        ");
    out << " ;;\n";
  }
  out << "    esac ;;\n"
      << "  esac\n"
      << "}\n\n"
      << "_kesncd \"$@\"\n";
}

}  // namespace orsa::kesncd::cli
