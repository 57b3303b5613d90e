// The formula, in the order of steps that its results to the last bit depend on.
#include "names/frequency.h"

namespace orsa::kesncd {

double ToggleFrequency(int changes, double spanTicks, double nsPerTick) {
  // No change at all, and then a single one, which is the initial value.
  if (changes == 0) return 0.0;
  const double cycles = (changes - 1) * 0.5;
  if (cycles == 0.0) return 0.0;
  const double periodNs = spanTicks * nsPerTick / cycles;
  // No span, or a time scale of 0: no figure rather than an infinite one.
  if (periodNs == 0.0) return 0.0;
  return 1000.0 / periodNs;  // a period of 1000 ns is 1 MHz
}

}  // namespace orsa::kesncd
