// Facts of a database on their way out, checked: the file may be anybody's.
#ifndef KESNCD_DATABASE_FACT_READER_H_
#define KESNCD_DATABASE_FACT_READER_H_

#include <cstdint>
#include <optional>
#include <string>

#include "database/facts.h"
#include "database/sqlite.h"
#include "database/table_reader.h"

namespace orsa::kesncd {

/// Gives facts by name. What is missing, or of another kind than it was written, throws Failure
/// with Unusable.
class FactReader {
 public:
  /// Both have to outlive the reader; `facts` may be filled later.
  FactReader(const Connection& from, const FactsByName& facts) : from_(from), facts_(facts) {}

  /// Whether there is such a fact, be it nothing.
  bool Has(const std::string& name) const { return facts_.contains(name); }
  /// NULL is "not known", as of a dump without a time scale.
  std::optional<std::uint64_t> OptionalCountOf(const std::string& name) const;
  /// "Not known" is corrupt here, and so is a number above `most`.
  std::uint64_t CountOf(const std::string& name, std::uint64_t most = UINT64_MAX) const;
  std::string TextOf(const std::string& name) const;
  /// To be called when the table was read to its end: its rows have to be those that were written.
  void CheckSum(const TableReader& rows, const std::string& table) const;
  /// For facts that do not go together.
  [[noreturn]] void FailCorrupt() const { from_.FailCorrupt(); }

 private:
  const Fact& FactOf(const std::string& name) const;

  const Connection& from_;
  const FactsByName& facts_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_FACT_READER_H_
