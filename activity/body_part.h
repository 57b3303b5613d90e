// One of several parts of a dump in a plain file, counted by itself, so that jobs on different
// machines can each count one. Everyone finds the same cuts; parts add up to what one reading of
// the dump gives. Where a part cannot be told from its own bytes (the one before ends inside a
// comment, or time does not grow at the cut), it is read again together with the ones before it.
#ifndef KESNCD_ACTIVITY_BODY_PART_H_
#define KESNCD_ACTIVITY_BODY_PART_H_

#include <cstdint>
#include <optional>

#include "activity/activity_part.h"
#include "activity/activity_run.h"
#include "activity/code_bits.h"
#include "activity/host_part.h"
#include "activity/profile/profile_part.h"
#include "activity/profile/profile_run.h"
#include "free_format/dump_items.h"
#include "text/byte_stream.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

/// Which parts are read, as one: from `first` up to and with `last`, of so many.
struct PartChoice {
  std::uint32_t first = 0;
  std::uint32_t last = 0;
  std::uint32_t parts = 1;
};

/// A value that can be stored: all that adding parts up needs to know of one.
struct BodyPart {
  PartChoice choice;
  std::uint64_t dumpBytes = 0;  // of the whole file
  // The stretch of the file; both are the same for a part in which no stamp begins, whose stretch
  // belongs to the part before it. The last part ends with the file.
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
  std::uint64_t lines = 0;  // newlines in it, and of the first part in the declarations too
  bool beginsBody = false;  // else it begins with a stamp
  bool endsCleanly = true;  // between two items
  bool endsDump = false;    // the file ended in it
  ItemTallies items;        // what was passed over; its lines count from the stretch's first
  ActivityPart activity;    // counted in the window
  HostPart host;            // of the whole time
  /// Toggles over time, where they were counted. ProfileSum adds them up, from the first part on.
  std::optional<ProfilePart> profile;

  bool IsEmpty() const { return begin == end; }
  /// Whether a part adds up with this one, which comes right before it. Where not, both have to be
  /// read as one.
  bool CanPrecede(const BodyPart& next) const;
  /// Adds a part that this one can precede, but for its profile.
  void Add(const CodeBits& codes, BodyPart&& next);
};

struct PartRun {
  Declarations declarations;
  BodyPart part;
};

/// Reads the declarations and the chosen parts; of the options the window, the tick and what the
/// dump is called, the bits and the block matter. Throws as CountActivity does, but not for a
/// window that holds nothing of the dump. What was counted becomes figures by FinishActivity and
/// FinishHostRun, with `items` of all parts.
PartRun ReadBodyPart(ByteFile& file, const PartChoice& choice, const ActivityOptions& options);
/// The same with toggles over time: of `options` what is counted, the windows with the dump's
/// largest stamp, and the watched clocks. There are none where the modules have too many sums, or
/// where the declarations do not end before the body. Throws for windows as CountBothAndProfile.
PartRun ReadProfiledPart(ByteFile& file, const PartChoice& choice, const ProfileOptions& options);

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_BODY_PART_H_
