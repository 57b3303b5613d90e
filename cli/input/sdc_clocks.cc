// As much of Tcl as constraints of clocks are written in: commands, words, braces and brackets.
#include "cli/input/sdc_clocks.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <unordered_set>
#include <utility>

#include "cli/input/list_file.h"
#include "cli/process/messages.h"
#include "free_format/remarks.h"
#include "vcd/time_text.h"

namespace orsa::kesncd::cli {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
// Longer periods are a slip of units.
constexpr double kLongestPeriod = 1e15;  // femtoseconds: a second
// Each signal of a clock has its name, so one file must not make them all endless.
constexpr std::size_t kLongestName = 1000;

// The words of one command, without what parts them; braces and quotes are still there.
using Words = std::vector<std::string>;

/// Reads commands one by one. What is in braces, brackets or quotes belongs to one word. Calling
/// order: construct, Next until it gives nothing. The text must outlive it.
class Commands {
 public:
  explicit Commands(std::string_view text) : text_(text) {}

  /// The words of the next command; nothing at the end. A command ends at a newline or ";". Empty
  /// ones, of blank lines, are passed over.
  std::optional<Words> Next() {
    words_.clear();
    while (at_ < text_.size()) {
      if (TakeCharacter(text_[at_++]) && !words_.empty()) return std::move(words_);
    }
    // The last command needs no end, but its braces and quotes do.
    endsOpen_ = depth_ > 0 || isQuoted_;
    EndWord();
    if (words_.empty()) return std::nullopt;
    return std::move(words_);
  }

  /// Whether the text ended inside braces, brackets or quotes. To be asked after the last command.
  bool EndsOpen() const { return endsOpen_; }

 private:
  /// True for a character that ends a command.
  bool TakeCharacter(char c) {
    // What comes after a backslash is itself, also a brace: it must not nest.
    if (c == '\\' && at_ < text_.size()) {
      if (text_.substr(at_).starts_with("\r\n")) ++at_;
      TakeEscaped(text_[at_++]);
      return false;
    }
    // A comment is allowed where a command could begin, and only there.
    if (c == '#' && words_.empty() && word_.empty()) {
      at_ = std::min(text_.find('\n', at_), text_.size());
      return false;
    }
    Nest(c);
    // A closing brace does not end its word: what comes before the next blank belongs to it.
    const bool isOpen = depth_ > 0 || isQuoted_;
    const bool endsCommand = !isOpen && (c == '\n' || c == ';');
    if (endsCommand || (!isOpen && kBlanks.find(c) != std::string_view::npos)) {
      EndWord();
    } else {
      word_ += c;
    }
    return endsCommand;
  }

  /// A line that ends in a backslash goes on with the next one: the two characters are a blank,
  /// between words or inside braces or quotes.
  void TakeEscaped(char c) {
    word_ += c == '\n' ? ' ' : c;
    if (c == '\n' && depth_ == 0 && !isQuoted_) EndWord();
  }

  /// Braces and brackets are counted together: a file in which they do not match is nobody's to
  /// repair, and is read as well as it goes.
  void Nest(char c) {
    // As in Tcl, a quote inside braces is a character, and so is a brace inside quotes.
    if (c == '"' && depth_ == 0) isQuoted_ = !isQuoted_;
    if (isQuoted_) return;
    if (c == '{' || c == '[') ++depth_;
    if ((c == '}' || c == ']') && depth_ > 0) --depth_;
  }

  /// Blanks at a word's end come from a line break that was escaped.
  void EndWord() {
    while (!word_.empty() && kBlanks.find(word_.back()) != std::string_view::npos) word_.pop_back();
    if (!word_.empty()) words_.push_back(std::move(word_));
    word_.clear();
  }

  Words words_;
  std::string word_;  // that is being read
  // Open braces and brackets. 64 bits: a hostile file may be nothing else.
  std::int64_t depth_ = 0;
  bool isQuoted_ = false;
  bool endsOpen_ = false;
  const std::string_view text_;
  std::size_t at_ = 0;
};

/// A word without the braces or quotes around it. Of "{clk}" "clk"; a word in brackets stays, as
/// its first word is a command.
std::string Bare(const std::string& word) {
  const bool isWrapped = word.size() > 1 && ((word.front() == '{' && word.back() == '}') ||
                                             (word.front() == '"' && word.back() == '"'));
  return isWrapped ? word.substr(1, word.size() - 2) : word;
}

/// "[get_ports clk]".
bool IsQuery(const std::string& word) {
  return word.size() > 1 && word.front() == '[' && word.back() == ']';
}

/// The names in "[get_ports {a b}]", "[list [get_ports a] b]", "{a b}" or "a". Nobody nests lists
/// deeper than `levels`. Options among them ("-nocase") and the query's own name are left out, and
/// so are the conditions of "-filter" and the like.
Words NamesIn(const std::string& word, int levels = 8) {
  Words names;
  // Braces around a query do not matter here.
  std::string text = Bare(word);
  const bool isQuery = IsQuery(text);
  if (isQuery) text = text.substr(1, text.size() - 2);
  const std::optional<Words> words = Commands(text).Next();
  // From 1 in a query: the first word is get_ports or the like.
  for (std::size_t i = isQuery ? 1 : 0; words && i < words->size(); ++i) {
    const std::string& name = (*words)[i];
    if (name == "-filter" || name == "-of_objects") ++i;
    if (name.front() == '-') continue;
    const std::string bare = Bare(name);
    if (bare == name && !IsQuery(name)) {
      names.push_back(name);
    } else if (levels > 0) {
      const Words inner = NamesIn(bare, levels - 1);
      names.insert(names.end(), inner.begin(), inner.end());
    }
  }
  return names;
}

/// `text` is a number in `unit` (femtoseconds); nothing for "$period", 0, a negative or an endless
/// one.
std::optional<std::uint64_t> PeriodOf(const std::string& text, std::uint64_t unit) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  const double period = std::round(number * static_cast<double>(unit));
  if (!(period >= 1 && period <= kLongestPeriod)) return std::nullopt;
  return static_cast<std::uint64_t>(period);
}

