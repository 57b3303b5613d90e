// Changes on their way to a counter. Where there are many codes, each change would wait for
// its code's memory; a few that wait together wait once.
#ifndef KESNCD_ACTIVITY_WAITING_CHANGES_H_
#define KESNCD_ACTIVITY_WAITING_CHANGES_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace orsa::kesncd {

/// Calling order: Add until it returns true, then TakeAll; TakeAll before anything that the changes
/// have to come before. Changes are taken late, but in their order. A value is what the counter
/// makes of a change's text, a few bytes.
template <class Value>
class WaitingChanges {
 public:
  /// Adds a change and fetches the memory of its code, which is at `memory`. True where TakeAll has
  /// to come before anything else is added.
  bool Add(std::uint32_t codeId, Value value, const void* memory) {
    __builtin_prefetch(memory, 1);
    changes_[held_++] = {value, codeId};
    return held_ == kMost;
  }
  /// Calls `look(codeId)` for each, as some memory can be fetched only when other memory is there.
  template <class Look>
  void LookAtAll(Look look) const {
    for (std::size_t i = 0; i < held_; ++i) look(changes_[i].codeId);
  }
  /// Calls `take(codeId, value)` for each, in the order in which they came. Afterwards none is
  /// waiting.
  template <class Take>
  void TakeAll(Take take) {
    for (std::size_t i = 0; i < held_; ++i) take(changes_[i].codeId, changes_[i].value);
    held_ = 0;
  }

 private:
  // About as many fetches as a processor keeps under way.
  static constexpr std::size_t kMost = 32;
  struct Change {
    Value value;
    std::uint32_t codeId;
  };

  std::array<Change, kMost> changes_;
  std::size_t held_ = 0;  // how many wait
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_WAITING_CHANGES_H_
