// Tables, CSV and JSON: what a reader and a program see of names and numbers of any kind.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>
#include <random>

#include "export/result_writer.h"
#include "tests/support/text_stream.h"
#include "text/printable.h"

namespace orsa::kesncd {
namespace {

enum class As { Table, Wide, Csv, Json };

std::string Written(As format, const std::vector<Column>& columns, const std::vector<Row>& rows,
                    const ResultTail& tail = {}, int digits = 4) {
  TextSink out;
  const ResultHead head{{{"dump", "d"}}, "rows", columns};
  const TableLook look{digits, format == As::Wide};
  const auto writer = format == As::Csv    ? MakeCsvWriter(head, out)
                      : format == As::Json ? MakeJsonWriter(head, out)
                                           : MakeTableWriter(head, look, out);
  for (const Row& row : rows) writer->Add(row);
  writer->End(tail);
  return out.text;
}

TEST(Writers, RoundAndAlignInTablesOnly) {
  const std::vector<Row> rows{{"a", 33.333333333333336, 1},
                              {"bb", 12345.678, std::int64_t{123456789}},
                              {"", 0.00012345678, Cell()},
                              {"nan", std::nan(""), -INFINITY},
                              {"-", -50.0, 0.0}};
  EXPECT_EQ(Written(As::Table, {"name", "freq_mhz", "n"}, rows, {{}, {}, "end\x1b"}),
            "name       freq_mhz          n\n"
            "a        33.33               1\n"
            "bb    12350          123456789\n"
            "          0.0001235          -\n"
            "nan               -          -\n"
            "-       -50                  0\n"
            "end?\n");
  EXPECT_EQ(Written(As::Table, {"v"}, {{9.99996}, {1e300}, {2e-12}}, {}, 5),
            "     v\n    10\n1e+300\n 2e-12\n");
  EXPECT_EQ(Written(As::Csv, {"name", "freq_mhz", "n"}, rows),
            "name,freq_mhz,n\r\na,33.333333333333336,1\r\nbb,12345.678,123456789\r\n"
            ",0.00012345678,\r\nnan,,\r\n-,-50,0\r\n");
  EXPECT_EQ(
      Written(As::Json, {"name", "freq_mhz"}, {{"a", 50.0}, {"b", NAN}, {"c", 1e300}},
              {{{"found", std::int64_t{2}}}, {{"none", {}}, {"two", {"x", "\"\\"}}}}),
      "{\n  \"dump\": \"d\",\n  \"rows\": [\n    {\"name\":\"a\",\"freq_mhz\":50.0},\n"
      "    {\"name\":\"b\",\"freq_mhz\":null},\n    {\"name\":\"c\",\"freq_mhz\":1e+300}\n  ],\n"
      "  \"found\": 2,\n  \"none\": [],\n  \"two\": [\"x\",\"\\\"\\\\\"]\n}\n");
  const WideCount most = UINT64_MAX;
  EXPECT_EQ(Written(As::Json, {"a", "b"}, {{most, 4 * most}}),
            "{\n  \"dump\": \"d\",\n  \"rows\": [\n    {\"a\":18446744073709551615,"
            "\"b\":73786976294838206460}\n  ]\n}\n");
  EXPECT_EQ(Written(As::Json, {"name"}, {}), "{\n  \"dump\": \"d\",\n  \"rows\": []\n}\n");
}

TEST(Writers, LetNothingSteerATerminal) {
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"clk", "clk", "clk"},
      {"\x1b[2J\t\x7f", "?[2J??", "\\u001b[2J\\t\\u007f"},
      {"gr\xc3\xb6\xc3\x9f\x65", "gr\xc3\xb6\xc3\x9f\x65", "gr\xc3\xb6\xc3\x9f\x65"},
      {"\xf0\x9f\x94\x8c", "\xf0\x9f\x94\x8c", "\xf0\x9f\x94\x8c"},
      {"\xc2\x80\xc2\x9f\xc2\xa0", "??\xc2\xa0", "\\u0080\\u009f\xc2\xa0"},
      {"\xd8\x9c\xe2\x80\x8e\xe2\x80\x8f", "???", "\\u061c\\u200e\\u200f"},
      {"\xe2\x80\xaa\xe2\x80\xae\xe2\x81\xa6\xe2\x81\xa9", "????", "\\u202a\\u202e\\u2066\\u2069"},
      {"\x9b\xff\xc2", "???", "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"},
      {"\xc0\xaf", "??", "\xef\xbf\xbd\xef\xbf\xbd"},  // overlong
      {"\xe0\x9f\xbf", "???", "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"},
      {"\xed\xa0\x80", "???", "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"},  // half of a pair
      {"\xe2\x82.", "??.", "\xef\xbf\xbd."},                            // cut off
      {"\xf4\x90\x80\x80", "????", "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"}};
  for (const auto& [name, shown, escaped] : rows) {
    EXPECT_EQ(Printable(name), shown) << escaped;
    EXPECT_EQ(Printable(Printable(name)), shown) << escaped;
    EXPECT_EQ(Written(As::Table, {"n"}, {{name}}), "n\n" + shown + "\n");
    EXPECT_EQ(Written(As::Csv, {"n"}, {{name}}), "n\r\n" + name + "\r\n") << "programs get all";
    EXPECT_NE(Written(As::Json, {"n"}, {{name}}).find("{\"n\":\"" + escaped + "\"}"),
              std::string::npos);
  }
}

