// Rows on their way into a table.
//
// Each value goes to SQLite and into the sum over the table, which the reader makes again. So what
// is written and what is read back cannot differ without being noticed.
#ifndef KESNCD_DATABASE_TABLE_WRITER_H_
#define KESNCD_DATABASE_TABLE_WRITER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "database/row_sum.h"
#include "database/sqlite.h"

namespace orsa::kesncd {

/// Calling order: for each row its values from the left to the right, then EndRow. What the program
/// does not read back is Derived and takes no part in the sum. Texts have to stay until EndRow.
class TableWriter {
 public:
  /// `columns` is how many values each row has; the table must be there.
  TableWriter(Connection& to, const std::string& table, int columns);

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
  /// Sends the row; a row that is not complete keeps values of the one before, so give all.
  void EndRow();

  // Of all values but the derived ones.
  std::uint64_t sum() const { return sum_.value(); }

 private:
  void BindText(std::string_view text, bool stays);
  void Check(int code) const;

  Connection& to_;
  const Statement insert_;
  RowSum sum_;
  // The last one that was bound; SQLite counts from 1.
  int column_ = 0;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_TABLE_WRITER_H_
