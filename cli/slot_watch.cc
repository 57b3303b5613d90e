#include "cli/slot_watch.h"

#include <algorithm>
#include <charconv>

namespace kesncd_cli {

void SlotWatch::PutDigits(std::string_view stamp) {
  Put(stamp.substr(0, stamp.find_first_not_of("0123456789")), false);
}

void SlotWatch::Put(std::string_view word, bool isEnded) {
  if (slot_.size() <= word.size()) slot_.resize(word.size() + 1);
  std::copy(word.begin(), word.end(), slot_.begin());
  if (isEnded) slot_[word.size()] = '\0';
}

double SlotWatch::Stamp() const {
  double ticks = 0;
  (void)std::from_chars(slot_.data(), slot_.data() + slot_.size(), ticks);
  return ticks;
}

bool SlotWatch::MayMislead(std::uint64_t lastStamp, std::size_t longestCode) const {
  std::size_t digits = std::to_string(lastStamp).size();
  if (longestCode > digits) return true;
  for (; digits < slot_.size(); ++digits) {
    const std::string text = std::string(digits, '1') + slot_.substr(digits);
    double ticks = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), ticks).ptr;
    if (end != text.data() + digits) return true;
  }
  return false;
}

}  // namespace kesncd_cli
