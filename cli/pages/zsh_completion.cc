// Completion for zsh, by its _arguments.
//
// What is written, shortened:
//
//   _arguments -C '(-h --help)'{-h,--help}'[print this help]' '1:command:->command' ...
//   case $state in
//   argument)
//     case $words[1] in
//     flat)
//       _arguments '(--top)--top=[module whose ...]:NAME: ' ... ;;
#include <ostream>

#include "cli/pages/pages.h"

namespace orsa::kesncd::cli {

namespace {

/// A text inside single quotes, where _arguments gives brackets and colons a meaning.
std::string ZshText(const std::string& text) {
  std::string out;
  for (const char c : text) {
    // Ends the quotes, adds a quote, begins them again.
    if (c == '\'') {
      out += "'\\''";
    } else {
      if (c == '[' || c == ']' || c == ':' || c == '\\') out += '\\';
      out += c;
    }
  }
  return out;
}

/// ":message:action" of a value. The action " " offers nothing but lets any text in; "_files"
/// offers files; "::" is a value that may be left out.
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
  // "'*" takes all operands that are left, "':" an optional one.
  if (row.flags.empty()) {
    return (row.repeats ? "'*" : row.required ? "'" : "':") + Value(row) + "'";
  }
  std::vector<std::string> forms;
  for (const std::string& flag : row.flags) {
    // "=-" and "=": a value after "=" only, or there or as the next word. "+": in the same word as
    // a single letter, or the next.
    forms.push_back(flag + (row.argument.empty() ? ""
                            : row.alsoAlone      ? "=-"
                            : flag[1] == '-'     ? "="
                                                 : "+"));
  }
  const std::string once = "'" + (row.repeats ? "*" : "(" + Join(row.flags, " ") + ")");
  const std::string names = forms.size() == 1 ? forms[0] : "'{" + Join(forms, ",") + "}'";
  return once + names + "[" + ZshText(row.help) + "]" + Value(row) + "'";
}

/// Each on a line of its own, with the backslash that continues the one before.
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
  // What _describe lists: "flat:Toggle frequencies of ...".
  for (const Command& command : line.commands) {
    out << "    '" << command.name() << ":" << ZshText(command.summary()) << "'\n";
  }
  out << "  )\n"
      << "  _arguments -C";
  WriteEntries(out, line.program, "    ");
  // -C changes the context with the state; the words from the command on are then the second
  // _arguments' own.
  out << " \\\n    '1:command:->command' \\\n    '*::argument:->argument'\n"
      << "  case $state in\n"
      // A file in place of a command is `look`.
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
