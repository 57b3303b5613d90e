// The flat map of a module: its signals under design-style names, a bus bit by bit ("data[7:0]" is
// data_0 to data_7), as a host gets it. A name that two signals have is the first one's.
//
// The map is kept as ranges, so that a bus of a million bits costs no more than a single signal
// until somebody walks its names.
#ifndef KESNCD_NAMES_FLAT_MAP_H_
#define KESNCD_NAMES_FLAT_MAP_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "names/design_names.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

/// Construct it for a scope, ask RangeNames, and Walk if those are not too many. The declarations
/// are only read in the constructor.
class FlatMap {
 public:
  /// All signals of a scope.
  FlatMap(const Declarations& declarations, std::uint32_t scope);
  /// Those that the names ask for: by the dump's own name, with or without its range, or by a name
  /// of the map, which for a bus means a bit of it. "/" may stand for "_". What is asked for in
  /// vain is Missing.
  FlatMap(const Declarations& declarations, std::uint32_t scope,
          const std::vector<std::string>& names);

  /// How many names its ranges stand for; more than kMostFlatNames are too many to walk. Ranges
  /// that overlap are counted each.
  std::uint64_t RangeNames() const;
  /// Visits the names in order, bits by their number: `visit(name, variable)`. `variable` is an
  /// index into the declarations' variables. A name is visited once.
  void Walk(
      const std::function<void(const std::string& name, std::uint32_t variable)>& visit) const;
  /// The names asked for that no signal has.
  const std::vector<std::string>& Missing() const { return missing_; }

 private:
  struct Entry {
    std::string base;
    // Its names are the base with each number from `low` to `high` after it; else the base alone.
    bool hasNumber = false;
    // A number without a range is a single name, "data_3".
    bool isRange = false;
    std::int64_t low = 0;
    std::int64_t high = 0;
    // The index of the variable.
    std::uint32_t variable = 0;
  };

  static Entry EntryOf(const Declarations& declarations, std::uint32_t variable);
  void Sort();
  void WalkGroup(std::size_t begin, std::size_t end,
                 const std::function<void(const std::string&, std::uint32_t)>& visit) const;

  // Numbers of one base lie together, so that overlaps are seen.
  std::vector<Entry> entries_;  // by base, then by number
  std::vector<std::string> missing_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_NAMES_FLAT_MAP_H_
