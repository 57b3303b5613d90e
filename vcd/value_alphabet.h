// The characters of values, turned into the four values that a bit can have: 0, 1, x and z.
//
// Simulators write the nine values of VHDL, capital letters, and the states of port dumps. Weak
// values count as what they pull to; what says nothing about a level is x.
#ifndef KESNCD_VCD_VALUE_ALPHABET_H_
#define KESNCD_VCD_VALUE_ALPHABET_H_

#include <array>
#include <string_view>

namespace orsa::kesncd {

/// What each character becomes. A table for all bytes: a value costs one look per character and no
/// branch.
using Alphabet = std::array<char, 256>;

/// Of a scalar change; '\0' for a character that begins no scalar change.
extern const Alphabet kScalarValues;
/// Of a bit in a vector value.
extern const Alphabet kBitValues;
/// Of a port's state in a port dump: driven from outside, from inside, or from both.
extern const Alphabet kPortStates;

inline char In(const Alphabet& alphabet, char c) {
  return alphabet[static_cast<unsigned char>(c)];
}

/// Writes what the characters of a value become to `to`, which has room for them. `to` may not
/// overlap the value, unless it is the value itself.
void Translate(std::string_view value, char* to, const Alphabet& alphabet);

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_VALUE_ALPHABET_H_
