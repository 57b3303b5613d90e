#include <algorithm>
#include <array>
#include <charconv>
#include <ostream>

#include "export/report.h"

namespace orsa::kesncd {

namespace {

/// Names come from the dump; an escape sequence in one must not reach the terminal.
std::string Printable(std::string text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }, '?');
  return text;
}

std::string TableText(const Cell& cell, const std::string& unknown) {
  if (const auto* text = std::get_if<std::string>(&cell)) return Printable(*text);
  if (const auto* count = std::get_if<std::int64_t>(&cell)) return std::to_string(*count);
  if (const auto* value = std::get_if<double>(&cell)) return NumberText(*value);
  return unknown;
}

/// Writes a cell filled up to `width`; texts stand left, numbers right, the last text unfilled.
void Put(std::ostream& out, const std::string& text, std::size_t width, bool left, bool last) {
  const std::string fill(width - std::min(width, text.size()), ' ');
  if (left) {
    out << text << (last ? "" : fill);
  } else {
    out << fill << text;
  }
  out << (last ? "\n" : "  ");
}

}  // namespace

std::string NumberText(double value) {
  std::array<char, 32> text{};
  const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
  return {text.data(), result.ptr};
}

void WriteTable(const Report& report, std::ostream& out) {
  const std::size_t columns = report.columns.size();
  std::vector<std::size_t> widths(columns);
  std::vector<bool> left(columns, true);
  for (std::size_t c = 0; c < columns; ++c) widths[c] = report.columns[c].size();
  for (const auto& row : report.rows) {
    for (std::size_t c = 0; c < columns; ++c) {
      widths[c] = std::max(widths[c], TableText(row[c], report.unknown).size());
      if (row[c].index() > 1) left[c] = false;
    }
  }
  for (std::size_t c = 0; c < columns; ++c) {
    Put(out, report.columns[c], widths[c], left[c], c + 1 == columns);
  }
  for (const auto& row : report.rows) {
    for (std::size_t c = 0; c < columns; ++c) {
      Put(out, TableText(row[c], report.unknown), widths[c], left[c], c + 1 == columns);
    }
  }
  if (!report.lastLine.empty()) out << report.lastLine << "\n";
}

}  // namespace orsa::kesncd
