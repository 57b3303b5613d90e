// How counts of neighbouring parts add up.
#include "activity/host_part.h"

#include <algorithm>

#include "activity/host_counter.h"

namespace orsa::kesncd {

void HostPart::Add(const TickWindow& bounds, const HostPart& next) {
  // The stamp at the cut opens or ends the window as it would have done had this part gone on.
  HostCounting counting(std::move(*this), bounds);
  counting.Stamp(next.window.firstStamp);
  *this = counting.TakePart();
  // The window ended with that stamp: all of `next` lies after it.
  if (window.isDone) return;
  AddCodes(next);
  repeated += next.repeated;
  opensOff = opensOff || next.opensOff;
  DumpingTime time(dumping);
  time.Join(DumpingTime(next.dumping));
  dumping = time.state();
  // Stamps and the span are of both, the rest as `next` ended.
  const WindowState before = window;
  window = next.window;
  window.firstStamp = before.firstStamp;
  window.time.stamps += before.time.stamps - 1;  // both of them have the stamp at the cut
  if (before.time.isOpen) window.time.first = before.time.first;
}

/// Code by code: counts add up, except where the window began in `next`.
void HostPart::AddCodes(const HostPart& next) {
  for (std::size_t i = 0; i < codes.size(); ++i) {
    Code& code = codes[i];
    const Code& added = next.codes[i];
    // The window opened in `next` while dumping was off: what was initial before counts no longer.
    if (next.opensOff) code.changes = 0;
    // Without a value in `next` nothing changes for the code.
    if (added.last == 0) continue;
    // The first value of both is that of the part that has one.
    if (code.last == 0) first[i] = next.first[i];
    // The window began in `next`: only what it counted is in the window.
    if (next.first[i].kind == FirstValue::Initial) {
      code = added;
      continue;
    }
    // Now it is known what came before the first value.
    const bool isCounted = next.first[i].kind == FirstValue::Counted;
    repeated += isCounted && next.first[i].value == code.last ? 1 : 0;
    code.last = added.last;
    // Both are far below 2^32, so the sum does not wrap around before it is cut.
    code.changes = std::min(code.changes + added.changes, kMostChanges);
  }
}

}  // namespace orsa::kesncd
