// How the options of a command line take their values: what is no value is refused in words.
#include "cli/options/option_list.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "text/number.h"
#include "vcd/time_text.h"

namespace orsa::kesncd::cli {

namespace {

/// The parser puts the option's name before it: "--limit: x is no whole number from 0".
[[noreturn]] void RefuseValue(const std::string& text, const std::string& why) {
  throw Failure(FailureKind::Unusable, (text.empty() ? "an empty text" : text) + " is " + why);
}

/// The number that all of a text is; nothing for any other text. from_chars, unlike strtol, takes
/// no blanks, no "+", no locale, and says where it stopped.
template <class Number>
std::optional<Number> NumberOf(const std::string& text) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

/// "from 0 to 4096", or "from 0" where the upper bound is a type's own and would tell nobody
/// anything.
std::string RangeText(CountRange range) {
  const bool isOpen = range.most >= std::numeric_limits<std::int32_t>::max();
  return "from " + std::to_string(range.least) +
         (isOpen ? "" : " to " + std::to_string(range.most));
}

/// "1 ns" as "1ns": dumps write either.
std::string WithoutBlanks(std::string text) {
  std::erase(text, ' ');
  return text;
}

/// Shared by options and operands. Whether the file is there is seen when it is opened.
void TakePath(const std::string& text, std::string& path) {
  if (text.empty()) RefuseValue(text, "no path of a file");
  path = text;
}

}  // namespace

std::string Join(const std::vector<std::string>& parts, const std::string& separator) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : separator) + part;
  return text;
}

Command::Command(std::string name, const std::string& help)
    : name_(std::move(name)), summary_(help.substr(0, help.find('\n'))) {
  if (summary_.size() < help.size()) text_ = help.substr(summary_.size() + 1);
}

Option& Command::Add(const std::string& flags, const std::string& value, const std::string& help,
                     std::function<void(const std::string&)> take) {
  Option option;
  // "-o,--output" is two flags; no flags, an operand.
  for (std::size_t at = 0; at < flags.size();) {
    const std::size_t end = std::min(flags.find(',', at), flags.size());
    option.flags.push_back(flags.substr(at, end - at));
    at = end + 1;
  }
  option.argument = value;
  option.help = help;
  option.take = std::move(take);
  // References stay valid while others are added: both are deques.
  return (flags.empty() ? operands_ : options_).emplace_back(std::move(option));
}

/// Listed in the help like any other; ParseWords and the parser's Take look for it themselves.
Option& Command::AddAnswered(const std::string& flags, const std::string& help) {
  return Add(flags, "", help, [](const std::string&) {});
}

/// A flag that is given twice sets it twice; see Give for what that allows.
Option& Command::AddFlag(const std::string& flags, bool& target, const std::string& help) {
  return Add(flags, "", help, [&target](const std::string&) { target = true; });
}

/// The text as it was given; what it means is the command's to find out, and to refuse.
Option& Command::AddText(const std::string& flags, const std::string& value, std::string& target,
                         const std::string& help) {
  return Add(flags, value, help, [&target](const std::string& text) { target = text; });
}

/// Each time one more; CLI11 gives all of them at once, in the order of the line.
Option& Command::AddTexts(const std::string& flags, const std::string& value,
                          std::vector<std::string>& target, const std::string& help) {
  Option& option =
      Add(flags, value, help, [&target](const std::string& text) { target.push_back(text); });
  option.repeats = true;
  return option;
}

Option& Command::AddFile(const std::string& flags, const std::string& value, std::string& target,
                         const std::string& help) {
  Option& option =
      Add(flags, value, help, [&target](const std::string& text) { TakePath(text, target); });
  option.isFile = true;
  return option;
}

/// "--activity" alone comes with an empty text, which is a path that the command chooses.
Option& Command::AddOptionalFile(const std::string& flags, const std::string& value,
                                 std::optional<std::string>& target, const std::string& help) {
  Option& option = Add(flags, value, help, [&target](const std::string& text) { target = text; });
  option.isFile = true;
  option.alsoAlone = true;
  return option;
}

/// The value's name is TIME in every help text, so that users learn its form once.
Option& Command::AddTime(const std::string& flags, std::optional<std::uint64_t>& femtoseconds,
                         const std::string& help) {
  // A bare "0" has no unit, and needs none; anything else must have one.
  return Add(flags, "TIME", help, [&femtoseconds](const std::string& text) {
    // Femtoseconds gives nothing for what is no time, or is more than 64 bits hold.
    femtoseconds = text == "0" ? 0 : Femtoseconds(WithoutBlanks(text));
    if (!femtoseconds) RefuseValue(text, "no time such as 1.5us or 10ps");
  });
}

/// Infinity and "nan" are numbers to from_chars, and neither is below `least`.
Option& Command::AddNumber(const std::string& flags, const std::string& unit, double least,
                           double& target, const std::string& help) {
  return Add(flags, unit, help,
             [&target, least](const std::string& text) {
               const auto number = NumberOf<double>(text);
               if (!number || !std::isfinite(*number) || *number < least) {
                 RefuseValue(text, "no number from " + DisplayText(least));
               }
               target = *number;
             })
      .Initially(DisplayText(target));
}

/// Takes 64 bits for all types; AddCount has narrowed the range to that of its target.
Option& Command::AddWhole(const std::string& flags, const std::string& value, CountRange range,
                          const std::string& help, std::function<void(std::int64_t)> set) {
  return Add(flags, value, help, [range, set = std::move(set)](const std::string& text) {
    const auto number = NumberOf<std::int64_t>(text);
    if (!number || *number < range.least || *number > range.most) {
      RefuseValue(text, "no whole number " + RangeText(range));
    }
    set(*number);
  });
}

/// The word in help is the list itself: "--sort toggles|rate|name".
Option& Command::AddWord(const std::string& flags, std::vector<std::string> words,
                         const std::string& help, std::function<void(std::size_t)> choose) {
  // Unknown words are refused with the list of known ones, in the order in which they were given.
  const auto take = [words, choose = std::move(choose)](const std::string& text) {
    std::size_t chosen = 0;
    while (chosen < words.size() && words[chosen] != text) ++chosen;
    if (chosen == words.size()) RefuseValue(text, "none of " + Join(words, ", "));
    choose(chosen);
  };
  Option& option = Add(flags, Join(words, "|"), help, take);
  option.choices = std::move(words);
  return option;
}

/// Operands are options without flags.
Option& Command::AddFileOperand(const std::string& name, std::string& target,
                                const std::string& help) {
  return AddFile("", name, target, help);
}

Option& Command::AddOperands(const std::string& name, std::vector<std::string>& target,
                             const std::string& help) {
  return AddTexts("", name, target, help);
}

Option& Command::AddFileOperands(const std::string& name, std::vector<std::string>& target,
                                 const std::string& help) {
  Option& option = AddOperands(name, target, help);
  // A list of files is a list of texts to the parser, but a list of files to shells.
  option.isFile = true;
  return option;
}

/// A dozen options at most, looked for once a word: no map is worth it. Also used by the parser,
/// for words that CLI11 would misread.
const Option* Command::OptionOf(const std::string& flag) const {
  for (const Option& option : options_) {
    for (const std::string& own : option.flags) {
      if (own == flag) return &option;
    }
  }
  return nullptr;
}

/// In the order of the help; for completions, and for what may have been meant.
std::vector<std::string> Command::Flags() const {
  std::vector<std::string> flags;
  for (const Option& option : options_) {
    flags.insert(flags.end(), option.flags.begin(), option.flags.end());
  }
  return flags;
}

}  // namespace orsa::kesncd::cli
