// Identifier codes and their counters.
//
// A dump names a code on every change, so finding its counter is constant time and allocates
// nothing. Simulators number their codes through, and nearly always in up to three characters:
// those index a table directly. Longer ones of up to eight bytes are looked up as one integer, the
// rest as strings.
#ifndef KESNCD_LINE_READERS_CODE_COUNTS_H_
#define KESNCD_LINE_READERS_CODE_COUNTS_H_

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

class CodeCounts {
 public:
  /// Bytes that CountPlain reads from the start of a code, however short that is.
  static constexpr std::size_t kReadAhead = sizeof(std::uint64_t);

  CodeCounts();

  /// Gives a code a counter, unless it has one. A code that holds a NUL, which no dump can name,
  /// gets none.
  void Add(std::string_view code);
  /// Fetches what Add or Get of a code will look at: in a large header each waits for memory.
  void Fetch(std::string_view code) const;
  /// Adds one change to a code; nothing for a code without a counter.
  void Count(std::string_view code);
  /// The same for a code of plain characters only: above a blank, below 128.
  void CountPlain(const char* code, std::size_t length);
  /// The changes of a code since they were last taken, 2147483647 at most.
  std::uint32_t Get(std::string_view code);
  /// The same, and takes them: the code starts again from 0.
  std::uint32_t Take(std::string_view code);
  /// To be called at least once in every kMostBetween calls of CountPlain, so that no counter
  /// overflows.
  void Settle();
  static constexpr std::uint32_t kMostBetween = 1U << 31;

  /// Gives the codes of all signals of a module a counter.
  void AddSymbols(const Vmod& module);
  /// Moves each code's changes to the first signal of the module that has it.
  void WriteTo(Vmod& module);

 private:
  struct Slot {
    std::uint64_t key = 0;  // 0: free; only the empty code packs to 0, and it is a direct one
    std::uint32_t count = 0;
  };
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>{}(text);
    }
  };
  struct Release {
    void operator()(void* memory) const { std::free(memory); }
  };

#ifdef KESNCD_SMALL_BLOCKS
  static constexpr std::size_t kLongestDirect = 2;
#else
  static constexpr std::size_t kLongestDirect = 3;
#endif
  // Places for codes of up to `longest` plain characters.
  static constexpr std::size_t Places(std::size_t longest) {
    return std::size_t{1} << (8 * longest - 1);
  }
  static constexpr std::size_t kLongestPacked = sizeof(std::uint64_t);

  /// A code of up to eight bytes, as it is looked up.
  struct ShortCode {
    explicit ShortCode(std::string_view code);
    std::array<char, kReadAhead> bytes{};
    std::uint64_t packed = 0;
    bool isDirect = false;
    std::size_t place = 0;  // in the direct table
  };

  static std::uint64_t Load(const char* code, std::size_t length);
  static std::size_t DirectPlace(const char* code, std::size_t length);
  std::size_t StartOf(std::uint64_t key) const;
  Slot& SlotOf(std::uint64_t key);
  void CountLonger(const char* code, std::size_t length);
  std::uint32_t* Find(std::string_view code);
  void ReservePlaces(std::size_t longest);
  /// The word, behind the counters, that says whether the code of a place was added, and its bit.
  std::uint32_t& AddedWord(std::size_t place) const {
    return direct_[places_ + place / 32];
  }
  static std::uint32_t AddedBit(std::size_t place) {
    return std::uint32_t{1} << place % 32;
  }
  void Grow();

  // Codes of up to three plain characters, also those that were not added: a change is counted
  // first and asked for later. There are places for the longest of them only once one is added, and
  // then pages that no code touches take no memory.
  std::unique_ptr<std::uint32_t[], Release> direct_;
  std::size_t places_ = 0;
  const std::uint64_t salt_;  // nobody who writes a dump knows where its codes fall
  std::vector<Slot> table_;   // open addressing, a power of two, at most half full
  std::size_t packedCodes_ = 0;
  std::unordered_map<std::string, std::uint32_t, TextHash, std::equal_to<>> longCodes_;
};

/// The bytes of a code of up to eight as one integer, the first one lowest, zeros behind the last.
/// Codes hold no NUL, so different codes stay different.
inline std::uint64_t CodeCounts::Load(const char* code, std::size_t length) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, code, sizeof bytes);
  if constexpr (std::endian::native == std::endian::big) bytes = __builtin_bswap64(bytes);
  return length < kLongestPacked ? bytes & ((std::uint64_t{1} << 8 * length) - 1) : bytes;
}

/// The place of a code of up to three plain characters: its bytes as a number, the first one
/// lowest, as simulators number their codes. Gathering the places closer would cost each change
/// more than the gaps between them do. Four bytes are read.
inline std::size_t CodeCounts::DirectPlace(const char* code, std::size_t length) {
  static constexpr std::uint32_t kMasks[] = {0, 0xFF, 0xFFFF, 0xFFFFFF};
  std::uint32_t bytes = 0;
  std::memcpy(&bytes, code, sizeof bytes);
  if constexpr (std::endian::native == std::endian::big) bytes = __builtin_bswap32(bytes);
  return bytes & kMasks[length];
}

/// Where the search for a packed code starts.
inline std::size_t CodeCounts::StartOf(std::uint64_t key) const {
  const std::uint64_t salted = key ^ salt_;
  std::uint64_t mixed = (salted ^ salted >> 32) * 0x9E3779B97F4A7C15U;
  mixed = (mixed ^ mixed >> 29) * 0xBF58476D1CE4E5B9U;
  return (mixed ^ mixed >> 32) & (table_.size() - 1);
}

inline CodeCounts::Slot& CodeCounts::SlotOf(std::uint64_t key) {
  const std::size_t mask = table_.size() - 1;
  std::size_t slot = StartOf(key);
  while (table_[slot].key != 0 && table_[slot].key != key) slot = (slot + 1) & mask;
  return table_[slot];
}

inline void CodeCounts::CountPlain(const char* code, std::size_t length) {
  if (length <= kLongestDirect) [[likely]] {
    const std::size_t place = DirectPlace(code, length);
    if (place < places_) [[likely]]
      ++direct_[place];
  } else {
    CountLonger(code, length);
  }
}

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_CODE_COUNTS_H_
