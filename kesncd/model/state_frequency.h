// Frequencies over the span and time scale that the last reading left in the reader state.
#ifndef KESNCD_MODEL_STATE_FREQUENCY_H_
#define KESNCD_MODEL_STATE_FREQUENCY_H_

#include "kesncd/kesncd.h"
#include "names/frequency.h"

namespace orsa::kesncd {

/// In MHz. Whoever asks before a reading gets 0.0, since the time scale is 0 then.
inline double FrequencyOf(int changes) {
  return ToggleFrequency(changes, endCycle - startCycle, timeScale);
}

/// Clears the latch `onlyOnce` the first time a frequency is asked for under debug.
inline void ClearDebugLatch() {
  if (onlyOnce == 1 && debug == 1) onlyOnce = 0;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_MODEL_STATE_FREQUENCY_H_
