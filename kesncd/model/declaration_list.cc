// Sorting declarations by code, and sharing out the changes.
#include "kesncd/model/declaration_list.h"

#include <algorithm>
#include <cstdint>

#include "vcd/change_count.h"

namespace orsa::kesncd {

namespace {

/// A declaration as it is sorted: by code, then in its order. Sixteen bytes that lie together, so
/// that sorting moves little; the signals themselves lie far apart.
struct Key {
  std::uint64_t start;   // of the code
  std::size_t position;  // in the list
};

constexpr std::size_t kStartBytes = sizeof(std::uint64_t);

// How many declarations ahead memory is fetched: those of a large header lie far apart.
constexpr std::size_t kAhead = 16;

/// The first eight bytes as a number that orders as the bytes do; zeros after a shorter code. The
/// highest byte is the first, unlike in CodeCells, for here the order matters.
std::uint64_t StartOf(const std::string& code) {
  std::uint64_t start = 0;
  for (std::size_t i = 0; i < kStartBytes; ++i) {
    start = start << 8 | (i < code.size() ? static_cast<unsigned char>(code[i]) : 0U);
  }
  return start;
}

/// Whether the start is the whole code: codes hold no NUL, so a zero stands after a shorter one.
bool IsWhole(std::uint64_t start) {
  return (start & 0xFF) == 0;
}

/// The code of such a start, without a look at the signal.
std::string CodeOf(std::uint64_t start) {
  std::string code;
  // Ends at the zero that a whole start holds.
  for (int shift = 8 * (kStartBytes - 1); (start >> shift & 0xFF) != 0; shift -= 8) {
    code += static_cast<char>(start >> shift & 0xFF);
  }
  return code;
}

}  // namespace

void DeclarationList::Append(VmodHier* scope, VmodSignal& signal) {
  // The order of the list is kept, also for codes that are declared twice.
  list_.push_back({scope, &signal});
  if (!counting_) return;
  // From here on the body has begun: the code's counter starts again at each late declaration, and
  // the sum goes to those before.
  std::uint64_t& taken = taken_[signal.symbol];
  taken += counts_.Take(signal.symbol);
  lateStarts_.push_back(taken);
}

void DeclarationList::FetchAhead(std::size_t position) const {
  if (position + kAhead < list_.size()) counts_.Fetch(list_[position + kAhead].signal->symbol);
}

/// Those of the header get all changes.
std::uint64_t DeclarationList::ChangesBefore(std::size_t position) const {
  return counting_ && position >= firstLate_ ? lateStarts_[position - firstLate_] : 0;
}

/// A code that several scopes declare gives each of them its changes.
void DeclarationList::AddCounts() {
  for (std::size_t i = 0; i < list_.size(); ++i) {
    FetchAhead(i);
    VmodSignal& signal = *list_[i].signal;
    std::uint64_t changes = counts_.Get(signal.symbol);
    // Nearly no dump declares after its definitions, so the table is hardly ever looked at.
    if (!taken_.empty()) {
      const auto taken = taken_.find(signal.symbol);
      if (taken != taken_.end()) changes += taken->second;
    }
    // The sum since the first declaration, less what came before this one.
    changes -= ChangesBefore(i);
    AddToCount(signal.changes,
               static_cast<std::uint32_t>(std::min<std::uint64_t>(changes, kMostCounted)));
  }
}

void DeclarationList::Index(CodeIndex& index) {
  // Keys of what came since the last time.
  std::vector<Key> keys;
  keys.reserve(list_.size() - indexed_);
  for (; indexed_ < list_.size(); ++indexed_) {
    FetchAhead(indexed_);
    const std::string& code = list_[indexed_].signal->symbol;
    // A code that an earlier reading put into the index gets no counter here, so its changes do not
    // count.
    if (!index.contains(code)) counts_.Add(code);
    keys.push_back({StartOf(code), indexed_});
  }
  // For codes of eight bytes and more, which the start does not tell apart.
  const auto longCode = [this](const Key& key) -> const std::string& {
    return list_[key.position].signal->symbol;
  };
  std::sort(keys.begin(), keys.end(), [&longCode](const Key& a, const Key& b) {
    if (a.start != b.start) return a.start < b.start;
    const int order = IsWhole(a.start) ? 0 : longCode(a).compare(longCode(b));
    // Within a code by position, so that scopes keep their order.
    return order != 0 ? order < 0 : a.position < b.position;
  });
  // Sorted keys go in at the end of an empty map, which the hint says; others cost a search.
  auto entry = index.end();
  std::string code;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (i + kAhead < keys.size()) __builtin_prefetch(&list_[keys[i + kAhead].position]);
    const Key& key = keys[i];
    code = IsWhole(key.start) ? CodeOf(key.start) : longCode(key);
    if (entry == index.end() || entry->first != code) entry = index.try_emplace(index.end(), code);
    entry->second.push_back(list_[key.position].scope);
  }
  // The first end of the definitions; late declarations are those after it.
  if (!counting_) {
    counting_ = true;
    firstLate_ = list_.size();
  }
}

}  // namespace orsa::kesncd
