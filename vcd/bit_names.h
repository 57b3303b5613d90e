// The bits that a declared variable has, and what each is called: "count[3:0]" has count[3] to
// count[0]. Estimators ask for activity bit by bit, so every writer of bits names them this way.
#ifndef KESNCD_VCD_BIT_NAMES_H_
#define KESNCD_VCD_BIT_NAMES_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "vcd/declarations.h"

namespace orsa::kesncd {

/// Whether variables of the type have bits that can be 0 or 1: not those of numbers, strings and
/// events. Their activity is not one of bits, so exports leave them out.
bool TypeHasBits(std::string_view type);

/// A variable's bits. It refers to the text of the name that it was made of.
class BitNames {
 public:
  /// Only a range that is a word of its own counts in an escaped name; `nameWord` is where it
  /// begins, or the name's length. `width` need not agree with the range: a variable of 4 bits with
  /// "[7:0]" has the bits [3] to [0], for its width says how many bits its values have.
  BitNames(std::string_view name, std::uint32_t nameWord, std::uint32_t width);
  explicit BitNames(const DumpVariable& variable)
      : BitNames(variable.name, variable.nameWord, variable.width) {}

  std::uint32_t width() const { return width_; }
  /// The name that all bits share: without the range, or the index, of the bits.
  std::string_view Base() const { return base_; }
  /// Whether the bits have an index; a bit that is the whole variable may have none.
  bool IsIndexed() const { return isIndexed_; }
  /// The index of a bit, of which 0 is the lowest, the rightmost of a value.
  std::string Index(std::uint32_t bit) const;
  /// The same as a number; nothing for a bit without an index, or where 64 bits do not hold it.
  std::optional<std::int64_t> IndexNumber(std::uint32_t bit) const;
  /// Adds the bit's name, "count[3]", to a text.
  void AppendName(std::uint32_t bit, std::string& text) const;

 private:
  bool TakeBracket(std::string_view bracket);
  // Where it is short. To the left of the rightmost bit indices grow in [3:0] and fall in [0:3].
  std::int64_t ShortIndex(std::uint32_t bit) const {
    return isAscending_ ? right_ - std::int64_t{bit} : right_ + std::int64_t{bit};
  }

  // The name without its bracket, or all of it.
  std::string_view base_;
  std::uint32_t width_;
  // Without an index AppendName adds the base alone.
  bool isIndexed_ = false;
  bool isAscending_ = false;  // indices grow to the right: [0:3]
  bool isShort_ = true;       // `right_` holds the lowest bit's index
  std::int64_t right_ = 0;
  std::string longRight_;  // the same where it is too long for a number, with its sign
};

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_BIT_NAMES_H_
