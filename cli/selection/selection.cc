// Filtering, ordering and counting rows.
#include "cli/selection/selection.h"

#include <algorithm>
#include <limits>

#include "names/name_order.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

/// What a row costs beyond its cells: only texts grow without bound in a hostile dump.
std::size_t BytesOf(const Row& row) {
  std::size_t bytes = 0;
  for (const Cell& cell : row) {
    if (const auto* const text = std::get_if<std::string>(&cell)) bytes += text->size();
  }
  return bytes;
}

}  // namespace

void AddSelectionOptions(Command& command, SelectionOptions& options) {
  command.AddChoice(
      // "rate" and "toggles" are the busiest first, "name" is the only rising order.
      "--sort", {{"toggles", SortBy::Toggles}, {"rate", SortBy::Rate}, {"name", SortBy::Name}},
      options.sort, "order of the rows: the busiest first, or by name with numbers as numbers");
  command.AddCount("--limit", "N", {0}, options.limit, "so many rows at most").Initially("all");
  command.AddTexts("--match", "GLOB", options.match,
                   "only what a pattern matches (again for more): *, ? and [a-z] within a part of "
                   "a path, ** across parts; one without a / is for names in any scope");
}

PathFilter::PathFilter(const std::vector<std::string>& patterns) {
  for (const std::string& pattern : patterns) globs_.emplace_back(pattern);
}

/// A pattern without "/" looks at the last part only, which begins at `start`.
bool PathFilter::Takes(std::string_view scopePath, std::string_view name) const {
  if (globs_.empty()) return true;
  std::string path(scopePath);
  if (!path.empty()) path += '/';
  const std::size_t start = path.size();
  path += name;
  return std::any_of(globs_.begin(), globs_.end(),
                     [&](const PathGlob& glob) { return glob.Matches(path, start); });
}

bool SelectedRows::IsBefore(const Kept& a, const Kept& b) const {
  // Greater keys come first.
  return sort_ == SortBy::Name ? IsNameBefore(a.name, b.name) : a.key > b.key;
}

double SelectedRows::KeyOf(std::optional<double> toggles, std::optional<double> rate) const {
  // Rows of which nothing is known come last, after those that are known to be 0.
  const std::optional<double>& key = sort_ == SortBy::Toggles ? toggles : rate;
  return key.value_or(-std::numeric_limits<double>::infinity());
}

bool SelectedRows::Wants(std::optional<double> toggles, std::optional<double> rate) const {
  // Rows pass through, and the limit is a plain count.
  if (sort_ == SortBy::Nothing) return passed_ < limit_;
  // Names need the row's text to compare, and before the limit was reached once every row may stay.
  if (sort_ == SortBy::Name || !least_) return true;
  // A row that only equals the last kept one came later, so it loses.
  return KeyOf(toggles, rate) > *least_;
}

/// `keys.name` may be gone when the row is written, so it is copied if it is needed.
void SelectedRows::Add(const SortKeys& keys, const Row& row) {
  if (sort_ == SortBy::Nothing) {
    if (passed_++ < limit_) out_.Add(row);
    return;
  }
  keptBytes_ += BytesOf(row);
  kept_.push_back({KeyOf(keys.toggles, keys.rate),
                   sort_ == SortBy::Name ? std::string(keys.name) : std::string(), row});
  MakeRoom();
}

/// Of a large dump few rows are wanted: the others are let go of now and then, which has to be
/// worth the sorting. A sort costs n log n, so it waits until there are twice as many rows as
/// wanted and 65,536 more, or until their texts take too much.
void SelectedRows::MakeRoom() {
  constexpr std::uint64_t kWorthDropping = 65536;
  constexpr std::size_t kMostBytes = std::size_t{1} << 30;
  if (limit_ < kept_.size()) {
    // Without --limit `limit_` is the largest number there is, so nothing is ever dropped.
    const std::uint64_t more = kept_.size() - limit_;
    if (more >= limit_ + kWorthDropping || keptBytes_ > worthBytes_) DropAllBut(limit_);
  }
  // Only reached where dropping did not help. 1 GiB of paths is no design but a hostile dump.
  if (keptBytes_ > kMostBytes) {
    throw Failure(
        FailureKind::Unusable,
        "the paths of the rows to sort are longer than 1 GB; --limit keeps the first rows");
  }
}

/// Rows that are equal stay in the order in which they came.
void SelectedRows::DropAllBut(std::uint64_t most) {
  // All of them are ordered first: which rows are the last ones is not known otherwise.
  std::stable_sort(kept_.begin(), kept_.end(),
                   [this](const Kept& a, const Kept& b) { return IsBefore(a, b); });
  if (kept_.size() > most) {
    kept_.erase(kept_.begin() + static_cast<std::ptrdiff_t>(most), kept_.end());
  }
  // Counted anew, since it is not known what the dropped rows had.
  keptBytes_ = 0;
  for (const Kept& kept : kept_) keptBytes_ += BytesOf(kept.row);
  // At least twice of what has to stay, else every further row would cause a sort.
  worthBytes_ = std::max(kWorthBytes, 2 * keptBytes_);
  // From now on `least_` bars rows that cannot get in. With --limit 0 nothing can.
  if (kept_.size() == most) {
    least_ = kept_.empty() ? std::numeric_limits<double>::infinity() : kept_.back().key;
  }
}

void SelectedRows::Finish() {
  // Without an order there is nothing to do: kept_ is empty.
  DropAllBut(limit_);
  for (const Kept& kept : kept_) out_.Add(kept.row);
  kept_.clear();
}

}  // namespace orsa::kesncd::cli
