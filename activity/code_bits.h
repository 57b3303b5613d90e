// Where the bits of each identifier code stand among all bits of a dump.
#ifndef KESNCD_ACTIVITY_CODE_BITS_H_
#define KESNCD_ACTIVITY_CODE_BITS_H_

#include <cstdint>
#include <vector>

#include "vcd/declarations.h"

namespace orsa::kesncd {

class CodeBits {
 public:
  explicit CodeBits(const Declarations& declarations);

  std::uint32_t codes() const { return static_cast<std::uint32_t>(first_.size() - 1); }
  std::uint64_t bits() const { return first_.back(); }
  /// The number of a code's lowest bit.
  std::uint64_t First(std::uint32_t codeId) const { return first_[codeId]; }
  /// As many as the code's widest variable has.
  std::uint32_t Width(std::uint32_t codeId) const {
    return static_cast<std::uint32_t>(first_[codeId + 1] - first_[codeId]);
  }
  /// First for every code and, at the end, the number of bits.
  const std::vector<std::uint64_t>& all() const { return first_; }

 private:
  std::vector<std::uint64_t> first_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_CODE_BITS_H_
