#include "names/frequency.h"

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

double ToggleFrequency(int changes, double spanTicks) {
  if (changes == 0) return 0.0;
  const double cycles = (changes - 1) * 0.5;
  if (cycles == 0.0) return 0.0;
  const double periodNs = spanTicks * timeScale / cycles;
  if (periodNs == 0.0) return 0.0;
  return 1000.0 / periodNs;  // a negative span shows as a negative frequency
}

void ClearDebugLatch() {
  if (onlyOnce == 1 && debug == 1) onlyOnce = 0;
}

}  // namespace orsa::kesncd
