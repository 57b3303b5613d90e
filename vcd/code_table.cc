// Adding codes, and finding the cells of those that are not short.
#include "vcd/code_table.h"

#include <algorithm>
#include <new>
#include <utility>

#include "text/large_array.h"

namespace orsa::kesncd {

CodeCells::CodeCells(std::size_t longestDirect)
    : longestDirect_(longestDirect), salt_(ProcessKey().low), packed_(64) {
  // Places for two characters take 132 kilobytes, and a dump with few signals needs no others.
  // Those for four are 69 megabytes of addresses.
  ReservePlaces(longestDirect > 2 ? 2 : 1);
}

/// Makes places for codes of up to `longest` characters, more than there are.
void CodeCells::ReservePlaces(std::size_t longest) {
  const std::size_t places = Places(longest);
  // After the places, a bit for each: whether its code was added, for any value of its cell.
  const std::size_t words = places + places / 32;
  std::unique_ptr<std::uint32_t[], Release> more(
      // calloc gives zeroed pages that take memory only when they are first written.
      static_cast<std::uint32_t*>(std::calloc(words, sizeof(std::uint32_t))));
  if (more == nullptr) throw std::bad_alloc();
  AskForLargePages(more.get(), words * sizeof(std::uint32_t));
  std::copy_n(direct_.get(), places_, more.get());
  std::copy_n(direct_.get() + places_, places_ / 32, more.get() + places);
  direct_ = std::move(more);
  places_ = places;
}

/// The place of a packed code, or a number past the table.
std::size_t CodeCells::PlaceOfKey(std::uint64_t key) {
  constexpr std::size_t kNowhere = SIZE_MAX;
  if ((key & kNotAscii) != 0 || key > UINT32_MAX) return kNowhere;
  return key < kPlacesOfThree ? key : PlaceOfFour(static_cast<std::uint32_t>(key));
}

std::uint64_t CodeCells::Pack(std::string_view code) {
  // Load would read eight bytes whatever the length.
  return LoadBytes<std::uint64_t>(code.data(), code.size());
}

std::uint32_t* CodeCells::Find(std::string_view code) {
  if (code.size() > kLongestPacked) {
    const auto found = longCodes_.find(code);
    return found == longCodes_.end() ? nullptr : &found->second;
  }
  const std::uint64_t key = Pack(code);
  const std::size_t place = PlaceOfKey(key);
  if (place < Places(longestDirect_)) {
    // The place need not exist yet.
    if (place >= places_ || (AddedWord(place) & AddedBit(place)) == 0) return nullptr;
    return &direct_[place];
  }
  Slot& slot = packed_[SlotOf(key)];
  return slot.key != 0 ? &slot.cell : nullptr;
}

/// Finds the cell of a code that is not one of up to three ASCII characters, or has no place yet.
std::uint32_t* CodeCells::LookFurther(const char* code, std::size_t length) {
  if (length > kLongestPacked) return Find({code, length});
  const std::uint64_t key = Load(code, length);
  const std::size_t place = PlaceOfKey(key);
  if (place < places_) return &direct_[place];
  Slot& slot = packed_[SlotOf(key)];
  return slot.key != 0 ? &slot.cell : nullptr;
}

CodeCells::Added CodeCells::Add(std::string_view code) {
  if (code.size() > kLongestPacked) {
    // Looked for first: a code that is there needs no text of its own.
    const auto found = longCodes_.find(code);
    if (found != longCodes_.end()) return {&found->second, false};
    return {&longCodes_.emplace(code, 0).first->second, true};
  }
  const std::uint64_t key = Pack(code);
  const std::size_t place = PlaceOfKey(key);
  if (place < Places(longestDirect_)) {
    // Straight to the largest size: growing twice would copy the places twice.
    if (place >= places_) ReservePlaces(longestDirect_);
    const bool isNew = (AddedWord(place) & AddedBit(place)) == 0;
    AddedWord(place) |= AddedBit(place);
    return {&direct_[place], isNew};
  }
  // Looked for before growing, so that repeated codes never grow the table.
  if (std::uint32_t* const cell = Find(code); cell != nullptr) return {cell, false};
  // At most half full: searches end soon, and there is always a free slot to end them.
  if (2 * (packedCodes_ + 1) > packed_.size()) Grow();
  ++packedCodes_;
  Slot& slot = packed_[SlotOf(key)];
  slot = {key, 0};
  return {&slot.cell, true};
}

void CodeCells::Fetch(std::string_view code) const {
  // Texts are spread over the heap by the hash table; there is no one line to fetch.
  if (code.size() > kLongestPacked) return;
  const std::uint64_t key = Pack(code);
  // Neighbouring codes of direct places are in the cache already.
  if (PlaceOfKey(key) >= Places(longestDirect_)) __builtin_prefetch(&packed_[StartOf(key)]);
}

void CodeCells::Grow() {
  std::vector<Slot> old(2 * packed_.size());
  old.swap(packed_);
  for (const Slot& slot : old) {
    if (slot.key != 0) packed_[SlotOf(slot.key)] = slot;
  }
}

std::uint32_t CodeTable::Add(std::string_view code) {
  const auto [cell, isNew] = cells_.Add(code);
  // Cells hold the number and one, so that a cell of zero, as Look gives for a code that was not
  // added, reads as kNone.
  if (isNew) {
    const auto bytes =
        LoadBytes<std::uint32_t>(code.data(), std::min(code.size(), sizeof(std::uint32_t)));
    const std::uint32_t order = OrderOf(bytes, code.size());
    if (size_ == 0) first_ = order;
    isInOrder_ = isInOrder_ && order != kNone && order - first_ == size_;
    *cell = ++size_;
    isComputed_ = isInOrder_ && size_ >= large_;
  }
  return *cell - 1;
}

}  // namespace orsa::kesncd
