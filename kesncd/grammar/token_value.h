// Token values: room for 1023 characters, and mostly three of them.
//
// A word is copied several times on its way, and short words are too dear by way of the C library.
// So values are written and read in blocks of eight bytes, always the same ones: a processor that
// has to put a block together from single bytes just written waits for each.
#ifndef KESNCD_GRAMMAR_TOKEN_VALUE_H_
#define KESNCD_GRAMMAR_TOKEN_VALUE_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

/// 1024, a multiple of eight.
inline constexpr std::size_t kValueBytes = sizeof(YYSTYPE::text);

/// Eight characters of a value, held as an integer. Append characters, then MoveTo; or MoveFrom,
/// and go on.
class ValueBlock {
 public:
  /// Puts the character at `index` of the value into its block. The place must not have been
  /// written since the block was emptied.
  void Append(int c, std::size_t index) {
    constexpr bool kFirstIsLow = std::endian::native == std::endian::little;
    const std::size_t byte = index % sizeof bytes_;
    const std::size_t place = kFirstIsLow ? byte : sizeof bytes_ - 1 - byte;
    bytes_ |= static_cast<std::uint64_t>(c) << 8 * place;
  }
  /// Reads the block, whose unused bytes are zero.
  void MoveFrom(const char* from) { std::memcpy(&bytes_, from, sizeof bytes_); }
  /// Writes the block and empties it.
  void MoveTo(char* to) {
    std::memcpy(to, &bytes_, sizeof bytes_);
    bytes_ = 0;
  }
  /// Copies the bytes above a blank at the start of a block, with zeros after them; returns how
  /// many these are. Eight bytes are read and written. Where the first byte is not the lowest
  /// nothing is taken, and words come by characters.
  static std::size_t CopyWord(char* to, const char* from) {
    if constexpr (std::endian::native != std::endian::little) return 0;
    constexpr std::uint64_t kFirstAbove = kOnes * (' ' + 1);
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, from, sizeof bytes);
    // The highest bit of each byte at or below a blank; a borrow spoils only those after the first.
    // A byte from 128 on ends nothing.
    const std::uint64_t ends = (bytes - kFirstAbove) & ~bytes & (kOnes << 7);
    // Nothing after the first such byte is kept.
    if (ends != 0) bytes &= ((ends & -ends) >> 7) - 1;
    std::memcpy(to, &bytes, sizeof bytes);
    return static_cast<std::size_t>(std::countr_zero(ends)) / 8;
  }
  /// Copies a block, with what follows a terminator in it; returns whether it holds one.
  static bool Copy(char* to, const char* from) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, from, sizeof bytes);
    std::memcpy(to, &bytes, sizeof bytes);
    return ((bytes - kOnes) & ~bytes & (kOnes << 7)) != 0;
  }

 private:
  // A one in each byte.
  static constexpr std::uint64_t kOnes = 0x0101010101010101;

  std::uint64_t bytes_ = 0;
};

/// Copies a value's text up to its terminator. The last block is copied without looking: a value
/// always ends in it at the latest.
inline void CopyValue(char (&to)[kValueBytes], const char (&from)[kValueBytes]) {
  std::size_t at = 0;
  while (!ValueBlock::Copy(to + at, from + at) && at < kValueBytes - sizeof(ValueBlock)) {
    at += sizeof(ValueBlock);
  }
}

}  // namespace orsa::kesncd

#endif  // KESNCD_GRAMMAR_TOKEN_VALUE_H_
