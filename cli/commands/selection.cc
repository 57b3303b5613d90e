// Filtering, ordering and counting rows.
#include "cli/commands/selection.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "names/name_order.h"

namespace orsa::kesncd::cli {

void AddSelectionOptions(Command& command, SelectionOptions& options) {
  command.AddChoice(
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
  return sort_ == SortBy::Name ? IsNameBefore(a.name, b.name) : a.key > b.key;
}

void SelectedRows::Add(const SortKeys& keys, Row row) {
  if (sort_ == SortBy::Nothing) {
    if (passed_++ < limit_) out_.Add(row);
    return;
  }
  const std::optional<double>& key = sort_ == SortBy::Toggles ? keys.toggles : keys.rate;
  kept_.push_back({key.value_or(-std::numeric_limits<double>::infinity()),
                   sort_ == SortBy::Name ? std::string(keys.name) : std::string(), std::move(row)});
  // Of a large dump few rows are wanted: the others are let go of now and then.
  constexpr std::uint64_t kWorthDropping = 65536;
  if (limit_ < UINT32_MAX && kept_.size() >= 2 * limit_ + kWorthDropping) DropAllBut(limit_);
}

/// Rows that are equal stay in the order in which they came.
void SelectedRows::DropAllBut(std::uint64_t most) {
  std::stable_sort(kept_.begin(), kept_.end(),
                   [this](const Kept& a, const Kept& b) { return IsBefore(a, b); });
  if (kept_.size() > most) {
    kept_.erase(kept_.begin() + static_cast<std::ptrdiff_t>(most), kept_.end());
  }
}

void SelectedRows::Finish() {
  DropAllBut(limit_);
  for (const Kept& kept : kept_) out_.Add(kept.row);
  kept_.clear();
}

}  // namespace orsa::kesncd::cli
