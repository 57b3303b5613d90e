// The characters of vector values, sixteen at a time where the processor can.
#include "activity/vector_value.h"

#include <algorithm>
#include <bit>
#include <cstring>

#ifdef __x86_64__
#include <immintrin.h>
#endif

#include "text/number.h"
#include "vcd/plain_lines.h"
#include "vcd/value_alphabet.h"

namespace orsa::kesncd {

namespace {

/// Whether eight characters are all 0 or 1, which differ in their lowest bit only.
bool AreBinary(std::uint64_t characters) {
  return (characters & 0xFEFEFEFEFEFEFEFEU) == 0x3030303030303030U;
}

/// The lowest bits of eight characters, that of the first one highest. The product moves each of
/// them to a place of its own in the highest byte; no two meet on the way, so nothing carries.
std::uint64_t LowestBits(std::uint64_t characters) {
  return ((characters & 0x0101010101010101U) * 0x8040201008040201U) >> 56;
}

/// Up to fifteen characters if all are 0 or 1: the first and the last ones, which may overlap, as
/// the same characters give the same bits twice.
bool ReadShortBinary(const char* text, std::size_t length, std::uint64_t& bits) {
  if (length >= 8) {
    const std::uint64_t first = LoadBytes<std::uint64_t>(text);
    const std::uint64_t last = LoadBytes<std::uint64_t>(text + length - 8);
    bits = LowestBits(first) << (length - 8) | LowestBits(last);
    return AreBinary(first) && AreBinary(last);
  }
  if (length >= 4) {
    const std::uint64_t both = std::uint64_t{LoadBytes<std::uint32_t>(text)} |
                               std::uint64_t{LoadBytes<std::uint32_t>(text + length - 4)} << 32;
    const std::uint64_t eight = LowestBits(both);
    bits = eight >> 4 << (length - 4) | (eight & 0xF);
    return AreBinary(both);
  }
  // The first, the middle and the last one; of one or two characters some are the same.
  const std::size_t middle = length / 2;
  const auto first = static_cast<unsigned char>(text[0]);
  const auto second = static_cast<unsigned char>(text[middle]);
  const auto last = static_cast<unsigned char>(text[length - 1]);
  bits = (first & 1U) << (length - 1) | (second & 1U) << (length - 1 - middle) | (last & 1U);
  return (first & 0xFE) == '0' && (second & 0xFE) == '0' && (last & 0xFE) == '0';
}

/// Adds a value's character at its place. Other characters of the alphabet, such as H and W, become
/// one of the four.
void AddBit(ValueWord& word, std::size_t place, char c) {
  const char value = In(kBitValues, c);
  // See ValueWord: 1 and z have `high`, x and z have `unknown`.
  word.high |= static_cast<std::uint64_t>(value == '1' || value == 'z') << place;
  word.unknown |= static_cast<std::uint64_t>(value == 'x' || value == 'z') << place;
}

/// Up to 64 characters, the last one in the lowest place. The plain way, for comparison and for
/// processors without SSE2.
ValueWord ReadWordPlainly(const char* text, std::size_t length) {
  ValueWord word;
  for (std::size_t i = 0; i < length; ++i) AddBit(word, length - 1 - i, text[i]);
  return word;
}

// Every x86-64 has SSE2; other processors take the plain way.
#ifdef __SSE2__
constexpr std::size_t kLane = sizeof(__m128i);

/// The first bit becomes the last. Characters are read from the left, bits count from the right.
std::uint64_t Reversed(std::uint64_t bits) {
  // Bytes first, then halves, quarters and eighths within each.
  bits = __builtin_bswap64(bits);
  bits = (bits >> 4 & 0x0F0F0F0F0F0F0F0FU) | (bits & 0x0F0F0F0F0F0F0F0FU) << 4;
  bits = (bits >> 2 & 0x3333333333333333U) | (bits & 0x3333333333333333U) << 2;
  return (bits >> 1 & 0x5555555555555555U) | (bits & 0x5555555555555555U) << 1;
}

/// A bit for each of the sixteen bytes: its highest one.
std::uint64_t MaskOf(__m128i lanes) {
  return static_cast<std::uint16_t>(_mm_movemask_epi8(lanes));
}

/// Sixteen characters, the first one in the lowest place. `text` may hold any characters of the
/// alphabet; those that are not 0, 1, x or z are looked at one by one.
ValueWord ReadLane(__m128i text) {
  const __m128i lastBits = _mm_slli_epi16(text, 7);  // each byte's lowest bit becomes its highest
  const __m128i binary =
      _mm_cmpeq_epi8(_mm_and_si128(text, _mm_set1_epi8('\xFE')), _mm_set1_epi8('0'));
  // '0' and '1' differ in their lowest bit only.
  const std::uint64_t isBinary = MaskOf(binary);
  // Nearly all values are of 0 and 1 alone.
  if (isBinary == 0xFFFF) [[likely]]
    return {MaskOf(lastBits), 0};
  // x and X, z and Z: small letters have this bit.
  const __m128i small = _mm_or_si128(text, _mm_set1_epi8(0x20));
  const std::uint64_t isX = MaskOf(_mm_cmpeq_epi8(small, _mm_set1_epi8('x')));
  const std::uint64_t isZ = MaskOf(_mm_cmpeq_epi8(small, _mm_set1_epi8('z')));
  // Rare characters, H and L for example, take the plain way.
  ValueWord word{(MaskOf(lastBits) & isBinary) | isZ, isX | isZ};
  std::uint64_t others = 0xFFFF & ~(isBinary | isX | isZ);
  // From here on one by one.
  char bytes[kLane];
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), text);
  for (; others != 0; others &= others - 1) {
    const auto place = static_cast<std::size_t>(std::countr_zero(others));
    AddBit(word, place, bytes[place]);
  }
  return word;
}

