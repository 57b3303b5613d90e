// Values as SQLite keeps them.
#include "database/table_writer.h"

#include <sqlite3.h>

namespace orsa::kesncd {

namespace {

// So many rows that what a statement costs hardly counts; more of them would leave the processor's
// cache.
constexpr std::size_t kBatchRows = 256;
// Long texts are not gathered for long: lists of toggles have millions of numbers at times.
constexpr std::size_t kMostText = std::size_t{1} << 20U;

}  // namespace

/// "INSERT INTO clock SELECT * FROM rows_of_clock". A number that is NULL is SQLite's to choose: 1
/// in an empty table, then the next one each time, so the first row has to name its own.
TableWriter::TableWriter(Connection& to, const std::string& table, std::size_t columns,
                         RowNumbers numbers)
    : to_(to), rows_(to, "rows_of_" + table, columns) {
  const auto insert = [&](const std::string& number) {
    const std::string sql =
        "INSERT INTO " + table + " SELECT " + number + "* FROM rows_of_" + table;
    return to_.Prepare(sql.c_str());
  };
  const bool areNumbered = numbers == RowNumbers::FromZero;
  if (areNumbered) first_ = insert("0,");
  further_ = insert(areNumbered ? "NULL," : "");
}

/// Into the sum as the number, however it is written.
void TableWriter::Count(std::uint64_t count) {
  sum_.Add(count);
  if (count <= INT64_MAX) {
    rows_.AddInteger(static_cast<std::int64_t>(count));
  } else {
    rows_.AddText(std::to_string(count));
  }
}

/// Whether there is one takes part in the sum, or "nothing, 1" and "1, nothing" would be alike.
void TableWriter::Count(const std::optional<std::uint64_t>& count) {
  sum_.Add(std::uint64_t{count ? 1U : 0U});
  if (count) return Count(*count);
  rows_.AddNull();
}

/// The same 64 bits as a signed number, which SQLite has for all of them.
void TableWriter::Signed(std::uint64_t sum) {
  sum_.Add(sum);
  rows_.AddInteger(static_cast<std::int64_t>(sum));
}

void TableWriter::Text(std::string_view text) {
  sum_.Add(text);
  rows_.AddText(text);
}

/// Not into the sum: the reader makes such values again from others.
void TableWriter::DerivedNumber(std::optional<std::int64_t> number) {
  if (number) return rows_.AddInteger(*number);
  rows_.AddNull();
}

void TableWriter::DerivedText(std::optional<std::string_view> text) {
  if (text) return rows_.AddText(*text);
  rows_.AddNull();
}

void TableWriter::EndRow() {
  if (first_ || rows_.Rows() == kBatchRows || rows_.TextBytes() > kMostText) Send();
}

std::uint64_t TableWriter::Finish() {
  if (!rows_.IsEmpty()) Send();
  return sum();
}

void TableWriter::Send() {
  sqlite3_stmt* const insert = first_ ? first_.get() : further_.get();
  // An INSERT gives no rows: one step does it.
  (void)to_.Step(insert);
  if (const int code = sqlite3_reset(insert); code != SQLITE_OK) to_.Fail(code);
  first_.reset();
  rows_.Clear();
}

}  // namespace orsa::kesncd
