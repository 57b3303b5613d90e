// Rewriting a declared name; the range is kept as its bounds, however many bits it has.
#include "names/design_names.h"

#include <algorithm>
#include <charconv>

#include "text/number.h"

namespace orsa::kesncd {

std::uint64_t DesignNames::RangeSize() const {
  return isRange ? static_cast<std::uint64_t>(high - low) + 1 : 0;
}

DesignNames RewriteName(const std::string& declared) {
  DesignNames names;
  names.base = declared.substr(0, declared.find(']'));
  const std::size_t bracket = names.base.find('[');
  if (bracket == std::string::npos) return names;
  names.base[bracket] = '_';
  const std::size_t colon = names.base.find(':');
  if (colon == std::string::npos) return names;
  // A ':' before the bracket leaves the first bound open to the end of the name.
  const std::size_t firstLength = colon > bracket ? colon - bracket - 1 : std::string::npos;
  const int first = ScanInt(names.base.substr(bracket + 1, firstLength).c_str());
  const int second = ScanInt(names.base.substr(colon + 1).c_str());
  names.isRange = true;
  names.low = std::min(first, second);
  names.high = std::max(first, second);
  names.base.resize(bracket + 1);
  return names;
}

bool TakeBitNumber(std::string_view& name, std::int64_t& number) {
  const std::size_t digits = name.find_last_not_of("0123456789") + 1;
  if (digits == 0 || digits == name.size()) return false;
  const bool isNegative = name[digits - 1] == '-';
  const std::size_t start = isNegative ? digits - 1 : digits;
  if (start == 0 || name[start - 1] != '_') return false;
  const bool isPadded = name[digits] == '0' && (isNegative || name.size() - digits > 1);
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(name.data() + start, name.data() + name.size(), value);
  if (isPadded || error != std::errc()) return false;
  number = value;
  name = name.substr(0, start);
  return true;
}

}  // namespace orsa::kesncd
