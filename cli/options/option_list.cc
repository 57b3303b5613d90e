// How the options of a command line take their values: what is no value is refused in words.
#include "cli/options/option_list.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "text/number.h"
#include "vcd/time_text.h"

namespace orsa::kesncd::cli {

namespace {

[[noreturn]] void RefuseValue(const std::string& text, const std::string& why) {
  throw Failure(FailureKind::Unusable, (text.empty() ? "an empty text" : text) + " is " + why);
}

/// The number that all of a text is; nothing for any other text.
template <class Number>
std::optional<Number> NumberOf(const std::string& text) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

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
  for (std::size_t at = 0; at < flags.size();) {
    const std::size_t end = std::min(flags.find(',', at), flags.size());
    option.flags.push_back(flags.substr(at, end - at));
    at = end + 1;
  }
  option.argument = value;
  option.help = help;
  option.take = std::move(take);
  return (flags.empty() ? operands_ : options_).emplace_back(std::move(option));
}

Option& Command::AddAnswered(const std::string& flags, const std::string& help) {
  return Add(flags, "", help, [](const std::string&) {});
}

Option& Command::AddFlag(const std::string& flags, bool& target, const std::string& help) {
  return Add(flags, "", help, [&target](const std::string&) { target = true; });
}

Option& Command::AddText(const std::string& flags, const std::string& value, std::string& target,
                         const std::string& help) {
  return Add(flags, value, help, [&target](const std::string& text) { target = text; });
}

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

Option& Command::AddOptionalFile(const std::string& flags, const std::string& value,
                                 std::optional<std::string>& target, const std::string& help) {
  Option& option = Add(flags, value, help, [&target](const std::string& text) { target = text; });
  option.isFile = true;
  option.alsoAlone = true;
  return option;
}

Option& Command::AddTime(const std::string& flags, std::optional<std::uint64_t>& femtoseconds,
                         const std::string& help) {
  return Add(flags, "TIME", help, [&femtoseconds](const std::string& text) {
    femtoseconds = text == "0" ? 0 : Femtoseconds(WithoutBlanks(text));
    if (!femtoseconds) RefuseValue(text, "no time such as 1.5us or 10ps");
  });
}

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

Option& Command::AddWord(const std::string& flags, std::vector<std::string> words,
                         const std::string& help, std::function<void(std::size_t)> choose) {
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

Option& Command::AddOperand(const std::string& name, std::string& target, const std::string& help) {
  return AddText("", name, target, help);
}

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
  option.isFile = true;
  return option;
}

const Option* Command::OptionOf(const std::string& flag) const {
  for (const Option& option : options_) {
    for (const std::string& own : option.flags) {
      if (own == flag) return &option;
    }
  }
  return nullptr;
}

std::vector<std::string> Command::Flags() const {
  std::vector<std::string> flags;
  for (const Option& option : options_) {
    flags.insert(flags.end(), option.flags.begin(), option.flags.end());
  }
  return flags;
}

}  // namespace orsa::kesncd::cli
