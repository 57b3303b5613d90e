// Scalar changes on their way to a counter. Where there are many codes, each change would wait for
// its code's memory; a few that wait together wait once.
#ifndef KESNCD_ACTIVITY_WAITING_CHANGES_H_
#define KESNCD_ACTIVITY_WAITING_CHANGES_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace orsa::kesncd {

/// Calling order: Add until it returns true, then TakeAll; TakeAll before anything that the changes
/// have to come before. Changes are taken late, but in their order.
class WaitingChanges {
 public:
  /// Adds a change and fetches the memory of its code. Whether all have to be taken now. `memory`
  /// is where the code's figures are. After true nothing may be added before TakeAll.
  bool Add(std::uint32_t codeId, char value, const void* memory) {
    __builtin_prefetch(memory, 1);
    changes_[held_++] = {codeId, value};
    return held_ == kMost;
  }
  /// Calls `take(codeId, value)` for each. In the order in which they came. Afterwards none is
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
    std::uint32_t codeId;
    char value;
  };

  std::array<Change, kMost> changes_;
  // Changes that wait, kMost at most.
  std::size_t held_ = 0;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_WAITING_CHANGES_H_
