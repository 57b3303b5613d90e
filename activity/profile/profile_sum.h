// Adds up what parts of a dump hold over time.
#ifndef KESNCD_ACTIVITY_PROFILE_PROFILE_SUM_H_
#define KESNCD_ACTIVITY_PROFILE_PROFILE_SUM_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "activity/code_bits.h"
#include "activity/profile/module_shares.h"
#include "activity/profile/profile.h"
#include "activity/profile/profile_counter.h"
#include "activity/profile/profile_part.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

/// Calling order: construct, Add for every part in the order of the dump, Finish.
class ProfileSum {
 public:
  /// Messages call the dump `dump`; windows are those of all parts.
  ProfileSum(const Declarations& declarations, const std::string& dump, const PartWindows& windows,
             std::uint64_t mostCells = ProfileWindows().mostCells);

  /// Adds a part that the one before it can precede. False where it is not what a part of such a
  /// dump can hold. Throws Failure where there is no room for the sums.
  bool Add(ProfilePart&& next);
  /// Nothing where the windows are not those of the dump: it begins or ends elsewhere than every
  /// part had looked up.
  std::optional<KeptProfile> Finish();

 private:
  const PartWindows asked_;
  const ProfileWindows windows_;
  CodeBits codes_;
  ModuleTree tree_;
  ModuleShares shares_;
  std::unique_ptr<ProfileCounter> sum_;
  std::vector<std::uint32_t> watched_;
  WatchPart watch_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_PROFILE_SUM_H_
