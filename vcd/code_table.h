// Identifier codes and what is kept for each: a number, or a count of changes.
//
// A dump names a code on every change, so finding its cell takes constant time and allocates
// nothing. Simulators number their codes through, and nearly always in up to three printable
// characters: those index a table directly, so that neighbours in a dump's header are neighbours
// there. Longer ones of up to eight bytes are looked up as one integer, the rest as texts.
#ifndef KESNCD_VCD_CODE_TABLE_H_
#define KESNCD_VCD_CODE_TABLE_H_

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "text/number.h"
#include "text/secret_hash.h"

namespace orsa::kesncd {

/// A cell of 32 bits for each code. Codes hold no NUL. Add the codes of a dump's header, then Look
/// for those of its changes. Cells move when codes are added: no pointer to one is to be kept
/// across Add.
class CodeCells {
 public:
  /// Bytes that are read from the start of a code, however short it is, where a call says so.
  static constexpr std::size_t kReadAhead = sizeof(std::uint64_t);
  // Places for four characters would be eight gigabytes.
  static constexpr std::size_t kLongestDirect = 3;

  /// Codes of up to `longestDirect` characters, 3 at most, index the table directly; tests ask for
  /// fewer. Which way a code takes makes no difference to its cell.
  explicit CodeCells(std::size_t longestDirect = kLongestDirect);

  /// A code's cell, and whether the code is new, which its cell is not cleared for.
  struct Added {
    std::uint32_t* cell;
    bool isNew;
  };
  Added Add(std::string_view code);
  /// The cell of a code that was added; null for others.
  std::uint32_t* Find(std::string_view code);
  /// The same, but may also give a cell to a code of up to three characters that was not added:
  /// one that is zero unless the caller changed it. Reads kReadAhead bytes.
  const std::uint32_t* Look(const char* code, std::size_t length) const;
  /// The same for a code of bytes below 128 only, as the fast scan of a dump's body finds them.
  std::uint32_t* LookPlain(const char* code, std::size_t length);
  /// Fetches what Add or Find of a code will look at: in a large header each waits for memory.
  void Fetch(std::string_view code) const;
  /// The same for Look, which reads kReadAhead bytes too.
  void FetchLook(const char* code, std::size_t length) const;
  /// Hands every added code's cell to `take`. Touches no memory that no code uses.
  template <class Take>
  void ForEach(Take take);

 private:
  struct Slot {
    std::uint64_t key = 0;  // 0: free; only the empty code packs to 0, and it is a direct one
    std::uint32_t cell = 0;
  };
  // The memory is calloc's, which delete cannot give back.
  struct Release {
    void operator()(void* memory) const { std::free(memory); }
  };
  // A code of up to eight bytes is an integer without loss, zeros after its end: codes hold no NUL.
  static constexpr std::size_t kLongestPacked = sizeof(std::uint64_t);
  // Of a packed code: any bit of a fourth byte or beyond, and the highest bit of the first three.
  static constexpr std::uint64_t kNotDirect = 0xFFFFFFFFFF808080U;

  // Places for codes of up to `longest` ASCII characters. The last byte is below 128, so its
  // highest bit needs no places.
  static constexpr std::size_t Places(std::size_t longest) {
    return std::size_t{1} << (8 * longest - 1);
  }
  static std::size_t PlaceOf(const char* code, std::size_t length);
  static std::uint64_t Load(const char* code, std::size_t length);
  static std::uint64_t Pack(std::string_view code);
  bool IsDirect(std::uint64_t key) const {
    return (key & kNotDirect) == 0 && key < Places(longestDirect_);
  }
  std::size_t StartOf(std::uint64_t key) const;
  std::size_t SlotOf(std::uint64_t key) const;
  std::uint32_t* LookFurther(const char* code, std::size_t length);
  void ReservePlaces(std::size_t longest);
  void Grow();
  /// The word after the cells that says whether the code of a place was added, and its bit.
  std::uint32_t& AddedWord(std::size_t place) const { return direct_[places_ + place / 32]; }
  static std::uint32_t AddedBit(std::size_t place) { return std::uint32_t{1} << place % 32; }

  // A code's bytes are its place as a number, the first one lowest, as simulators number their
  // codes; gathering the places closer would cost each change more than the gaps between them do.
  // There are places for the longest of them only once one is added, and then pages that no code
  // uses take no memory.
  std::unique_ptr<std::uint32_t[], Release> direct_;
  std::size_t places_ = 0;
  std::size_t longestDirect_;
  std::uint64_t salt_;        // nobody who writes a dump knows where its codes fall
  std::vector<Slot> packed_;  // open addressing, a power of two, at most half full
  std::size_t packedCodes_ = 0;
  std::unordered_map<std::string, std::uint32_t, SecretTextHash, std::equal_to<>> longCodes_;
};

/// Codes by number, in the order in which they are added.
class CodeTable {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  /// The code's number; a new code gets the next one.
  std::uint32_t Add(std::string_view code);
  /// The code's number or kNone. CodeCells::kReadAhead bytes may be read from the code's start.
  std::uint32_t Find(std::string_view code) const;
  /// Fetches what Find of a code will look at.
  void Fetch(const char* code, std::size_t length) const { cells_.FetchLook(code, length); }
  std::uint32_t size() const { return size_; }

