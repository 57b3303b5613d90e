// Profiles that databases hold: whether one is what is asked for, and its figures as a dump's.
#ifndef KESNCD_CLI_EXACT_FIGURES_KEPT_PROFILE_H_
#define KESNCD_CLI_EXACT_FIGURES_KEPT_PROFILE_H_

#include <cstdint>
#include <optional>
#include <string>

#include "activity/profile/profile.h"
#include "database/database_reader.h"

namespace orsa::kesncd::cli {

/// How many equal parts of the span a profile has where nothing is said.
inline constexpr std::uint64_t kUsualParts = 200;

/// The windows that a user names; where none are, a dump has the usual parts, and of a database any
/// will do.
struct WindowsAsked {
  std::uint64_t parts = 0;
  std::optional<std::uint64_t> length;  // femtoseconds

  bool IsAny() const { return parts == 0 && !length; }
  std::uint64_t PartsOrUsual() const { return parts != 0 ? parts : kUsualParts; }
};

/// "windows of 10 ns", "200 equal parts of the span".
std::string WindowsText(std::uint64_t parts, const std::optional<std::uint64_t>& length);

/// All that a database holds. Throws Failure with Unusable where that is no profile, or not one of
/// the windows that are asked for. Messages call the database `name`.
StoredRun ReadWithProfile(ActivityDatabase& database, const std::string& name,
                          const WindowsAsked& asked);

/// The columns of a scope and the modules so many levels below it.
Profile ProfileIn(const Profile& all, const Declarations& declarations, std::uint32_t scope,
                  std::uint32_t depth);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_KEPT_PROFILE_H_
