// Design-style names of a flat module's signals: "data[3]" is data_3, "data[7:0]" is data_0 to
// data_7.
#ifndef KESNCD_NAMES_DESIGN_NAMES_H_
#define KESNCD_NAMES_DESIGN_NAMES_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace orsa::kesncd {

/// The names that one declared name stands for: `base` followed by each integer from `low` to
/// `high`, or `base` alone when it is no range. A range is kept as its bounds: "data[2147483647:0]"
/// costs as much as "data[1:0]".
struct DesignNames {
  // Of a range it ends with the "_" that the bracket became: "data_". Else it is the one name,
  // "data_3" or "clk".
  std::string base;
  bool isRange = false;
  // Both have 32 bits, and `low` is not above `high`.
  std::int64_t low = 0;
  std::int64_t high = 0;

  /// How many names the range stands for; 0 for a single name.
  std::uint64_t RangeSize() const;
};

/// The ranges of one module together may stand for so many names: more than any design has, few
/// enough to hold. A corrupt range such as [2147483647:0] must not fill the memory.
inline constexpr std::uint64_t kMostFlatNames = 16777216;

/// The rewriting never fails: what has no bracket is a name as it is.
DesignNames RewriteName(const std::string& declared);

/// A name of the flat map that may be a bit of a bus: "data_5" is the bit 5 of "data_". Takes the
/// number off the name; false, with both untouched, for a name that ends in no number as it is
/// written there: without a leading zero, and of no more than 32 bits. Exactly the texts that
/// std::to_string makes of a number count, since the map's names are made so.
bool TakeBitNumber(std::string_view& name, std::int64_t& number);

}  // namespace orsa::kesncd

#endif  // KESNCD_NAMES_DESIGN_NAMES_H_
