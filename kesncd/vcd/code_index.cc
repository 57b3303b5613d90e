#include "kesncd/vcd/code_index.h"

#include <algorithm>
#include <cstdint>

namespace orsa::kesncd {

namespace {

/// The first eight bytes as a number that orders as the bytes do; zeros behind a shorter code.
std::uint64_t StartOf(const std::string& code) {
  std::uint64_t start = 0;
  for (std::size_t i = 0; i < sizeof start; ++i) {
    start = start << 8 | (i < code.size() ? static_cast<unsigned char>(code[i]) : 0U);
  }
  return start;
}

}  // namespace

void DeclarationList::Append(VmodHier* scope, VmodSignal& signal) {
  list_.push_back({scope, &signal});
}

void DeclarationList::Index(CodeIndex& index, CodeCounts& counts) {
  // What is sorted is small and lies together; the signals themselves lie far apart.
  struct Key {
    std::uint64_t start;
    std::size_t position;
  };
  std::vector<Key> keys;
  keys.reserve(list_.size() - indexed_);
  for (; indexed_ < list_.size(); ++indexed_) {
    keys.push_back({StartOf(list_[indexed_].signal->symbol), indexed_});
  }
  const auto codeOf = [this](const Key& key) -> const std::string& {
    return list_[key.position].signal->symbol;
  };
  std::sort(keys.begin(), keys.end(), [&codeOf](const Key& a, const Key& b) {
    if (a.start != b.start) return a.start < b.start;
    const int order = codeOf(a).compare(codeOf(b));
    return order != 0 ? order < 0 : a.position < b.position;
  });
  auto entry = index.end();
  for (const Key& key : keys) {
    const std::string& code = codeOf(key);
    if (entry == index.end() || entry->first != code) {
      const std::size_t held = index.size();
      entry = index.try_emplace(index.end(), code);
      if (index.size() > held) counts.Add(code);
    }
    entry->second.push_back(list_[key.position].scope);
  }
}

}  // namespace orsa::kesncd
