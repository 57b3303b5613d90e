// Identifier codes and what is kept for each: a number, or a count of changes.
//
// A dump names a code on every change, so finding its cell takes constant time and allocates
// nothing. Simulators number their codes through, so nearly all have up to three printable
// characters, and the next millions a fourth: those index a table directly, so that neighbours in a
// dump's header are neighbours there. Other ones of up to eight bytes are looked up as one integer,
// the rest as texts.
#ifndef KESNCD_VCD_CODE_TABLE_H_
#define KESNCD_VCD_CODE_TABLE_H_

#include <algorithm>
#include <array>
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
  // Of those of four only the ones that simulators give first have places, see kFourths.
  static constexpr std::size_t kLongestDirect = 4;

  /// Codes of up to `longestDirect` characters, 4 at most, index the table directly; tests ask for
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
  /// The same, but may also give a cell to a code of up to four characters that was not added: one
  /// that is zero unless the caller changed it. Reads kReadAhead bytes.
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
  // Of a packed code: the highest bit of the first four bytes. ASCII has none of them.
  static constexpr std::uint64_t kNotAscii = 0x80808080U;
  // Places for codes of up to three ASCII characters. The last byte's highest bit needs no places.
  static constexpr std::size_t kPlacesOfThree = std::size_t{1} << 23U;
  // Characters that a code of four may end with to have a place: "!" and the ones after it. The
  // first character changes fastest, so these are the 3.3 million codes after those of three.
  static constexpr std::size_t kFourths = 4;
  static constexpr std::uint32_t kPlacesOfAFourth = std::uint32_t{1} << 21U;

  // Places for codes of up to `longest` ASCII characters.
  static constexpr std::size_t Places(std::size_t longest) {
    if (longest > 3) return kPlacesOfThree + kFourths * kPlacesOfAFourth;
    return std::size_t{1} << (8 * longest - 1);
  }
  static std::size_t PlaceOf(const char* code, std::size_t length);
  static std::size_t PlaceOfFour(std::uint32_t code);
  static std::size_t PlaceOfKey(std::uint64_t key);
  static std::uint64_t Load(const char* code, std::size_t length);
  static std::uint64_t Pack(std::string_view code);
  std::size_t StartOf(std::uint64_t key) const;
  std::size_t SlotOf(std::uint64_t key) const;
  std::uint32_t* LookFurther(const char* code, std::size_t length);
  void ReservePlaces(std::size_t longest);
  void Grow();
  /// The word after the cells that says whether the code of a place was added, and its bit.
  std::uint32_t& AddedWord(std::size_t place) const { return direct_[places_ + place / 32]; }
  static std::uint32_t AddedBit(std::size_t place) { return std::uint32_t{1} << place % 32; }

  // Of up to three characters the bytes are the place as a number, the first one lowest, as
  // simulators number their codes; gathering these places closer would cost each change more than
  // the gaps between them do. Those of four come after them, see PlaceOfFour. There are places for
  // the longest of them only once one is added, and then pages that no code uses take no memory.
  std::unique_ptr<std::uint32_t[], Release> direct_;
  std::size_t places_ = 0;
  std::size_t longestDirect_;
  std::uint64_t salt_;        // nobody who writes a dump knows where its codes fall
  std::vector<Slot> packed_;  // open addressing, a power of two, at most half full
  std::size_t packedCodes_ = 0;
  std::unordered_map<std::string, std::uint32_t, SecretTextHash, std::equal_to<>> longCodes_;
};

/// Codes by number, in the order in which they are added.
///
/// Most simulators number codes through in the order in which they declare them: "!" to "~", "!!",
/// "\"!" and so on. Where all codes that were added follow one another like this, a code's number
/// can be computed from its characters, and a change need not wait for the memory of a large table.
/// To look into a small one takes less.
class CodeTable {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;
  // The numbers of so many codes, four bytes each, exceed the caches that are quick to reach.
  static constexpr std::uint32_t kLarge = 1 << 15;

  CodeTable() = default;
  /// Computes numbers from `large` codes on; tests ask for fewer.
  explicit CodeTable(std::uint32_t large) : large_(large) {}

  /// The code's number; a new code gets the next one.
  std::uint32_t Add(std::string_view code);
  /// Adds so many codes of which only the numbers are known; Find finds none of them. In place of
  /// Add.
  void AddUnnamed(std::uint32_t count) { size_ += count; }
  /// The code's number or kNone. CodeCells::kReadAhead bytes may be read from the code's start.
  std::uint32_t Find(std::string_view code) const;
  /// Fetches what Find of a code will look at.
  void Fetch(const char* code, std::size_t length) const {
    if (!isComputed_) cells_.FetchLook(code, length);
  }
  std::uint32_t size() const { return size_; }

 private:
  static std::uint32_t OrderOf(std::uint32_t code, std::size_t length);

