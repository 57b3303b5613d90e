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

inline constexpr std::size_t kValueBytes = sizeof(YYSTYPE::text);

/// Eight characters of a value, held as an integer.
class ValueBlock {
 public:
  /// Puts the character at `index` of the value into its block.
  void Append(int c, std::size_t index) {
    constexpr bool kFirstIsLow = std::endian::native == std::endian::little;
    const std::size_t byte = index % sizeof bytes_;
    const std::size_t place = kFirstIsLow ? byte : sizeof bytes_ - 1 - byte;
    bytes_ |= static_cast<std::uint64_t>(c) << 8 * place;
  }
  /// Writes the block and empties it.
  void MoveTo(char* to) {
    std::memcpy(to, &bytes_, sizeof bytes_);
    bytes_ = 0;
  }
  /// Copies a block; whether it holds the terminator.
  static bool Copy(char* to, const char* from) {
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, from, sizeof bytes);
    std::memcpy(to, &bytes, sizeof bytes);
    return ((bytes - kOnes) & ~bytes & (kOnes << 7)) != 0;
  }

 private:
  std::uint64_t bytes_ = 0;
};

/// Copies a value's text up to its terminator.
inline void CopyValue(char (&to)[kValueBytes], const char (&from)[kValueBytes]) {
  std::size_t at = 0;
  while (!ValueBlock::Copy(to + at, from + at) && at < kValueBytes - sizeof(ValueBlock)) {
    at += sizeof(ValueBlock);
  }
}

}  // namespace orsa::kesncd

#endif  // KESNCD_GRAMMAR_TOKEN_VALUE_H_
