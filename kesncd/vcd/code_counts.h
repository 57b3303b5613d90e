// Identifier codes and their counters.
//
// A dump names a code on every change, so finding its counter is constant time and allocates
// nothing. Codes of up to eight bytes, which is all that simulators write, are looked up as one
// integer; longer ones as strings.
#ifndef KESNCD_VCD_CODE_COUNTS_H_
#define KESNCD_VCD_CODE_COUNTS_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orsa::kesncd {

class CodeCounts {
 public:
  CodeCounts();

  /// Gives a code a counter, unless it has one. A code that holds a NUL, which no dump can name,
  /// gets none.
  void Add(std::string_view code);
  /// Adds one change to a code; nothing for a code without a counter.
  void Count(std::string_view code);
  /// The changes of a code since they were last taken.
  std::uint64_t Take(std::string_view code);

 private:
  struct Slot {
    std::uint64_t key = 0;
    std::uint32_t number = kNone;
  };
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>{}(text);
    }
  };
  static constexpr std::uint32_t kNone = UINT32_MAX;
  static constexpr std::size_t kShort = sizeof(std::uint64_t);

  std::size_t SlotOf(std::uint64_t key) const;
  std::uint32_t Find(std::string_view code) const;
  void Grow();

  std::vector<Slot> table_;  // open addressing, a power of two, at most half full
  std::size_t shortCodes_ = 0;
  std::unordered_map<std::string, std::uint32_t, TextHash, std::equal_to<>> longCodes_;
  std::vector<std::uint64_t> counts_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_CODE_COUNTS_H_
