// Identifier codes by number, looked up once for every change of a dump.
#ifndef KESNCD_CLI_CODE_TABLE_H_
#define KESNCD_CLI_CODE_TABLE_H_

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kesncd_cli {

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
  static constexpr std::size_t kFirstSlots = 1024;
  static constexpr std::size_t kPacked = sizeof(std::uint64_t);

  std::size_t Hash(std::uint64_t key) const;
  std::size_t SlotOf(std::uint64_t key) const;
  std::uint32_t AddPacked(std::uint64_t key);

  std::uint64_t salt_;       // nobody who writes a dump knows where its codes fall
  std::vector<Slot> slots_;  // open addressing, a power of two, at most half full
  std::unordered_map<std::string, std::uint32_t> longCodes_;
  std::uint32_t packed_ = 0;
  std::uint32_t size_ = 0;
};

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
  if (code.empty()) return kNone;
  if (code.size() > kPacked) {
    const auto found = longCodes_.find(std::string(code));
    return found == longCodes_.end() ? kNone : found->second;
  }
  // The code's bytes as one integer. Words hold no NUL, so different codes stay different.
  std::uint64_t key = 0;
  std::memcpy(&key, code.data(), sizeof key);
  if constexpr (std::endian::native == std::endian::big) key = __builtin_bswap64(key);
  if (code.size() < kPacked) key &= (std::uint64_t{1} << 8 * code.size()) - 1;
  return slots_[SlotOf(key)].number;
}

}  // namespace kesncd_cli

#endif  // KESNCD_CLI_CODE_TABLE_H_
