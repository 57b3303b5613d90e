// Checked values of a table's rows.
#include "database/table_reader.h"

#include <sqlite3.h>

namespace orsa::kesncd {

/// Also begins the row's values from the left.
bool TableReader::Next() {
  column_ = 0;
  return from_.Step(select_.get());
}

/// A count above 2^63 - 1; anything else in a text is no count.
std::uint64_t TableReader::TextCount() {
  const auto* const text = static_cast<const char*>(sqlite3_column_blob(select_.get(), column_));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(select_.get(), column_));
  const std::optional<std::uint64_t> count = LongCount({text, size});
  if (!count) from_.FailCorrupt();
  return *count;
}

/// The type is that of the value, not of the column: SQLite lets any value into any column.
std::uint64_t TableReader::Count(std::uint64_t most) {
  std::uint64_t count = 0;
  // Found once: a large database has tens of millions of values. Of a connection that one thread
  // uses this is allowed.
  sqlite3_value* const value = sqlite3_column_value(select_.get(), column_);
  const int type = sqlite3_value_type(value);
  if (type == SQLITE_INTEGER) {
    const sqlite3_int64 number = sqlite3_value_int64(value);
    if (number < 0) from_.FailCorrupt();
    count = static_cast<std::uint64_t>(number);
  } else if (type == SQLITE_TEXT) {
    count = TextCount();
  } else {
    // A blob, a null or a real.
    from_.FailCorrupt();
  }
  if (count > most) from_.FailCorrupt();
  sum_.Add(count);
  ++column_;
  return count;
}

/// As TableWriter adds it: whether there is one, then which.
std::optional<std::uint64_t> TableReader::OptionalCount() {
  const bool isKnown = sqlite3_column_type(select_.get(), column_) != SQLITE_NULL;
  sum_.Add(std::uint64_t{isKnown ? 1U : 0U});
  if (isKnown) return Count();
  ++column_;
  return std::nullopt;
}

/// Any 64 bits are right here; the sum over the table tells whether they are the ones written.
std::uint64_t TableReader::Signed() {
  sqlite3_value* const value = sqlite3_column_value(select_.get(), column_++);
  if (sqlite3_value_type(value) != SQLITE_INTEGER) from_.FailCorrupt();
  const auto sum = static_cast<std::uint64_t>(sqlite3_value_int64(value));
  sum_.Add(sum);
  return sum;
}

/// Names that are no UTF-8 are blobs; both are bytes here.
std::string TableReader::Text() {
  const int type = sqlite3_column_type(select_.get(), column_);
  if (type != SQLITE_TEXT && type != SQLITE_BLOB) from_.FailCorrupt();
  const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(select_.get(), column_));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(select_.get(), column_));
  ++column_;
  // Before anything is copied.
  if (size > budget_) from_.FailCorrupt();
  budget_ -= size;
  // SQLite gives a null pointer for an empty text.
  const std::string_view text =
      bytes == nullptr ? std::string_view() : std::string_view(bytes, size);
  sum_.Add(text);
  return std::string(text);
}

/// Nothing takes no part in the sum, as TableWriter::DerivedNumber.
Fact TableReader::Value() {
  const int type = sqlite3_column_type(select_.get(), column_);
  if (type == SQLITE_INTEGER) return Count();
  if (type == SQLITE_TEXT || type == SQLITE_BLOB) return Text();
  if (type != SQLITE_NULL) from_.FailCorrupt();
  ++column_;
  return {};
}

/// Without it a row that was taken out of a table would make all rows after it another's.
void TableReader::Place(std::uint64_t expected) {
  sqlite3_value* const value = sqlite3_column_value(select_.get(), column_++);
  const bool isPlace = sqlite3_value_type(value) == SQLITE_INTEGER &&
                       static_cast<std::uint64_t>(sqlite3_value_int64(value)) == expected;
  if (!isPlace) from_.FailCorrupt();
}

}  // namespace orsa::kesncd
