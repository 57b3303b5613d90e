#include <ostream>

#include "export/report.h"

namespace orsa::kesncd {

namespace {

std::string Quoted(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

std::string CsvText(const Cell& cell) {
  if (const auto* text = std::get_if<std::string>(&cell)) return Quoted(*text);
  if (const auto* count = std::get_if<std::int64_t>(&cell)) return std::to_string(*count);
  if (const auto* value = std::get_if<double>(&cell)) return NumberText(*value);
  return "";
}

}  // namespace

void WriteCsv(const Report& report, std::ostream& out) {
  for (std::size_t c = 0; c < report.columns.size(); ++c) {
    out << (c > 0 ? "," : "") << Quoted(report.columns[c]);
  }
  out << "\r\n";
  for (const auto& row : report.rows) {
    for (std::size_t c = 0; c < row.size(); ++c) out << (c > 0 ? "," : "") << CsvText(row[c]);
    out << "\r\n";
  }
}

}  // namespace orsa::kesncd
