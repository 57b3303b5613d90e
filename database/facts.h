// The facts of a run, by name, as a database keeps them.
//
// In the table `run`, for example:
//
//   name       value
//   dump       sim.vcd
//   has_host   1
//   tick_fs    1000000
//   last_tick  18446744073709551615      (a text: SQLite's integers end at 2^63 - 1)
#ifndef KESNCD_DATABASE_FACTS_H_
#define KESNCD_DATABASE_FACTS_H_

#include <charconv>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace orsa::kesncd {

/// Nothing, a count or a text. Texts of names are UTF-8 or any bytes; counts have 64 bits.
using Fact = std::variant<std::monostate, std::uint64_t, std::string>;
// In order of name, so that a database of the same run has the same bytes.
using FactsByName = std::map<std::string, Fact>;

/// A count that SQLite has no integer for, which is a text there; nothing for any other text. Only
/// what FactOfCount writes as a text: a text of a smaller number was written by somebody else.
inline std::optional<std::uint64_t> LongCount(std::string_view text) {
  std::uint64_t count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error != std::errc() || end != text.data() + text.size() || count <= INT64_MAX) return {};
  return count;
}

/// The inverse of LongCount: a text only where there is no other way.
inline Fact FactOfCount(std::uint64_t count) {
  return count <= INT64_MAX ? Fact(count) : Fact(std::to_string(count));
}

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_FACTS_H_
