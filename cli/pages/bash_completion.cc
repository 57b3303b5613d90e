// Completion for bash: one function that knows the command and the word before the cursor.
//
// What is written, shortened:
//
//   _kesncd() {
//     ...
//     case "$command $prev" in
//       'flat --format') _kesncd_words 'table csv json'; return ;;
//       'flat -o' | 'flat --output') _kesncd_files; return ;;
//     esac
//     case $command in
//       'flat') options='--top --signal ...' ;;
//     esac
//     ...
//   }
#include <ostream>

#include "cli/pages/pages.h"

namespace orsa::kesncd::cli {

namespace {

/// A case of the word before the cursor for an option that takes a value. A flag without a value
/// says nothing of the word after it.
void WriteValueCase(std::ostream& out, const Command& command, const Option& option) {
  if (option.argument.empty()) return;
  std::vector<std::string> patterns;
  for (const std::string& flag : option.flags) {
    patterns.push_back("'" + command.name() + " " + flag + "'");
  }
  out << "    " << Join(patterns, " | ") << ") ";
  // A few words, or a file, or a value that nobody can guess: then nothing is offered.
  if (!option.choices.empty()) {
    out << "_kesncd_words '" << Join(option.choices, " ") << "'; ";
  } else if (option.isFile) {
    out << "_kesncd_files; ";
  }
  out << "return ;;\n";
}

/// What completes a word that is no option's value: an option, else an operand.
void WriteCommandCase(std::ostream& out, const std::string& word, const Command& command) {
  out << "    '" << word << "')\n"
      << "      options='" << Join(command.Flags(), " ") << "' ;;\n";
}

}  // namespace

/// Bash calls the function with the words of the line; COMP_CWORD is the one with the cursor.
void WriteBashCompletion(std::ostream& out, const CommandLine& line) {
  std::vector<std::string> names;
  for (const Command& command : line.commands) names.push_back(command.name());
  out << "# bash completion for " << line.program.name() << "\n\n"
      << "_kesncd_words() { mapfile -t COMPREPLY < <(compgen -W \"$1\" -- \"$cur\"); }\n"
      << "_kesncd_files() { compopt -o filenames 2>/dev/null; "
         "mapfile -t COMPREPLY < <(compgen -f -- \"$cur\"); }\n\n"
      << "_kesncd() {\n"
      << "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}\n"
      << "  local command= options= word\n"
      << "  COMPREPLY=()\n"
      << "  # \"--option=value\" comes as three words\n"
      // Since "=" is one of bash's word breaks.
      << "  if [[ $cur == = ]]; then\n"
      << "    cur=\n"
      << "  elif [[ $prev == = ]]; then\n"
      << "    prev=${COMP_WORDS[COMP_CWORD - 2]}\n"
      << "  fi\n"
      // The first word that is a command's name; options before it have none.
      << "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD - 1}\"; do\n"
      << "    case $word in " << Join(names, " | ") << ") command=$word; break ;; esac\n"
      << "  done\n"
      << "  case \"$command $prev\" in\n";
  for (const Command& command : line.commands) {
    for (const Option& option : command.options()) WriteValueCase(out, command, option);
  }
  out << "  esac\n"
      << "  case $command in\n";
  // Before a command only the program's own options fit.
  WriteCommandCase(out, "", line.program);
  for (const Command& command : line.commands) WriteCommandCase(out, command.name(), command);
  out << "  esac\n"
      << "  if [[ $cur == -* ]]; then\n"
      << "    _kesncd_words \"$options\"\n"
      // No command yet: one of them, or a file, which means `look`.
      << "  elif [[ -z $command ]]; then\n"
      << "    _kesncd_words '" << Join(names, " ") << "'\n"
      << "    [[ ${#COMPREPLY[@]} -gt 0 ]] || _kesncd_files\n"
      << "  else\n"
      << "    _kesncd_files\n"
      << "  fi\n"
      << "}\n\n"
      << "complete -F _kesncd " << line.program.name() << "\n";
}

}  // namespace orsa::kesncd::cli
