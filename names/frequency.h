// From a change count to a toggle frequency: the one formula that every figure comes from.
#ifndef KESNCD_NAMES_FREQUENCY_H_
#define KESNCD_NAMES_FREQUENCY_H_

namespace orsa::kesncd {

/// The toggle frequency in MHz of a signal with `changes` changes in a span of `spanTicks`, at
/// `nsPerTick` nanoseconds a tick. The first change is the initial value and two changes make a
/// cycle, so there is none (0.0) without a second change; nor without a span. A span or a tick that
/// is negative, infinite or no number shows in the result.
double ToggleFrequency(int changes, double spanTicks, double nsPerTick);

}  // namespace orsa::kesncd

#endif  // KESNCD_NAMES_FREQUENCY_H_
