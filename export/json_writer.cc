#include <nlohmann/json.hpp>
#include <ostream>

#include "export/report.h"

namespace orsa::kesncd {

namespace {

using Json = nlohmann::ordered_json;

Json Value(const Cell& cell) {
  if (const auto* text = std::get_if<std::string>(&cell)) return *text;
  if (const auto* count = std::get_if<std::int64_t>(&cell)) return *count;
  if (const auto* value = std::get_if<double>(&cell)) return *value;
  return nullptr;
}

/// One row or fact a line; names need not be UTF-8 in a dump, so bad bytes are replaced.
std::string Text(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

void WriteJson(const Report& report, std::ostream& out) {
  out << "{\n";
  for (const auto& [key, cell] : report.facts) {
    out << "  " << Text(key) << ": " << Text(Value(cell)) << ",\n";
  }
  for (const auto& [key, texts] : report.lists) {
    out << "  " << Text(key) << ": " << Text(texts) << ",\n";
  }
  out << "  " << Text(report.listName) << ": [";
  const char* separator = "\n";
  for (const auto& row : report.rows) {
    Json object = Json::object();
    for (std::size_t c = 0; c < row.size(); ++c) object[report.columns[c]] = Value(row[c]);
    out << separator << "    " << Text(object);
    separator = ",\n";
  }
  out << (report.rows.empty() ? "]\n}\n" : "\n  ]\n}\n");
}

}  // namespace orsa::kesncd
