// Time scales as the line readers take them: from the line after a lone "$timescale".
#ifndef KESNCD_LINE_READERS_TIMESCALE_H_
#define KESNCD_LINE_READERS_TIMESCALE_H_

namespace orsa::kesncd {

/// Converts the words of a time-scale line ("10ps", or "10" and "ps") into nanoseconds a tick,
/// which it stores and returns. Returns -1.0, which is not stored, when they are not understood. A
/// number that does not scan leaves the earlier time scale in place, to be multiplied again. Units
/// are s to fs in small letters.
double ReadTimescale(char** words, int count, double& nsPerTick);

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_TIMESCALE_H_
