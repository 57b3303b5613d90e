#include "vcd/code_table.h"

#include <array>
#include <new>
#include <random>
#include <utility>

namespace orsa::kesncd {

CodeTable::CodeTable()
    : direct_(static_cast<std::uint32_t*>(std::calloc(kDirectCodes, sizeof(std::uint32_t)))),
      salt_(std::uint64_t{std::random_device{}()} << 32 | std::random_device{}()),
      slots_(kFirstSlots) {
  if (direct_ == nullptr) throw std::bad_alloc();
}

std::uint32_t CodeTable::Add(std::string_view code) {
  if (code.size() > kPacked) {
    const auto [place, isNew] = longCodes_.try_emplace(std::string(code), size_);
    if (isNew) ++size_;
    return place->second;
  }
  std::array<char, kPacked> bytes{};
  code.copy(bytes.data(), bytes.size());
  const std::uint64_t key = Pack(bytes.data(), code.size());
  if ((key & kNotDirect) != 0) return AddPacked(key);
  std::uint32_t& place = direct_[DirectIndex(key)];
  if (place == 0) place = ++size_;
  return place - 1;
}

std::uint32_t CodeTable::AddPacked(std::uint64_t key) {
  Slot& slot = slots_[SlotOf(key)];
  if (slot.key != 0) return slot.number;
  slot = {key, size_};
  if (std::size_t{2} * ++packed_ > slots_.size()) {
    const std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(2 * slots_.size()));
    for (const Slot& held : old) {
      if (held.key != 0) slots_[SlotOf(held.key)] = held;
    }
  }
  return size_++;
}

}  // namespace orsa::kesncd
