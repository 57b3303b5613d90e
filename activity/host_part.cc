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
  if (window.isDone) return;
  AddCodes(next);
  repeated += next.repeated;
  opensOff = opensOff || next.opensOff;
  DumpingTime time(dumping);
  time.Join(DumpingTime(next.dumping));
  dumping = time.state();
  const WindowState before = window;
  window = next.window;
  window.firstStamp = before.firstStamp;
  window.time.stamps += before.time.stamps - 1;  // both of them have the stamp at the cut
  if (before.time.isOpen) window.time.first = before.time.first;
}

void HostPart::AddCodes(const HostPart& next) {
  for (std::size_t i = 0; i < codes.size(); ++i) {
    Code& code = codes[i];
    const Code& added = next.codes[i];
    if (next.opensOff) code.changes = 0;
    if (added.last == 0) continue;
    if (code.last == 0) first[i] = next.first[i];
    if (next.first[i].kind == FirstValue::Initial) {
      code = added;
      continue;
    }
    const bool isCounted = next.first[i].kind == FirstValue::Counted;
    repeated += isCounted && next.first[i].value == code.last ? 1 : 0;
    code.last = added.last;
    code.changes = std::min(code.changes + added.changes, kMostChanges);
  }
}

}  // namespace orsa::kesncd
