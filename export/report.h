// A result before it has a format: facts about the run and one table.
#ifndef KESNCD_EXPORT_REPORT_H_
#define KESNCD_EXPORT_REPORT_H_

#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace orsa::kesncd {

/// A cell: nothing known, a text, a count, or a measured value.
using Cell = std::variant<std::monostate, std::string, std::int64_t, double>;

struct Report {
  std::vector<std::pair<std::string, Cell>> facts;  // shown in JSON only
  std::string listName;                             // JSON key of the rows
  std::vector<std::string> columns;                 // names with their units: "freq_mhz"
  std::vector<std::vector<Cell>> rows;
  std::string lastLine;       // closes the table format
  std::string unknown = "-";  // stands for a cell of which nothing is known, in the table format
  std::vector<std::pair<std::string, std::vector<std::string>>> lists{};  // shown in JSON only
};

/// The shortest text that reads back to the same value.
std::string NumberText(double value);

/// Aligned columns for reading. Control characters show as "?".
void WriteTable(const Report& report, std::ostream& out);
/// RFC 4180. What is not known is an empty field.
void WriteCsv(const Report& report, std::ostream& out);
/// One object: the facts, the lists and the rows. What is not known, or no finite number, is null.
void WriteJson(const Report& report, std::ostream& out);

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_REPORT_H_
