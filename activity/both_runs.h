// Both kinds of figures of a dump from one reading, which is all that a pipe allows.
//
// For databases, which hold both.
#ifndef KESNCD_ACTIVITY_BOTH_RUNS_H_
#define KESNCD_ACTIVITY_BOTH_RUNS_H_

#include "activity/activity_part.h"
#include "activity/activity_result.h"
#include "activity/activity_run.h"
#include "activity/host_part.h"
#include "activity/host_run.h"
#include "text/byte_stream.h"

namespace orsa::kesncd {

/// The two results of one reading; `exact` owns the declarations of both.
struct BothRuns {
  ActivityResult exact;
  HostRun host;  // without declarations: they are those of `exact`
};

/// Throws as CountActivity and ReadHostRun do. Both kinds are those of the window; no code is
/// watched.
BothRuns CountBoth(ByteSource& dump, const ActivityOptions& options);
/// The same of a file, with as many threads as there may be.
BothRuns CountBoth(ByteFile& file, const ActivityOptions& options);

/// Turns what was counted in a whole body into both.
BothRuns FinishBoth(Declarations declarations, ActivityPart activity, HostPart host,
                    const ItemTallies& items, const ActivityOptions& options);

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_BOTH_RUNS_H_
