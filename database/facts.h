// The facts of a run, by name, as a database keeps them.
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

/// Nothing, a count or a text.
using Fact = std::variant<std::monostate, std::uint64_t, std::string>;
using FactsByName = std::map<std::string, Fact>;

/// A count that SQLite has no integer for, which is a text there; nothing for any other text.
inline std::optional<std::uint64_t> LongCount(std::string_view text) {
  std::uint64_t count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error != std::errc() || end != text.data() + text.size() || count <= INT64_MAX) return {};
  return count;
}

inline Fact FactOfCount(std::uint64_t count) {
  return count <= INT64_MAX ? Fact(count) : Fact(std::to_string(count));
}

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_FACTS_H_
