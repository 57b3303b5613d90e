// Looks through a dump's body, or a stretch of it, for what the library's readers would get wrong.
#ifndef KESNCD_FREE_FORMAT_FINDINGS_BODY_CHECK_H_
#define KESNCD_FREE_FORMAT_FINDINGS_BODY_CHECK_H_

#include <array>
#include <cstdint>
#include <string_view>

#include "free_format/dump_items.h"
#include "free_format/findings/body_account.h"
#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// A taker of ReadBody that reads by itself. Calling order: construct, ReadBody, then TakeAccount.
/// ReadItems is called instead of the usual loop, since the places of items are looked at, too.
class BodyCheck {
 public:
  /// `slots` watches what comes after the declarations. `codes` is how many the declarations have.
  BodyCheck(std::uint32_t codes, const SlotWatch& slots);
  BodyCheck(const BodyCheck&) = delete;
  BodyCheck& operator=(const BodyCheck&) = delete;

  /// Reads to the end of the dump or the stretch. Called again where the stretch is followed by one
  /// that was read wrongly.
  void ReadItems(DumpItems& items);

  // ReadBody's operations; ReadItems has them called item by item and for plain lines.
  void Fetch(std::uint32_t codeId) const { __builtin_prefetch(&account_.codes[codeId], 1); }
  void Scalar(std::uint32_t codeId, char value);
  void Vector(std::uint32_t codeId, std::string_view value);
  void Real(std::uint32_t codeId, std::string_view value);
  void Command(Keyword command);
  void SectionEnd() { SetLast(ItemKind::SectionEnd); }
  void Stamp(std::uint64_t ticks);
  // The body is read to its end, whatever was found.
  static bool IsDone() { return false; }

  /// Whether what another one took from a stretch that begins with a stamp adds to what this took.
  bool Precedes(const BodyCheck& next) const { return account_.CanPrecede(next.account_); }
  /// What was found. The check is used up.
  BodyAccount TakeAccount();

 private:
  // Passes plain lines on to the slots and to this.
  struct WatchedLines;

  /// The line that is read: the words count plain ones only when a run of them is over.
  std::uint64_t Line() const { return items_->Line() + plainLines_; }
  void SetLast(ItemKind kind) {
    last_ = kind;
    isAfterItem_ = true;
  }
  // How the item stands on its line, for itself and for the item before.
  void CheckLine();
  void CheckItemBefore(std::uint64_t line);
  // A value of a code: see the definition.
  void TakeValue(std::uint32_t codeId, std::uint32_t value, unsigned kinds, bool isUnknown);

  const std::array<unsigned char, 256> kinds_;  // of the bits that characters stand for
  BodyAccount account_;
  const DumpItems* items_ = nullptr;  // while they are read
  // Zero again when the words have counted them.
  std::uint64_t plainLines_ = 0;   // since the words counted lines
  std::uint64_t crowdedLine_ = 0;  // of the last item, if words without an item stand after it
  // From the first item on, the body has begun.
  bool isAfterItem_ = false;
  // The kind of the last item; SectionEnd before the first.
  ItemKind last_ = ItemKind::SectionEnd;
  // The last stamp as the dump says it.
  std::uint64_t lastTick_ = 0;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_FINDINGS_BODY_CHECK_H_
