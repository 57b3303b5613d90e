// Looks for the stretch of time in which a dump toggles most.
//
// Two pointers over the steps: one at the step that ends, one at the first that is still within the
// length. A stretch of time that is as long as asked for and ends at a step is the best one that
// ends there, so no other ends need be tried.
//
// A dump may be read in pieces, each by a search of its own. What a piece does not know is which of
// its openings are toggles (see toggle_counter.h), and what toggled before it. Ends near its begin,
// the head, are tried when pieces are joined, step by step. Of the other ends, those with the same
// openings within the length differ by what is known: the best of them is the best in any case, so
// one of them is kept.
#ifndef KESNCD_ACTIVITY_PROFILE_PEAK_SEARCH_H_
#define KESNCD_ACTIVITY_PROFILE_PEAK_SEARCH_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "activity/activity_window.h"
#include "activity/code_bits.h"
#include "activity/profile/module_shares.h"
#include "activity/profile/profile.h"
#include "activity/profile/toggle_counter.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// A taker of ReadInParts. Calling order: construct, ReadBody; Add what the next pieces gave;
/// Finish. It looks at every step, so exactly, unless a stretch of the length holds more steps than
/// there is room for: steps are rounded to longer and longer grains then.
class PeakSearch {
 public:
  /// `length` is in ticks, not 0. `shares` are those of one module. One that is not `isFirst`
  /// begins somewhere in the body, and throws StretchTooLarge where it has no room for the steps.
  PeakSearch(const CodeBits& codes, const ModuleShares& shares, const ActivityWindow& window,
             std::uint64_t length, std::size_t mostSteps, bool isFirst = true)
      : toggles_(codes, shares, 1, window),
        length_(length),
        mostSteps_(mostSteps),
        isFirst_(isFirst) {
    if (!isFirst) toggles_.KeepOpenings();
  }

  void Fetch(std::uint32_t codeId) const { toggles_.Fetch(codeId); }
  void Scalar(std::uint32_t codeId, char value) { toggles_.Scalar(codeId, value); }
  void Vector(std::uint32_t codeId, std::string_view value) { toggles_.Vector(codeId, value); }
  void Real(std::uint32_t codeId, std::string_view value) { toggles_.Real(codeId, value); }
  void Stamp(std::uint64_t ticks) {
    const CountedTime& time = toggles_.time();
    if (time.hasStamps && ticks > time.lastStamp) EndStep();
    toggles_.Stamp(ticks);
  }
  void Command(Keyword command) { toggles_.Command(command); }
  void SectionEnd() {}
  bool IsDone() const { return false; }

  bool Precedes(const PeakSearch& next) const { return toggles_.Precedes(next.toggles_); }
  /// Throws StretchTooLarge where steps were rounded, as those of `next` were not.
  void Add(PeakSearch& next);

  const CountedTime& time() const { return toggles_.time(); }
  Peak Finish();

 private:
  // A step, or a grain of several, and what toggled in it.
  struct Step {
    std::uint64_t ticks;
    std::uint64_t toggles;
  };
  /// The best end of all with the same openings within the length, which are those in steps from
  /// openSteps_[low] to the one before openSteps_[high].
  struct BestEnd {
    std::size_t low;
    std::size_t high;
    Step end;  // toggles of all the length, but for openings
  };

  void EndStep();
  void TakeStep(std::uint64_t ticks, std::uint64_t toggles);
  void TakeInPiece(std::uint64_t ticks, std::uint64_t toggles);
  void Slide(std::uint64_t ticks, std::uint64_t toggles);
  void Try(std::uint64_t end, std::uint64_t toggles);
  // So that both ends are rounded alike.
  std::uint64_t WholeGrains() const { return length_ - length_ % grain_; }
  std::vector<std::uint64_t> TogglesOfOpenings(PeakSearch& next);
  void Coarsen();
  std::uint64_t GrainEnd(std::uint64_t ticks) const;

  ToggleCounter toggles_;
  const std::uint64_t length_;
  const std::size_t mostSteps_;
  const bool isFirst_;
  // Ticks to which steps are rounded: 1 as long as there is room.
  std::uint64_t grain_ = 1;
  std::vector<Step> steps_;  // those within the length from `first_` on; those before left it
  std::size_t first_ = 0;
  // Toggles of the steps from first_ on.
  std::uint64_t sum_ = 0;
  Peak best_;
  // Only where it does not begin the body:
  std::vector<Step> head_;
  std::vector<BestEnd> bestEnds_;         // in the order of time
  std::vector<std::uint64_t> openSteps_;  // ticks of steps with openings
  std::size_t openings_ = 0;              // that were seen
  std::size_t low_ = 0;                   // the first of openSteps_ within the length
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_PEAK_SEARCH_H_
