// Which facts are as they were written.
//
// A fact is checked when it is asked for, not when the file is opened: one that nobody asks for
// does no harm, and what is missing shows at its first use.
#include "database/fact_reader.h"

#include <variant>

namespace orsa::kesncd {

// Facts are there always, also those that are nothing.
const Fact& FactReader::FactOf(const std::string& name) const {
  const auto place = facts_.find(name);
  if (place == facts_.end()) from_.FailCorrupt();
  return place->second;
}

/// SQLite's integers have a sign, so a count beyond 2^63 - 1 is kept as a text.
std::optional<std::uint64_t> FactReader::OptionalCountOf(const std::string& name) const {
  const Fact& fact = FactOf(name);
  if (std::holds_alternative<std::monostate>(fact)) return {};
  if (const auto* const count = std::get_if<std::uint64_t>(&fact)) return *count;
  const std::optional<std::uint64_t> count = LongCount(std::get<std::string>(fact));
  if (!count) from_.FailCorrupt();
  return count;
}

std::uint64_t FactReader::CountOf(const std::string& name, std::uint64_t most) const {
  const std::optional<std::uint64_t> count = OptionalCountOf(name);
  if (!count || *count > most) from_.FailCorrupt();
  return *count;
}

/// A count where a text belongs is corrupt, as is NULL.
std::string FactReader::TextOf(const std::string& name) const {
  const auto* const text = std::get_if<std::string>(&FactOf(name));
  if (text == nullptr) from_.FailCorrupt();
  return *text;
}

/// The sum is a fact of its own, "checksum_" and the table's name.
void FactReader::CheckSum(const TableReader& rows, const std::string& table) const {
  if (rows.sum() != CountOf("checksum_" + table)) from_.FailCorrupt();
}

}  // namespace orsa::kesncd