 private:
  CodeCells cells_;  // one more than the code's number; 0 for none
  std::uint32_t size_ = 0;
};

/// The bytes of a code of up to eight as one integer, the first one lowest, zeros after the last.
/// Eight bytes are read.
inline std::uint64_t CodeCells::Load(const char* code, std::size_t length) {
  const auto bytes = LoadBytes<std::uint64_t>(code);
  return length < kLongestPacked ? bytes & ((std::uint64_t{1} << 8 * length) - 1) : bytes;
}

/// Where the search for a packed code starts. The salt and two multiplications spread keys that
/// differ in a byte only, also crafted ones.
inline std::size_t CodeCells::StartOf(std::uint64_t key) const {
  const std::uint64_t salted = key ^ salt_;
  std::uint64_t mixed = (salted ^ salted >> 32) * 0x9E3779B97F4A7C15U;
  mixed = (mixed ^ mixed >> 29) * 0xBF58476D1CE4E5B9U;
  return (mixed ^ mixed >> 32) & (packed_.size() - 1);
}

/// The slot of a packed code, or the free one where it would go. The search ends, since at least
/// half of the slots are free.
inline std::size_t CodeCells::SlotOf(std::uint64_t key) const {
  const std::size_t mask = packed_.size() - 1;
  std::size_t slot = StartOf(key);
  while (packed_[slot].key != 0 && packed_[slot].key != key) slot = (slot + 1) & mask;
  return slot;
}

/// The place of a code of up to three characters. Four bytes are read.
inline std::size_t CodeCells::PlaceOf(const char* code, std::size_t length) {
  // A mask for each length costs less than a copy of so many bytes.
  static constexpr std::uint32_t kMasks[] = {0, 0xFF, 0xFFFF, 0xFFFFFF};
  return LoadBytes<std::uint32_t>(code) & kMasks[length];
}

inline std::uint32_t* CodeCells::LookPlain(const char* code, std::size_t length) {
  if (length <= kLongestDirect) [[likely]] {
    const std::size_t place = PlaceOf(code, length);
    if (place < places_) [[likely]]
      return &direct_[place];
    // Such codes have places once one of them is added: none was. In a dump of which one module is
    // counted, most changes may be of these.
    if (place < Places(longestDirect_)) return nullptr;
  }
  return LookFurther(code, length);
}

inline void CodeCells::FetchLook(const char* code, std::size_t length) const {
  const std::size_t place = PlaceOf(code, std::min(length, kLongestDirect));
  if (length <= kLongestDirect && place < places_) [[likely]] {
    __builtin_prefetch(&direct_[place], 1);
  } else if (length <= kLongestPacked) {
    __builtin_prefetch(&packed_[StartOf(Load(code, length))]);
  }
}

inline const std::uint32_t* CodeCells::Look(const char* code, std::size_t length) const {
  if (length <= kLongestDirect) [[likely]] {
    const std::size_t place = PlaceOf(code, length);
    // A byte of 128 or more would lead to another code's place, or past the table.
    const bool isDirect = (place & kNotDirect) == 0;
    if (place < places_ && isDirect) [[likely]]
      return &direct_[place];
    if (place < Places(longestDirect_) && isDirect) return nullptr;
  }
  return const_cast<CodeCells*>(this)->LookFurther(code, length);  // which changes nothing
}

template <class Take>
void CodeCells::ForEach(Take take) {
  for (std::size_t word = 0; word < places_ / 32; ++word) {
    // Each bit of the word is a place; the lowest one is taken off until none is left.
    for (std::uint32_t bits = direct_[places_ + word]; bits != 0; bits &= bits - 1) {
      take(direct_[32 * word + static_cast<unsigned>(std::countr_zero(bits))]);
    }
  }
  for (Slot& slot : packed_) {
    if (slot.key != 0) take(slot.cell);
  }
  for (auto& [code, cell] : longCodes_) take(cell);
}

inline std::uint32_t CodeTable::Find(std::string_view code) const {
  const std::uint32_t* const cell = cells_.Look(code.data(), code.size());
  return cell == nullptr ? kNone : *cell - 1;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_CODE_TABLE_H_
