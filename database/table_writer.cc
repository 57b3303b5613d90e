// Values as SQLite keeps them.
#include "database/table_writer.h"

#include <sqlite3.h>

#include "text/printable.h"

namespace orsa::kesncd {

namespace {

/// "INSERT INTO bit VALUES(?,?,?,?,?,?,?)".
std::string InsertInto(const std::string& table, int columns) {
  std::string sql = "INSERT INTO " + table + " VALUES(?";
  for (int i = 1; i < columns; ++i) sql += ",?";
  return sql + ")";
}

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

TableWriter::TableWriter(Connection& to, const std::string& table, int columns)
    : to_(to), insert_(to.Prepare(InsertInto(table, columns).c_str())) {}

/// For calls that give no rows; Step has a check of its own.
void TableWriter::Check(int code) const {
  if (code != SQLITE_OK) to_.Fail(code);
}

/// Into the sum as the number, however it is written.
void TableWriter::Count(std::uint64_t count) {
  sum_.Add(count);
  if (count <= INT64_MAX) {
    Check(sqlite3_bind_int64(insert_.get(), ++column_, static_cast<sqlite3_int64>(count)));
  } else {
    // The text is gone after this line, so SQLite copies it.
    BindText(std::to_string(count), false);
  }
}

/// Whether there is one takes part in the sum, or "nothing, 1" and "1, nothing" would be alike.
void TableWriter::Count(const std::optional<std::uint64_t>& count) {
  sum_.Add(std::uint64_t{count ? 1U : 0U});
  if (count) return Count(*count);
  Check(sqlite3_bind_null(insert_.get(), ++column_));
}

/// The same 64 bits as a signed number, which SQLite has for all of them.
void TableWriter::Signed(std::uint64_t sum) {
  sum_.Add(sum);
  Check(sqlite3_bind_int64(insert_.get(), ++column_, static_cast<sqlite3_int64>(sum)));
}

/// Not copied: see the class comment.
void TableWriter::Text(std::string_view text) {
  sum_.Add(text);
  BindText(text, true);
}

/// Not into the sum: the reader makes such values again from others.
void TableWriter::DerivedNumber(std::optional<std::int64_t> number) {
  ++column_;
  Check(number ? sqlite3_bind_int64(insert_.get(), column_, *number)
               : sqlite3_bind_null(insert_.get(), column_));
}

void TableWriter::DerivedText(std::optional<std::string_view> text) {
  if (text) return BindText(*text, true);
  Check(sqlite3_bind_null(insert_.get(), ++column_));
}

/// `stays`: the bytes are there until EndRow.
void TableWriter::BindText(std::string_view text, bool stays) {
  const auto keep = stays ? SQLITE_STATIC : SQLITE_TRANSIENT;
  const auto size = static_cast<sqlite3_uint64>(text.size());
  // A null pointer would be NULL, not an empty text.
  const char* const bytes = text.data() == nullptr ? "" : text.data();
  ++column_;
  Check(IsText(text) ? sqlite3_bind_text64(insert_.get(), column_, bytes, size, keep, SQLITE_UTF8)
                     : sqlite3_bind_blob64(insert_.get(), column_, bytes, size, keep));
}

void TableWriter::EndRow() {
  // An INSERT gives no rows: one step does it.
  (void)to_.Step(insert_.get());
  Check(sqlite3_reset(insert_.get()));
  column_ = 0;
}

}  // namespace orsa::kesncd
