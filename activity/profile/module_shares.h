// Which bits count in which module, so that each bit of a code counts once in a module however many
// names the code has there: a port has one in each module that it passes through.
//
// A module's figure is the sum over it and all modules below. A bit adds to every module that names
// it and is taken off the innermost module around each two neighbouring names, which would else
// have it twice. So a change costs as many additions as its signal has names, not as many as there
// are modules around them.
//
// For example, soc/u1/clk and soc/u2/clk are one code: it adds 1 to u1 and 1 to u2 and takes 1 off
// soc, so that the sums with those below are 1, 1 and 1.
#ifndef KESNCD_ACTIVITY_PROFILE_MODULE_SHARES_H_
#define KESNCD_ACTIVITY_PROFILE_MODULE_SHARES_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "activity/code_bits.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

/// A scope with what is in it, down to some depth: a module is known by its number, the outermost
/// is 0, and each comes before those in it.
struct ModuleTree {
  static constexpr std::uint32_t kOutside = UINT32_MAX;

  std::vector<std::uint32_t> scopes;   // of each module
  std::vector<std::uint32_t> parents;  // modules; the outermost is its own
  std::vector<std::uint32_t> depths;   // below the outermost
  std::vector<std::uint32_t> places;   // by scope, the module that it counts in, or kOutside

  std::size_t size() const { return scopes.size(); }

  /// Turns sums of modules without those below into sums with them. From the last module to the
  /// first, so that a sum is complete before it is added.
  template <class Sum>
  void AddUp(std::vector<Sum>& sums) const {
    for (std::size_t module = size(); module-- > 1;) sums[parents[module]] += sums[module];
  }
};

/// The modules in a scope down to `depth` levels below it. What lies deeper counts in the deepest
/// module around it. A design of a million modules would need as many sums, hence the depth.
ModuleTree ModulesIn(const Declarations& declarations, std::uint32_t scope, std::uint32_t depth);

/// Bits of a code that count so many times, which may be less than none, in a module's own sum.
struct ModuleShare {
  std::uint32_t module = 0;
  std::int32_t times = 0;
  std::uint32_t from = 0;  // the lowest bit
  std::uint32_t to = 0;    // the bit after the highest

  bool operator==(const ModuleShare&) const = default;
};

/// Made once for declarations and a tree, then asked for each change.
class ModuleShares {
 public:
  /// As `kesncd activity` sums: a module has the codes named in it or below it, each once, at the
  /// greatest width that it has there.
  static ModuleShares ByName(const Declarations& declarations, const ModuleTree& tree);
  /// Each code counts in one module, the highest that names it, of equally high ones the first: own
  /// sums of modules then share nothing.
  static ModuleShares ByOwner(const Declarations& declarations, const CodeBits& codes,
                              const ModuleTree& tree);
  /// Both at once: sums of modules by name, and after them, for each module, what has to be added
  /// to have its sum by owner. That is nothing for a code which one module names.
  static ModuleShares ByBoth(const Declarations& declarations, const CodeBits& codes,
                             const ModuleTree& tree);

  /// No code counts in any module.
  static ModuleShares None(const CodeBits& codes) { return {codes.codes(), {}}; }

  // Empty for a code that no module wants.
  std::span<const ModuleShare> Of(std::uint32_t codeId) const {
    return {shares_.data() + first_[codeId], shares_.data() + first_[codeId + 1]};
  }

 private:
  struct Found {
    std::uint32_t codeId;
    ModuleShare share;
  };
  // What makes the shares of ByName; see module_shares.cc.
  class Walk;

  ModuleShares(std::size_t codes, const std::vector<Found>& found);

  std::vector<std::size_t> first_;  // by code, and the end
  std::vector<ModuleShare> shares_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_MODULE_SHARES_H_
