// What a reading takes over from the readings before it and leaves to the next one. The line
// readers keep no state of their own: whoever starts a reading passes this in and has it back, also
// when the reading ends by an exception.
#ifndef KESNCD_LINE_READERS_READING_STATE_H_
#define KESNCD_LINE_READERS_READING_STATE_H_

namespace orsa::kesncd {

/// Bounds in ticks; they are doubles because hosts have them so, exact up to 2^53.
struct ReadingState {
  double firstTick = -1.0;  // the first time stamp; negative: none yet
  double lastTick = -1.0;   // the latest one
  // The time scale: 0 until one was read, -1 after one that was not understood.
  double nsPerTick = 0.0;
  int recording = 1;   // changes count while it is exactly 1; a caller may set any value
  int topMatched = 0;  // becomes 1 when a reader meets its scope, and never 0 again
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_READING_STATE_H_
