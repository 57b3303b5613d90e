// The command line as CLI11 parses it: options and operands go to it as our data, what it collects
// goes to them, and its errors become our messages.
//
// CLI11 is used for cutting words into options and values, and for nothing else: no help, no
// checks, no conversions of its own. What a user sees thus comes from option_list alone. Where
// CLI11 would take a word in a way that surprises, the words are changed before it sees them
// (LastFirst).
#include "cli/options/parse.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <numeric>

#include "cli/options/help_text.h"
#include "cli/output/output.h"

namespace orsa::kesncd::cli {

namespace {

/// Wrong use, in words: every message of this file ends here.
[[noreturn]] void RefuseLine(const std::string& text) {
  throw Failure(FailureKind::Unusable, text);
}

/// How many letters must be added, dropped or replaced to make one word of the other. The
/// Levenshtein distance, row by row: row[j] is the distance of what was seen of `from` to the first
/// j letters of `to`.
std::size_t Distance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    // What stood diagonally above, before the row is overwritten.
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

/// "; did you mean tree?", where a word is only a slip away from one that is known. Empty where
/// nothing is near. `known` are the commands or the flags of one.
std::string Meant(const std::string& word, const std::vector<std::string>& known) {
  // Two slips: a swapped pair of letters counts as two.
  constexpr std::size_t kSlips = 2;
  constexpr std::size_t kLongestWord = 40;  // longer words are no slips
  std::string nearest;
  // Two slips from four letters on, one in two or three letters, none in a single one.
  std::size_t least = std::min(kSlips + 1, word.size() / 2 + 1);
  // The first of equally near ones.
  for (const std::string& candidate : known) {
    const std::size_t distance = word.size() > kLongestWord ? least : Distance(word, candidate);
    if (distance < least) nearest = candidate, least = distance;
  }
  return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

/// Gives what CLI11 collected for an option to it, value by value. `values` is never empty: an
/// option that stands alone comes with one empty text.
void Give(const Option& option, const std::vector<std::string>& values) {
  // Such as "--quiet=no"; taking it for "--quiet" would be the opposite.
  if (option.argument.empty()) {
    if (!values.front().empty()) RefuseLine(option.name() + " takes no value");
  } else if (values.size() > 1 && !option.repeats) {
    // Taking one of the two in silence would hide a script's mistake.
    RefuseLine(option.name() + " is given twice");
  }
  for (const std::string& value : values) {
    // A value that is refused gets its option's name.
    try {
      option.take(value);
    } catch (const Failure& failure) {
      RefuseLine(option.name() + ": " + failure.what());
    }
  }
}

/// Tells CLI11 of an option or operand. `option` must live until the line is parsed, since the
/// closure refers to it.
void AddTo(CLI::App& app, const Option& option) {
  // CLI11 would read an operand "[a,b]" as two where it may take more than it expects, and names of
  // bits look like that. So it expects more than there can be.
  constexpr int kMany = 1 << 28;
  // CLI11 tells operands by names without hyphens.
  const std::string names = option.flags.empty() ? option.argument : Join(option.flags, ",");
  CLI::Option* const added =
      app.add_option(names, [&option](const std::vector<std::string>& values) {
        // Ends the parsing at once; see Take.
        if (option.isHelp) throw CLI::CallForHelp();
        Give(option, values);
        return true;
      });
  // Missing required ones are CLI11's to notice; its message passes on as it is.
  added->required(option.required);
  // Values come together, so that Give can see whether there are several.
  added->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  added->trigger_on_parse(option.isHelp);  // whatever else is wrong with the line
  // No value: 0 expected. An optional one stands after "=" only, which CLI11 takes all the same.
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
  // After "--" every word is an operand, also "--top=".
  bool onlyOperands = false;
  for (const std::string& word : words) {
    onlyOperands = onlyOperands || word == "--";
    // Only "--option=" needs help: "--option=value" and "--option value" are taken as they are.
    const Option* const option = onlyOperands || !word.ends_with("=")
                                     ? nullptr
                                     : command.OptionOf(word.substr(0, word.size() - 1));
    // Not an option that takes a value: CLI11, or Give, says what is wrong with it.
    if (option == nullptr || option->argument.empty()) {
      reversed.push_back(word);
      continue;
    }
    // No file has an empty name; the message says what is missing.
    if (option->isFile) RefuseLine(option->name() + " needs " + option->argument);
    // The option's name, then an empty word for its value.
    reversed.push_back(option->name());
    reversed.emplace_back();
  }
  std::reverse(reversed.begin(), reversed.end());
  return reversed;
}

/// Refuses the first of the words that CLI11 could not place. CLI11 collects what it does not know
/// and fails at the end; this says it in the program's words. Returns where it finds nothing to
/// say, so that CLI11's own message is used.
void RefuseLeft(const Command& command, const std::vector<std::string>& left) {
  bool onlyOperands = false;
  for (const std::string& word : left) {
    if (word == "--") {
      onlyOperands = true;
    } else if (onlyOperands || !word.starts_with("-")) {
      RefuseLine(word + ": one operand too many");
    } else {
      const std::string flag =
          // "--limit=5" names "--limit", "-xyz" begins with "-x".
          word.starts_with("--") ? word.substr(0, word.find('=')) : word.substr(0, 2);
      RefuseLine(flag + " is no option" + Meant(flag, command.Flags()));
    }
  }
}

/// Takes all words of a command after its name; false when help was asked for. A parser of its own
/// for each command, so that options of others do not get in the way.
bool Take(const Command& command, const std::vector<std::string>& words) {
  CLI::App app;
  // CLI11 adds --help by itself unless told not to.
  app.set_help_flag();
  for (const Option& option : command.options()) AddTo(app, option);
  // Operands after options, in the order in which they are to be filled.
  for (const Option& operand : command.operands()) AddTo(app, operand);
  try {
    app.parse(LastFirst(command, words));
  } catch (const CLI::CallForHelp&) {
    // Help goes before every other mistake of the line.
    return false;
  } catch (const CLI::ArgumentMismatch& error) {
    // CLI11's text begins with the option's name.
    const std::string text = error.what();  // "--name: 1 required ..."
    const Option* const option = command.OptionOf(text.substr(0, text.find(':')));
    RefuseLine(option == nullptr ? text : option->name() + " needs " + option->argument);
  } catch (const CLI::ParseError& error) {
    // What could not be placed is a better explanation than what is then missing.
    RefuseLeft(command, app.remaining());
    RefuseLine(error.what());
  }
  return true;
}

/// Help and version are results: they go to standard output, whole or with status 3.
std::function<ExitStatus()> Printing(std::string text) {
  return [text = std::move(text)] {
    OutputFile out("-");
    out.Write(text);
    out.Commit();
    return ExitStatus::Done;
  };
}

/// A word that names a file rather than a command: "sim.vcd", "dumps/sim", "-"; "sim" only where a
/// file of that name is there.
bool IsFileName(const std::string& word) {
  if (word.starts_with("-")) return word == "-";
  std::error_code ignored;
  return word.find_first_of("./") != std::string::npos || std::filesystem::exists(word, ignored);
}

/// The command that the first word names, or `look` for a file.
const Command& CommandOf(const CommandLine& line, const std::string& name) {
  std::vector<std::string> names;
  for (const Command& command : line.commands) {
    if (command.name() == name) return command;
    names.push_back(command.name());
  }
  // A file that is called like a command can be given as ./flat.
  for (const Command& command : line.commands) {
    if (command.name() == line.commandOfFiles && IsFileName(name)) return command;
  }
  if (name.starts_with("-")) RefuseLine(name + " is no option");
  // A slip of a command's name is likelier than a file that is missing.
  const std::string meant = Meant(name, names);
  RefuseLine(name + " is no command" + (meant.empty() ? ", and no such file is there" : meant));
}

/// Takes the words, checks them together, and returns the work; nothing was opened by then.
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
  // Which help the message points to: the program's until a command is known.
  std::string help = program;
  // Not an error of a word, but the most common first try.
  try {
    if (words.empty()) RefuseLine("a command is required");
    if (words[0] == "--help" || words[0] == "-h") return Printing(HelpOf(line));
    if (words[0] == "--version") return Printing(program + " " KESNCD_VERSION "\n");
    const Command& command = CommandOf(line, words[0]);
    help += " " + command.name();
    // "kesncd sim.vcd": the file itself is the first of the command's words.
    const bool isNamed = words[0] == command.name();
    return ParseCommand(line, command, {words.begin() + (isNamed ? 1 : 0), words.end()});
  } catch (const Failure& failure) {
    // Two lines: the fault, and where to read more.
    throw Failure(FailureKind::Unusable,
                  failure.what() + ("\n" + help) + " --help tells how it is used");
  }
}

}  // namespace orsa::kesncd::cli