  CodeCells cells_;  // one more than the code's number; 0 for none
  std::uint32_t size_ = 0;
  std::uint32_t large_ = kLarge;
  bool isInOrder_ = true;
  bool isComputed_ = false;  // codes are in order, and many
  std::uint32_t first_ = 0;  // the first code's OrderOf
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

/// The place of a code of four ASCII characters, or a number past the table. Seven bits of each
/// character: places of eight, as shorter codes have, would be spread over twice the memory.
inline std::size_t CodeCells::PlaceOfFour(std::uint32_t code) {
  const std::uint32_t pairs = (code & 0x007F007FU) | (code & 0x7F007F00U) >> 1U;
  const std::uint32_t packed = (pairs & 0x3FFFU) | (pairs >> 2U & 0x0FFFC000U);
  // Of a last character before "!" the difference wraps around, past the table.
  const std::uint32_t fromFirst = packed - std::uint32_t{'!'} * kPlacesOfAFourth;
  return kPlacesOfThree + fromFirst;
}

inline std::uint32_t* CodeCells::LookPlain(const char* code, std::size_t length) {
  // The places of four are more arithmetic, and most dumps have none.
  if (length <= 3) [[likely]] {
    const std::size_t place = PlaceOf(code, length);
    if (place < places_) [[likely]]
      return &direct_[place];
    // Such codes have places once one of them is added: none was. In a dump of which one module is
    // counted, most changes may be of these.
    if (place < Places(longestDirect_)) return nullptr;
  } else if (length == 4) {
    const std::size_t place = PlaceOfFour(LoadBytes<std::uint32_t>(code));
    if (place < places_) return &direct_[place];
  }
  return LookFurther(code, length);
}

inline void CodeCells::FetchLook(const char* code, std::size_t length) const {
  std::size_t place = places_;
  if (length <= 3) {
    place = PlaceOf(code, length);
  } else if (length == 4) {
    place = PlaceOfFour(LoadBytes<std::uint32_t>(code));
  }
  if (place < places_) [[likely]] {
    __builtin_prefetch(&direct_[place], 1);
  } else if (length <= kLongestPacked) {
    __builtin_prefetch(&packed_[StartOf(Load(code, length))]);
  }
}

inline const std::uint32_t* CodeCells::Look(const char* code, std::size_t length) const {
  if (length <= 3) [[likely]] {
    const std::size_t place = PlaceOf(code, length);
    // A byte of 128 or more would lead to another code's place, or past the table.
    const bool isAscii = (place & kNotAscii) == 0;
    if (place < places_ && isAscii) [[likely]]
      return &direct_[place];
    if (place < Places(longestDirect_) && isAscii) return nullptr;
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

/// Which code this is of those that simulators give, from 0 for "!"; kNone for one that is none of
/// them or has over four characters. `code` is its first four bytes as a number, of which those
/// after its end may be any.
inline std::uint32_t CodeTable::OrderOf(std::uint32_t code, std::size_t length) {
  constexpr std::uint32_t kOnes = 0x01010101U;
  constexpr std::uint32_t kCharacters = '~' - '!' + 1;
  // How many shorter codes there are.
  static constexpr std::array<std::uint32_t, 5> kShorter{
      0, 0, kCharacters, kCharacters + kCharacters * kCharacters,
      kCharacters + kCharacters * (kCharacters + kCharacters * kCharacters)};
  if (length - 1 >= 4) return kNone;
  // Characters that are not there count as "!", the digit 0.
  const std::uint32_t absent = length < 4 ? ~std::uint32_t{0} << 8 * length : 0;
  const std::uint32_t bytes = (code & ~absent) | (kOnes * '!' & absent);
  const std::uint32_t digits = bytes - kOnes * '!';
  // The highest bit of a byte is set for what is below "!" in the difference, or in a byte after
  // it, and for "\x7F" in the sum.
  if (((bytes | digits | (bytes + kOnes)) & kOnes * 0x80) != 0) return kNone;
  const std::uint32_t pairs = (digits & 0x00FF00FFU) + kCharacters * (digits >> 8U & 0x00FF00FFU);
  return (pairs & 0xFFFFU) + kCharacters * kCharacters * (pairs >> 16U) + kShorter[length];
}

// Always inlined: the compiler leaves it out of line otherwise, which every change would pay for.
[[gnu::always_inline]] inline std::uint32_t CodeTable::Find(std::string_view code) const {
  if (isComputed_) {
    const auto bytes = LoadBytes<std::uint32_t>(code.data());
    const std::uint32_t number = OrderOf(bytes, code.size()) - first_;
    return number < size_ ? number : kNone;
  }
  const std::uint32_t* const cell = cells_.Look(code.data(), code.size());
  return cell == nullptr ? kNone : *cell - 1;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_CODE_TABLE_H_
