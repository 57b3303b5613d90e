// Design-style names of a flat module's signals: "data[3]" is data_3, "data[7:0]" is data_0 to
// data_7.
#ifndef KESNCD_NAMES_DESIGN_NAMES_H_
#define KESNCD_NAMES_DESIGN_NAMES_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace orsa::kesncd {

/// The names that one declared name stands for: `base` followed by each integer from `low` to
/// `high`, or `base` alone when it is no range.
struct DesignNames {
  std::string base;
  bool isRange = false;
  std::int64_t low = 0;
  std::int64_t high = 0;

  /// How many names the range stands for; 0 for a single name.
  std::uint64_t RangeSize() const;
};

DesignNames RewriteName(const std::string& declared);

/// A name of the flat map that may be a bit of a bus: "data_5" is the bit 5 of "data_". Takes the
/// number off the name; false, with both untouched, for a name that ends in no number as it is
/// written there: without a leading zero, and of no more than 32 bits.
bool TakeBitNumber(std::string_view& name, std::int64_t& number);

}  // namespace orsa::kesncd

#endif  // KESNCD_NAMES_DESIGN_NAMES_H_
