// Windows of time and how they are folded.
//
// Sums are kept apart from time. ToggleCounter adds to one number a module; only when a window ends
// are those moved into the window's column, so that a change costs the same whatever the windows
// are. A module has a row from its first toggle on, which reaches no further than its last one:
// most modules of a large design are silent most of the time.
#include "activity/profile/profile_counter.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "text/failure.h"

namespace orsa::kesncd {

namespace {

// Pauses that a reader may want to see one by one. A dump that switches dumping off more often
// still has the right observed times; only the list is left out then.
constexpr std::size_t kMostGaps = 1000;

/// Makes one number of each `count` neighbours. In place: the sum at `at` goes to a place that is
/// not after it, whose own number was moved already. The last group may be short of neighbours.
void AddNeighbours(std::vector<std::uint64_t>& row, std::uint64_t count) {
  const std::size_t length = row.size();
  for (std::size_t at = 0; at < length; ++at) {
    const std::uint64_t sum = std::exchange(row[at], 0);
    row[at / count] += sum;
  }
  row.resize((length + count - 1) / count);
}

}  // namespace

/// The bound is on sums, not on windows or modules: a dump of few modules may be cut finely, and
/// one of many coarsely.
void ProfileRows::RequireRoom(std::uint64_t more) const {
  if (!HasRoom(more)) FailFull();
}

void ProfileRows::FailFull() const {
  throw Failure(FailureKind::Unusable, dump_ + ": its modules in such windows have more than " +
                                           std::to_string(mostCells_) +
                                           " sums; ask for longer windows or fewer modules");
}

/// Every sum that is ever made passes here and is counted against the bound before there is memory
/// for it.
void ProfileRows::Grow(std::vector<std::uint64_t>& row, std::uint64_t windows) {
  if (windows <= row.size()) return;
  RequireRoom(windows - row.size());
  cells_ += windows - row.size();
  row.resize(windows);
}

/// The sums are 0 after it. `window` is never before the one that rows begin with, since time
/// grows.
void ProfileRows::Take(std::vector<std::uint64_t>& sums, std::uint64_t window) {
  for (std::size_t module = 0; module < sums.size(); ++module) {
    if (sums[module] == 0) continue;
    Grow(rows_[module], window - first_ + 1);
    rows_[module][window - first_] += std::exchange(sums[module], 0);
  }
}

/// Both count windows from the same first stamp. The window in which the stretches meet gets sums
/// from both.
void ProfileRows::Add(const ProfileRows& next) {
  const std::uint64_t offset = next.first_ - first_;
  for (std::size_t module = 0; module < rows_.size(); ++module) {
    const std::vector<std::uint64_t>& added = next.rows_[module];
    if (added.empty()) continue;
    std::vector<std::uint64_t>& row = rows_[module];
    Grow(row, offset + added.size());
    for (std::size_t at = 0; at < added.size(); ++at) row[offset + at] += added[at];
  }
}

void ProfileRows::Fold(std::uint64_t count) {
  cells_ = 0;
  for (std::vector<std::uint64_t>& row : rows_) {
    AddNeighbours(row, count);
    cells_ += row.size();
  }
}

/// Rows of all modules have the same length then, so that a window is one column of them. Windows
/// without any toggle count too: each of them has an edge and a time.
void ProfileRows::Finish(std::size_t windows) {
  for (std::vector<std::uint64_t>& row : rows_) {
    if (!row.empty()) Grow(row, windows);
  }
  RequireRoom(windows);
}

bool ProfileRows::Restore(const ProfileRow& row, std::uint64_t windows) {
  if (row.sum >= rows_.size() || row.window >= windows ||
      row.toggles.size() > windows - row.window) {
    return false;
  }
  Grow(rows_[row.sum], row.window + row.toggles.size());
  std::copy(row.toggles.begin(), row.toggles.end(),
            rows_[row.sum].begin() + static_cast<std::ptrdiff_t>(row.window));
  return true;
}

/// The second half holds differences, which may be below 0 and have wrapped around; with the first
/// half added they are sums again. A row of zeros becomes empty: its module owns nothing that
/// toggled.
std::vector<std::vector<std::uint64_t>> ProfileRows::SplitOff() {
  const auto middle = rows_.begin() + static_cast<std::ptrdiff_t>(rows_.size() / 2);
  std::vector<std::vector<std::uint64_t>> half(std::make_move_iterator(middle),
                                               std::make_move_iterator(rows_.end()));
  rows_.erase(middle, rows_.end());
  for (std::size_t module = 0; module < half.size(); ++module) {
    std::vector<std::uint64_t>& row = half[module];
    const std::vector<std::uint64_t>& added = rows_[module];
    Grow(row, added.size());
    for (std::size_t window = 0; window < added.size(); ++window) row[window] += added[window];
    if (std::all_of(row.begin(), row.end(), [](std::uint64_t sum) { return sum == 0; })) row = {};
  }
  return half;
}

/// Modules come before those in them, so from the last to the first a row is complete before it
/// goes into the one around it. Own sums of a module may have wrapped around until then, where a
/// code that two modules below it name was taken off it.
void ProfileRows::AddUp(const ModuleTree& tree) {
  for (std::size_t module = tree.size(); module-- > 1;) {
    const std::vector<std::uint64_t>& row = rows_[module];
    std::vector<std::uint64_t>& around = rows_[tree.parents[module]];
    Grow(around, row.size());
    for (std::size_t window = 0; window < row.size(); ++window) around[window] += row[window];
  }
}

/// `finest_` is how many short windows there may be for each that is asked for. After a fold at
/// least half of them are in use, so with 16 the last fold makes windows longer than equal parts by
/// an eighth at most.
ProfileCounter::ProfileCounter(const CodeBits& codes, const ModuleShares& shares,
                               std::size_t modules, const ActivityWindow& window,
                               const ProfileWindows& windows, std::shared_ptr<CodeLines> lines)
    : toggles_(codes, shares, modules, window, std::move(lines)),
      windows_(windows),
      rows_(windows.dump, modules, windows.mostCells),
      finest_(std::clamp<std::uint64_t>(windows.mostCells / modules / windows.parts, 1, kFinest)) {
  if (IsStretch()) toggles_.KeepOpenings();
}

/// The first stamp is known, and with it where the first window begins.
void ProfileCounter::BeginGrid(std::uint64_t first) {
  hasGrid_ = true;
  grid_.first = first;
  // A window is span / parts ticks, which TimeGrid need not round: windows of 10 ns in a dump with
  // ticks of 3 ns are 10/3 ticks long. Equal parts are at least a tick each. A grid that folds
  // begins with windows of one tick, which is what a TimeGrid is made with.
  if (windows_.length != 0) {
    grid_.span = windows_.length;
    grid_.parts = windows_.tick;
  } else if (windows_.last) {
    const std::uint64_t last = toggles_.window().Clamp(*windows_.last);
    grid_.span = std::max<std::uint64_t>(last - std::min(last, first), 1);
    grid_.parts = std::min(windows_.parts, grid_.span);
  }
}

/// The window of a time under the grid as it is now; later times of a dump that is too long count
/// in its last window.
std::uint64_t ProfileCounter::WindowOf(std::uint64_t ticks) const {
  const std::uint64_t window = grid_.WindowOf(ticks);
  // Of a dump that is longer than was expected nothing is known yet but that.
  const bool hasEnd = windows_.length == 0 && windows_.last;
  return hasEnd ? std::min(window, grid_.parts - 1) : window;
}

/// Moves what toggled into a window, unless it is a stretch's without room. That is no failure yet:
/// the stretch may begin inside a comment that looks like a stamp of the far future, and then it is
/// not used.
void ProfileCounter::TakeSums(std::uint64_t window) {
  if (!IsStretch()) {
    rows_.Take(toggles_.Sums(), window);
  } else if (!isFull_) {
    try {
      rows_.Take(toggles_.Sums(), window);
    } catch (const Failure&) {
      isFull_ = true;
    }
  }
}

/// A stamp that may be in a later window than the open one. Called before the stamp itself is
/// counted, so the sums are those of steps before it, all in one window.
void ProfileCounter::Move(std::uint64_t ticks) {
  const ActivityWindow& window = toggles_.window();
  const std::uint64_t now = window.Clamp(ticks);
  if (!hasGrid_) {
    BeginGrid(IsStretch() ? window.Clamp(*windows_.first) : now);
    window_ = WindowOf(now);
    rows_.BeginAt(window_);
  }
  TakeSums(window_);
  window_ = WindowOf(now);
  // Each fold makes windows twice as long, so even a span of 2^64 ticks takes no more than 64 of
  // them.
  if (IsFolding()) {
    while (window_ >= windows_.parts * finest_) Fold(2);
  } else if (windows_.length != 0 && IsStretch()) {
    isFull_ = isFull_ || !rows_.HasRoom(window_);
  } else if (windows_.length != 0) {
    rows_.RequireRoom(window_);
  }
  // A toggle at `end` still belongs to this window, hence the 1. After the end of the span that is
  // counted no stamp moves anything.
  const std::uint64_t end = grid_.Edge(window_ + 1);
  moveAt_ = ticks >= window.end || end >= UINT64_MAX ? UINT64_MAX : std::max(end, ticks) + 1;
}

void ProfileCounter::Add(ProfileCounter& next) {
  // A stretch that others follow counts no more only where there are truly too many sums.
  if (isFull_ || next.isFull_) rows_.FailFull();
  rows_.Take(toggles_.Sums(), window_);
  // First what only both together know: whether a bit's first known value in the next stretch
  // differs from its last one here. Openings come in the order of time, so windows only go on. Then
  // the sums that the next stretch made alone, and its state at its end.
  const std::vector<Opening>& openings = next.toggles_.Openings();
  // Openings are in the order of time, so codes are in none: their memory is fetched ahead.
  constexpr std::size_t kAhead = 16;
  for (std::size_t i = 0; i < openings.size(); ++i) {
    const Opening& opening = openings[i];
    if (i + kAhead < openings.size()) toggles_.Fetch(openings[i + kAhead].codeId);
    const std::uint64_t window = WindowOf(toggles_.window().Clamp(opening.ticks));
    if (window != window_) rows_.Take(toggles_.Sums(), window_);
    window_ = window;
    toggles_.Open(opening);
  }
  rows_.Take(toggles_.Sums(), window_);
  next.rows_.Take(next.toggles_.Sums(), next.window_);
  rows_.Add(next.rows_);
  toggles_.Follow(next.toggles_);
  window_ = next.window_;
  if (unobserved_.size() < next.unobserved_.size()) unobserved_.resize(next.unobserved_.size());
  for (std::size_t at = 0; at < next.unobserved_.size(); ++at) {
    unobserved_[at] += next.unobserved_[at];
  }
  gaps_.insert(gaps_.end(), next.gaps_.begin(), next.gaps_.end());
  hasManyGaps_ = hasManyGaps_ || next.hasManyGaps_ || gaps_.size() > kMostGaps;
}

/// Windows become `count` times as long, with everything that is kept by window.
void ProfileCounter::Fold(std::uint64_t count) {
  rows_.Fold(count);
  AddNeighbours(unobserved_, count);
  grid_.span = grid_.span > UINT64_MAX / count ? UINT64_MAX : grid_.span * count;
  window_ /= count;
}

/// A gap is known when it ends. One that is open at the end of the dump is added by Finish.
void ProfileCounter::Command(Keyword command) {
  const CountedTime& time = toggles_.time();
  if (command == Keyword::DumpOn && !time.isObserving && time.hasStamps) {
    AddGap(time.pausedAt, toggles_.window().Clamp(time.lastStamp));
  }
  toggles_.Command(command);
}

/// Adds to each window the part of (begin, end] that lies in it. Both are clamped to the span that
/// is counted, so a gap outside of it is empty.
void ProfileCounter::AddGap(std::uint64_t begin, std::uint64_t end) {
  if (begin >= end || isFull_) return;
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

/// True for windows that do not need the largest stamp: those of a length, and those that fold.
bool ProfileCounter::WasLastRight() const {
  return !windows_.last || windows_.length != 0 ||
         toggles_.window().Clamp(*windows_.last) ==
             toggles_.window().Clamp(toggles_.time().lastStamp);
}

/// A stretch without room has windows that nobody may use.
ProfilePart ProfileCounter::TakePart() {
  TakeSums(window_);
  ProfilePart part;
  part.isFull = isFull_;
  part.toggles = toggles_.TakePart();
  if (isFull_) {
    part.toggles.openings.clear();
    part.toggles.levels.clear();
    return part;
  }
  std::uint32_t sum = 0;
  for (std::vector<std::uint64_t>& row : rows_.rows()) {
    const auto begin =
        std::find_if(row.begin(), row.end(), [](std::uint64_t toggles) { return toggles != 0; });
    const auto window = static_cast<std::uint64_t>(begin - row.begin());
    if (begin != row.end()) part.rows.push_back({sum, window, {begin, row.end()}});
    row = {};
    ++sum;
  }
  for (std::uint64_t window = 0; window < unobserved_.size(); ++window) {
    if (unobserved_[window] != 0) part.unobserved.emplace_back(window, unobserved_[window]);
  }
  part.gaps = std::move(gaps_);
  part.hasManyGaps = hasManyGaps_;
  return part;
}

bool ProfileCounter::Restore(ProfilePart&& part) {
  if (!toggles_.Restore(part.toggles)) return false;
  isFull_ = part.isFull;
  gaps_ = std::move(part.gaps);
  hasManyGaps_ = part.hasManyGaps;
  const CountedTime& time = toggles_.time();
  if (!time.hasStamps || isFull_) return part.rows.empty() && part.unobserved.empty();
  const ActivityWindow& window = toggles_.window();
  if (!IsStretch() || IsFolding() || *windows_.first > time.firstStamp ||
      time.firstStamp > time.lastStamp) {
    return false;
  }
  BeginGrid(window.Clamp(*windows_.first));
  const std::uint64_t first = WindowOf(window.Clamp(time.firstStamp));
  window_ = WindowOf(window.Clamp(time.lastStamp));
  if (!rows_.HasRoom(window_)) return false;
  rows_.BeginAt(first);
  for (const ProfileRow& row : part.rows) {
    if (!rows_.Restore(row, window_ - first + 1)) return false;
  }
  const bool isInside =
      std::all_of(part.unobserved.begin(), part.unobserved.end(),
                  [this](const auto& unobserved) { return unobserved.first <= window_; });
  if (!isInside) return false;
  for (const auto& [at, ticks] : part.unobserved) {
    if (unobserved_.size() <= at) unobserved_.resize(at + 1);
    unobserved_[at] = ticks;
  }
  return true;
}

/// The order matters: the last window's sums and an open gap first, then folding, which moves both,
/// then edges, which need the final grid.
Profile ProfileCounter::Finish(ModuleTree tree, ModuleSums sums) {
  Profile profile;
  if (isFull_) rows_.FailFull();
  const CountedTime& time = toggles_.time();
  const std::uint64_t last = toggles_.window().Clamp(time.lastStamp);
  rows_.Take(toggles_.Sums(), window_);
  if (!time.isObserving && time.hasStamps) AddGap(time.pausedAt, last);
  if (time.hasStamps && last > grid_.first) {
    if (IsFolding()) {
      // As few neighbours are put together as make no more windows than were asked for. Where the
      // result is what equal parts would have been, nobody need be told.
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
  rows_.Finish(profile.windows());
  if (sums == ModuleSums::Both) profile.own = rows_.SplitOff();
  if (sums != ModuleSums::Own) rows_.AddUp(tree);
  profile.toggles = std::move(rows_.rows());
  profile.modules = std::move(tree);
  if (!hasManyGaps_) profile.gaps = std::move(gaps_);
  return profile;
}

}  // namespace orsa::kesncd
