// Rewriting a declared name; the range is kept as its bounds, however many bits it has.
#include "names/design_names.h"

#include <algorithm>
#include <charconv>

#include "text/number.h"

namespace orsa::kesncd {

/// At most 2^32, so the sum fits.
std::uint64_t DesignNames::RangeSize() const {
  return isRange ? static_cast<std::uint64_t>(high - low) + 1 : 0;
}

DesignNames RewriteName(const std::string& declared) {
  // Only the first index takes part: "mem[0][31:0]" is mem_0.
  DesignNames names;
  names.base = declared.substr(0, declared.find(']'));
  const std::size_t bracket = names.base.find('[');
  if (bracket == std::string::npos) return names;
  // "data[3" is "data_3" now.
  names.base[bracket] = '_';
  const std::size_t colon = names.base.find(':');
  if (colon == std::string::npos) return names;
  // A ':' before the bracket leaves the first bound open to the end of the name. The number at its
  // start is what counts then.
  const std::size_t firstLength = colon > bracket ? colon - bracket - 1 : std::string::npos;
  const int first = ScanInt(names.base.substr(bracket + 1, firstLength).c_str());
  const int second = ScanInt(names.base.substr(colon + 1).c_str());
  names.isRange = true;
  // Ranges are written from either end: [7:0] and [0:7] have the same names.
  names.low = std::min(first, second);
  names.high = std::max(first, second);
  // What is left is the base with its "_".
  names.base.resize(bracket + 1);
  return names;
}

bool TakeBitNumber(std::string_view& name, std::int64_t& number) {
  // All of it is digits, or its last character is none: no "_" and number.
  const std::size_t digits = name.find_last_not_of("0123456789") + 1;
  if (digits == 0 || digits == name.size()) return false;
  // "data_-1" comes from "data[-1]".
  const bool isNegative = name[digits - 1] == '-';
  const std::size_t start = isNegative ? digits - 1 : digits;
  if (start == 0 || name[start - 1] != '_') return false;
  // "data_05" is no name of bit 5, and "data_-0" none of bit 0.
  const bool isPadded = name[digits] == '0' && (isNegative || name.size() - digits > 1);
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(name.data() + start, name.data() + name.size(), value);
  // A number of more than 32 bits gives an error.
  if (isPadded || error != std::errc()) return false;
  number = value;
  name = name.substr(0, start);
  return true;
}

}  // namespace orsa::kesncd
