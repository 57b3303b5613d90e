// What the line readers read a time stamp as. They keep the digits of a stamp in a slot, without a
// terminator: the tail of a longer text that the slot held before goes on after them. In the flat
// run's reader the second words of lines pass through the same slot.
//
// A watch that begins in the middle of a dump does not know what the slots held before; what it saw
// is laid over that once it is known.
#ifndef KESNCD_FREE_FORMAT_SLOT_WATCH_H_
#define KESNCD_FREE_FORMAT_SLOT_WATCH_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orsa::kesncd {

/// Calling order: Take and its like for all words of a dump, or of a stretch of it, NoteStamp after
/// a stamp; LayOver when the stretch that comes next was watched too.
class SlotWatch {
 public:
  /// The digits that the two slots show after a stamp was taken.
  struct Stamp {
    struct Digits {
      std::string text;
      // More digits may follow, which the slot held before the watch began.
      bool isOpen = true;
    };
    std::array<Digits, 2> digits;

    /// What the stamp is read as: otherwise than `ticks` if one of the readers does so.
    double ReadAs(double ticks) const;
  };

  /// A watch for what comes next, with nothing in its slots.
  SlotWatch Next() const {
    SlotWatch next;
    next.index_ = index_;
    return next;
  }

  /// Every word of the dump, in order, but for those of plain lines.
  void Take(std::string_view word, bool startsLine) {
    index_ = startsLine ? 0 : index_ + 1;
    // "#100 1!" is read as a stamp too here, though line readers want it alone: that it shares its
    // line is a finding of its own.
    if (index_ == 0 && word.front() == '#') PutDigits(word.substr(1));
    // The filtered flat reader has a line's second word in the slot of its stamps.
    if (index_ == 1) Put(slots_[kShared], word, true);
  }
  /// A plain line: a stamp, given without its "#", or a value with a blank before its code.
  void TakeStampLine(std::string_view digits) { PutDigits(digits); }
  void TakeValueLine(std::string_view code) { Put(slots_[kShared], code, true); }

  /// Notes the stamp that was the last word taken.
  void NoteStamp(Stamp& stamp) const;
  /// A stamp that a later watch noted, now that it is known what the slots held before.
  Stamp Completed(Stamp stamp) const;
  /// Lets the slots hold what a later watch leaves in them.
  void LayOver(const SlotWatch& later);

 private:
  // The filtered flat reader has the first one, the other two readers the second.
  enum Slot : std::uint8_t {
    kShared,  // of second words and stamps
    kOwn,     // of stamps alone
  };

  // With `isEnded` a NUL is put after the word.
  void PutDigits(std::string_view stamp);
  static void Put(std::string& slot, std::string_view word, bool isEnded);
  // Adds the digits that the slot holds after those that are known.
  static void AppendDigits(std::string_view slot, Stamp::Digits& digits);

  std::size_t index_ = 0;             // of the last word on its line
  std::array<std::string, 2> slots_;  // as much of each as was written to
};

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_SLOT_WATCH_H_
