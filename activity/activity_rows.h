// The figures of a dump as the rows that every export has: bits of signals in the dump's order, and
// sums by signal and by module.
//
// What a row is for `kesncd activity`: --per bit one bit of one variable ("tb/q[3]"), --per signal
// a variable with the sums over its bits, --per module a scope with the sums over its codes.
#ifndef KESNCD_ACTIVITY_ACTIVITY_ROWS_H_
#define KESNCD_ACTIVITY_ACTIVITY_ROWS_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "activity/activity_result.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd {

/// Sums over many bits can be more than 64 bits hold: a second in femtoseconds alone takes fifty.
/// WideText prints them.
__extension__ typedef unsigned __int128 WideCount;
/// In decimal digits.
std::string WideText(WideCount count);

/// Figures of several bits together.
struct ActivitySums {
  std::uint64_t bits = 0;  // how many are in the sums
  WideCount t0 = 0, t1 = 0, tx = 0, tz = 0, tc = 0, ig = 0;

  void Add(std::span<const BitFigures> figures);
};

/// What follows from figures; nothing where no time was observed, or where the dump does not say
/// how long a tick is. Of several bits these are means per bit, so that a bus and a wire can be
/// compared.
struct ActivityRates {
  std::optional<double> freqMhz;     // half the toggles a microsecond
  std::optional<double> toggleRate;  // toggles a microsecond
  std::optional<double> high;        // the share of time at 1
};
/// `result` gives the tick and the observed time.
ActivityRates RatesOf(const ActivitySums& sums, const ActivityResult& result);
ActivityRates RatesOf(const BitFigures& figures, const ActivityResult& result);

/// A variable with the figures of its bits. Made for each visit; nothing of it may be kept longer
/// than the result.
struct SignalRow {
  std::uint32_t variableId;  // in the declarations
  const DumpVariable& variable;
  BitNames names;                       // of its bits
  std::span<const BitFigures> figures;  // of each bit, the lowest (rightmost) one first
  const std::vector<bool>* repeated;    // bits that have a row already; null for none

  /// Whether the scope declared the bit before under this name and code: it has one row only. The
  /// same name twice for one code is one thing, whatever wrote it twice; for two codes it is two.
  bool IsRepeated(std::uint32_t bit) const { return repeated != nullptr && (*repeated)[bit]; }
  /// Every bit was declared before, so there is no row at all.
  bool IsWhollyRepeated() const;
};

/// Construct once for a result, which has to outlive it, then ForEachSignal and ModuleSums as often
/// as wanted. Memory beyond the result's is small: a few sets for variables that share scope and
/// code.
class ActivityRows {
 public:
  explicit ActivityRows(const ActivityResult& result);

  /// Calls `visit(const SignalRow&)` for every variable with bits in a scope and all below it, in
  /// the dump's order. Rows of bits go from the highest bit down to 0. By scope, so that a command
  /// may ask for part of the design.
  template <class Visit>
  void ForEachSignal(std::uint32_t scope, Visit visit) const {
    const std::vector<bool> inside = ScopesIn(scope);
    const std::vector<DumpVariable>& variables = result_.declarations.variables;
    for (std::uint32_t id = 0; id < variables.size(); ++id) {
      if (inside[variables[id].scope] && HasBits(variables[id])) visit(RowOf(id));
    }
  }

  /// Whether a variable has bits, all of them declared before: it has no row.
  bool IsWhollyRepeated(std::uint32_t variableId) const;

  /// Of each scope with all below it: its codes once each, at the greatest width that they have
  /// there, however many names they have. By scope, number 0 being the whole dump. Computed anew at
  /// each call.
  std::vector<ActivitySums> ModuleSums() const;

  /// Which scopes are in the subtree of a scope. By scope; true for the scope itself.
  std::vector<bool> ScopesIn(std::uint32_t scope) const;

 private:
  /// Neither reals and the like nor variables without a width.
  bool HasBits(const DumpVariable& variable) const {
    return variable.width > 0 && typeHasBits_[variable.typeId];
  }
  SignalRow RowOf(std::uint32_t variableId) const;
  /// In the constructor: which variables have bits that were declared before.
  void FindRepeated();
  void FindRepeatedIn(std::span<const std::uint32_t> sameCode);

  const ActivityResult& result_;
  // By the number of the type, so that texts are compared once.
  std::vector<bool> typeHasBits_;
  std::unordered_map<std::uint32_t, std::vector<bool>> repeated_;  // by variable
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_ACTIVITY_ROWS_H_
