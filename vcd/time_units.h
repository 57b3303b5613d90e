// The units of a dump's time scale: one table for all readers.
#ifndef KESNCD_VCD_TIME_UNITS_H_
#define KESNCD_VCD_TIME_UNITS_H_

namespace orsa::kesncd {

/// A unit such as "ps". Its two sizes are for whole femtoseconds and for hosts, which compute in
/// nanoseconds.
struct TimeUnit {
  const char* text;    // as a time scale writes it
  int zeros;           // of one unit in femtoseconds
  double nanoseconds;  // in one unit
};

/// From the largest to the smallest. WholeUnits takes the first that divides a time, so the order
/// matters.
inline constexpr TimeUnit kTimeUnits[] = {
    {"s", 15, 1e9}, {"ms", 12, 1e6},  {"us", 9, 1000},
    {"ns", 6, 1},   {"ps", 3, 0.001}, {"fs", 0, 1e-6},
};

/// How unit texts are compared. The line readers take "ns" only; the grammar reader takes "NS" too.
enum class UnitCase { Exact, Ignored };

/// The unit of a text; null for any other text.
const TimeUnit* FindTimeUnit(const char* text, UnitCase unitCase);

/// Multiplies a number of units into nanoseconds; false, with `number` as it was, for a text that
/// is no unit.
bool ConvertToNanoseconds(double& number, const char* unit, UnitCase unitCase);

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_TIME_UNITS_H_
