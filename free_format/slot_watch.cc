// Does to two strings what the line readers do to their slots, to know which stamp they read.
#include "free_format/slot_watch.h"

#include <algorithm>
#include <charconv>

namespace orsa::kesncd {

namespace {

/// As a reader scans them: up to the first character that is no digit of a number.
double StampIn(const std::string& slot) {
  // Stays 0 where the slot begins with no number.
  double ticks = 0;
  (void)std::from_chars(slot.data(), slot.data() + slot.size(), ticks);
  return ticks;
}

}  // namespace

/// Only digits are a stamp's second piece; "#12.5" leaves 12.
void SlotWatch::PutDigits(std::string_view stamp) {
  // Put without an end, which makes the stamp tail.
  const std::string_view digits = stamp.substr(0, stamp.find_first_not_of("0123456789"));
  Put(shared_, digits, false);
  Put(own_, digits, false);
}

/// Grown with NULs, as the readers' slots are.
void SlotWatch::Put(std::string& slot, std::string_view word, bool isEnded) {
  if (slot.size() <= word.size()) slot.resize(word.size() + 1);
  std::copy(word.begin(), word.end(), slot.begin());
  // A word ends in its slot, so that a shorter one does not show the tail of a longer one.
  if (isEnded) slot[word.size()] = '\0';
}

/// Asks for the reading that is wrong, if one of the two is.
double SlotWatch::StampFor(double ticks) const {
  const double shared = StampIn(shared_);
  return shared != ticks ? shared : StampIn(own_);
}

}  // namespace orsa::kesncd
