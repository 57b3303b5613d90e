// Rows in memory that a statement of SQLite reads as if they were a table.
//
// To bind each value of a row to a statement, and to begin and end one for every few rows, takes
// SQLite twice as long.
#ifndef KESNCD_DATABASE_GATHERED_ROWS_H_
#define KESNCD_DATABASE_GATHERED_ROWS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "database/sqlite.h"

namespace orsa::kesncd {

/// Calling order: construct; then the values of some rows, from the left to the right, a statement
/// that selects from the table, Clear, and so on. Texts are copied.
class GatheredRows {
 public:
  /// Makes them a table of the connection, which has to outlive them; no other may have that name.
  GatheredRows(Connection& of, std::string table, std::size_t columns);
  /// No statement that selects from the table may be there any more.
  ~GatheredRows();
  GatheredRows(const GatheredRows&) = delete;
  GatheredRows& operator=(const GatheredRows&) = delete;

  void AddNull() { cells_.emplace_back(); }
  void AddInteger(std::int64_t number) { cells_.push_back({Kind::Integer, number, 0}); }
  /// A text where it is UTF-8 without a NUL, else a blob.
  void AddText(std::string_view text);
  void Clear();

  bool IsEmpty() const { return cells_.empty(); }
  std::size_t Rows() const { return cells_.size() / columns_; }
  // Of all texts together.
  std::size_t TextBytes() const { return texts_.size(); }

 private:
  struct Module;
  enum class Kind : std::uint8_t { Null, Integer, Text, Blob };
  struct Cell {
    Kind kind = Kind::Null;
    std::int64_t number = 0;  // an integer, or where in texts_ a text or a blob begins
    std::size_t size = 0;     // of a text or a blob
  };

  Connection& of_;
  const std::string table_;
  const std::size_t columns_;
  std::vector<Cell> cells_;  // row by row
  std::string texts_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_GATHERED_ROWS_H_
