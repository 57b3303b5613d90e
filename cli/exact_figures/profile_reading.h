// Reading a dump for windows that are equal parts of its span, which is known at its end only: from
// the end of a file, by reading a packed one twice, or not at all, of a pipe.
#ifndef KESNCD_CLI_EXACT_FIGURES_PROFILE_READING_H_
#define KESNCD_CLI_EXACT_FIGURES_PROFILE_READING_H_

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>

#include "activity/profile/profile_run.h"
#include "cli/exact_figures/kept_profile.h"
#include "cli/input/dump_input.h"
#include "cli/input/reading_threads.h"

namespace orsa::kesncd::cli {

/// What every counting by windows is told of the dump and the windows that are asked for.
ProfileOptions CountingOf(const InputOptions& input, const TimeWindow& window,
                          const WindowsAsked& windows);

/// Whether a dump can be read a second time: a pipe cannot.
bool CanReadTwice(const InputOptions& input);

inline std::uint64_t LastTickOf(const ProfileRun<Profile>& run) {
  return run.base.lastTick;
}
inline std::uint64_t LastTickOf(const ProfiledRuns& run) {
  return run.runs.exact.lastTick;
}

/// Counts by windows, once more where the dump ended elsewhere than was expected. `expected` is its
/// largest stamp, if that is known. `count(bytes, options)` gets a ByteSource, or a ByteFile where
/// it takes one and several threads may read.
template <class Count>
auto ReadByWindows(const InputOptions& input, ProfileOptions options,
                   std::optional<std::uint64_t> expected, Count count) {
  UnpackedSource dump;
  const auto read = [&](std::optional<std::uint64_t> last) {
    options.last = last;
    dump = OpenDump(input);
    if constexpr (std::is_invocable_v<Count, ByteFile&, const ProfileOptions&>) {
      options.counting.jobs = UseThreads(input, dump);
      if (options.counting.jobs > 1) return count(*dump.file, options);
    }
    return count(*dump.bytes, options);
  };
  auto run = read(expected);
  // A dump that still grows has other ends each time: windows that fold fit any.
  if (!run.wasLastRight) run = read(LastTickOf(run));
  if (!run.wasLastRight) run = read({});
  return run;
}

/// Says what a user of a profile that was counted must know.
void SayOfProfile(const ProfileRun<Profile>& run, const ProfileOptions& options);

/// The dump's largest stamp as its end shows it; nothing for a pipe.
std::optional<std::uint64_t> ExpectedLast(const InputOptions& input,
                                          const ActivityOptions& options);

/// What is said of windows that a pipe's dump has in place of equal parts.
std::string FoldedText(const Profile& profile, std::uint64_t parts);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_PROFILE_READING_H_
