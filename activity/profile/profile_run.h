// Reads a whole dump, once, and counts toggles over time, by the values of a signal, or looks for
// the busiest stretch.
#ifndef KESNCD_ACTIVITY_PROFILE_PROFILE_RUN_H_
#define KESNCD_ACTIVITY_PROFILE_PROFILE_RUN_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "activity/activity_run.h"
#include "activity/both_runs.h"
#include "activity/profile/profile.h"

namespace orsa::kesncd {

/// A signal whose changes cut time: its code and as many of its lowest bits as the name has.
struct CuttingSignal {
  std::uint32_t codeId = 0;
  std::uint32_t width = 1;
};

struct ProfileOptions {
  ActivityOptions counting;
  /// Which scope and which signal are meant; what they throw ends the run. Without a scope it is
  /// all of the dump.
  std::function<std::uint32_t(const Declarations&)> scope;
  std::function<CuttingSignal(const Declarations&)> signal;
  std::uint32_t depth = 0;  // levels below the scope whose modules have sums of their own
  std::uint64_t parts = 200;
  std::optional<std::uint64_t> length;  // of a window, or of the peak, in femtoseconds
  std::optional<std::uint64_t> last;    // the largest stamp, where it is known before
  std::uint64_t mostValues = 64;
  std::uint64_t mostCells = std::uint64_t{1} << 27U;  // sums of modules in windows
  std::size_t mostSteps = std::size_t{1} << 22U;      // within the length of the peak
};

/// What a run of any of these kinds has beside its figures: declarations, interval and notes are
/// set in `base`, figures of bits only where they are asked for.
template <class Figures>
struct ProfileRun {
  ActivityResult base;
  Figures figures;
  /// Whether the largest stamp was the one expected; if not, the windows are not those asked for,
  /// and another run may expect `base.lastTick`.
  bool wasLastRight = true;
};

/// Toggles by windows. They throw Failure as CountActivity does, and with Unusable where windows
/// are shorter than a tick, or so many that there is no room for the sums. A file is read with as
/// many threads as there may be, if `last` or a length is known; the result does not depend on
/// them.
ProfileRun<Profile> CountProfile(ByteSource& dump, const ProfileOptions& options);
ProfileRun<Profile> CountProfile(ByteFile& file, const ProfileOptions& options);
/// The same with the activity of every bit. Each code counts in one module, as in
/// ModuleShares::ByOwner, and sums are of modules without those below.
ProfileRun<Profile> CountActivityAndProfile(ByteSource& dump, const ProfileOptions& options);
ProfileRun<Profile> CountActivityAndProfile(ByteFile& file, const ProfileOptions& options);
/// All that a database holds of a dump: both kinds of figures, and a profile of all modules.
struct ProfiledRuns {
  BothRuns runs;
  /// Nothing where the modules in so many parts have more sums than there is room for.
  std::optional<KeptProfile> profile;
  bool wasLastRight = true;
};

/// Watched are the clocks of the profile; scope and depth do not matter. It throws as the others.
ProfiledRuns CountBothAndProfile(ByteSource& dump, const ProfileOptions& options);
ProfiledRuns CountBothAndProfile(ByteFile& file, const ProfileOptions& options);

/// Toggles by rising edges of `signal`. A file is read with as many threads as there may be, or by
/// one where they would need more room than it: the result does not depend on them.
ProfileRun<Profile> CountClockProfile(ByteSource& dump, const ProfileOptions& options);
ProfileRun<Profile> CountClockProfile(ByteFile& file, const ProfileOptions& options);
/// Toggles by values of `signal`, read in the same way.
ProfileRun<ValueSplit> CountByValue(ByteSource& dump, const ProfileOptions& options);
ProfileRun<ValueSplit> CountByValue(ByteFile& file, const ProfileOptions& options);
/// The busiest stretch of `length`, read in the same way.
ProfileRun<Peak> FindPeak(ByteSource& dump, const ProfileOptions& options);
ProfileRun<Peak> FindPeak(ByteFile& file, const ProfileOptions& options);

/// The largest stamp, which windows that are equal parts of the span need before the dump is read:
/// of a dump that can be read twice.
std::optional<std::uint64_t> LastStampOf(ByteSource& dump, const ActivityOptions& options);
/// The last stamp in the last bytes of a dump. It need not be the largest one.
std::optional<std::uint64_t> LastStampIn(std::string_view tail);

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_PROFILE_RUN_H_
