// What every run over a dump begins with: its declarations, the window in its ticks and the bits
// that are counted.
//
// Counting by one thread, by several, in parts and for profiles all begin and end in the same way:
// this is that way, so that they cannot differ in what they refuse or in what they say.
#ifndef KESNCD_ACTIVITY_ACTIVITY_START_H_
#define KESNCD_ACTIVITY_ACTIVITY_START_H_

#include <cstdint>
#include <string>

#include "activity/activity_result.h"
#include "activity/activity_window.h"
#include "activity/code_bits.h"
#include "free_format/body_window.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

struct ActivityOptions;

/// Calling order: construct, read the body into counters, CheckWindow with what was seen of time.
/// Declarations move into `result`, which becomes the run's own.
struct ActivityStart {
  /// Throws Failure as CountActivity does. Also throws where a window is given and the dump has no
  /// time scale, or BEGIN is after END.
  ActivityStart(Declarations declarations, const ActivityOptions& options);

  /// Throws Failure with NothingMatched where nothing of the dump lies in the window, and notes
  /// whether its end was cut back. `first` and `last` are the dump's stamps, not clamped; only
  /// looked at with `hasStamps`.
  void CheckWindow(bool hasStamps, std::uint64_t first, std::uint64_t last);

  ActivityResult result;  // declarations, tick and what the declarations say
  // The window as given, in ticks.
  TickWindow ticks;
  // The same with both bounds; without a window all time.
  ActivityWindow window;
  // Which bits are counted, and where.
  CodeBits codes;

 private:
  // For messages.
  const std::string dump_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_ACTIVITY_START_H_
