// Clock frequencies of the timing report. The report holds much else; what counts is the table
// under a heading with "Preference" and "Constraint", between two separators.
#include <cstdio>
#include <cstring>
#include <map>
#include <utility>

#include "kesncd/kesncd.h"
#include "kesncd/timing/timing_row.h"
#include "text/file.h"
#include "text/line_source.h"

namespace orsa::kesncd {

namespace {

// Longer lines arrive in pieces, each of which is a line here.
constexpr std::size_t kLineBytes = 1024;
// Long enough that no name or value holds it; lines of tables may be longer.
constexpr char kSeparator[] = "--------------------------------------------";

bool Holds(const char* line, const char* text) {
  return std::strstr(line, text) != nullptr;
}

/// The two words may stand anywhere in the line.
bool IsHeading(const char* line) {
  return Holds(line, "Preference") && Holds(line, "Constraint");
}

/// The lines of the report's tables that belong to rows. A table begins at the separator under its
/// heading and ends at the next one; a report may hold several. Give Next whether a row is open,
/// until it is null.
class TableLines {
 public:
  explicit TableLines(std::FILE* report) : lines_(report, kLineBytes) {}

  /// The next line that starts a row or, inside one, just the next line: a row that is under way
  /// swallows even the separator that would close the table. Null at the end. IsRowStart is not
  /// asked inside a row, so such a separator does not count.
  const char* Next(bool insideRow) {
    const char* line = lines_.Next();
    while (line != nullptr && !insideRow && !IsRowStart(line)) line = lines_.Next();
    return line;
  }

 private:
  // Where in the report the last line was.
  enum class Place { Outside, UnderHeading, Inside };

  // Each line moves the place first; only lines inside a table start rows.
  bool IsRowStart(const char* line) {
    if (place_ == Place::Inside) {
      if (!Holds(line, kSeparator)) return StartsRow(line);
      // The separator that ends the table.
      place_ = Place::Outside;
    } else if (IsHeading(line)) {
      place_ = Place::UnderHeading;
    } else if (place_ == Place::UnderHeading && Holds(line, kSeparator)) {
      place_ = Place::Inside;
    }
    return false;
  }

  LineSource lines_;
  Place place_ = Place::Outside;
};

/// Fills `clocks` with the report's rows as `row` reads them. The first row for a name wins, and
/// what `clocks` held goes only when the whole report was read and has a row to replace it. The two
/// readers differ in their rows alone.
template <class Row>
bool ReadClocks(const std::string& path, Row row, std::map<std::string, double>& clocks) {
  // A file that cannot be opened, or is not named: the clocks stay.
  const File report = path.empty() ? nullptr : OpenForReading(path);
  if (report == nullptr) return false;
  TableLines lines(report.get());
  std::map<std::string, double> found;
  while (const char* line = lines.Next(row.IsOpen())) {
    std::optional<Clock> clock = row.TakeLine(line);
    // emplace keeps what is there.
    if (clock) found.emplace(std::move(clock->name), clock->frequency);
  }
  if (found.empty() || std::ferror(report.get()) != 0) return false;
  clocks.swap(found);
  return true;
}

}  // namespace

/// The reader that SetTWRFile calls; the other one is for hosts that ask for it.
bool KesNCD::ReadTWR2(int mode) {
  return ReadClocks(twrFile, JoinedRow(mode), clockFreqs);
}

bool KesNCD::ReadTWR(int mode) {
  return ReadClocks(twrFile, WordwiseRow(mode), clockFreqs);
}

}  // namespace orsa::kesncd
