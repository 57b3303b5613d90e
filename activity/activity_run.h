// Reads a whole dump, once, and counts its exact activity.
//
// The parts, from a dump's bytes to figures:
//
//   DumpWords -> declarations -> ActivityStart (window, bits)
//             -> DumpItems -> ReadBody -> ActivityCounter -> ActivityPart -> ActivityResult
//
// With several threads each has a counter and a stretch of the body, and the parts are added up.
#ifndef KESNCD_ACTIVITY_ACTIVITY_RUN_H_
#define KESNCD_ACTIVITY_ACTIVITY_RUN_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "activity/activity_part.h"
#include "activity/activity_result.h"
#include "free_format/dump_words.h"
#include "free_format/prepare/prepare.h"
#include "text/byte_stream.h"

namespace orsa::kesncd {

/// Defaults count all of a dump, by one thread, without a limit to memory.
struct ActivityOptions {
  std::string dump;  // what messages call it
  // To count in, in femtoseconds; a window needs a tick.
  TimeWindow window;
  std::optional<std::uint64_t> tick;  // femtoseconds, for a dump without a time scale
  // A dump with more bits is refused before memory is asked for; see MostBitsInMemory.
  std::uint64_t mostBits = UINT64_MAX;
  /// Picks codes of signals of one bit whose first and last toggles are wanted, each once; where
  /// none is given, nothing is watched. What it throws ends the run. Called once the declarations
  /// are read; the codes that it gives come back as `watched`.
  std::function<std::vector<std::uint32_t>(const Declarations&)> watch;
  // For tests; the result does not depend on it.
  std::size_t block = DumpWords::kBlock;  // bytes that are read at a time
  // Threads that may be used to read a file, as far as they have memory enough; a source is read
  // by one.
  unsigned jobs = 1;
};

/// Throws Failure with Unusable for what is no VCD file, declares no variable or has more bits than
/// there may be, with NothingMatched where nothing of the dump lies in the window. The source is
/// read once, from front to end.
ActivityResult CountActivity(ByteSource& dump, const ActivityOptions& options);
/// The same of a file, with as many threads as there may be. The result does not depend on them.
ActivityResult CountActivity(ByteFile& file, const ActivityOptions& options);

/// Turns what was counted in a whole body into its activity. Throws as CountActivity does. `items`
/// are those of the whole body too. For parts that were added up elsewhere, on other machines
/// perhaps.
ActivityResult FinishActivity(Declarations declarations, ActivityPart part, ItemTallies items,
                              const ActivityOptions& options);

/// How many bits the memory of this machine holds the activity of. A generous guess, in order to
/// refuse what cannot end well.
std::uint64_t MostBitsInMemory();

/// What a user of the figures must know, the gravest first. Sentences that go on after "x.vcd: ",
/// without a full stop.
std::vector<std::string> RemarksOn(const ActivityResult& result);

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_ACTIVITY_RUN_H_
