#include "kesncd/vcd/code_counts.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace orsa::kesncd {

namespace {

template <class T>
T* ZeroedArray(std::size_t size) {
  auto* array = static_cast<T*>(std::calloc(size, sizeof(T)));
  if (array == nullptr) throw std::bad_alloc();
  return array;
}

bool HoldsNul(std::string_view code) {
  return code.find('\0') != std::string_view::npos;
}

bool IsPrintable(std::string_view code) {
  return std::all_of(code.begin(), code.end(), [](char c) { return c > ' ' && c <= '~'; });
}

}  // namespace

CodeCounts::CodeCounts()
    : direct_(ZeroedArray<std::uint64_t>(kDirect)),
      added_(ZeroedArray<bool>(kDirect)),
      table_(64) {}

/// The counter of a code that was added; null for others.
std::uint64_t* CodeCounts::Find(std::string_view code) {
  if (code.size() > kLongestPacked) {
    const auto found = longCodes_.find(code);
    return found == longCodes_.end() ? nullptr : &found->second;
  }
  std::array<char, kReadAhead> bytes{};
  std::copy(code.begin(), code.end(), bytes.begin());
  const std::uint64_t packed = Load(bytes.data(), code.size());
  if (code.size() <= kLongestDirect && IsPrintable(code)) {
    const std::size_t index = DirectIndex(packed, code.size());
    return added_[index] ? &direct_[index] : nullptr;
  }
  Slot& slot = SlotOf(packed);
  return slot.used ? &slot.count : nullptr;
}

void CodeCounts::Grow() {
  std::vector<Slot> old(2 * table_.size());
  old.swap(table_);
  for (const Slot& slot : old) {
    if (slot.used) SlotOf(slot.key) = slot;
  }
}

void CodeCounts::Add(std::string_view code) {
  if (HoldsNul(code) || Find(code) != nullptr) return;
  if (code.size() > kLongestPacked) {
    longCodes_.emplace(code, 0);
    return;
  }
  std::array<char, kReadAhead> bytes{};
  std::copy(code.begin(), code.end(), bytes.begin());
  const std::uint64_t packed = Load(bytes.data(), code.size());
  if (code.size() <= kLongestDirect && IsPrintable(code)) {
    const std::size_t index = DirectIndex(packed, code.size());
    added_[index] = true;
    direct_[index] = 0;  // changes before the declaration count nothing
    return;
  }
  if (2 * ++packedCodes_ > table_.size()) Grow();
  SlotOf(packed) = {packed, 0, true};
}

void CodeCounts::Count(std::string_view code) {
  std::uint64_t* const count = Find(code);
  if (count != nullptr) ++*count;
}

std::uint64_t CodeCounts::Take(std::string_view code) {
  std::uint64_t* const count = HoldsNul(code) ? nullptr : Find(code);
  return count == nullptr ? 0 : std::exchange(*count, 0);
}

}  // namespace orsa::kesncd
