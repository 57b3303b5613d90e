// Where the bits of each identifier code stand among all bits of a dump.
//
// Figures of bits are in one array. Code 0 with 8 bits and code 1 with 1 bit have the places 0 to 7
// and 8; a code without bits has a width of 0 and the place of the one after it.
#ifndef KESNCD_ACTIVITY_CODE_BITS_H_
#define KESNCD_ACTIVITY_CODE_BITS_H_

#include <cstdint>
#include <vector>

#include "vcd/declarations.h"

namespace orsa::kesncd {

/// Made once from declarations, then only read, by several threads too. Eight bytes a code.
class CodeBits {
 public:
  explicit CodeBits(const Declarations& declarations);

  // Identifier codes that are declared, whether or not they have bits.
  std::uint32_t codes() const { return static_cast<std::uint32_t>(first_.size() - 1); }
  std::uint64_t bits() const { return first_.back(); }
  /// The number of a code's lowest bit. Of a code without bits it is that of the next one.
  std::uint64_t First(std::uint32_t codeId) const { return first_[codeId]; }
  /// As many as the code's widest variable has.
  std::uint32_t Width(std::uint32_t codeId) const {
    return static_cast<std::uint32_t>(first_[codeId + 1] - first_[codeId]);
  }
  /// First for every code and, at the end, the number of bits.
  const std::vector<std::uint64_t>& all() const { return first_; }

 private:
  std::vector<std::uint64_t> first_;  // see all()
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_CODE_BITS_H_
