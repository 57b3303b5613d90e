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
#include "activity/profile/profile_part.h"
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

  /// The first window that anything is in; before the first sums.
  void BeginAt(std::uint64_t window) { first_ = window; }
  /// Moves sums of all modules into a window.
  void Take(std::vector<std::uint64_t>& sums, std::uint64_t window);
  /// Makes one window of each `count` neighbours.
  void Fold(std::uint64_t count);
  /// Adds rows that begin no earlier.
  void Add(const ProfileRows& next);
  bool HasRoom(std::uint64_t more) const { return more <= mostCells_ - cells_; }
  /// Throws where there is no room for so many more sums.
  void RequireRoom(std::uint64_t more) const;
  [[noreturn]] void FailFull() const;
  /// Gives each row that is not empty so many windows; no more is taken then.
  void Finish(std::size_t windows);
  /// Adds the rows of modules to those of the modules around them.
  void AddUp(const ModuleTree& tree);
  /// Puts the sums of a stretch back into the windows from one on, which have to be within
  /// `windows` of the first; false where they are not, or of no module.
  bool Restore(const ProfileRow& row, std::uint64_t windows);
  /// Takes the second half of the rows off, and adds to each what is in the first half.
  std::vector<std::vector<std::uint64_t>> SplitOff();
  std::vector<std::vector<std::uint64_t>>& rows() { return rows_; }

 private:
  void Grow(std::vector<std::uint64_t>& row, std::uint64_t windows);

  const std::string dump_;
  std::vector<std::vector<std::uint64_t>> rows_;
  const std::uint64_t mostCells_;
  std::uint64_t cells_ = 0;
  std::uint64_t first_ = 0;  // the window that rows begin with
};

struct ProfileWindows {
  std::string dump;                   // what messages call it
  std::uint64_t parts = 200;          // of the span, unless a window's length is given
  std::optional<std::uint64_t> last;  // the dump's largest stamp, where it is known before
  /// The dump's first stamp, for counters of stretches; they have to know `last` too, or windows of
  /// a length.
  std::optional<std::uint64_t> first;
  std::uint64_t length = 0;  // of a window in femtoseconds; 0 for parts of the span
  std::uint64_t tick = 1;    // femtoseconds
  std::uint64_t mostCells = std::uint64_t{1} << 27U;
};

/// Whether a module's sums have what is in the modules below it. Both is for ModuleShares::ByBoth.
enum class ModuleSums { WithBelow, Own, Both };

/// A taker of ReadBody. Calling order: construct, ReadBody, Finish. What was taken from stretches
/// of a body by counters of their own adds up by Add, in the order of the dump, before Finish.
///
/// Where the span is not known before its end, windows are short at first, and whenever there are
/// too many each two become one; at the end the parts are as many windows as they come closest to.
class ProfileCounter {
 public:
  /// What it is given besides windows has to outlive it.
  ProfileCounter(const CodeBits& codes, const ModuleShares& shares, std::size_t modules,
                 const ActivityWindow& window, const ProfileWindows& windows,
                 std::shared_ptr<CodeLines> lines = nullptr);

  void Fetch(std::uint32_t codeId) const { toggles_.Fetch(codeId); }
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

  /// Whether what another counter took from the stretch that comes next adds to this one's. One
  /// that had no room may have been misled by what looks like a stamp.
  bool Precedes(const ProfileCounter& next) const {
    return toggles_.Precedes(next.toggles_) && !next.isFull_;
  }
  void Add(ProfileCounter& next);

  const CountedTime& time() const { return toggles_.time(); }
  Profile Finish(ModuleTree tree, ModuleSums sums);
  /// In place of Finish, of a stretch: what another counter with the same windows needs to stand
  /// for this one. That one is restored in place of a reading.
  ProfilePart TakePart();
  /// False where the part cannot have been taken from such a counter.
  bool Restore(ProfilePart&& part);
  /// Whether the windows are what was asked for: the largest stamp was the one that was expected.
  bool WasLastRight() const;

 private:
  // Windows for each that is asked for, of folded ones.
  static constexpr std::uint64_t kFinest = 16;

  void Move(std::uint64_t ticks);
  void BeginGrid(std::uint64_t first);
  std::uint64_t WindowOf(std::uint64_t ticks) const;
  void TakeSums(std::uint64_t window);
  void Fold(std::uint64_t count);
  void AddGap(std::uint64_t begin, std::uint64_t end);
  bool IsFolding() const { return windows_.length == 0 && !windows_.last; }
  bool IsStretch() const { return windows_.first.has_value(); }

  ToggleCounter toggles_;
  const ProfileWindows windows_;
  ProfileRows rows_;
  const std::uint64_t finest_;
  TimeGrid grid_;
  bool hasGrid_ = false;
  std::uint64_t window_ = 0;               // that is open
  std::uint64_t moveAt_ = 0;               // the least stamp that may belong to a later one
  std::vector<std::uint64_t> unobserved_;  // by window
  std::vector<std::pair<std::uint64_t, std::uint64_t>> gaps_;
  bool hasManyGaps_ = false;
  bool isFull_ = false;  // a stretch that had no room: it counts no more
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_PROFILE_COUNTER_H_