TEST(Writers, BoundWhatLongNamesCost) {
  const std::string name = std::string(500, 'a') + std::string(499, 'z') + "\xc3\xb6";
  std::vector<Row> rows(1000, Row{"n", "m"});
  rows.push_back({name, name});
  const std::string shortened = std::string(28, 'a') + "..." + std::string(28, 'z') + "\xc3\xb6";
  const std::string table = Written(As::Table, {"x", "y"}, rows);
  EXPECT_LT(table.size(), 1003 * 70U);
  EXPECT_TRUE(table.ends_with("\n" + shortened + "  " + shortened + "\n")) << table.substr(60000);
  const std::string wide = Written(As::Wide, {"x", "y"}, rows);
  EXPECT_LT(wide.size(), 1003 * 170U);
  EXPECT_TRUE(wide.ends_with("\n" + name + "  " + name + "\n"));
  const std::string prose(100, 'p');
  EXPECT_EQ(Written(As::Table, {{"x", true}}, {{prose}}), "x\n" + prose + "\n");
}

/// Names as hostile dumps have them.
std::string RandomName(std::mt19937& random) {
  static const std::string kPieces[] = {
      "a",       "clk",  ",",        "\"",           "\r",
      "\n",      "\r\n", " ",        "\t",           "\\",
      "\\u0041", "=1+1", "'",        "\x1b[2J",      std::string(1, '\0'),
      "\xff",    "\xc3", "\xc3\xbc", "\xe2\x80\xae", "</b>"};
  std::string name;
  for (std::size_t pieces = random() % 5; pieces > 0; --pieces)
    name += kPieces[random() % std::size(kPieces)];
  return name;
}

Cell RandomCell(std::mt19937& random) {
  const auto bits = [&] { return std::uint64_t{random()} << 32 | random(); };
  double value = 0;
  const std::uint64_t of = bits();
  std::memcpy(&value, &of, sizeof value);
  switch (random() % 6) {
    case 0:
      return {};
    case 1:
      return static_cast<std::int64_t>(bits() >> random() % 64);
    case 2:
      return value;
    case 3:
      return WideCount{bits()} * (bits() >> random() % 64);
    default:
      return RandomName(random);
  }
}

/// Fields of a file as RFC 4180 has them, taken apart byte by byte.
std::vector<std::vector<std::string>> CsvFields(const std::string& text) {
  std::vector<std::vector<std::string>> rows(1, {""});
  bool isQuoted = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    std::string& field = rows.back().back();
    if (text[at] == '"' && isQuoted && text.compare(at, 2, "\"\"") == 0) {
      field += text[at++];
    } else if (text[at] == '"') {
      isQuoted = !isQuoted;
    } else if (!isQuoted && text[at] == ',') {
      rows.back().emplace_back();
    } else if (!isQuoted && text.compare(at, 2, "\r\n") == 0) {
      rows.push_back({""});
      ++at;
    } else {
      field += text[at];
    }
  }
  rows.pop_back();
  return rows;
}

/// A name as JSON can hold it: a mark in place of each byte that is no UTF-8.
std::string AsUtf8(const std::string& name) {
  std::string text;
  for (std::size_t at = 0; at < name.size();) {
    const Utf8Character character = FirstCharacter(std::string_view(name).substr(at));
    text += character.isValid ? name.substr(at, character.bytes) : "\ufffd";
    at += character.bytes;
  }
  return text;
}

// What a program reads is what was written, however hostile the names and long the numbers.
TEST(Writers, GiveProgramsBackWhatWasWritten) {
  std::mt19937 random(1);
  for (int trial = 0; trial < 400; ++trial) {
    const std::vector<Column> columns{
        {"path"}, {RandomName(random) + "1", false}, {RandomName(random) + "2", false}};
    std::vector<Row> rows(random() % 6);
    for (Row& row : rows) row = {RandomName(random), RandomCell(random), RandomCell(random)};
    const auto fields = CsvFields(Written(As::Csv, columns, rows));
    const auto json = nlohmann::json::parse(Written(As::Json, columns, rows));
    ASSERT_EQ(fields.size(), rows.size() + 1);
    ASSERT_EQ(json["rows"].size(), rows.size());
    for (std::size_t c = 0; c < columns.size(); ++c) EXPECT_EQ(fields[0][c], columns[c].name);
    for (std::size_t r = 0; r < rows.size(); ++r) {
      ASSERT_EQ(fields[r + 1].size(), columns.size());
      for (std::size_t c = 0; c < columns.size(); ++c) {
        const Cell& cell = rows[r][c];
        const std::string& field = fields[r + 1][c];
        const auto& value = json["rows"][r][AsUtf8(columns[c].name)];
        if (const auto* text = std::get_if<std::string>(&cell)) {
          EXPECT_EQ(field, *text);
          EXPECT_EQ(value, AsUtf8(*text));
        } else if (const auto* count = std::get_if<std::int64_t>(&cell)) {
          EXPECT_EQ(field, std::to_string(*count));
          EXPECT_EQ(value, *count);
        } else if (const auto* wide = std::get_if<WideCount>(&cell)) {
          EXPECT_EQ(field, WideText(*wide));
          EXPECT_EQ(value, static_cast<double>(*wide));
        } else if (const double* measured = ValueIn(cell)) {
          EXPECT_EQ(std::strtod(field.c_str(), nullptr), *measured);
          EXPECT_EQ(value, *measured);
        } else {
          EXPECT_EQ(field, "");
          EXPECT_TRUE(value.is_null());
        }
      }
    }
    // A line a row, of which none steers a terminal.
    const std::string table = Written(As::Table, {"a", "b", "c"}, rows);
    EXPECT_EQ(PrintableLines(table), table);
    EXPECT_EQ(static_cast<std::size_t>(std::count(table.begin(), table.end(), '\n')),
              rows.size() + 1);
  }
}

}  // namespace
}  // namespace orsa::kesncd