/// Sixteen to 64 characters if all are 0 or 1. Four lanes whatever the length, the last ones over
/// and over where it is less: a loop's end would be predicted wrong wherever widths take turns.
bool ReadLongBinary(const char* text, std::size_t length, std::uint64_t& bits) {
  const std::size_t last = length - kLane;
  const __m128i highBits = _mm_set1_epi8('\xFE');
  const __m128i zeros = _mm_set1_epi8('0');
  __m128i binary = _mm_set1_epi8('\xFF');
  std::uint64_t set = 0;
  for (std::size_t i = 0; i < kWordBits / kLane; ++i) {
    const std::size_t from = std::min(i * kLane, last);
    const __m128i lane = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + from));
    binary = _mm_and_si128(binary, _mm_cmpeq_epi8(_mm_and_si128(lane, highBits), zeros));
    set |= MaskOf(_mm_slli_epi16(lane, 7)) << from;  // each byte's lowest bit becomes its highest
  }
  bits = Reversed(set) >> (kWordBits - length);
  return MaskOf(binary) == 0xFFFF;
}

#ifdef __x86_64__
/// Up to 64 characters if all are 0 or 1. Those after the last one are not loaded.
__attribute__((target("avx512f,avx512bw"))) bool ReadWideBinary(const char* text,
                                                                std::size_t length,
                                                                std::uint64_t& bits) {
  const __mmask64 taken = LowBits(length);
  const __m512i characters = _mm512_maskz_loadu_epi8(taken, text);
  const __m512i highBits = _mm512_and_si512(characters, _mm512_set1_epi8('\xFE'));
  const std::uint64_t ones = _mm512_test_epi8_mask(characters, _mm512_set1_epi8(1));
  bits = Reversed(ones) >> (kWordBits - length);
  return _mm512_mask_cmpneq_epi8_mask(taken, highBits, _mm512_set1_epi8('0')) == 0;
}
#endif

/// Up to 64 characters, of which at least sixteen may be read. Characters come in lanes of sixteen;
/// the last lane may overlap the one before, which gives the same bits twice.
ValueWord ReadWord(const char* text, std::size_t length) {
  ValueWord word;
  for (std::size_t at = 0; at < length; at += kLane) {
    // The last characters come with some that were read before, so that none after them is.
    const std::size_t from = length < kLane ? 0 : std::min(at, length - kLane);
    const ValueWord lane = ReadLane(_mm_loadu_si128(reinterpret_cast<const __m128i*>(text + from)));
    word.high |= lane.high << from;
    word.unknown |= lane.unknown << from;
  }
  // The words hold the characters from the first on; reversed, the last one is in the lowest place
  // after shifting.
  const std::size_t beyond = kWordBits - length;
  return {Reversed(word.high) >> beyond, Reversed(word.unknown) >> beyond};
}
#endif

