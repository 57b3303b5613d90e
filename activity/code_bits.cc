// Gives every code the bits of its widest variable.
#include "activity/code_bits.h"

#include <algorithm>

#include "vcd/bit_names.h"

namespace orsa::kesncd {

CodeBits::CodeBits(const Declarations& declarations) : first_(declarations.codes.size() + 1) {
  std::vector<bool> typeHasBits;
  for (const std::string& type : declarations.types) typeHasBits.push_back(TypeHasBits(type));
  // Each width in the place after its code's own, so that the sums over them end up right. A
  // variable of 8 bits and one of 4 on the same code share the lower 4.
  for (const DumpVariable& variable : declarations.variables) {
    // Reals, strings and events take no bits, also where their code is another variable's too.
    if (!typeHasBits[variable.typeId]) continue;
    std::uint64_t& width = first_[variable.codeId + 1];
    width = std::max<std::uint64_t>(width, variable.width);
  }
  // From widths to places: first_[i] is now where code i begins.
  for (std::size_t i = 1; i < first_.size(); ++i) first_[i] += first_[i - 1];
}

}  // namespace orsa::kesncd
