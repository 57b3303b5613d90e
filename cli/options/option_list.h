// What the program can be told: its commands with their options and operands, as data.
//
// A command adds itself with what it takes; whoever needs that reads it from here. Parsing, help,
// the man page and the shells' completions thus cannot tell a user different things.
//
// An example with everything that a command's author needs:
//
//   Command& command = line.Add("find", "Frequencies of signals\n\nExamples:\n...");
//   command.AddFileOperand("DUMP", options->dump, "value change dump").Required();
//   command.AddCount("--limit", "N", {0}, options->limit, "so many rows at most").Initially("all");
//   command.check = [options] { ... };
//   command.run = [options] { return RunFind(*options); };
//
// Targets are kept by reference: they must outlive the command line, which the closures of `check`
// and `run` see to by sharing the structure that the targets are in.
#ifndef KESNCD_CLI_OPTIONS_OPTION_LIST_H_
#define KESNCD_CLI_OPTIONS_OPTION_LIST_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/process/exit_status.h"

namespace orsa::kesncd::cli {

/// The parts with a separator between them.
std::string Join(const std::vector<std::string>& parts, const std::string& separator);

/// An option, or an operand when it has no flags. A row of help and of every completion.
struct Option {
  std::vector<std::string> flags;  // "-o", "--output"
  std::string argument;            // what its value is called; empty when it takes none
  // The values it may have, where they are few: these are also what shells complete.
  std::vector<std::string> choices;
  std::string help;
  std::string initial;     // what holds where it is not given; empty where the help says it
  bool isFile = false;     // its value is the path of a file
  bool required = false;   // the command cannot do without
  bool repeats = false;    // it may come again, for one more value
  bool alsoAlone = false;  // its value may be left out, and stands after "=" only
  bool isHelp = false;     // asks for the command's help and nothing else
  /// What the option does: takes a value, an empty one where none was given. Called once for each,
  /// in the order of the words, where `repeats`. Throws Failure with a reason, such as "-1 is no
  /// whole number from 0", that the parser puts the option's name before.
  std::function<void(const std::string&)> take;

  /// What messages call it: its longest flag, or the operand's name.
  const std::string& name() const { return flags.empty() ? argument : flags.back(); }
  /// These two follow an Add...: command.AddText(...).Required().
  Option& Required() {
    required = true;
    return *this;
  }
  Option& Initially(std::string text) {
    initial = std::move(text);
    return *this;
  }
};

/// The values that a number may have; a bound that is the type's own is not worth naming. Both ends
/// belong to it. RangeText in option_list.cc leaves out a `most` from 2^31-1 on.
struct CountRange {
  std::int64_t least = 0;
  std::int64_t most = std::numeric_limits<std::int64_t>::max();
};

/// A command, or the program itself. Flags are written as one text: "-o,--output". Calling order:
/// construct, the Add functions, set `run` and perhaps `check`; then it is only read. An Add
/// returns the option for what is rarely set (Required, Initially) and for replacing `take`.
class Command {
 public:
  /// The first line of `help` is the summary, the rest stands below it.
  Command(std::string name, const std::string& help);

