#include "kesncd/vcd/code_index.h"

#include <algorithm>

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
  new_.push_back({StartOf(signal.symbol), &signal, scope});
}

void DeclarationList::Index(CodeIndex& index, CodeCounts& counts) {
  std::stable_sort(new_.begin(), new_.end(), [](const ScopeSignal& a, const ScopeSignal& b) {
    return a.codeStart != b.codeStart ? a.codeStart < b.codeStart
                                      : a.signal->symbol < b.signal->symbol;
  });
  auto entry = index.end();
  for (const ScopeSignal& declared : new_) {
    const std::string& code = declared.signal->symbol;
    if (entry == index.end() || entry->first != code) {
      const std::size_t held = index.size();
      entry = index.try_emplace(index.end(), code);
      if (index.size() > held) counts.Add(code);
    }
    entry->second.push_back(declared.scope);
  }
  indexed_.insert(indexed_.end(), new_.begin(), new_.end());
  new_.clear();
}

}  // namespace orsa::kesncd
