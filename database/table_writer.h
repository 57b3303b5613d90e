// Rows on their way into a table.
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
  TableWriter(Connection& to, const std::string& table, int columns);

  void Count(std::uint64_t count);
  void Count(const std::optional<std::uint64_t>& count);
  void Text(std::string_view text);
  /// A sum that may have wrapped around, as the negative number that it is then.
  void Signed(std::uint64_t sum);
  void DerivedNumber(std::optional<std::int64_t> number);
  void DerivedText(std::optional<std::string_view> text);
  void EndRow();

  std::uint64_t sum() const { return sum_.value(); }

 private:
  void BindText(std::string_view text, bool stays);
  void Check(int code) const;

  Connection& to_;
  const Statement insert_;
  RowSum sum_;
  int column_ = 0;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_TABLE_WRITER_H_
