// As much of Tcl as constraints of clocks are written in: commands, words, braces and brackets.
#include "cli/input/sdc_clocks.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>

#include "vcd/time_text.h"

namespace orsa::kesncd::cli {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr double kLongestPeriod = 1e15;  // femtoseconds: a second

using Words = std::vector<std::string>;

/// Reads commands one by one. What is in braces, brackets or quotes belongs to one word.
class Commands {
 public:
  explicit Commands(std::string_view text) : text_(text) {}

  /// The words of the next command; nothing at the end.
  std::optional<Words> Next() {
    words_.clear();
    while (at_ < text_.size()) {
      if (TakeCharacter(text_[at_++]) && !words_.empty()) return std::move(words_);
    }
    EndWord();
    if (words_.empty()) return std::nullopt;
    return std::move(words_);
  }

 private:
  /// True for a character that ends a command.
  bool TakeCharacter(char c) {
    if (c == '\\' && at_ < text_.size()) {
      TakeEscaped(text_[at_++]);
      return false;
    }
    if (c == '#' && words_.empty() && word_.empty()) {
      at_ = std::min(text_.find('\n', at_), text_.size());
      return false;
    }
    Nest(c);
    const bool isOpen = depth_ > 0 || isQuoted_;
    const bool endsCommand = !isOpen && (c == '\n' || c == ';');
    if (endsCommand || (!isOpen && kBlanks.find(c) != std::string_view::npos)) {
      EndWord();
    } else {
      word_ += c;
    }
    return endsCommand;
  }

  /// A line that ends in a backslash goes on with the next one.
  void TakeEscaped(char c) {
    word_ += c == '\n' ? ' ' : c;
    if (c == '\n' && depth_ == 0 && !isQuoted_) EndWord();
  }

  void Nest(char c) {
    if (c == '"') isQuoted_ = !isQuoted_;
    if (c == '{' || c == '[') ++depth_;
    if ((c == '}' || c == ']') && depth_ > 0) --depth_;
  }

  void EndWord() {
    while (!word_.empty() && kBlanks.find(word_.back()) != std::string_view::npos) word_.pop_back();
    if (!word_.empty()) words_.push_back(std::move(word_));
    word_.clear();
  }

  Words words_;
  std::string word_;
  std::int64_t depth_ = 0;
  bool isQuoted_ = false;
  const std::string_view text_;
  std::size_t at_ = 0;
};

/// A word without the braces or quotes around it.
std::string Bare(const std::string& word) {
  const bool isWrapped = word.size() > 1 && ((word.front() == '{' && word.back() == '}') ||
                                             (word.front() == '"' && word.back() == '"'));
  return isWrapped ? word.substr(1, word.size() - 2) : word;
}

/// The names in "[get_ports {a b}]", "{a b}" or "a". Nobody nests lists deeper than `levels`.
Words NamesIn(const std::string& word, int levels = 8) {
  Words names;
  std::string text = Bare(word);
  const bool isQuery = text.size() > 1 && text.front() == '[' && text.back() == ']';
  if (isQuery) text = text.substr(1, text.size() - 2);
  const std::optional<Words> words = Commands(text).Next();
  for (std::size_t i = isQuery ? 1 : 0; words && i < words->size(); ++i) {
    const std::string& name = (*words)[i];
    if (name.front() == '-') continue;
    if (const std::string bare = Bare(name); bare != name) {
      if (levels == 0) continue;
      for (const std::string& inner : NamesIn(bare, levels - 1)) names.push_back(inner);
    } else {
      names.push_back(name);
    }
  }
  return names;
}

std::optional<std::uint64_t> PeriodOf(const std::string& text, std::uint64_t unit) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  const double period = std::round(number * static_cast<double>(unit));
  if (!(period >= 1 && period <= kLongestPeriod)) return std::nullopt;
  return static_cast<std::uint64_t>(period);
}

void AddClocks(const Words& words, std::uint64_t unit, std::vector<DesignClock>& clocks) {
  DesignClock clock;
  Words signals;
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::string value = i + 1 < words.size() ? Bare(words[i + 1]) : "";
    if (words[i] == "-period") {
      clock.period = PeriodOf(value, unit).value_or(0);
      ++i;
    } else if (words[i] == "-name") {
      clock.name = value;
      ++i;
    } else if (words[i] == "-waveform" || words[i] == "-comment") {
      ++i;
    } else if (words[i].front() != '-') {
      signals = NamesIn(words[i]);
    }
  }
  if (clock.period == 0) return;
  if (signals.empty() && !clock.name.empty()) signals.push_back(clock.name);
  clock.periodText = TimeText(clock.period);
  for (const std::string& signal : signals) {
    clocks.push_back(clock);
    clocks.back().signal = signal;
    if (clock.name.empty()) clocks.back().name = signal;
  }
}

}  // namespace

std::vector<DesignClock> SdcClocks(std::string_view text) {
  std::vector<DesignClock> clocks;
  std::uint64_t unit = Femtoseconds("1ns").value_or(1);
  Commands commands(text);
  while (const std::optional<Words> words = commands.Next()) {
    if (words->front() == "create_clock") AddClocks(*words, unit, clocks);
    for (std::size_t i = 1; words->front() == "set_units" && i + 1 < words->size(); ++i) {
      if ((*words)[i] != "-time") continue;
      const std::string text_ = Bare((*words)[i + 1]);
      const bool hasNumber = text_.find_first_of("0123456789") == 0;
      unit = Femtoseconds(hasNumber ? text_ : "1" + text_).value_or(unit);
    }
  }
  return clocks;
}

}  // namespace orsa::kesncd::cli
