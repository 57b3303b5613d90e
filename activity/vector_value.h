// Turns the text of a vector value into bits, many characters at a time: wide buses are most of the
// bytes of a register-level dump.
//
// A variable of 70 bits needs two words: the value "1x0" gives bit 0 = 0, bit 1 = x, bit 2 = 1 and,
// since its leftmost character is 1, zeros above. "x0" would be extended with x, "z" with z.
#ifndef KESNCD_ACTIVITY_VECTOR_VALUE_H_
#define KESNCD_ACTIVITY_VECTOR_VALUE_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace orsa::kesncd {

/// Up to 64 bits of a value, the rightmost character's in the lowest place of each. A bit is 0 (0,
/// 0), 1 (1, 0), x (0, 1) or z (1, 1) in `high` and `unknown`. So 64 bits are compared and counted
/// by one operation.
struct ValueWord {
  std::uint64_t high = 0;
  std::uint64_t unknown = 0;

  bool operator==(const ValueWord&) const = default;
};
inline constexpr std::size_t kWordBits = 64;  // in a ValueWord

/// The words of a variable of `width` bits, the lowest one first, in `words`, which has room for
/// them. A shorter value is extended on its left with 0 for a leftmost 0 or 1, else with its
/// leftmost character; a longer one loses its left part. `value` is not empty; kBitValues says what
/// its characters mean. Bits above `width` are 0 in the last word. Reads no byte outside of
/// `value`.
void ReadVectorValue(std::string_view value, std::uint32_t width, ValueWord* words);

/// Whether the processor works on 64 bytes at a time and can leave some of them out (AVX-512), as
/// servers do. What is done so has a plain way beside it, and tests ask for either.
inline bool HasWideLanes() {
#ifdef __x86_64__
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw");
#else
  return false;
#endif
}

/// The value of up to 64 characters that are all 0 or 1, as nearly all are, as a number: "0110" is
/// 6. False, with `bits` anything, for any other value. Reads no byte outside of `value`, which is
/// not empty. `isWide` may be true only where HasWideLanes; it makes no difference to the result.
bool ReadBinaryValue(std::string_view value, std::uint64_t& bits, bool isWide = HasWideLanes());

/// The same as ReadVectorValue, character by character. For tests, which check the fast way against
/// it.
void ReadVectorValuePlainly(std::string_view value, std::uint32_t width, ValueWord* words);

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_VECTOR_VALUE_H_
