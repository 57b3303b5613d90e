// Windows of time and how they are folded.
#include "activity/profile/profile_counter.h"

#include <algorithm>
#include <utility>

#include "text/failure.h"

namespace orsa::kesncd {

namespace {

constexpr std::size_t kMostGaps = 1000;

/// Makes one number of each `count` neighbours.
void AddNeighbours(std::vector<std::uint64_t>& row, std::uint64_t count) {
  const std::size_t length = row.size();
  for (std::size_t at = 0; at < length; ++at) {
    const std::uint64_t sum = std::exchange(row[at], 0);
    row[at / count] += sum;
  }
  row.resize((length + count - 1) / count);
}

}  // namespace

void ProfileRows::RequireRoom(std::uint64_t more) const {
  if (more <= mostCells_ - cells_) return;
  throw Failure(FailureKind::Unusable, dump_ + ": its modules in such windows have more than " +
                                           std::to_string(mostCells_) +
                                           " sums; ask for longer windows or fewer modules");
}

void ProfileRows::Grow(std::vector<std::uint64_t>& row, std::uint64_t windows) {
  if (windows <= row.size()) return;
  RequireRoom(windows - row.size());
  cells_ += windows - row.size();
  row.resize(windows);
}

void ProfileRows::Take(std::vector<std::uint64_t>& sums, std::uint64_t window) {
  for (std::size_t module = 0; module < sums.size(); ++module) {
    if (sums[module] == 0) continue;
    Grow(rows_[module], window + 1);
    rows_[module][window] += std::exchange(sums[module], 0);
  }
}

void ProfileRows::Fold(std::uint64_t count) {
  cells_ = 0;
  for (std::vector<std::uint64_t>& row : rows_) {
    AddNeighbours(row, count);
    cells_ += row.size();
  }
}

std::vector<std::vector<std::uint64_t>> ProfileRows::Finish(const ModuleTree& tree, bool addsUp,
                                                            std::size_t windows) {
  for (std::vector<std::uint64_t>& row : rows_) {
    if (!row.empty()) Grow(row, windows);
  }
  for (std::size_t module = rows_.size(); addsUp && module-- > 1;) {
    const std::vector<std::uint64_t>& row = rows_[module];
    if (row.empty()) continue;
    std::vector<std::uint64_t>& around = rows_[tree.parents[module]];
    Grow(around, windows);
    for (std::size_t window = 0; window < windows; ++window) around[window] += row[window];
  }
  return std::move(rows_);
}

ProfileCounter::ProfileCounter(ToggleCounter& toggles, const ProfileWindows& windows)
    : toggles_(toggles),
      windows_(windows),
      rows_(windows.dump, toggles.Sums().size(), windows.mostCells) {}

/// The first stamp is known, and with it where the first window begins.
void ProfileCounter::BeginGrid() {
  hasGrid_ = true;
  const ActivityWindow& window = toggles_.window();
  if (windows_.length != 0) {
    grid_.span = windows_.length;
    grid_.parts = windows_.tick;
  } else if (windows_.last) {
    const std::uint64_t last = window.Clamp(*windows_.last);
    grid_.span = std::max<std::uint64_t>(last - std::min(last, grid_.first), 1);
    grid_.parts = std::min(windows_.parts, grid_.span);
  }
}

void ProfileCounter::Move(std::uint64_t ticks) {
  const ActivityWindow& window = toggles_.window();
  const std::uint64_t now = window.Clamp(ticks);
  if (!hasGrid_) {
    grid_.first = now;
    BeginGrid();
  }
  rows_.Take(toggles_.Sums(), window_);
  window_ = grid_.WindowOf(now);
  if (IsFolding()) {
    while (window_ >= windows_.parts * kFinest) Fold(2);
  } else if (windows_.length != 0) {
    rows_.RequireRoom(window_);
  } else {
    // Of a dump that is longer than was expected nothing is known yet but that.
    window_ = std::min(window_, grid_.parts - 1);
  }
  const std::uint64_t end = grid_.Edge(window_ + 1);
  moveAt_ = ticks >= window.end || end >= UINT64_MAX ? UINT64_MAX : std::max(end, ticks) + 1;
}

void ProfileCounter::Fold(std::uint64_t count) {
  rows_.Fold(count);
  AddNeighbours(unobserved_, count);
  grid_.span = grid_.span > UINT64_MAX / count ? UINT64_MAX : grid_.span * count;
  window_ /= count;
}

void ProfileCounter::Command(Keyword command) {
  const CountedTime& time = toggles_.time();
  if (command == Keyword::DumpOn && !time.isObserving && time.hasStamps) {
    AddGap(time.pausedAt, toggles_.window().Clamp(time.lastStamp));
  }
  toggles_.Command(command);
}

void ProfileCounter::AddGap(std::uint64_t begin, std::uint64_t end) {
  if (begin >= end) return;
  if (gaps_.size() < kMostGaps) {
    gaps_.emplace_back(begin, end);
  } else {
    hasManyGaps_ = true;
  }
  const std::uint64_t last = std::min(grid_.WindowOf(end), window_);
  if (unobserved_.size() <= last) unobserved_.resize(last + 1);
  for (std::uint64_t window = grid_.WindowOf(begin + 1); window <= last; ++window) {
    unobserved_[window] +=
        std::min(grid_.Edge(window + 1), end) - std::max(grid_.Edge(window), begin);
  }
}

bool ProfileCounter::WasLastRight() const {
  return !windows_.last || windows_.length != 0 ||
         toggles_.window().Clamp(*windows_.last) ==
             toggles_.window().Clamp(toggles_.time().lastStamp);
}

Profile ProfileCounter::Finish(ModuleTree tree, bool addsUp) {
  Profile profile;
  const CountedTime& time = toggles_.time();
  const std::uint64_t last = toggles_.window().Clamp(time.lastStamp);
  rows_.Take(toggles_.Sums(), window_);
  if (!time.isObserving && time.hasStamps) AddGap(time.pausedAt, last);
  if (time.hasStamps && last > grid_.first) {
    if (IsFolding()) {
      const std::uint64_t windows = grid_.WindowOf(last) + 1;
      Fold((windows + windows_.parts - 1) / windows_.parts);
      const std::uint64_t span = last - grid_.first;
      profile.isFolded =
          grid_.span > 1 && (span / windows_.parts != grid_.span || span % windows_.parts != 0);
    }
    const std::uint64_t windows = std::min(grid_.WindowOf(last), window_) + 1;
    unobserved_.resize(windows);
    for (std::uint64_t window = 0; window < windows; ++window) {
      const std::uint64_t begin = grid_.Edge(window);
      const std::uint64_t end = window + 1 == windows ? last : grid_.Edge(window + 1);
      profile.edges.push_back(begin);
      profile.observed.push_back(end - begin - unobserved_[window]);
    }
    profile.edges.push_back(last);
  }
  profile.toggles = rows_.Finish(tree, addsUp, profile.windows());
  profile.modules = std::move(tree);
  if (!hasManyGaps_) profile.gaps = std::move(gaps_);
  return profile;
}

}  // namespace orsa::kesncd
