// What a dump's body says, item by item: stamps, dump commands and changes, read in free format and
// with the values of simulators' own alphabets turned into 0, 1, x and z.
#ifndef KESNCD_FREE_FORMAT_DUMP_ITEMS_H_
#define KESNCD_FREE_FORMAT_DUMP_ITEMS_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "free_format/body_stretch.h"
#include "free_format/dump_words.h"
#include "vcd/code_table.h"
#include "vcd/declarations.h"
#include "vcd/dump_keywords.h"
#include "vcd/tally.h"
#include "vcd/value_alphabet.h"

namespace orsa::kesncd {

/// What an item holds besides its kind, by the names of the properties of DumpItems.
enum class ItemKind {
  Stamp,       // `ticks`
  Command,     // `command`, one of the four dump commands
  SectionEnd,  // the $end of a dump command, or of nothing
  Scalar,      // `value` (0, 1, x or z) and `codeId`
  Vector,      // `text` (of 0, 1, x and z) and `codeId`
  Real,        // `text` and `codeId`
};

/// Where an item stood. Findings ask for it, counting does not.
struct ItemPlace {
  std::uint64_t line = 0;
  // No word stands before it on its line.
  bool startsLine = false;
  bool isWhole = true;  // the line readers find its code: on the line, after a scalar at once
  // The line of the item before, if words without an item stood after it there; else 0.
  std::uint64_t crowdedLine = 0;
};

/// What is passed over, or not said as the dump says it. Each is a number of words or items, with
/// the line and the text of the first.
struct ItemTallies {
  Tally weak;        // scalars of H or L
  Tally ports;       // values of port dumps
  Tally strings;     // string values
  Tally undeclared;  // changes of codes that no variable has
  Tally strays;      // words that mean nothing
  Tally fractions;   // of stamps
  Tally backward;    // stamps smaller than one before, which do not move time
  Tally badStamps;   // words that begin with "#" and are no number below 2^64
  Tally cutStamp;    // a stamp that ends the dump with nothing after it: its digits may be cut
  Tally late;        // declarations in the body
  Tally keywords;    // dump commands that the library's readers do not know
  Tally quoted;      // lines of comments and the like that the library's readers take for items
  Tally unended;     // a comment or the like that the dump ends in
  Tally torn;        // a value whose code the dump ends before

  /// Adds those of the stretch that comes next, whose lines count from its own first one.
  void Join(const ItemTallies& next, std::uint64_t linesBefore);
};

/// Calling order: construct after the declarations were read, then Next and the properties of the
/// item it took, until Next returns false. ReadBody (body_reader.h) does that, and takes plain
/// lines a faster way.
class DumpItems {
 public:
  /// Goes on where reading the declarations ended.
  DumpItems(DumpWords& words, const Declarations& declarations);
  /// Reads a stretch of the body, whose words those are. One that does not begin the body begins
  /// with a stamp.
  DumpItems(DumpWords& words, const Declarations& declarations, StretchSource& stretch,
            bool beginsBody);

  /// Takes the next item; false at the end of the dump, or of the stretch. Properties are valid
  /// until the next call.
  bool Next();
  /// Whether the stretch ended inside an item, which was then read to its end all the same.
  bool IsOverEnd() const { return isOverEnd_; }
  /// Goes on after the end of the stretch. Only for a reader of stretches.
  void GoOn();

  // Of the last item; which of them say something depends on its kind.
  ItemKind kind() const { return kind_; }
  std::uint64_t ticks() const { return ticks_; }
  Keyword command() const { return command_; }
  char value() const { return value_; }
  std::string_view text() const { return text_; }
  std::uint32_t codeId() const { return codeId_; }
  const ItemPlace& place() const { return place_; }
  const ItemTallies& tallies() const { return tallies_; }
  /// The line that was reached, as far as plain lines are counted.
  std::uint64_t Line() const { return words_.Line(); }

  /// Shows the words to come to a watch (see DumpWords::Show).
  void Show(SlotWatch& watch) { words_.Show(watch); }
  /// Control bytes that part words (see DumpWords::Controls).
  const Tally& Controls() const { return words_.Controls(); }

  /// Whether the dump's last line has no end, and something stands on it. To be asked after Next
  /// has returned false.
  bool EndsOpen() const { return words_.EndsDump(); }

  /// Hands the plain lines that come next to a taker (see ScanPlainLines).
  template <class Taker>
  void TakePlainLines(Taker& taker) {
    if (!repeat_) words_.TakePlainLines(taker);
  }
  const CodeTable& codes() const { return codes_; }
  /// Characters of which a value is surely kept whole.
  std::size_t LongestValue() const { return words_.Longest() - 1; }
  /// Takes note of a stamp among the plain lines; false, and no note, where it goes back. Equal
  /// stamps go on; the smaller one moves nothing.
  bool NoteStamp(std::uint64_t ticks) {
    if (ticks < largestStamp_) return false;
    largestStamp_ = ticks;
    return true;
  }

 private:
  DumpItems(DumpWords& words, const Declarations& declarations, StretchSource* stretch,
            bool repeats);
  // A word, or the last one again; inside an item it may lie after the stretch's end.
  bool Advance();
  bool AdvanceInItem();
  bool AdvanceInValue();
  // Each takes the item that its first word begins; false where nothing counts.
  bool TakeWord(std::string_view word);
  bool TakeScalar(std::string_view word, char value);
  bool TakeVector(std::string_view word);
  bool TakeReal(std::string_view word);
  bool TakePort(std::string_view word);
  bool TakeString();
  bool TakeStamp(std::string_view word);
  bool TakeKeyword(std::string_view word);
  // A code that stands as a word of its own, and one that is known already.
  bool TakeCode();
  bool FindCode(std::string_view code);
  void SkipSection(Keyword keyword);
  void HoldText(std::string_view value, const Alphabet& alphabet);

  // The words belong to the caller, as do the codes.
  DumpWords& words_;
  const CodeTable& codes_;
  StretchSource* const stretch_;  // null for a dump that is read as one
  bool repeat_;                   // the last word is to be taken again
  const std::size_t widest_;      // bits of a variable, 1 at least
  bool isOverEnd_ = false;
  bool isAfterItem_ = true;  // no word was taken since the last item
  // 0 where no item shares its line with what follows.
  std::uint64_t crowdedLine_ = 0;
  ItemKind kind_ = ItemKind::SectionEnd;
  std::uint64_t ticks_ = 0;
  // Smaller stamps than this one go back.
  std::uint64_t largestStamp_ = 0;
  Keyword command_ = Keyword::None;
  char value_ = 'x';
  std::uint32_t codeId_ = 0;
  // A copy: the block may move while the code is read.
  std::string text_;
  ItemPlace place_;
  ItemTallies tallies_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_DUMP_ITEMS_H_
