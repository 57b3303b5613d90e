// Walks the scopes in the dump's order and notes what each name adds to the sums of modules.
//
// Names are met in the dump's order, each module before those in it. For a code with names in
// soc/u1 and soc/u1/alu, one bit each, the walk finds +1 for u1, +1 for alu and -1 for u1: what is
// left is a share of 1 in alu, which adding up brings into u1, once.
#include "activity/profile/module_shares.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <tuple>
#include <utility>

#include "vcd/bit_names.h"

namespace orsa::kesncd {

namespace {

/// Calls `visit(scope, depth)` for a scope and all below it, in the dump's order. Without
/// recursion, as a hostile dump may nest scopes any number deep.
template <class Visit>
void ForEachScope(const Declarations& declarations, std::uint32_t scope, Visit visit) {
  struct Pending {
    std::uint32_t scope;
    std::uint32_t depth;
  };
  std::vector<Pending> pending{{scope, 0}};
  while (!pending.empty()) {
    const Pending next = pending.back();
    pending.pop_back();
    visit(next.scope, next.depth);
    const auto& below = declarations.scopes[next.scope].scopes;
    // Backwards onto the stack, to come off in the dump's order.
    for (auto child = below.rbegin(); child != below.rend(); ++child) {
      pending.push_back({*child, next.depth + 1});
    }
  }
}

/// By the number of the type. Types are compared as texts, in any letter case: once each here, not
/// once for each of their variables.
std::vector<bool> TypesWithBits(const Declarations& declarations) {
  std::vector<bool> withBits;
  for (const std::string& type : declarations.types) withBits.push_back(TypeHasBits(type));
  return withBits;
}

}  // namespace

/// Scopes outside keep kOutside. The parent of a scope was given its place before, as the walk goes
/// from the outside in.
ModuleTree ModulesIn(const Declarations& declarations, std::uint32_t scope, std::uint32_t depth) {
  ModuleTree tree;
  tree.places.assign(declarations.scopes.size(), ModuleTree::kOutside);
  ForEachScope(declarations, scope, [&](std::uint32_t at, std::uint32_t level) {
    // The module around; the outermost is its own.
    const std::uint32_t around = level == 0 ? 0 : tree.places[declarations.scopes[at].parent];
    // Deeper than modules go: it counts in the module that it is in.
    if (level > depth) {
      tree.places[at] = around;
      return;
    }
    tree.places[at] = static_cast<std::uint32_t>(tree.size());
    tree.scopes.push_back(at);
    tree.parents.push_back(around);
    tree.depths.push_back(level);
  });
  return tree;
}

/// The names of every code on the way through the scopes. Of those passed only the ones that are
/// seen from here matter, as tops of a skyline: after a name with more bits none with fewer is
/// seen, so each further name meets few of them. Calling order: construct, Take once.
///
/// Widths matter because one code may be declared with several: a name has the lowest bits of its
/// code, as many as it is wide. So of two names the narrower one has what both have.
class ModuleShares::Walk {
 public:
  Walk(const Declarations& declarations, const ModuleTree& tree)
      : declarations_(declarations),
        tree_(tree),
        typeHasBits_(TypesWithBits(declarations)),
        places_(declarations.scopes.size()),
        seen_(declarations.codes.size(), kNone) {
    // Nearly as many as there are variables: a code with several names is the exception.
    names_.reserve(declarations.variables.size());
    found_.reserve(declarations.variables.size());
  }

  // The scopes around the one that is reached are the stack of the walk: those at a smaller depth
  // are still the right ones, as a scope comes right after the one around it or after others in
  // that.
  std::vector<Found> Take() {
    ForEachScope(declarations_, tree_.scopes.front(),
                 [this](std::uint32_t scope, std::uint32_t depth) {
                   // Those around the scope, itself included.
                   around_.resize(depth);
                   around_.push_back(scope);
                   places_[scope] = place_++;
                   for (const std::uint32_t id : declarations_.scopes[scope].variables) {
                     const DumpVariable& variable = declarations_.variables[id];
                     if (variable.width > 0 && typeHasBits_[variable.typeId]) TakeName(variable);
                   }
                 });
    return std::move(found_);
  }

 private:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  /// A name of a code that was passed. In a list by code, the last name first, from which the
  /// hidden ones have been dropped: widths grow along it.
  struct Name {
    std::uint32_t scope;
    std::uint32_t width;
    std::uint32_t before;  // the next name that is seen after it
  };

  // Adds the name's bits to its module, and takes those that an earlier name has too off the
  // innermost module around both.
  void TakeName(const DumpVariable& variable) {
    const std::uint32_t width = variable.width;
    Add(variable.codeId, variable.scope, 1, 0, width);
    // Bits below this have been taken off already.
    std::uint32_t covered = 0;
    std::uint32_t& seen = seen_[variable.codeId];
    while (seen != kNone) {
      const Name& name = names_[seen];
      // What both names have.
      const std::uint32_t shared = std::min(name.width, width);
      if (shared > covered) {
        Add(variable.codeId, InnermostAround(name.scope), -1, covered, shared);
        covered = shared;
      }
      // The earlier name has bits that no later one hides, so it stays in view.
      if (name.width > width) break;
      seen = name.before;
    }
    names_.push_back({variable.scope, width, seen});
    seen = static_cast<std::uint32_t>(names_.size() - 1);
  }

