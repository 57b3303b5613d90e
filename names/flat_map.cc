// Entering signals into the flat map, and walking the names of its ranges.
#include "names/flat_map.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "names/design_names.h"
#include "text/words.h"

namespace orsa::kesncd {

namespace {

/// Takes the number of a bit off a name; false where it has none.
bool TakeBarNumber(std::string& base, std::int64_t& number) {
  std::string_view name = base;
  if (!TakeBitNumber(name, number)) return false;
  base.resize(name.size());
  return true;
}

/// What was asked for, found by the names that a signal has.
class Selection {
 public:
  explicit Selection(const std::vector<std::string>& names) : names_(names), isMet_(names.size()) {
    for (std::size_t i = 0; i < names.size(); ++i) {
      Add(names[i], i);
      if (names[i].find('/') != std::string::npos) Add(SlashesFlattened(names[i]), i);
    }
  }

  /// Whether the signal is asked for as a whole.
  bool HasWhole(const std::string& name) { return Meet(whole_.equal_range(name)); }
  bool HasNumber(const std::string& base, std::int64_t number) {
    const auto bits = bits_.find(base);
    return bits != bits_.end() && Meet(bits->second.equal_range(number));
  }
  /// The numbers within a range that are asked for.
  std::vector<std::int64_t> NumbersIn(const std::string& base, std::int64_t low,
                                      std::int64_t high) {
    std::vector<std::int64_t> numbers;
    const auto bits = bits_.find(base);
    if (bits == bits_.end()) return numbers;
    auto bit = bits->second.lower_bound(low);
    for (; bit != bits->second.end() && bit->first <= high; ++bit) {
      isMet_[bit->second] = true;
      if (numbers.empty() || numbers.back() != bit->first) numbers.push_back(bit->first);
    }
    return numbers;
  }
  std::vector<std::string> Missing() const {
    std::vector<std::string> missing;
    for (std::size_t i = 0; i < names_.size(); ++i) {
      if (!isMet_[i]) missing.push_back(names_[i]);
    }
    return missing;
  }

 private:
  void Add(const std::string& name, std::size_t index) {
    whole_.emplace(name, index);
    const DesignNames rewritten = RewriteName(name);
    std::string base = rewritten.base;
    std::int64_t number = 0;
    if (rewritten.isRange) return;
    if (TakeBarNumber(base, number)) {
      bits_[base].emplace(number, index);
    } else if (base != name) {
      whole_.emplace(base, index);
    }
  }
  template <class Range>
  bool Meet(Range range) {
    for (auto met = range.first; met != range.second; ++met) isMet_[met->second] = true;
    return range.first != range.second;
  }

  const std::vector<std::string>& names_;
  std::vector<bool> isMet_;
  std::multimap<std::string, std::size_t> whole_;
  std::map<std::string, std::multimap<std::int64_t, std::size_t>> bits_;
};

}  // namespace

FlatMap::Entry FlatMap::EntryOf(const Declarations& declarations, std::uint32_t variable) {
  const DesignNames names = RewriteName(declarations.variables[variable].name);
  Entry entry{names.base, names.isRange, names.isRange, names.low, names.high, variable};
  if (!entry.isRange && TakeBarNumber(entry.base, entry.low)) {
    entry.hasNumber = true;
    entry.high = entry.low;
  }
  return entry;
}

FlatMap::FlatMap(const Declarations& declarations, std::uint32_t scope) {
  for (const std::uint32_t variable : declarations.scopes[scope].variables) {
    entries_.push_back(EntryOf(declarations, variable));
  }
  Sort();
}

FlatMap::FlatMap(const Declarations& declarations, std::uint32_t scope,
                 const std::vector<std::string>& names) {
  Selection selection(names);
  for (const std::uint32_t variable : declarations.scopes[scope].variables) {
    const std::string& name = declarations.variables[variable].name;
    Entry entry = EntryOf(declarations, variable);
    const std::vector<std::int64_t> numbers =
        entry.isRange ? selection.NumbersIn(entry.base, entry.low, entry.high)
                      : std::vector<std::int64_t>();
    const bool isWhole = selection.HasWhole(name) ||
                         (entry.isRange && selection.HasWhole(name.substr(0, name.find('['))));
    if (isWhole || (!entry.hasNumber && selection.HasWhole(entry.base)) ||
        (entry.hasNumber && !entry.isRange && selection.HasNumber(entry.base, entry.low))) {
      entries_.push_back(std::move(entry));
      continue;
    }
    for (const std::int64_t number : numbers) {
      entries_.push_back({entry.base, true, true, number, number, variable});
    }
  }
  missing_ = selection.Missing();
  Sort();
}

void FlatMap::Sort() {
  std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
    return std::tie(a.base, a.hasNumber, a.low, a.variable) <
           std::tie(b.base, b.hasNumber, b.low, b.variable);
  });
}

std::uint64_t FlatMap::RangeNames() const {
  std::uint64_t names = 0;
  for (const Entry& entry : entries_) {
    if (entry.isRange) names += static_cast<std::uint64_t>(entry.high - entry.low) + 1;
  }
  return names;
}

void FlatMap::Walk(
    const std::function<void(const std::string& name, std::uint32_t variable)>& visit) const {
  for (std::size_t begin = 0; begin < entries_.size();) {
    std::size_t end = begin + 1;
    while (end < entries_.size() && entries_[end].base == entries_[begin].base &&
           entries_[end].hasNumber == entries_[begin].hasNumber) {
      ++end;
    }
    if (entries_[begin].hasNumber) {
      WalkGroup(begin, end, visit);
    } else {
      visit(entries_[begin].base, entries_[begin].variable);
    }
    begin = end;
  }
}

/// Walks the numbers of entries with the same base. Where some overlap, the first declared has the
/// name.
void FlatMap::WalkGroup(std::size_t begin, std::size_t end,
                        const std::function<void(const std::string&, std::uint32_t)>& visit) const {
  std::multiset<std::pair<std::uint32_t, std::int64_t>>
      open;  // by variable, with their last number
  std::size_t next = begin;
  std::int64_t number = 0;
  while (next < end || !open.empty()) {
    if (open.empty()) number = entries_[next].low;
    for (; next < end && entries_[next].low <= number; ++next) {
      open.emplace(entries_[next].variable, entries_[next].high);
    }
    while (!open.empty() && open.begin()->second < number) open.erase(open.begin());
    if (open.empty()) continue;
    visit(entries_[begin].base + std::to_string(number), open.begin()->first);
    ++number;
  }
}

}  // namespace orsa::kesncd
