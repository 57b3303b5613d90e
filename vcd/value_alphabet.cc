// The tables of value characters; see the header for what they mean.
#include "vcd/value_alphabet.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace orsa::kesncd {

namespace {

/// What the characters `from` become; every other one becomes `rest`. `from` and `to` have the same
/// length; equal places go together.
constexpr Alphabet MakeAlphabet(char rest, std::string_view from, std::string_view to) {
  Alphabet alphabet{};
  for (char& c : alphabet) c = rest;
  for (std::size_t i = 0; i < from.size(); ++i) {
    alphabet[static_cast<unsigned char>(from[i])] = to[i];
  }
  return alphabet;
}

}  // namespace

// H and L are weak 1 and 0, W weak and unknown, U not yet driven, "-" any value.
constexpr Alphabet kScalarValues = MakeAlphabet('\0', "01xXzZHhLlUuWw-", "01xxzz1100xxxxx");
// Vectors may hold what no scalar change begins with; it is x.
constexpr Alphabet kBitValues = MakeAlphabet('x', "01zZHhLl", "01zz1100");
// From outside D, U; from inside L, H; from both 0, 1; small letters by several drivers. Z, T, F
// are not driven; N, X, "?" and conflicts of both sides (A to C) say no level.
constexpr Alphabet kPortStates = MakeAlphabet('x', "DdLl0UuHh1ZTF", "0000011111zzz");

void Translate(std::string_view value, char* to, const Alphabet& alphabet) {
  // Every alphabet leaves 0 and 1 as they are, and most of what is dumped is nothing else: that is
  // copied eight characters at a time.
  constexpr std::uint64_t kZeros = 0x3030303030303030U;
  constexpr std::uint64_t kOneBits = 0x0101010101010101U;
  std::size_t i = 0;
  for (; i + sizeof kZeros <= value.size(); i += sizeof kZeros) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, value.data() + i, sizeof bytes);
    // Every byte is "0" or "1", which differ in the lowest bit alone.
    if (((bytes ^ kZeros) & ~kOneBits) == 0) {
      std::memcpy(to + i, &bytes, sizeof bytes);
    } else {
      for (std::size_t at = i; at < i + sizeof bytes; ++at) to[at] = In(alphabet, value[at]);
    }
  }
  for (; i < value.size(); ++i) to[i] = In(alphabet, value[i]);
}

}  // namespace orsa::kesncd