/// Options may be shortened as long as they are no other's: "-per".
bool IsOption(const std::string& word, std::string_view option) {
  return word.size() > 1 && option.starts_with(word);
}

/// Takes one create_clock command apart. Unknown options are passed over without their values,
/// which then look like signals: the last word that is no option counts.
void AddClocks(const Words& words, std::uint64_t unit, SdcClocks& found) {
  DesignClock clock;
  Words signals;
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::string value = i + 1 < words.size() ? Bare(words[i + 1]) : "";
    if (IsOption(words[i], "-period")) {
      clock.period = PeriodOf(value, unit).value_or(0);
      ++i;
    } else if (IsOption(words[i], "-name")) {
      clock.name = value.substr(0, kLongestName);
      ++i;
    } else if (IsOption(words[i], "-waveform") || IsOption(words[i], "-comment")) {
      // Their value is a list or a text, and no signal.
      ++i;
    } else if (words[i].front() != '-') {
      signals = NamesIn(words[i]);
    }
  }
  if (clock.period == 0) {  // nothing to compare
    found.unread.Add(0, "");
    return;
  }
  // A virtual clock has no signal; a dump may have one of that name all the same.
  clock.isVirtual = signals.empty();
  if (clock.isVirtual && !clock.name.empty()) signals.push_back(clock.name);
  clock.periodText = TimeText(clock.period);
  // One clock for each signal that carries it, however often it is listed.
  std::unordered_set<std::string_view> seen;
  for (const std::string& signal : signals) {
    if (!seen.insert(signal).second) continue;
    found.clocks.push_back(clock);
    found.clocks.back().signal = signal;
    if (clock.name.empty()) found.clocks.back().name = signal;
  }
}

/// Whether another command's braces hold clocks: those of an "if" or of a procedure.
bool HoldsClocks(const Words& words) {
  return std::any_of(words.begin(), words.end(), [](const std::string& word) {
    return word.find("create_clock ") != std::string::npos;
  });
}

}  // namespace

SdcClocks ReadSdcClocks(std::string_view text) {
  SdcClocks found;
  // Nanoseconds, unless set_units says otherwise.
  std::uint64_t unit = Femtoseconds("1ns").value_or(1);
  Commands commands(text);
  while (const std::optional<Words> words = commands.Next()) {
    // The unit may change between two clocks; each has the one before it.
    if (words->front() == "create_clock") {
      AddClocks(*words, unit, found);
    } else if (HoldsClocks(*words)) {
      found.nested.Add(0, "");
    }
    for (std::size_t i = 1; words->front() == "set_units" && i + 1 < words->size(); ++i) {
      if ((*words)[i] != "-time") continue;
      // "-time ps" and "-time 1ps" are both written.
      const std::string written = Bare((*words)[i + 1]);
      const bool hasNumber = written.find_first_of("0123456789") == 0;
      const std::optional<std::uint64_t> known = Femtoseconds(hasNumber ? written : "1" + written);
      if (!known) found.units.Add(0, "");
      unit = known.value_or(unit);
    }
  }
  found.endsOpen = commands.EndsOpen();
  return found;
}

std::vector<DesignClock> SdcClocksOf(const std::string& path) {
  SdcClocks found = ReadSdcClocks(ReadText(path));
  if (found.unread) {
    Remark(path, RemarkOn("clocks without a period that is a number, left out", found.unread));
  }
  if (found.nested) {
    Remark(path, RemarkOn("commands with clocks inside them, which are not read", found.nested));
  }
  if (found.units) {
    Remark(path, RemarkOn("units of time that are none, passed over", found.units));
  }
  if (found.endsOpen) {
    Remark(path, "it ends inside a brace, bracket or quote: clocks in there are not read");
  }
  return std::move(found.clocks);
}

}  // namespace orsa::kesncd::cli
