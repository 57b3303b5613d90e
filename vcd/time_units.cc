// Looking a unit of time up by its text.
#include "vcd/time_units.h"

#include <strings.h>

#include <cstring>

namespace orsa::kesncd {

/// A walk over six rows: a dump has one unit.
const TimeUnit* FindTimeUnit(const char* text, UnitCase unitCase) {
  const auto compare = unitCase == UnitCase::Exact ? std::strcmp : strcasecmp;
  for (const TimeUnit& unit : kTimeUnits) {
    if (compare(text, unit.text) == 0) return &unit;
  }
  return nullptr;
}

bool ConvertToNanoseconds(double& number, const char* unit, UnitCase unitCase) {
  const TimeUnit* const found = FindTimeUnit(unit, unitCase);
  if (found == nullptr) return false;
  number *= found->nanoseconds;
  return true;
}

}  // namespace orsa::kesncd