/// Up to 64 characters at `text`, from where `atLeast` characters of the value are left to be read.
/// The plain way where there is no SSE2.
ValueWord ReadPart(const char* text, std::size_t length, std::size_t atLeast) {
#ifdef __SSE2__
  // Enough bytes up to the value's end: no copy is needed.
  if (atLeast >= kLane) return ReadWord(text, length);
  // A short value is copied, since bytes after it may not be there to be read.
  char padded[kLane];
  std::memset(padded, '0', sizeof padded);
  std::memcpy(padded, text, length);
  return ReadWord(padded, length);
#else
  return ReadWordPlainly(text, length);
#endif
}

/// Sets all bits from `from` on to what the value's leftmost bit extends to. `from` is the number
/// of bits that the value gives, more than 0. 0 and 1 extend with 0.
void Extend(ValueWord* words, std::size_t from, std::uint32_t width) {
  // The word and the place of the leftmost bit.
  const ValueWord& top = words[(from - 1) / kWordBits];
  const bool isUnknown = (top.unknown >> (from - 1) % kWordBits & 1) != 0;
  const bool isHigh = isUnknown && (top.high >> (from - 1) % kWordBits & 1) != 0;
  const std::uint64_t all = ~std::uint64_t{0};
  const ValueWord fill{isHigh ? all : 0, isUnknown ? all : 0};
  // Words of the variable, and those that the value has begun.
  const std::size_t count = (width + kWordBits - 1) / kWordBits;
  const std::size_t full = (from + kWordBits - 1) / kWordBits;
  // The rest of the word that the value ends in.
  if (from % kWordBits != 0) {
    words[full - 1].high |= fill.high << from % kWordBits;
    words[full - 1].unknown |= fill.unknown << from % kWordBits;
  }
  // Words of which the value has nothing.
  std::fill(words + full, words + count, fill);
  // What lies beyond the variable is 0, so that words can be compared as a whole.
  const std::uint64_t last = LowBits((width - 1) % kWordBits + 1);
  words[count - 1].high &= last;
  words[count - 1].unknown &= last;
}

/// From the value's end on, 64 characters a word. `read` makes a word of up to 64 characters.
template <class Read>
void ReadValue(std::string_view value, std::uint32_t width, ValueWord* words, Read read) {
  // A value that is too long loses its left part.
  if (value.size() > width) value.remove_prefix(value.size() - width);
  for (std::size_t end = value.size(); end > 0;) {
    const std::size_t length = std::min(end, kWordBits);
    end -= length;
    // The third argument: how many bytes may be read from there on.
    *words++ = read(value.data() + end, length, value.size() - end);
  }
  // Back to the first word, for the extension.
  words -= (value.size() + kWordBits - 1) / kWordBits;
  if (value.size() < width) Extend(words, value.size(), width);
}

}  // namespace

bool ReadBinaryValue(std::string_view value, std::uint64_t& bits, [[maybe_unused]] bool isWide) {
  if (value.size() > kWordBits) return false;
#ifdef __x86_64__
  if (isWide) return ReadWideBinary(value.data(), value.size(), bits);
#endif
  if (value.size() < 16) return ReadShortBinary(value.data(), value.size(), bits);
#ifdef __SSE2__
  return ReadLongBinary(value.data(), value.size(), bits);
#else
  const ValueWord word = ReadWordPlainly(value.data(), value.size());
  bits = word.high;
  return word.unknown == 0;
#endif
}

void ReadVectorValue(std::string_view value, std::uint32_t width, ValueWord* words) {
  std::uint64_t bits = 0;
  if (width <= kWordBits && ReadBinaryValue(value, bits)) [[likely]] {
    // A longer value loses its left part, a shorter one is extended with zeros.
    *words = {bits & LowBits(width), 0};
    return;
  }
  ReadValue(value, width, words, ReadPart);
}

void ReadVectorValuePlainly(std::string_view value, std::uint32_t width, ValueWord* words) {
  ReadValue(value, width, words, [](const char* text, std::size_t length, std::size_t) {
    return ReadWordPlainly(text, length);
  });
}

}  // namespace orsa::kesncd
