// Values as SQLite keeps them.
#include "database/table_writer.h"

#include <sqlite3.h>

#include "text/printable.h"

namespace orsa::kesncd {

namespace {

// So many rows that what a statement costs hardly counts; more do not make it faster.
constexpr std::size_t kBatchRows = 32;
// Long texts are not gathered for long: lists of toggles have millions of numbers at times.
constexpr std::size_t kMostText = std::size_t{1} << 20U;

/// Whether SQLite's functions for texts, and those of other languages, can have it as one. The
/// usual case, without looking at characters one by one.
bool IsText(std::string_view text) {
  bool isPlain = true;
  for (const char c : text) isPlain = isPlain && c > 0;
  // A NUL would end the text for many who read it.
  if (isPlain) return true;
  while (!text.empty()) {
    const Utf8Character next = FirstCharacter(text);
    if (!next.isValid || next.code == 0) return false;
    text.remove_prefix(next.bytes);
  }
  return true;
}

}  // namespace

TableWriter::TableWriter(Connection& to, const std::string& table, std::size_t columns)
    : to_(to), table_(table), columns_(columns), one_(to.Prepare(InsertOf(1).c_str())) {}

/// "INSERT INTO clock VALUES(?,?,?,?),(?,?,?,?)".
std::string TableWriter::InsertOf(std::size_t rows) const {
  std::string row = "(?";
  for (std::size_t i = 1; i < columns_; ++i) row += ",?";
  std::string sql = "INSERT INTO " + table_ + " VALUES" + row + ")";
  for (std::size_t i = 1; i < rows; ++i) sql.append(",").append(row).append(")");
  return sql;
}

/// Into the sum as the number, however it is written.
void TableWriter::Count(std::uint64_t count) {
  sum_.Add(count);
  if (count <= INT64_MAX) {
    AddInteger(static_cast<std::int64_t>(count));
  } else {
    AddText(std::to_string(count));
  }
}

/// Whether there is one takes part in the sum, or "nothing, 1" and "1, nothing" would be alike.
void TableWriter::Count(const std::optional<std::uint64_t>& count) {
  sum_.Add(std::uint64_t{count ? 1U : 0U});
  if (count) return Count(*count);
  cells_.emplace_back();
}

/// The same 64 bits as a signed number, which SQLite has for all of them.
void TableWriter::Signed(std::uint64_t sum) {
  sum_.Add(sum);
  AddInteger(static_cast<std::int64_t>(sum));
}

void TableWriter::Text(std::string_view text) {
  sum_.Add(text);
  AddText(text);
}

/// Not into the sum: the reader makes such values again from others.
void TableWriter::DerivedNumber(std::optional<std::int64_t> number) {
  if (number) return AddInteger(*number);
  cells_.emplace_back();
}

void TableWriter::DerivedText(std::optional<std::string_view> text) {
  if (text) return AddText(*text);
  cells_.emplace_back();
}

void TableWriter::AddInteger(std::int64_t number) {
  cells_.push_back({CellKind::Integer, number, 0, 0});
}

void TableWriter::AddText(std::string_view text) {
  const CellKind kind = IsText(text) ? CellKind::Text : CellKind::Blob;
  cells_.push_back({kind, 0, texts_.size(), text.size()});
  texts_ += text;
}

void TableWriter::EndRow() {
  if (cells_.size() == kBatchRows * columns_ || texts_.size() > kMostText) SendAll();
}

std::uint64_t TableWriter::Finish() {
  SendAll();
  return sum();
}

void TableWriter::SendAll() {
  if (cells_.size() == kBatchRows * columns_) {
    if (!batch_) batch_ = to_.Prepare(InsertOf(kBatchRows).c_str());
    Send(batch_.get(), cells_.data(), cells_.size());
  } else {
    for (std::size_t at = 0; at < cells_.size(); at += columns_) {
      Send(one_.get(), cells_.data() + at, columns_);
    }
  }
  cells_.clear();
  texts_.clear();
}

void TableWriter::Send(sqlite3_stmt* insert, const Cell* cells, std::size_t count) {
  // SQLite counts values from 1.
  for (std::size_t i = 0; i < count; ++i) Bind(insert, static_cast<int>(i + 1), cells[i]);
  // An INSERT gives no rows: one step does it.
  (void)to_.Step(insert);
  if (const int code = sqlite3_reset(insert); code != SQLITE_OK) to_.Fail(code);
}

/// Texts are not copied again: they stay until the next batch is bound.
void TableWriter::Bind(sqlite3_stmt* insert, int place, const Cell& cell) const {
  const char* const text = texts_.data() + cell.at;
  int code = SQLITE_OK;
  switch (cell.kind) {
    case CellKind::Null:
      code = sqlite3_bind_null(insert, place);
      break;
    case CellKind::Integer:
      code = sqlite3_bind_int64(insert, place, cell.number);
      break;
    case CellKind::Text:
      code = sqlite3_bind_text64(insert, place, text, cell.size, SQLITE_STATIC, SQLITE_UTF8);
      break;
    case CellKind::Blob:
      code = sqlite3_bind_blob64(insert, place, text, cell.size, SQLITE_STATIC);
      break;
  }
  if (code != SQLITE_OK) to_.Fail(code);
}

}  // namespace orsa::kesncd