  /// Of the scopes around the one that was reached, the innermost that began no later than an
  /// earlier one: it holds both.
  std::uint32_t InnermostAround(std::uint32_t earlier) const {
    const auto inner = std::upper_bound(
        around_.begin(), around_.end(), places_[earlier],
        [this](std::uint32_t place, std::uint32_t outer) { return place < places_[outer]; });
    // The outermost scope began before any other, so there always is one.
    return *std::prev(inner);
  }

  void Add(std::uint32_t codeId, std::uint32_t scope, std::int32_t times, std::uint32_t from,
           std::uint32_t to) {
    found_.push_back({codeId, {tree_.places[scope], times, from, to}});
  }

  const Declarations& declarations_;
  const ModuleTree& tree_;
  const std::vector<bool> typeHasBits_;
  std::vector<std::uint32_t> places_;  // of scopes, in the order of the walk
  std::uint32_t place_ = 0;
  std::vector<std::uint32_t> around_;  // the scopes around the one that is reached, outermost first
  std::vector<std::uint32_t> seen_;    // by code, its last name
  std::vector<Name> names_;
  std::vector<Found> found_;
};

/// Puts what was found together: what adds to a module and is taken off again is nothing. Sorted by
/// code by counting, since there are as many codes as entries, nearly: an entry goes to its place
/// at once, and only those of one code are compared.
ModuleShares::ModuleShares(std::size_t codes, const std::vector<Found>& found)
    : first_(codes + 1), shares_(found.size()) {
  for (const Found& one : found) ++first_[one.codeId + 1];
  std::partial_sum(first_.begin(), first_.end(), first_.begin());
  // Each code's end moves on as its shares come, until it is the begin of the next code's.
  std::vector<std::size_t> ends(first_.begin(), std::prev(first_.end()));
  for (const Found& one : found) shares_[ends[one.codeId]++] = one.share;
  const auto key = [](const ModuleShare& share) {
    return std::tuple(share.module, share.from, share.to);
  };
  std::size_t kept = 0;
  for (std::size_t codeId = 0; codeId < codes; ++codeId) {
    std::size_t at = std::exchange(first_[codeId], kept);
    const std::size_t end = ends[codeId];
    std::sort(
        shares_.data() + at, shares_.data() + end,
        [&](const ModuleShare& one, const ModuleShare& other) { return key(one) < key(other); });
    while (at < end) {
      ModuleShare share = shares_[at];
      // Added and taken off in the same module: they cancel.
      while (++at < end && key(shares_[at]) == key(share)) share.times += shares_[at].times;
      if (share.times != 0) shares_[kept++] = share;
    }
  }
  first_.back() = kept;
  shares_.resize(kept);
}

ModuleShares ModuleShares::ByName(const Declarations& declarations, const ModuleTree& tree) {
  return {declarations.codes.size(), Walk(declarations, tree).Take()};
}

/// A code's bits are those of its widest name, wherever that is: owners count all of a code.
ModuleShares ModuleShares::ByOwner(const Declarations& declarations, const CodeBits& codes,
                                   const ModuleTree& tree) {
  const std::vector<bool> typeHasBits = TypesWithBits(declarations);
  std::vector<Found> found;
  found.reserve(codes.codes());
  // Modules come before those in them, so the first of equal depth is the first in the dump.
  std::vector<std::uint32_t> owners(codes.codes(), ModuleTree::kOutside);
  for (std::uint32_t module = 0; module < tree.size(); ++module) {
    for (const std::uint32_t id : declarations.scopes[tree.scopes[module]].variables) {
      const DumpVariable& variable = declarations.variables[id];
      std::uint32_t& owner = owners[variable.codeId];
      if (variable.width == 0 || !typeHasBits[variable.typeId]) continue;
      if (owner == ModuleTree::kOutside || tree.depths[module] < tree.depths[owner]) owner = module;
    }
  }
  for (std::uint32_t codeId = 0; codeId < codes.codes(); ++codeId) {
    if (owners[codeId] == ModuleTree::kOutside) continue;
    found.push_back({codeId, {owners[codeId], 1, 0, codes.Width(codeId)}});
  }
  return {codes.codes(), found};
}

/// For modules 0 to n-1 the shares by name, for n to 2n-1 those by owner less those by name. A code
/// with one name has equal shares of both kinds, and costs one addition a toggle as ever.
ModuleShares ModuleShares::ByBoth(const Declarations& declarations, const CodeBits& codes,
                                  const ModuleTree& tree) {
  const ModuleShares byName = ByName(declarations, tree);
  const ModuleShares byOwner = ByOwner(declarations, codes, tree);
  const auto modules = static_cast<std::uint32_t>(tree.size());
  std::vector<Found> found;
  found.reserve(codes.codes());
  for (std::uint32_t codeId = 0; codeId < codes.codes(); ++codeId) {
    const std::span<const ModuleShare> names = byName.Of(codeId);
    const std::span<const ModuleShare> owner = byOwner.Of(codeId);
    for (const ModuleShare& share : names) found.push_back({codeId, share});
    if (std::equal(names.begin(), names.end(), owner.begin(), owner.end())) continue;
    for (ModuleShare share : owner) {
      share.module += modules;
      found.push_back({codeId, share});
    }
    for (ModuleShare share : names) {
      share.module += modules;
      share.times = -share.times;
      found.push_back({codeId, share});
    }
  }
  return {codes.codes(), found};
}

}  // namespace orsa::kesncd
