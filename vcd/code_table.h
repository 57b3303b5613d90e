// Identifier codes by number, looked up once for every change of a dump.
//
// Simulators number their codes through, and nearly always in up to three printable characters:
// those index a table directly, so that neighbours in a dump's header are neighbours there. Longer
// ones of up to eight bytes are looked up as one integer, the rest as strings.
#ifndef KESNCD_VCD_CODE_TABLE_H_
#define KESNCD_VCD_CODE_TABLE_H_

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orsa::kesncd {

class CodeTable {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  CodeTable();

  /// The code's number; a new code gets the next one.
  std::uint32_t Add(std::string_view code);
  /// The code's number or kNone. Eight bytes may be read from the code's start, however short it
  /// is.
  std::uint32_t Find(std::string_view code) const;
  std::uint32_t size() const { return size_; }

 private:
  struct Slot {
    std::uint64_t key = 0;  // 0: free
    std::uint32_t number = kNone;
  };
  struct Release {
    void operator()(void* memory) const { std::free(memory); }
  };
  static constexpr std::size_t kFirstSlots = 1024;
  static constexpr std::size_t kPacked = sizeof(std::uint64_t);
  static constexpr std::size_t kAsciiBits = 7;
  static constexpr std::size_t kDirectCodes = std::size_t{1} << 3 * kAsciiBits;
  static constexpr std::uint64_t kNotDirect = 0xFFFFFFFFFF808080U;  // bits of a packed code

  static constexpr std::size_t kLongestDirect = 3;
  static constexpr std::uint32_t kMasks[] = {0, 0xFF, 0xFFFF, 0xFFFFFF};

  static std::uint64_t Pack(const char* code, std::size_t length);
  static std::size_t DirectIndex(std::uint64_t key);
  std::size_t Hash(std::uint64_t key) const;
  std::size_t SlotOf(std::uint64_t key) const;
  std::uint32_t AddPacked(std::uint64_t key);

  // One more than the code's number; 0 for none. Pages that no code touches take no memory.
  std::unique_ptr<std::uint32_t[], Release> direct_;
  std::uint64_t salt_;       // nobody who writes a dump knows where its codes fall
  std::vector<Slot> slots_;  // open addressing, a power of two, at most half full
  std::unordered_map<std::string, std::uint32_t> longCodes_;
  std::uint32_t packed_ = 0;
  std::uint32_t size_ = 0;
};

/// The bytes of a code of up to eight as one integer, the first one lowest, zeros behind the last.
/// Words hold no NUL, so different codes stay different.
inline std::uint64_t CodeTable::Pack(const char* code, std::size_t length) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, code, sizeof bytes);
  if constexpr (std::endian::native == std::endian::big) bytes = __builtin_bswap64(bytes);
  return length < kPacked ? bytes & ((std::uint64_t{1} << 8 * length) - 1) : bytes;
}

/// The place of a packed code of up to three ASCII characters.
inline std::size_t CodeTable::DirectIndex(std::uint64_t key) {
  return (key & 0x7F) | (key >> 1 & 0x7F << kAsciiBits) | (key >> 2 & 0x7F << 2 * kAsciiBits);
}

inline std::size_t CodeTable::Hash(std::uint64_t key) const {
  const std::uint64_t salted = key ^ salt_;
  std::uint64_t mixed = (salted ^ salted >> 32) * 0x9E3779B97F4A7C15U;
  mixed = (mixed ^ mixed >> 29) * 0xBF58476D1CE4E5B9U;
  return static_cast<std::size_t>(mixed ^ mixed >> 32);
}

inline std::size_t CodeTable::SlotOf(std::uint64_t key) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = Hash(key) & mask;
  while (slots_[slot].key != 0 && slots_[slot].key != key) slot = (slot + 1) & mask;
  return slot;
}

inline std::uint32_t CodeTable::Find(std::string_view code) const {
  if (code.size() <= kLongestDirect) [[likely]] {
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, code.data(), sizeof bytes);
    if constexpr (std::endian::native == std::endian::big) bytes = __builtin_bswap32(bytes);
    const std::uint32_t key = bytes & kMasks[code.size()];
    if ((key & 0x808080U) == 0) [[likely]] return direct_[DirectIndex(key)] - 1;
  }
  if (code.size() > kPacked) {
    const auto found = longCodes_.find(std::string(code));
    return found == longCodes_.end() ? kNone : found->second;
  }
  const std::uint64_t key = Pack(code.data(), code.size());
  // The empty code, which none is, indexes a place that stays 0.
  if ((key & kNotDirect) == 0) return direct_[DirectIndex(key)] - 1;
  return slots_[SlotOf(key)].number;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_CODE_TABLE_H_
