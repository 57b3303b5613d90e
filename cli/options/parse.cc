// The parser of the command line.
#include "cli/options/parse.h"

#include <algorithm>
#include <iostream>
#include <numeric>
#include <set>

#include "cli/options/help_text.h"

namespace orsa::kesncd::cli {

namespace {

[[noreturn]] void Refuse(const std::string& text) {
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
  constexpr std::size_t kLongest = 40;  // longer words are no slips
  std::string nearest;
  std::size_t least = std::min(kSlips + 1, word.size() / 2 + 1);
  for (const std::string& candidate : known) {
    const std::size_t distance = word.size() > kLongest ? least : Distance(word, candidate);
    if (distance < least) nearest = candidate, least = distance;
  }
  return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

/// The words of a command after its name.
class Words {
 public:
  Words(const Command& command, const std::vector<std::string>& words, std::size_t at)
      : command_(command), words_(words), at_(at) {}

  /// Takes them all; false when help was asked for.
  bool Take() {
    bool onlyOperands = false;
    while (at_ < words_.size()) {
      const std::string& word = words_[at_++];
      if (onlyOperands || word == "-" || !word.starts_with("-")) {
        TakeOperand(word);
      } else if (word == "--") {
        onlyOperands = true;
      } else if (word == "--help" || word == "-h") {
        return false;
      } else if (word.starts_with("--")) {
        TakeLong(word);
      } else {
        TakeShort(word);
      }
    }
    return true;
  }

  void RequireAll() const {
    for (const auto* list : {&command_.operands(), &command_.options()}) {
      for (const Option& option : *list) {
        if (option.required && !given_.contains(&option)) Refuse(option.name() + " is required");
      }
    }
  }

 private:
  const Option& Find(const std::string& flag) const {
    const Option* const option = command_.OptionOf(flag);
    if (option == nullptr) Refuse(flag + " is no option" + Meant(flag, command_.Flags()));
    return *option;
  }

  void Give(const Option& option, const std::string& value) {
    if (!given_.insert(&option).second && !option.repeats && !option.argument.empty()) {
      Refuse(option.name() + " is given twice");
    }
    try {
      option.take(value);
    } catch (const Failure& failure) {
      Refuse(option.name() + ": " + failure.what());
    }
  }

  const std::string& NextWord(const Option& option) {
    if (at_ == words_.size()) Refuse(option.name() + " needs " + option.argument);
    return words_[at_++];
  }

  void TakeLong(const std::string& word) {
    const std::size_t sign = word.find('=');
    const Option& option = Find(word.substr(0, sign));
    if (sign != std::string::npos) {
      if (option.argument.empty()) Refuse(option.name() + " takes no value");
      const std::string value = word.substr(sign + 1);
      if (value.empty() && option.isFile) Refuse(option.name() + " needs " + option.argument);
      Give(option, value);
    } else {
      Give(option, option.argument.empty() || option.alsoAlone ? "" : NextWord(option));
    }
  }

  /// "-qoFILE": flags of a letter, of which the last may have a value.
  void TakeShort(const std::string& word) {
    for (std::size_t i = 1; i < word.size(); ++i) {
      const Option& option = Find({'-', word[i]});
      if (option.argument.empty()) {
        Give(option, "");
        continue;
      }
      Give(option, i + 1 < word.size() ? word.substr(i + 1) : NextWord(option));
      return;
    }
  }

  void TakeOperand(const std::string& word) {
    const auto& operands = command_.operands();
    if (operand_ == operands.size()) Refuse(word + ": one operand too many");
    const Option& operand = operands[operand_];
    if (!operand.repeats) ++operand_;
    Give(operand, word);
  }

  const Command& command_;
  const std::vector<std::string>& words_;
  std::size_t at_;
  std::size_t operand_ = 0;
  std::set<const Option*> given_;
};

std::function<ExitStatus()> Printing(std::string text) {
  return [text = std::move(text)] {
    std::cout << text;
    return ExitStatus::Done;
  };
}

const Command& CommandOf(const CommandLine& line, const std::string& name) {
  std::vector<std::string> names;
  for (const Command& command : line.commands) {
    if (command.name() == name) return command;
    names.push_back(command.name());
  }
  Refuse(name + " is no " + (name.starts_with("-") ? "option" : "command") + Meant(name, names));
}

std::function<ExitStatus()> ParseCommand(const CommandLine& line, const Command& command,
                                         const std::vector<std::string>& words) {
  Words rest(command, words, 1);
  if (!rest.Take()) return Printing(HelpOf(line, command));
  rest.RequireAll();
  command.check();
  return command.run;
}

}  // namespace

std::function<ExitStatus()> ParseWords(const CommandLine& line,
                                       const std::vector<std::string>& words) {
  const std::string& program = line.program.name();
  std::string help = program;
  try {
    if (words.empty()) Refuse("a command is required");
    if (words[0] == "--help" || words[0] == "-h") return Printing(HelpOf(line));
    if (words[0] == "--version") return Printing(program + " " KESNCD_VERSION "\n");
    const Command& command = CommandOf(line, words[0]);
    help += " " + command.name();
    return ParseCommand(line, command, words);
  } catch (const Failure& failure) {
    throw Failure(FailureKind::Unusable,
                  failure.what() + ("\n" + help) + " --help tells how it is used");
  }
}

}  // namespace orsa::kesncd::cli
