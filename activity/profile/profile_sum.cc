// Parts become counters again, which add up as those of threads do.
#include "activity/profile/profile_sum.h"

#include <utility>

#include "activity/activity_window.h"
#include "activity/profile/bits_and_windows.h"

namespace orsa::kesncd {

ProfileSum::ProfileSum(const Declarations& declarations, const std::string& dump,
                       const PartWindows& windows, std::uint64_t mostCells)
    : asked_(windows),
      windows_(StretchWindows(windows, dump, declarations.tick, mostCells)),
      codes_(declarations),
      tree_(ModulesIn(declarations, Declarations::kDump, UINT32_MAX)),
      shares_(ModuleShares::ByBoth(declarations, codes_, tree_)) {}

/// Windows of less than a tick were never counted in, and a counter divides by the tick.
bool ProfileSum::Add(ProfilePart&& next) {
  const bool isOfDump = next.windows == asked_ && windows_.tick != 0 &&
                        (windows_.length == 0 || windows_.length >= windows_.tick) &&
                        next.watch.signals.size() == next.watched.size();
  if (!isOfDump) return false;
  std::vector<std::uint32_t> watched = std::move(next.watched);
  WatchPart watch = std::move(next.watch);
  auto counter = std::make_unique<ProfileCounter>(codes_, shares_, KeptSums(tree_),
                                                  ActivityWindow(), windows_);
  if (!counter->Restore(std::move(next))) return false;
  if (!sum_) {
    sum_ = std::move(counter);
    watched_ = std::move(watched);
    watch_ = std::move(watch);
    return true;
  }
  if (watched != watched_ || !sum_->Precedes(*counter)) return false;
  sum_->Add(*counter);
  watch_.Add(watch, ActivityWindow());
  return true;
}

std::optional<KeptProfile> ProfileSum::Finish() {
  const CountedTime& time = sum_->time();
  const bool isRight = sum_->WasLastRight() && time.firstStamp == asked_.first;
  // Without stamps there are no windows which could be others.
  if (time.hasStamps && !isRight) return {};
  KeptProfile kept;
  kept.parts = asked_.parts;
  kept.length = asked_.length;
  kept.profile = sum_->Finish(std::move(tree_), ModuleSums::Both);
  for (std::size_t i = 0; i < watched_.size(); ++i) {
    kept.clocks.push_back({watched_[i], watch_.signals[i].span});
  }
  return kept;
}

}  // namespace orsa::kesncd
