// What a dump says by the counting rule of hosts, counted straight from its items: how often each
// identifier code was given a value. Every 0 or 1 of a scalar counts and every value of a vector or
// a real, also one that repeats the value before; x and z of scalars do not, nor does anything
// while dumping is off. (Exact activity, bit by bit, is counted elsewhere.)
#ifndef KESNCD_ACTIVITY_HOST_RUN_H_
#define KESNCD_ACTIVITY_HOST_RUN_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "activity/host_part.h"
#include "free_format/dump_words.h"
#include "free_format/prepare/prepare.h"
#include "text/byte_stream.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

/// Figures of one dump or of a window of it; all commands with hosts' figures start from it,
/// whether it was counted, read from a database or copied from a tree of the library.
struct HostRun {
  Declarations declarations;
  // A code that is declared but never given a value has 0.
  std::vector<std::uint32_t> changes;  // by code number, kMostChanges at most
  std::uint64_t firstStamp = 0;        // the span
  std::uint64_t lastStamp = 0;
  // The same as a host's exported variables have it: doubles, which round ticks beyond 2^53.
  double firstTick = 0;
  double lastTick = 0;
  double spanTicks = 0;              // exact also where the two ends are too large to be
  std::optional<double> nsPerTick;   // nothing for a dump without a time scale
  std::string whyUnknown;            // why no frequency is known; empty where they are
  std::vector<std::string> remarks;  // what could not be read, and what a user must know

  /// Sets all five; `last` is not before `first`.
  void SetSpan(std::uint64_t first, std::uint64_t last) {
    firstStamp = first;
    lastStamp = last;
    firstTick = static_cast<double>(first);
    lastTick = static_cast<double>(last);
    spanTicks = static_cast<double>(last - first);
  }

  // Aliases of a code have the same count.
  std::uint32_t ChangesOf(const DumpVariable& variable) const { return changes[variable.codeId]; }
};

/// Reads a whole dump, once. Throws Failure with Unusable for what is no VCD file or declares no
/// variable, with NothingMatched where nothing lies in the window; messages call the dump `name`;
/// so many bytes are read at a time. `window` in femtoseconds; it needs a dump with a time scale.
/// The source is read to its end, or to the window's.
HostRun ReadHostRun(ByteSource& dump, const std::string& name, const TimeWindow& window = {},
                    std::size_t block = DumpWords::kBlock);

/// The same of a file, with up to so many threads, on which the result does not depend. `jobs` may
/// be more than is worth it: small files and memory limit it.
HostRun ReadHostRun(ByteFile& file, const std::string& name, const TimeWindow& window,
                    unsigned jobs, std::size_t block = DumpWords::kBlock);

/// Turns what was counted in a whole body into the run. Throws as ReadHostRun does. `window` must
/// be the one that the part was counted in.
HostRun FinishHostRun(Declarations declarations, HostPart part, const ItemTallies& items,
                      const std::string& name, const TimeWindow& window = {});

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_HOST_RUN_H_
