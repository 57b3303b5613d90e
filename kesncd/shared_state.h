// The exported reader state for the length of one reading: copied from the globals at its start and
// back to them at its end, also when an exception ends it.
#ifndef KESNCD_SHARED_STATE_H_
#define KESNCD_SHARED_STATE_H_

#include "kesncd/kesncd.h"
#include "line_readers/reading_state.h"

namespace orsa::kesncd {

/// Declare it in front of a reading, and give the reading its `state`. Whoever looks at the globals
/// meanwhile sees those from before.
class SharedState {
 public:
  SharedState()
      : state{.firstTick = startCycle,
              .lastTick = endCycle,
              .nsPerTick = timeScale,
              .recording = recording,
              .topMatched = isTopModNameEverMatched} {}
  ~SharedState() {
    startCycle = state.firstTick;
    endCycle = state.lastTick;
    timeScale = state.nsPerTick;
    recording = state.recording;
    isTopModNameEverMatched = state.topMatched;
  }
  SharedState(const SharedState&) = delete;
  SharedState& operator=(const SharedState&) = delete;

  ReadingState state;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_SHARED_STATE_H_
