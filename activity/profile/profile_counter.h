// Counts toggles by module and window of time while a dump is read.
#ifndef KESNCD_ACTIVITY_PROFILE_PROFILE_COUNTER_H_
#define KESNCD_ACTIVITY_PROFILE_PROFILE_COUNTER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "activity/profile/profile.h"
#include "activity/profile/time_grid.h"
#include "activity/profile/toggle_counter.h"

namespace orsa::kesncd {

/// Sums by module and window on their way into a profile. A module has none until it toggles.
class ProfileRows {
 public:
  /// Throws Failure with Unusable, in words of the dump called `dump`, as soon as there are more
  /// than `mostCells` sums.
  ProfileRows(std::string dump, std::size_t modules, std::uint64_t mostCells)
      : dump_(std::move(dump)), rows_(modules), mostCells_(mostCells) {}

  /// Moves sums of all modules into a window.
  void Take(std::vector<std::uint64_t>& sums, std::uint64_t window);
  /// Makes one window of each `count` neighbours.
  void Fold(std::uint64_t count);
  /// Throws where there is no room for so many more sums.
  void RequireRoom(std::uint64_t more) const;
  /// The rows, each with so many windows or empty, with modules added up.
  std::vector<std::vector<std::uint64_t>> Finish(const ModuleTree& tree, bool addsUp,
                                                 std::size_t windows);

 private:
  void Grow(std::vector<std::uint64_t>& row, std::uint64_t windows);

  const std::string dump_;
  std::vector<std::vector<std::uint64_t>> rows_;
  const std::uint64_t mostCells_;
  std::uint64_t cells_ = 0;
};

struct ProfileWindows {
  std::string dump;                   // what messages call it
  std::uint64_t parts = 200;          // of the span, unless a window's length is given
  std::optional<std::uint64_t> last;  // the dump's largest stamp, where it is known before
  std::uint64_t length = 0;           // of a window in femtoseconds; 0 for parts of the span
  std::uint64_t tick = 1;             // femtoseconds
  std::uint64_t mostCells = std::uint64_t{1} << 27U;
};

/// A taker of ReadBody in front of a ToggleCounter, to which it passes everything on. Calling
/// order: construct, ReadBody, Finish.
///
/// Where the span is not known before its end, windows are short at first, and whenever there are
/// too many each two become one; at the end the parts are as many windows as they come closest to.
class ProfileCounter {
 public:
  ProfileCounter(ToggleCounter& toggles, const ProfileWindows& windows);

  void Scalar(std::uint32_t codeId, char value) { toggles_.Scalar(codeId, value); }
  void Vector(std::uint32_t codeId, std::string_view value) { toggles_.Vector(codeId, value); }
  void Real(std::uint32_t codeId, std::string_view value) { toggles_.Real(codeId, value); }
  void Stamp(std::uint64_t ticks) {
    if (ticks >= moveAt_) Move(ticks);
    toggles_.Stamp(ticks);
  }
  void Command(Keyword command);
  void SectionEnd() {}
  bool IsDone() const { return false; }

  /// The profile; `addsUp` says whether a module has what is in those below it.
  Profile Finish(ModuleTree tree, bool addsUp);
  /// Whether the windows are what was asked for: the largest stamp was the one that was expected.
  bool WasLastRight() const;

 private:
  static constexpr std::uint64_t kFinest =
      16;  // windows for each that is asked for, of folded ones

  void Move(std::uint64_t ticks);
  void BeginGrid();
  void Fold(std::uint64_t count);
  void AddGap(std::uint64_t begin, std::uint64_t end);
  bool IsFolding() const { return windows_.length == 0 && !windows_.last; }

  ToggleCounter& toggles_;
  const ProfileWindows windows_;
  ProfileRows rows_;
  TimeGrid grid_;
  bool hasGrid_ = false;
  std::uint64_t window_ = 0;               // that is open
  std::uint64_t moveAt_ = 0;               // the least stamp that may belong to a later one
  std::vector<std::uint64_t> unobserved_;  // by window
  std::vector<std::pair<std::uint64_t, std::uint64_t>> gaps_;
  bool hasManyGaps_ = false;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_PROFILE_COUNTER_H_
