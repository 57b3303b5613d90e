// Counting outside the fast scan, and the limit of a count.
#include "line_readers/code_counts.h"

#include <algorithm>

#include "vcd/change_count.h"

namespace orsa::kesncd {

namespace {

/// Texts that a host put into its module's list may hold one, and would lead to another code's
/// cell; codes in a dump's lines end before it.
bool HoldsNul(std::string_view code) {
  return code.find('\0') != std::string_view::npos;
}

}  // namespace

void CodeCounts::Add(std::string_view code) {
  if (HoldsNul(code)) return;
  const auto [count, isNew] = cells_.Add(code);
  // The cell may hold changes that the fast scan counted before.
  if (isNew) *count = 0;  // changes before the declaration count nothing
}

void CodeCounts::Count(std::string_view code) {
  std::uint32_t* const count = cells_.Find(code);
  if (count != nullptr && *count < kMostCounted) ++*count;
}

std::uint32_t CodeCounts::Get(std::string_view code) {
  const std::uint32_t* const count = HoldsNul(code) ? nullptr : cells_.Find(code);
  return count == nullptr ? 0 : std::min(*count, kMostCounted);
}

std::uint32_t CodeCounts::Take(std::string_view code) {
  const std::uint32_t count = Get(code);
  // A code without changes may have no cell.
  if (count > 0) *cells_.Find(code) = 0;
  return count;
}

void CodeCounts::Settle() {
  cells_.ForEach([](std::uint32_t& count) { count = std::min(count, kMostCounted); });
}

}  // namespace orsa::kesncd
