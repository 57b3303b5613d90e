// What the flat run reads a time stamp as. Its reader keeps the second word of a line and the
// digits of a stamp in one place, and the digits end nothing: a longer word that stood there before
// goes on behind them.
#ifndef KESNCD_CLI_SLOT_WATCH_H_
#define KESNCD_CLI_SLOT_WATCH_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kesncd_cli {

class SlotWatch {
 public:
  /// Every word of the dump, in order.
  void Take(std::string_view word, bool startsLine) {
    index_ = startsLine ? 0 : index_ + 1;
    if (index_ == 0 && word.front() == '#') PutDigits(word.substr(1));
    if (index_ == 1) Put(word, true);
  }
  /// The stamp that was the last word taken.
  double Stamp() const;
  /// Whether stamps to come, no shorter than the last one, might be misread. Codes of vectors, the
  /// second words of their lines, have up to `longestCode` characters.
  bool MayMislead(std::uint64_t lastStamp, std::size_t longestCode) const;

 private:
  void PutDigits(std::string_view stamp);
  void Put(std::string_view word, bool isEnded);

  std::size_t index_ = 0;
  std::string slot_;
};

}  // namespace kesncd_cli

#endif  // KESNCD_CLI_SLOT_WATCH_H_
