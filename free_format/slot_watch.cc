// Does to two strings what the line readers do to their slots, to know which stamp they read.
#include "free_format/slot_watch.h"

#include <algorithm>
#include <charconv>

namespace orsa::kesncd {

namespace {

double StampIn(const std::string& slot) {
  double ticks = 0;
  (void)std::from_chars(slot.data(), slot.data() + slot.size(), ticks);
  return ticks;
}

}  // namespace

void SlotWatch::PutDigits(std::string_view stamp) {
  const std::string_view digits = stamp.substr(0, stamp.find_first_not_of("0123456789"));
  Put(shared_, digits, false);
  Put(own_, digits, false);
}

void SlotWatch::Put(std::string& slot, std::string_view word, bool isEnded) {
  if (slot.size() <= word.size()) slot.resize(word.size() + 1);
  std::copy(word.begin(), word.end(), slot.begin());
  if (isEnded) slot[word.size()] = '\0';
}

double SlotWatch::StampFor(double ticks) const {
  const double shared = StampIn(shared_);
  return shared != ticks ? shared : StampIn(own_);
}

}  // namespace orsa::kesncd
