// The command line as CLI11 parses it: options and operands go to it as our data, what it collects
// goes to them, and its errors become our messages.
#include "cli/options/parse.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <numeric>

#include "cli/options/help_text.h"
#include "cli/output/output.h"

namespace orsa::kesncd::cli {

namespace {

[[noreturn]] void RefuseLine(const std::string& text) {
  throw Failure(FailureKind::Unusable, text);
}

/// How many letters must be added, dropped or replaced to make one word of the other.
std::size_t Distance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

/// "; did you mean tree?", where a word is only a slip away from one that is known.
std::string Meant(const std::string& word, const std::vector<std::string>& known) {
  constexpr std::size_t kSlips = 2;
  constexpr std::size_t kLongestWord = 40;  // longer words are no slips
  std::string nearest;
  std::size_t least = std::min(kSlips + 1, word.size() / 2 + 1);
  for (const std::string& candidate : known) {
    const std::size_t distance = word.size() > kLongestWord ? least : Distance(word, candidate);
    if (distance < least) nearest = candidate, least = distance;
  }
  return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

/// Gives what CLI11 collected for an option to it, value by value.
void Give(const Option& option, const std::vector<std::string>& values) {
  if (option.argument.empty()) {
    if (!values.front().empty()) RefuseLine(option.name() + " takes no value");
  } else if (values.size() > 1 && !option.repeats) {
    RefuseLine(option.name() + " is given twice");
  }
  for (const std::string& value : values) {
    try {
      option.take(value);
    } catch (const Failure& failure) {
      RefuseLine(option.name() + ": " + failure.what());
    }
  }
}

void AddTo(CLI::App& app, const Option& option) {
  // CLI11 would read an operand "[a,b]" as two where it may take more than it expects, and names of
  // bits look like that. So it expects more than there can be.
  constexpr int kMany = 1 << 28;
  const std::string names = option.flags.empty() ? option.argument : Join(option.flags, ",");
  CLI::Option* const added =
      app.add_option(names, [&option](const std::vector<std::string>& values) {
        if (option.isHelp) throw CLI::CallForHelp();
        Give(option, values);
        return true;
      });
  added->required(option.required);
  added->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  added->trigger_on_parse(option.isHelp);  // whatever else is wrong with the line
  if (option.argument.empty() || option.alsoAlone) {
    added->expected(0, 0);
  } else if (option.flags.empty() && option.repeats) {
    added->expected(kMany, kMany);
  }
}

/// The words as CLI11 takes them, last first. It would take the next word for the value of
/// "--top=", which a script writes whose variable is empty.
std::vector<std::string> LastFirst(const Command& command, const std::vector<std::string>& words) {
  std::vector<std::string> reversed;
  bool onlyOperands = false;
  for (const std::string& word : words) {
    onlyOperands = onlyOperands || word == "--";
    const Option* const option = onlyOperands || !word.ends_with("=")
                                     ? nullptr
                                     : command.OptionOf(word.substr(0, word.size() - 1));
    if (option == nullptr || option->argument.empty()) {
      reversed.push_back(word);
      continue;
    }
    if (option->isFile) RefuseLine(option->name() + " needs " + option->argument);
    reversed.push_back(option->name());
    reversed.emplace_back();
  }
  std::reverse(reversed.begin(), reversed.end());
  return reversed;
}

/// Refuses the first of the words that CLI11 could not place.
void RefuseLeft(const Command& command, const std::vector<std::string>& left) {
  bool onlyOperands = false;
  for (const std::string& word : left) {
    if (word == "--") {
      onlyOperands = true;
    } else if (onlyOperands || !word.starts_with("-")) {
      RefuseLine(word + ": one operand too many");
    } else {
      const std::string flag =
          word.starts_with("--") ? word.substr(0, word.find('=')) : word.substr(0, 2);
      RefuseLine(flag + " is no option" + Meant(flag, command.Flags()));
    }
  }
}

/// Takes all words of a command after its name; false when help was asked for.
bool Take(const Command& command, const std::vector<std::string>& words) {
  CLI::App app;
  app.set_help_flag();
  for (const Option& option : command.options()) AddTo(app, option);
  for (const Option& operand : command.operands()) AddTo(app, operand);
  try {
    app.parse(LastFirst(command, words));
  } catch (const CLI::CallForHelp&) {
    return false;
  } catch (const CLI::ArgumentMismatch& error) {
    const std::string text = error.what();  // "--name: 1 required ..."
    const Option* const option = command.OptionOf(text.substr(0, text.find(':')));
    RefuseLine(option == nullptr ? text : option->name() + " needs " + option->argument);
  } catch (const CLI::ParseError& error) {
    RefuseLeft(command, app.remaining());
    RefuseLine(error.what());
  }
  return true;
}

std::function<ExitStatus()> Printing(std::string text) {
  return [text = std::move(text)] {
    OutputFile out("-");
    out.Write(text);
    out.Commit();
    return ExitStatus::Done;
  };
}

/// A word that names a file rather than a command: one that is there, or one with an ending.
bool IsFileName(const std::string& word) {
  if (word.starts_with("-")) return word == "-";
  std::error_code ignored;
  return word.find_first_of("./") != std::string::npos || std::filesystem::exists(word, ignored);
}

const Command& CommandOf(const CommandLine& line, const std::string& name) {
  std::vector<std::string> names;
  for (const Command& command : line.commands) {
    if (command.name() == name) return command;
    names.push_back(command.name());
  }
  for (const Command& command : line.commands) {
    if (command.name() == line.commandOfFiles && IsFileName(name)) return command;
  }
  const std::string meant = Meant(name, names);
  if (name.starts_with("-")) RefuseLine(name + " is no option");
  RefuseLine(name + " is no command" + (meant.empty() ? ", and no such file is there" : meant));
}

std::function<ExitStatus()> ParseCommand(const CommandLine& line, const Command& command,
                                         const std::vector<std::string>& words) {
  if (!Take(command, words)) return Printing(HelpOf(line, command));
  command.check();
  return command.run;
}

}  // namespace

std::function<ExitStatus()> ParseWords(const CommandLine& line,
                                       const std::vector<std::string>& words) {
  const std::string& program = line.program.name();
  std::string help = program;
  try {
    if (words.empty()) RefuseLine("a command is required");
    if (words[0] == "--help" || words[0] == "-h") return Printing(HelpOf(line));
    if (words[0] == "--version") return Printing(program + " " KESNCD_VERSION "\n");
    const Command& command = CommandOf(line, words[0]);
    help += " " + command.name();
    const bool isNamed = words[0] == command.name();
    return ParseCommand(line, command, {words.begin() + (isNamed ? 1 : 0), words.end()});
  } catch (const Failure& failure) {
    throw Failure(FailureKind::Unusable,
                  failure.what() + ("\n" + help) + " --help tells how it is used");
  }
}

}  // namespace orsa::kesncd::cli
