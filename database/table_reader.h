// Rows on their way out of a table. The file may be anybody's: every value is checked to be of the
// kind that was written, and what is read together is never more than the file holds.
#ifndef KESNCD_DATABASE_TABLE_READER_H_
#define KESNCD_DATABASE_TABLE_READER_H_

#include <cstdint>
#include <optional>
#include <string>

#include "database/facts.h"
#include "database/row_sum.h"
#include "database/sqlite.h"

namespace orsa::kesncd {

/// Calling order: Next, then the row's values from the left to the right, until Next returns false;
/// then sum. What is not as it was written throws Failure with Unusable. `select` must give the
/// columns in the order in which TableWriter got them, and the rows in their order: the sum depends
/// on both.
class TableReader {
 public:
  /// `budget` is how many bytes texts of all tables may still have together. One budget for all
  /// tables of a file: its size. So a small file cannot make this program allocate much by saying
  /// that a text is long, or by giving the same text again and again.
  TableReader(Connection& from, const char* select, std::uint64_t& budget)
      : from_(from), select_(from.Prepare(select)), budget_(budget) {}

  bool Next();
  /// An integer, or a long count as a text; negative ones are corrupt.
  std::uint64_t Count(std::uint64_t most = UINT64_MAX);
  std::uint32_t Small(std::uint32_t most = UINT32_MAX) {
    return static_cast<std::uint32_t>(Count(most));
  }
  /// NULL is nothing.
  std::optional<std::uint64_t> OptionalCount();
  /// What TableWriter::Signed wrote.
  std::uint64_t Signed();
  /// Any bytes; a text or a blob.
  std::string Text();
  /// A count, a text or nothing.
  Fact Value();
  /// The number of a row, which are numbered through: takes no part in the sum. A gap or a number
  /// that comes twice would shift everything after it.
  void Place(std::uint64_t expected);

  // Of all values read so far, as TableWriter::sum.
  std::uint64_t sum() const { return sum_.value(); }

 private:
  std::uint64_t TextCount();

  Connection& from_;  // has to outlive the reader
  const Statement select_;
  std::uint64_t& budget_;
  RowSum sum_;
  int column_ = 0;  // the next one to be read
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_TABLE_READER_H_
