// What the line readers read a time stamp as. They keep the digits of a stamp in one place, where
// the digits end nothing: a longer text that stood there before goes on after them. In the flat
// run's reader the second words of lines pass through the same place.
#ifndef KESNCD_FREE_FORMAT_SLOT_WATCH_H_
#define KESNCD_FREE_FORMAT_SLOT_WATCH_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orsa::kesncd {

/// Show it all words by Take, or plain lines by the other two, in the order of the dump; ask
/// StampFor right after a stamp.
class SlotWatch {
 public:
  /// Every word of the dump, in order, but for those of plain lines.
  void Take(std::string_view word, bool startsLine) {
    // "#100 1!" is read as a stamp too here, though line readers want it alone: that it shares its
    // line is a finding of its own.
    index_ = startsLine ? 0 : index_ + 1;
    if (index_ == 0 && word.front() == '#') PutDigits(word.substr(1));
    if (index_ == 1) Put(shared_, word, true);
  }
  /// A plain line: a stamp, or a value with its code. Without "#", and the code without its blank.
  void TakeStampLine(std::string_view digits) { PutDigits(digits); }
  void TakeValueLine(std::string_view code) { Put(shared_, code, true); }
  /// What the stamp that was the last word taken is read as: otherwise than `ticks` if one of the
  /// readers does so.
  double StampFor(double ticks) const;

 private:
  // With `isEnded` a NUL is put after the word.
  void PutDigits(std::string_view stamp);
  static void Put(std::string& slot, std::string_view word, bool isEnded);

  // The place of the last word on its line, from 0.
  std::size_t index_ = 0;
  // What the filtered flat reader has in its slot.
  std::string shared_;  // of second words and stamps
  // What the other two readers have in theirs.
  std::string own_;  // of stamps alone
};

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_SLOT_WATCH_H_
