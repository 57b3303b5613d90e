// From a change count to a toggle frequency.
#ifndef KESNCD_NAMES_FREQUENCY_H_
#define KESNCD_NAMES_FREQUENCY_H_

namespace orsa::kesncd {

/// The toggle frequency in MHz of a signal with `changes` changes in a span of `spanTicks`, at
/// `timeScale` nanoseconds a tick. The first change is the initial value and two changes make a
/// cycle, so there is none (0.0) without a second change; nor without a span.
double ToggleFrequency(int changes, double spanTicks);

/// Clears the latch `onlyOnce` the first time a frequency is asked for under debug.
void ClearDebugLatch();

}  // namespace orsa::kesncd

#endif  // KESNCD_NAMES_FREQUENCY_H_
