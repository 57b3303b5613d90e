// Reading a dump for windows that are equal parts of its span, which is known at its end only: from
// the end of a file, by reading a packed one twice, or not at all, of a pipe.
#ifndef KESNCD_CLI_EXACT_FIGURES_PROFILE_READING_H_
#define KESNCD_CLI_EXACT_FIGURES_PROFILE_READING_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "activity/profile/profile_run.h"
#include "cli/input/dump_input.h"

namespace orsa::kesncd::cli {

/// Whether a dump can be read a second time: a pipe cannot.
bool CanReadTwice(const InputOptions& input);

/// Counts by windows, once more where the dump ended elsewhere than was expected. `expected` is its
/// largest stamp, if that is known. Says what a user of the figures must know.
ProfileRun<Profile> ReadProfile(
    const InputOptions& input, ProfileOptions options, std::optional<std::uint64_t> expected,
    const std::function<ProfileRun<Profile>(ByteSource&, const ProfileOptions&)>& count);

/// The dump's largest stamp as its end shows it; nothing for a pipe.
std::optional<std::uint64_t> ExpectedLast(const InputOptions& input,
                                          const ActivityOptions& options);

/// What is said of windows that a pipe's dump has in place of equal parts.
std::string FoldedText(const Profile& profile, std::uint64_t parts);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_PROFILE_READING_H_
