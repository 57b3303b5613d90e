// Rows on their way into a table.
//
// Each value goes to SQLite and into the sum over the table, which the reader makes again. So what
// is written and what is read back cannot differ without being noticed.
//
// Rows are sent by dozens: to begin and end a statement takes SQLite as long as a row.
#ifndef KESNCD_DATABASE_TABLE_WRITER_H_
#define KESNCD_DATABASE_TABLE_WRITER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "database/row_sum.h"
#include "database/sqlite.h"

namespace orsa::kesncd {

/// Calling order: for each row all its values from the left to the right, then EndRow; Finish. What
/// the program does not read back is Derived and takes no part in the sum. Texts are copied.
class TableWriter {
 public:
  /// `columns` is how many values each row has; the table must be there.
  TableWriter(Connection& to, const std::string& table, std::size_t columns);

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
  enum class CellKind : std::uint8_t { Null, Integer, Text, Blob };
  struct Cell {
    CellKind kind = CellKind::Null;
    std::int64_t number = 0;  // an integer
    std::size_t at = 0;       // of a text or a blob, in texts_
    std::size_t size = 0;
  };

  std::string InsertOf(std::size_t rows) const;
  void AddInteger(std::int64_t number);
  void AddText(std::string_view text);
  void SendAll();
  void Send(sqlite3_stmt* insert, const Cell* cells, std::size_t count);
  void Bind(sqlite3_stmt* insert, int place, const Cell& cell) const;

  Connection& to_;
  const std::string table_;
  const std::size_t columns_;
  const Statement one_;  // inserts one row
  Statement batch_;      // inserts a full batch; null before the first
  RowSum sum_;
  std::vector<Cell> cells_;  // of rows that were not sent yet
  std::string texts_;        // in those
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_TABLE_WRITER_H_
