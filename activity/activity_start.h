// What every run over a dump begins with: its declarations, the window in its ticks and the bits
// that are counted.
#ifndef KESNCD_ACTIVITY_ACTIVITY_START_H_
#define KESNCD_ACTIVITY_ACTIVITY_START_H_

#include <cstdint>
#include <optional>
#include <string>

#include "activity/activity_result.h"
#include "activity/activity_window.h"
#include "activity/code_bits.h"
#include "free_format/prepare/prepare.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

struct ActivityOptions;

/// Calling order: construct, read the body into counters, CheckWindow with what was seen of time.
struct ActivityStart {
  /// Throws Failure as CountActivity does.
  ActivityStart(Declarations declarations, const ActivityOptions& options);

  /// Throws Failure with NothingMatched where nothing of the dump lies in the window, and notes
  /// whether its end was cut back.
  void CheckWindow(bool hasStamps, std::uint64_t first, std::uint64_t last);

  ActivityResult result;  // declarations, tick and what the declarations say
  TickWindow ticks;
  ActivityWindow window;
  CodeBits codes;

 private:
  const std::string dump_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_ACTIVITY_START_H_