  /// An option that the parser answers itself: --help. Its `take` does nothing.
  Option& AddAnswered(const std::string& flags, const std::string& help);
  /// Takes no value; when it is given, `target` is set. There is no "--no-..." form.
  Option& AddFlag(const std::string& flags, bool& target, const std::string& help);
  /// Any text, an empty one too: "--top=" is what a script writes whose variable is empty.
  Option& AddText(const std::string& flags, const std::string& value, std::string& target,
                  const std::string& help);
  /// An option that may come again, each time for one more text.
  Option& AddTexts(const std::string& flags, const std::string& value,
                   std::vector<std::string>& target, const std::string& help);
  /// A path, which must not be empty.
  Option& AddFile(const std::string& flags, const std::string& value, std::string& target,
                  const std::string& help);
  /// "--name" alone sets an empty path, "--name=FILE" that path. Nothing in `target` means that the
  /// option was not given.
  Option& AddOptionalFile(const std::string& flags, const std::string& value,
                          std::optional<std::string>& target, const std::string& help);
  /// "1.5us", "10 ps" or a bare 0; kept in femtoseconds. Nothing in the target where it was not
  /// given.
  Option& AddTime(const std::string& flags, std::optional<std::uint64_t>& femtoseconds,
                  const std::string& help);
  /// A finite number in `unit`, not below `least`. What `target` holds is said to be the default.
  Option& AddNumber(const std::string& flags, const std::string& unit, double least, double& target,
                    const std::string& help);
  /// A whole number within the range. Range and target agree: a `most` that the target's type
  /// cannot hold is lowered to what it can.
  template <class Whole>
  Option& AddCount(const std::string& flags, const std::string& value, CountRange range,
                   Whole& target, const std::string& help) {
    if (!std::in_range<Whole>(range.most)) {
      range.most = static_cast<std::int64_t>(std::numeric_limits<Whole>::max());
    }
    return AddWhole(flags, value, range, help,
                    [&target](std::int64_t number) { target = static_cast<Whole>(number); });
  }
  /// One of few words, each with what it means. What `target` holds is said to be the default.
  /// `Meaning` is what the target has: an enumeration, or an optional of one where it must be known
  /// whether the option was given.
  template <class Meaning>
  Option& AddChoice(const std::string& flags, std::vector<std::pair<std::string, Meaning>> meanings,
                    Meaning& target, const std::string& help) {
    std::vector<std::string> words;
    std::string initial;
    for (const auto& [word, meaning] : meanings) {
      words.push_back(word);
      if (meaning == target) initial = word;
    }
    const auto choose = [meanings = std::move(meanings), &target](std::size_t chosen) {
      target = meanings[chosen].second;
    };
    return AddWord(flags, std::move(words), help, choose).Initially(initial);
  }

  /// Operands are taken in the order in which they are added; one that takes all that are left
  /// comes last.
  Option& AddFileOperand(const std::string& name, std::string& target, const std::string& help);
  /// All operands that are left, of which there may be none.
  Option& AddOperands(const std::string& name, std::vector<std::string>& target,
                      const std::string& help);
  Option& AddFileOperands(const std::string& name, std::vector<std::string>& target,
                          const std::string& help);

  const std::string& name() const { return name_; }
  const std::string& summary() const { return summary_; }
  const std::string& text() const { return text_; }
  const std::deque<Option>& options() const { return options_; }
  const std::deque<Option>& operands() const { return operands_; }
  /// The option that a flag, with its hyphens, belongs to; null for none.
  const Option* OptionOf(const std::string& flag) const;
  /// All flags of its options.
  std::vector<std::string> Flags() const;

  /// Looks at what was given together, before anything runs; throws Failure with Unusable. The two
  /// closures are the command's own; they are called by ParseWords and by its caller.
  std::function<void()> check = [] {};
  /// Does the work.
  std::function<ExitStatus()> run;

 private:
  /// What all Add functions come down to: flags as one text, cut at commas; none make an operand.
  Option& Add(const std::string& flags, const std::string& value, const std::string& help,
              std::function<void(const std::string&)> take);
  /// With a template around it that knows the target's type.
  Option& AddWhole(const std::string& flags, const std::string& value, CountRange range,
                   const std::string& help, std::function<void(std::int64_t)> set);
  Option& AddWord(const std::string& flags, std::vector<std::string> words, const std::string& help,
                  std::function<void(std::size_t)> choose);

  std::string name_;  // "flat"; of the program "kesncd"
  // The help's first line, without a full stop: --help lists it, the man page adds one.
  std::string summary_;
  std::string text_;            // the rest
  std::deque<Option> options_;  // what is added stays where it is
  std::deque<Option> operands_;
};

/// The program and its commands. A deque, so that a Command& that Add returned stays valid while
/// others are added.
struct CommandLine {
  Command program;
  std::deque<Command> commands;
  std::string commandOfFiles{};  // what is done where a file stands in place of a command

  Command& Add(const std::string& name, const std::string& help) {
    return commands.emplace_back(name, help);
  }
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OPTIONS_OPTION_LIST_H_
