// Rows of the timing report's preference table, as its two readers take them:
//
//   FREQUENCY NET "clk_c" 100.000000 MHz ;  |  100.000 MHz|  150.000 MHz|   3
//                                           |             |             |
//
// Both are fed the lines of the table from a row's first line on and hand out a clock when a row is
// complete. They differ in what closes a row, in where its name stands and in which values must be
// readable; what they share is the table around them (timing_report.cc).
#ifndef KESNCD_TIMING_TIMING_ROW_H_
#define KESNCD_TIMING_TIMING_ROW_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orsa::kesncd {

/// A clock of the report: net or port, and MHz.
struct Clock {
  std::string name;
  double frequency;
};

/// Whether a line of the table starts a row: it holds "FREQUENCY NET" or "FREQUENCY PORT",
/// wherever.
bool StartsRow(std::string_view line);

/// A line cut at '|'. A column that the line does not have is blank.
struct RowColumns {
  // The views are of `line`.
  explicit RowColumns(std::string_view line);

  // Counts all columns, also those that are not kept.
  std::size_t count = 0;
  // The first column: a name and the frequency that the user asked for.
  std::string_view preference;
  // The second column says what is to be reached, the third what was.
  std::string_view constraint;
  std::string_view achieved;
};

/// ReadTWR2's rows: joined column by column until a line with a blank first column closes them. A
/// long net name is broken over lines anywhere, which joining undoes.
///
/// Calling order: TakeLine for each line from a row's first on; as long as IsOpen, also for lines
/// that start no row. A name that is cut after "clk_" goes on with the next line's first column.
class JoinedRow {
 public:
  explicit JoinedRow(int mode) : mode_(mode) {}

  /// Whether a row is under way.
  bool IsOpen() const { return open_; }
  /// Takes a line; the row's clock when the line closes it with a frequency to keep.
  std::optional<Clock> TakeLine(std::string_view line);

 private:
  // The clock of the row whose columns were joined.
  std::optional<Clock> Evaluate();
  std::optional<double> Choose(double preference, double achieved) const;

  // 0 takes the lower value, 1 the preference, 2 the achieved one.
  int mode_;
  bool open_ = false;
  // The first three columns, joined over all lines of the row.
  std::string preference_;
  std::string constraint_;
  std::string achieved_;
};

/// ReadTWR's rows: read word by word and closed by the word ";", whose line holds the values.
/// Constraints and achieved values of other lines are not looked at.
///
/// Calling order as above. A name that is cut goes on here, too, but only in a line's first word.
class WordwiseRow {
 public:
  explicit WordwiseRow(int mode) : mode_(mode) {}

  /// Whether a row is under way.
  bool IsOpen() const { return open_; }
  /// Takes a line; the row's clock when the line closes it with an achieved frequency in MHz.
  std::optional<Clock> TakeLine(std::string_view line);

 private:
  void TakeNameWord(std::string_view word);
  std::optional<Clock> Close(const RowColumns& columns);
  double Choose(double constraint, double achieved) const;
  void Reset();

  // 0 takes the lower value, 1 the constraint, any other the achieved one.
  int mode_;
  bool open_ = false;
  std::size_t steps_ = 0;  // keywords, name and further lines met; they say what comes next
  // Empty until the row's name was met.
  std::string name_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TIMING_TIMING_ROW_H_
