// Reads a whole dump, once, and counts its exact activity.
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
#include "activity/activity_window.h"
#include "activity/code_bits.h"
#include "free_format/dump_words.h"
#include "free_format/prepare/prepare.h"
#include "text/byte_stream.h"

namespace orsa::kesncd {

struct ActivityOptions {
  std::string dump;                     // what messages call it
  TimeWindow window;                    // to count in
  std::optional<std::uint64_t> tick;    // femtoseconds, for a dump without a time scale
  std::uint64_t mostBits = UINT64_MAX;  // for which there is memory
  /// Picks codes of signals of one bit whose first and last toggles are wanted, each once; where
  /// none is given, nothing is watched. What it throws ends the run.
  std::function<std::vector<std::uint32_t>(const Declarations&)> watch;
  std::size_t block = DumpWords::kBlock;  // bytes that are read at a time
  unsigned jobs = 1;                      // threads that may be used to read a file
};

/// Throws Failure with Unusable for what is no VCD file, declares no variable or has more bits than
/// there may be, with NothingMatched where nothing of the dump lies in the window.
ActivityResult CountActivity(ByteSource& dump, const ActivityOptions& options);
/// The same of a file, with as many threads as there may be, unless codes are watched. The result
/// does not depend on them.
ActivityResult CountActivity(ByteFile& file, const ActivityOptions& options);

/// Turns what was counted in a whole body into its activity. Throws as CountActivity does.
ActivityResult FinishActivity(Declarations declarations, ActivityPart part, ItemTallies items,
                              const ActivityOptions& options);

/// Of this machine.
std::uint64_t MemoryBytes();
/// How many bits the memory of this machine holds the activity of.
std::uint64_t MostBitsInMemory();
/// As many threads as may be used, at least one, but no more than take a quarter of the memory when
/// each has so many bytes.
unsigned ThreadsWithin(std::uint64_t bytesOfEach, unsigned jobs);

/// What a user of the figures must know, the gravest first.
std::vector<std::string> RemarksOn(const ActivityResult& result);

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_ACTIVITY_RUN_H_
