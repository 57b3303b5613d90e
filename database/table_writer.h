// Rows on their way into a table.
//
// Each value goes to SQLite and into the sum over the table, which the reader makes again. So what
// is written and what is read back cannot differ without being noticed.
#ifndef KESNCD_DATABASE_TABLE_WRITER_H_
#define KESNCD_DATABASE_TABLE_WRITER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "database/gathered_rows.h"
#include "database/row_sum.h"
#include "database/sqlite.h"

namespace orsa::kesncd {

/// Who numbers the rows of a table.
enum class RowNumbers : std::uint8_t {
  // Nobody, or a number is a value like the others.
  None,
  // SQLite: 0, 1, 2 and so on, in a column before the values. It need not look then where a row
  // belongs.
  FromZero,
};

/// Calling order: for each row all its values from the left to the right, then EndRow; Finish. What
/// the program does not read back is Derived and takes no part in the sum. Texts are copied.
class TableWriter {
 public:
  /// `columns` is how many values each row has; the table must be there.
  TableWriter(Connection& to, const std::string& table, std::size_t columns,
              RowNumbers numbers = RowNumbers::None);

  /// As an integer where SQLite has one for it, else as a text.
  void Count(std::uint64_t count);
  /// Nothing is NULL.
  void Count(const std::optional<std::uint64_t>& count);
  /// A text where it is UTF-8 without a NUL, else a blob.
  void Text(std::string_view text);
  /// A sum that may have wrapped around, as the negative number that it is then.
  void Signed(std::uint64_t sum);
  /// For those who ask in SQL: numbers that could be computed from the others.
  void DerivedNumber(std::optional<std::int64_t> number);
  void DerivedText(std::optional<std::string_view> text);
  void EndRow();
  /// Sends the rows that were not sent yet. Returns the sum, for the table's fact.
  std::uint64_t Finish();

  // Of all values but the derived ones, sent or not.
  std::uint64_t sum() const { return sum_.value(); }

 private:
  void Send();

  Connection& to_;
  // Rows that were not sent yet. Before the statements, which select from them.
  GatheredRows rows_;
  Statement first_;  // sends the first row; null where it goes as the others do, or is gone
  Statement further_;
  RowSum sum_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_TABLE_WRITER_H_
