// What a dump's body says, item by item: stamps, dump commands and changes, read in free format and
// with the values of simulators' own alphabets turned into 0, 1, x and z.
#ifndef KESNCD_FREE_FORMAT_DUMP_ITEMS_H_
#define KESNCD_FREE_FORMAT_DUMP_ITEMS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "free_format/dump_words.h"
#include "vcd/code_table.h"
#include "vcd/declarations.h"
#include "vcd/dump_keywords.h"
#include "vcd/tally.h"

namespace orsa::kesncd {

enum class ItemKind {
  Stamp,       // `ticks`
  Command,     // `command`, one of the four dump commands
  SectionEnd,  // the $end of a dump command, or of nothing
  Scalar,      // `value` (0, 1, x or z) and `code`
  Vector,      // `text` ("b01x0" or "r1.5") and `code`
};

/// Where an item stood.
struct ItemPlace {
  std::uint64_t line = 0;
  bool startsLine = false;
  bool isWhole = true;  // the line readers find its code: on the line, behind a scalar at once
  // The line of the item before, if words without an item stood behind it there; else 0.
  std::uint64_t crowdedLine = 0;
};

/// What is passed over, or not said as the dump says it.
struct ItemTallies {
  Tally weak;        // scalars of H or L
  Tally ports;       // values of port dumps
  Tally strings;     // string values
  Tally undeclared;  // changes of codes that no variable has
  Tally strays;      // words that mean nothing
  Tally cut;         // values that were cut to kLongestValue
  Tally fractions;   // of stamps
  Tally late;        // declarations in the body
  Tally keywords;    // dump commands that the library's readers do not know
  Tally quoted;      // lines of comments and the like that the library's readers take for items
  Tally unended;     // a comment or the like that the dump ends in
  Tally torn;        // a value whose code the dump ends before
};

class DumpItems {
 public:
  /// The longest text of a vector or real value. Only that it is a value counts, so the high bits
  /// of longer ones are left out: with them the line would not arrive in one piece at every reader.
  static constexpr std::size_t kLongestValue = 960;

  /// Goes on where reading the declarations ended.
  DumpItems(DumpWords& words, const Declarations& declarations);

  /// Takes the next item; false at the end of the dump.
  bool Next();

  ItemKind kind() const { return kind_; }
  std::uint64_t ticks() const { return ticks_; }
  Keyword command() const { return command_; }
  char value() const { return value_; }
  std::string_view text() const { return {text_.data(), length_}; }
  std::uint32_t code() const { return code_; }
  const ItemPlace& place() const { return place_; }
  const ItemTallies& tallies() const { return tallies_; }

 private:
  bool Advance();
  bool AdvanceInValue();
  bool TakeWord(std::string_view word);
  bool TakeScalar(std::string_view word, char value);
  bool TakeVector(std::string_view word);
  bool TakeReal(std::string_view word);
  bool TakePort(std::string_view word);
  bool TakeString();
  bool TakeStamp(std::string_view word);
  bool TakeKeyword(std::string_view word);
  bool TakeCode();
  bool TakeCodeOfText();
  bool FindCode(std::string_view code);
  void SkipSection(Keyword keyword);
  void HoldText(char letter, std::string_view value, const std::array<char, 256>& alphabet);

  DumpWords& words_;
  const CodeTable& codes_;
  bool repeat_;  // the last word is to be taken again
  ItemKind kind_ = ItemKind::SectionEnd;
  std::uint64_t ticks_ = 0;
  Keyword command_ = Keyword::None;
  char value_ = 'x';
  std::uint32_t code_ = 0;
  std::array<char, kLongestValue + 1> text_{};
  std::size_t length_ = 0;
  bool isCut_ = false;  // the text
  ItemPlace place_;
  ItemTallies tallies_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_DUMP_ITEMS_H_
