// Does to two strings what the line readers do to their slots, to know which stamp they read.
//
// For example, "#1000" and later "#5" leave "5000" in a slot: digits are put without a terminator.
#include "free_format/slot_watch.h"

#include <algorithm>
#include <charconv>

namespace orsa::kesncd {

namespace {

/// How many digits a text begins with: few, so that a search would take longer than a loop.
std::size_t DigitsOf(std::string_view text) {
  std::size_t length = 0;
  while (length < text.size() && text[length] >= '0' && text[length] <= '9') ++length;
  return length;
}

/// As a reader scans them; 0 where there are none.
double NumberIn(const std::string& digits) {
  double number = 0;
  (void)std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

}  // namespace

/// Asks for the reading that is wrong, if one of the two is.
double SlotWatch::Stamp::ReadAs(double ticks) const {
  const double shared = NumberIn(digits[kShared].text);
  return shared != ticks ? shared : NumberIn(digits[kOwn].text);
}

/// Only digits are a stamp's second piece; "#12.5" leaves 12.
void SlotWatch::PutDigits(std::string_view stamp) {
  const std::string_view digits = stamp.substr(0, DigitsOf(stamp));
  // Put without a terminator, which makes the stamp tail.
  for (std::string& slot : slots_) Put(slot, digits, false);
}

/// A slot only grows: what it has never held is unknown, not zero, in the middle of a dump.
void SlotWatch::Put(std::string& slot, std::string_view word, bool isEnded) {
  const std::size_t written = word.size() + (isEnded ? 1 : 0);
  if (slot.size() < written) slot.resize(written);
  std::copy(word.begin(), word.end(), slot.begin());
  // A word has a terminator, so that a shorter one does not show the tail of a longer one.
  if (isEnded) slot[word.size()] = '\0';
}

/// What the slot shows begins with the digits that are known, so the rest is looked at.
void SlotWatch::AppendDigits(std::string_view slot, Stamp::Digits& digits) {
  if (slot.size() <= digits.text.size()) return;
  slot.remove_prefix(digits.text.size());
  const std::size_t length = DigitsOf(slot);
  digits.text.append(slot, 0, length);
  // Nothing but digits up to its end: what stood there before may go on with more.
  digits.isOpen = length == slot.size();
}

/// Copied, since later words change the slots.
void SlotWatch::NoteStamp(Stamp& stamp) const {
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    stamp.digits[i].text.clear();
    stamp.digits[i].isOpen = true;
    AppendDigits(slots_[i], stamp.digits[i]);
  }
}

/// Closed digits were ended by something that the later watch saw itself.
SlotWatch::Stamp SlotWatch::Completed(Stamp stamp) const {
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    if (stamp.digits[i].isOpen) AppendDigits(slots_[i], stamp.digits[i]);
  }
  return stamp;
}

/// What the later one wrote replaces the start of what stood here; the rest stays.
void SlotWatch::LayOver(const SlotWatch& later) {
  index_ = later.index_;
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    const std::string& text = later.slots_[i];
    if (slots_[i].size() < text.size()) slots_[i].resize(text.size());
    std::copy(text.begin(), text.end(), slots_[i].begin());
  }
}

}  // namespace orsa::kesncd
