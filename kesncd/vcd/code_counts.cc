#include "kesncd/vcd/code_counts.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <new>
#include <utility>

#include "kesncd/vcd/change_count.h"

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

/// Differs from process to process and from table to table.
std::uint64_t Salt() {
  static const int anchor = 0;
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  return (reinterpret_cast<std::uintptr_t>(&anchor) ^ static_cast<std::uint64_t>(now)) *
         0xD6E8FEB86659FD93U;
}

bool IsPlain(std::string_view code) {
  return std::all_of(code.begin(), code.end(), [](char c) { return c > ' ' && (c & 0x80) == 0; });
}

}  // namespace

CodeCounts::CodeCounts()
    : direct_(ZeroedArray<std::uint32_t>(kDirect)),
      added_(ZeroedArray<bool>(kDirect)),
      salt_(Salt()),
      table_(64) {}

CodeCounts::ShortCode::ShortCode(std::string_view code) {
  std::copy(code.begin(), code.end(), bytes.begin());
  packed = Load(bytes.data(), code.size());
  isDirect = code.size() <= kLongestDirect && IsPlain(code);
  if (isDirect) index = DirectIndex(bytes.data(), code.size());
}

/// The counter of a code that was added; null for others.
std::uint32_t* CodeCounts::Find(std::string_view code) {
  if (code.size() > kLongestPacked) {
    const auto found = longCodes_.find(code);
    return found == longCodes_.end() ? nullptr : &found->second;
  }
  const ShortCode sought(code);
  if (sought.isDirect) return added_[sought.index] ? &direct_[sought.index] : nullptr;
  Slot& slot = SlotOf(sought.packed);
  return slot.key != 0 ? &slot.count : nullptr;
}

void CodeCounts::Fetch(std::string_view code) const {
  if (code.size() > kLongestPacked) return;
  const ShortCode sought(code);
  if (!sought.isDirect) __builtin_prefetch(&table_[StartOf(sought.packed)]);
}

void CodeCounts::Grow() {
  std::vector<Slot> old(2 * table_.size());
  old.swap(table_);
  for (const Slot& slot : old) {
    if (slot.key != 0) SlotOf(slot.key) = slot;
  }
}

void CodeCounts::Add(std::string_view code) {
  if (HoldsNul(code) || Find(code) != nullptr) return;
  if (code.size() > kLongestPacked) {
    longCodes_.emplace(code, 0);
    return;
  }
  const ShortCode added(code);
  if (added.isDirect) {
    added_[added.index] = true;
    direct_[added.index] = 0;  // changes before the declaration count nothing
    return;
  }
  if (2 * ++packedCodes_ > table_.size()) Grow();
  SlotOf(added.packed) = {added.packed, 0};
}

void CodeCounts::Count(std::string_view code) {
  std::uint32_t* const count = Find(code);
  if (count != nullptr && *count < kMostCounted) ++*count;
}

std::uint32_t CodeCounts::Get(std::string_view code) {
  const std::uint32_t* const count = HoldsNul(code) ? nullptr : Find(code);
  return count == nullptr ? 0 : std::min(*count, kMostCounted);
}

std::uint32_t CodeCounts::Take(std::string_view code) {
  const std::uint32_t count = Get(code);
  if (count > 0) *Find(code) = 0;
  return count;
}

void CodeCounts::Settle() {
  for (std::size_t i = 0; i < kDirect; ++i) {
    if (direct_[i] > kMostCounted) direct_[i] = kMostCounted;
  }
  for (Slot& slot : table_) slot.count = std::min(slot.count, kMostCounted);
}

void CodeCounts::AddSymbols(const Vmod& module) {
  for (int i = 0; i < module.GetSignalSize(); ++i) Add(module.GetSignalSymb(i));
}

void CodeCounts::WriteTo(Vmod& module) {
  for (int i = 0; i < module.GetSignalSize(); ++i) {
    module.AddChanges(i, Take(module.GetSignalSymb(i)));
  }
}

}  // namespace orsa::kesncd
