#include "line_readers/code_counts.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <new>
#include <utility>

#include "vcd/change_count.h"

namespace orsa::kesncd {

namespace {

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

CodeCounts::CodeCounts() : salt_(Salt()), table_(64) {
  ReservePlaces(kLongestDirect - 1);
}

CodeCounts::ShortCode::ShortCode(std::string_view code) {
  std::copy(code.begin(), code.end(), bytes.begin());
  packed = Load(bytes.data(), code.size());
  isDirect = code.size() <= kLongestDirect && IsPlain(code);
  if (isDirect) place = DirectPlace(bytes.data(), code.size());
}

/// Makes places for codes of up to `longest` characters, more than there are.
void CodeCounts::ReservePlaces(std::size_t longest) {
  const std::size_t places = Places(longest);
  const std::size_t words = places + places / 32;
  std::unique_ptr<std::uint32_t[], Release> more(
      static_cast<std::uint32_t*>(std::calloc(words, sizeof(std::uint32_t))));
  if (more == nullptr) throw std::bad_alloc();
  std::copy_n(direct_.get(), places_, more.get());
  std::copy_n(direct_.get() + places_, places_ / 32, more.get() + places);
  direct_ = std::move(more);
  places_ = places;
}

/// The counter of a code that was added; null for others.
std::uint32_t* CodeCounts::Find(std::string_view code) {
  if (code.size() > kLongestPacked) {
    const auto found = longCodes_.find(code);
    return found == longCodes_.end() ? nullptr : &found->second;
  }
  const ShortCode sought(code);
  if (sought.isDirect) {
    if (sought.place >= places_) return nullptr;
    const bool isAdded = (AddedWord(sought.place) & AddedBit(sought.place)) != 0;
    return isAdded ? &direct_[sought.place] : nullptr;
  }
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
    if (added.place >= places_) ReservePlaces(kLongestDirect);
    AddedWord(added.place) |= AddedBit(added.place);
    direct_[added.place] = 0;  // changes before the declaration count nothing
    return;
  }
  if (2 * ++packedCodes_ > table_.size()) Grow();
  SlotOf(added.packed) = {added.packed, 0};
}

void CodeCounts::Count(std::string_view code) {
  std::uint32_t* const count = Find(code);
  if (count != nullptr && *count < kMostCounted) ++*count;
}

/// Counts a plain code that is too long to index the table of short ones.
void CodeCounts::CountLonger(const char* code, std::size_t length) {
  if (length > kLongestPacked) return Count({code, length});
  Slot& slot = SlotOf(Load(code, length));
  if (slot.key != 0) ++slot.count;
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
  for (std::size_t i = 0; i < places_; ++i) direct_[i] = std::min(direct_[i], kMostCounted);
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
