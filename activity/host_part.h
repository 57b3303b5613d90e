// What was counted by the rule of hosts in a part of a dump, and how parts add up.
//
// Threads, and jobs on several machines, each count a stretch of the body as if it were alone. Two
// things are then not known: whether the first value of a code repeats one before it, and whether
// dumping was on. The first is kept and looked at when parts are added; the second has to be true.
#ifndef KESNCD_ACTIVITY_HOST_PART_H_
#define KESNCD_ACTIVITY_HOST_PART_H_

#include <cstdint>
#include <vector>

#include "free_format/body_window.h"
#include "free_format/host_rule.h"
#include "text/large_array.h"

namespace orsa::kesncd {

/// Where a count stops, as it does in a host. 2147483647: a host's counter is an int.
inline constexpr std::uint32_t kMostChanges = INT32_MAX;

/// Counts of a stretch of a body that begins with a stamp, or with the body. It was counted as if
/// dumping were on where it begins; where that is not so, it has to be counted again after what
/// comes before it. A value that may be copied and stored; parts of one dump have as many codes
/// each.
struct HostPart {
  // Eight bytes, since a large dump has millions.
  struct Code {
    std::uint32_t changes = 0;  // kMostChanges at most
    std::uint32_t last = 0;     // the last value's fingerprint; 0: no value yet
  };
  // How the part's first value of a code counted; whether it repeats the one before is known only
  // when the part before is added.
  enum class FirstValue : std::uint32_t {
    Uncounted,  // x or z, or dumping was off
    Counted,
    Initial,  // before the window: what came before it does not count
  };
  // Only where the code has a value at all.
  struct First {
    std::uint32_t value = 0;
    FirstValue kind = FirstValue::Uncounted;
  };

  LargeArray<Code> codes;      // by number
  LargeArray<First> first;     // likewise
  std::uint64_t repeated = 0;  // counted values that repeat the one before
  // The window begins in it while dumping is off: initial values do not count then.
  bool opensOff = false;
  DumpingState dumping;  // in the window
  WindowState window;

  /// Whether the part that comes next adds up with this one. Parts in which no stamp begins are
  /// kept apart by BodyPart.
  bool CanPrecede(const HostPart& next) const {
    return window.isDumping && next.window.time.stamps > 0 &&
           (window.time.stamps == 0 || window.now < next.window.firstStamp);
  }
  /// Adds the part that comes next, which this one, counted in the same window, can precede.
  /// Afterwards this is the part of both stretches.
  void Add(const TickWindow& bounds, const HostPart& next);

 private:
  void AddCodes(const HostPart& next);
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_HOST_PART_H_
