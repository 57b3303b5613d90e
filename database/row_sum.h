// A number that stands for all that was written into a table, or read from it. Nothing in an SQLite
// file tells a figure with a flipped bit from the one that was counted; this does.
#ifndef KESNCD_DATABASE_ROW_SUM_H_
#define KESNCD_DATABASE_ROW_SUM_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "text/number.h"

namespace orsa::kesncd {

/// The same values in the same order give the same sum, on every machine. Calling order: Add for
/// each value in turn, value. No protection against somebody who wants to deceive, who can compute
/// it as well: only against what goes wrong by itself.
class RowSum {
 public:
  /// Multiplied by an odd number, so that no value is lost, and mixed, so that order matters.
  void Add(std::uint64_t value) {
    sum_ = (sum_ ^ value) * kFactor;
    sum_ ^= sum_ >> 32;
  }
  /// The length first: "ab", "c" is not "a", "bc".
  void Add(std::string_view text) {
    Add(std::uint64_t{text.size()});
    for (std::size_t i = 0; i < text.size(); i += sizeof(std::uint64_t)) {
      const std::size_t left = text.size() - i;
      Add(LoadBytes<std::uint64_t>(text.data() + i, std::min(sizeof(std::uint64_t), left)));
    }
  }
  /// 63 bits: SQLite's integers have a sign.
  std::uint64_t value() const { return sum_ >> 1; }

 private:
  static constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;

  std::uint64_t sum_ = 0;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_ROW_SUM_H_
