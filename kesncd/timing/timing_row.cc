// How the two readers cut a row of the preference table into name and frequencies.
#include "kesncd/timing/timing_row.h"

#include <iterator>
#include <utility>

#include "text/number.h"
#include "text/words.h"

namespace orsa::kesncd {

namespace {

// No frequency of a report is negative, so that one may say that there is none. ScanDouble leaves
// it where there is no number.
constexpr double kNotTold = -1.0;
// The last column, the levels of logic, is there in a row but not looked at.
constexpr std::size_t kTableColumns = 4;
constexpr std::string_view kMegahertz = "MHz";
// What parts words differs from column to column: a name may be quoted, a value may end in ";".
// Quotes around a name are dropped with the blanks.
constexpr std::string_view kNameBlanks = " \t\"";
constexpr std::string_view kValueBlanks = " ;\t";
constexpr std::string_view kPreferenceBlanks = " ;\t\"";

/// Keywords before a name, in ReadTWR, such as "FREQUENCY" and "NET": two, whichever they are.
constexpr std::size_t kStepsBeforeName = 2;

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

/// The number that a word begins with, whatever follows it in the word; kNotTold where it begins
/// with none.
double Scan(std::string_view word) {
  double value = kNotTold;
  ScanDouble(std::string(word).c_str(), value);
  return value;
}

/// The number in a column that holds a number, "MHz" and nothing else. "  150.000 MHz" is 150; a
/// third word, or none after the number, makes it another column.
std::optional<double> Megahertz(std::string_view column) {
  const auto words = FirstWords<3>(column, kValueBlanks);
  if (words[1] != kMegahertz || !words[2].empty()) return std::nullopt;
  return Scan(words[0]);
}

/// Anywhere in a line: a net that is named so is taken for a keyword.
bool IsColumnWord(std::string_view word) {
  return word == "FREQUENCY" || word == "NET" || word == "PORT";
}

/// Whether the first word of a line goes on with a name that the line before cut off. It does not
/// where it is a unit, stands before one, or more than two words follow it.
bool ContinuesName(std::string_view preference) {
  const auto words = FirstWords<4>(preference, kNameBlanks);
  if (!words[3].empty()) return false;
  return !Contains(words[2].empty() ? words[0] : words[1], "Hz");
}

}  // namespace

bool StartsRow(std::string_view line) {
  return Contains(line, "FREQUENCY NET") || Contains(line, "FREQUENCY PORT");
}

RowColumns::RowColumns(std::string_view line) {
  std::string_view* const columns[] = {&preference, &constraint, &achieved};
  // "|" twice in a row makes one end: a column must hold a blank at least.
  for (std::string_view column = TakeWord(line, "|"); !column.empty();
       column = TakeWord(line, "|")) {
    // The line's end is no part of a column, but it keeps a blank last column from vanishing.
    if (column.back() == '\n') column.remove_suffix(1);
    if (count < std::size(columns)) *columns[count] = column;
    ++count;
  }
}

std::optional<Clock> JoinedRow::TakeLine(std::string_view line) {
  // Also inside a row: what was joined of an unfinished one is dropped.
  if (StartsRow(line)) {
    preference_.clear();
    constraint_.clear();
    achieved_.clear();
  }
  // Cut even where the line has another shape, to count its columns.
  const RowColumns columns(line);
  // A line of another shape ends the row without a clock.
  if (columns.count != kTableColumns) {
    open_ = false;
    return std::nullopt;
  }
  // A blank first column closes the row; its other columns do not matter.
  open_ = columns.preference.find_first_not_of(kNameBlanks) != std::string_view::npos;
  if (!open_) return Evaluate();
  // Without a blank between the parts: a broken name is whole again.
  preference_ += columns.preference;
  constraint_ += columns.constraint;
  achieved_ += columns.achieved;
  return std::nullopt;
}

/// A row whose preference text gives no frequency but whose constraint does has an empty name, and
/// is kept under it.
std::optional<Clock> JoinedRow::Evaluate() {
  // FREQUENCY NET "clk_c" 100.0 MHz: name and number stand at fixed places.
  const auto words = FirstWords<5>(preference_, kPreferenceBlanks);
  std::string_view name;
  double preference = kNotTold;
  // Else the text holds something else, for example a name with a blank in it.
  if (words[4] == kMegahertz) {
    name = words[2];
    preference = Scan(words[3]);
  }
  // The constraint's own column goes before the number inside the preference, where it is a number
  // of MHz.
  const double constraint = Megahertz(constraint_).value_or(kNotTold);
  if (constraint >= 0.0) preference = constraint;
  const double achieved = Megahertz(achieved_).value_or(kNotTold);
  const std::optional<double> chosen = Choose(preference, achieved);
  if (!chosen) return std::nullopt;
  return Clock{std::string(name), *chosen};
}

/// By the mode: the lower value, the preference, the achieved value. Without a preference none is
/// kept, in whichever mode; without an achieved value the preference stands in.
std::optional<double> JoinedRow::Choose(double preference, double achieved) const {
  switch (mode_) {
    case 0:
      if (preference < 0.0) return std::nullopt;
      // The lower of the two; an achieved value that is not told is not lower.
      return achieved >= 0.0 && achieved < preference ? achieved : preference;
    case 1:
      // Not `< 0`, as in the others: what is no number is not kept here.
      if (!(preference >= 0.0)) return std::nullopt;
      return preference;
    case 2:
      if (preference < 0.0) return std::nullopt;
      return achieved >= 0.0 ? achieved : preference;
    default:
      return std::nullopt;
  }
}

std::optional<Clock> WordwiseRow::TakeLine(std::string_view line) {
  // Values count only where the name's end, ";", stands in the same line.
  const RowColumns columns(line);
  std::string_view rest = columns.preference;
  std::string_view word = TakeWord(rest, kNameBlanks);
  // A line without a word in its first column ends the row without a clock.
  if (word.empty()) {
    Reset();
    return std::nullopt;
  }
  open_ = true;
  // A line may end one row and go on: words after ";" belong to the next one.
  for (bool isFirst = true; !word.empty(); word = TakeWord(rest, kNameBlanks), isFirst = false) {
    if (word == ";" && !name_.empty()) {
      if (std::optional<Clock> clock = Close(columns)) return clock;
    } else if (isFirst && steps_ > kStepsBeforeName && !IsColumnWord(word)) {
      // A further line of the row: its first word may go on with the name.
      if (ContinuesName(columns.preference)) name_ += word;
      ++steps_;
    } else {
      // On the first line, or a later word.
      TakeNameWord(word);
    }
  }
  return std::nullopt;
}

/// The name is the word after two keywords, whichever they are; words further on are no part of it.
void WordwiseRow::TakeNameWord(std::string_view word) {
  if (IsColumnWord(word)) {
    ++steps_;
  } else if (steps_ == kStepsBeforeName) {
    name_ = word;
    ++steps_;
  }
}

/// Only the achieved column must be in MHz; of the constraint, whatever number it starts with.
/// Where it is not, the row stays open and a later ";" may close it.
std::optional<Clock> WordwiseRow::Close(const RowColumns& columns) {
  const std::optional<double> achieved = Megahertz(columns.achieved);
  if (!achieved) return std::nullopt;
  const double constraint = Scan(FirstWords<1>(columns.constraint, kValueBlanks)[0]);
  Clock clock{std::move(name_), Choose(constraint, *achieved)};
  Reset();
  return clock;
}

/// Any other mode takes the achieved value here, while JoinedRow keeps nothing then.
double WordwiseRow::Choose(double constraint, double achieved) const {
  switch (mode_) {
    case 0:
      return achieved < constraint ? achieved : constraint;
    case 1:
      return constraint;
    default:
      return achieved;
  }
}

void WordwiseRow::Reset() {
  name_.clear();
  steps_ = 0;
  open_ = false;
}

}  // namespace orsa::kesncd
