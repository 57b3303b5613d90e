#include "kesncd/vcd/code_counts.h"

#include <cstring>
#include <utility>

namespace orsa::kesncd {

namespace {

/// Codes hold no NUL, so padding with zeros keeps different codes different.
std::uint64_t Pack(std::string_view code) {
  std::uint64_t key = 0;
  std::memcpy(&key, code.data(), code.size());
  return key;
}

bool HoldsNul(std::string_view code) {
  return code.find('\0') != std::string_view::npos;
}

std::uint64_t Mix(std::uint64_t key) {
  key ^= key >> 32;
  key *= 0x9E3779B97F4A7C15U;
  key ^= key >> 29;
  key *= 0xBF58476D1CE4E5B9U;
  return key ^ (key >> 32);
}

}  // namespace

CodeCounts::CodeCounts() : table_(64) {}

/// The slot that holds `key`, or the free one where it belongs.
std::size_t CodeCounts::SlotOf(std::uint64_t key) const {
  const std::size_t mask = table_.size() - 1;
  std::size_t slot = Mix(key) & mask;
  while (table_[slot].number != kNone && table_[slot].key != key) slot = (slot + 1) & mask;
  return slot;
}

std::uint32_t CodeCounts::Find(std::string_view code) const {
  if (code.size() <= kShort) return table_[SlotOf(Pack(code))].number;
  const auto found = longCodes_.find(code);
  return found == longCodes_.end() ? kNone : found->second;
}

void CodeCounts::Grow() {
  std::vector<Slot> old(2 * table_.size());
  old.swap(table_);
  for (const Slot& slot : old) {
    if (slot.number != kNone) table_[SlotOf(slot.key)] = slot;
  }
}

void CodeCounts::Add(std::string_view code) {
  if (HoldsNul(code) || Find(code) != kNone) return;
  const auto number = static_cast<std::uint32_t>(counts_.size());
  counts_.push_back(0);
  if (code.size() > kShort) {
    longCodes_.emplace(code, number);
    return;
  }
  if (2 * ++shortCodes_ > table_.size()) Grow();
  const std::uint64_t key = Pack(code);
  table_[SlotOf(key)] = {key, number};
}

void CodeCounts::Count(std::string_view code) {
  const std::uint32_t number = Find(code);
  if (number != kNone) ++counts_[number];
}

std::uint64_t CodeCounts::Take(std::string_view code) {
  const std::uint32_t number = HoldsNul(code) ? kNone : Find(code);
  return number == kNone ? 0 : std::exchange(counts_[number], 0);
}

}  // namespace orsa::kesncd
