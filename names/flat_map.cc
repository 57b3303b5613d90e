// Entering signals into the flat map, and walking the names of its ranges.
#include "names/flat_map.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "text/words.h"

namespace orsa::kesncd {

namespace {

/// Takes the number of a bit off a name; false where it has none. "data_3" is base "data_" and
/// number 3, as an entry of "data[7:0]" has it.
bool TakeEntryNumber(std::string& base, std::int64_t& number) {
  std::string_view name = base;
  if (!TakeBitNumber(name, number)) return false;
  base.resize(name.size());
  return true;
}

/// What was asked for, found by the names that a signal has. Each asked name is entered under all
/// forms in which a signal may have it; what a signal meets is marked, so that the rest is missing.
class Selection {
 public:
  explicit Selection(const std::vector<std::string>& names) : names_(names), isMet_(names.size()) {
    for (std::size_t i = 0; i < names.size(); ++i) {
      Add(names[i], i);
      // "u1/q" also means a variable u1_q.
      if (names[i].find('/') != std::string::npos) Add(SlashesFlattened(names[i]), i);
    }
  }

  /// Whether the signal is asked for as a whole.
  bool HasWhole(const std::string& name) { return Meet(whole_.equal_range(name)); }
  // Of an entry that is one bit.
  bool HasNumber(const std::string& base, std::int64_t number) {
    const auto bits = bits_.find(base);
    return bits != bits_.end() && Meet(bits->second.equal_range(number));
  }
  /// The numbers within a range that are asked for. Not by walking the range: it may be larger than
  /// all that is asked for.
  std::vector<std::int64_t> NumbersIn(const std::string& base, std::int64_t low,
                                      std::int64_t high) {
    std::vector<std::int64_t> numbers;
    const auto bits = bits_.find(base);
    if (bits == bits_.end()) return numbers;
    auto bit = bits->second.lower_bound(low);
    for (; bit != bits->second.end() && bit->first <= high; ++bit) {
      isMet_[bit->second] = true;
      // The same bit may be asked for under two names; both are met, and it is listed once.
      if (numbers.empty() || numbers.back() != bit->first) numbers.push_back(bit->first);
    }
    return numbers;
  }
  // In the order in which they were asked for.
  std::vector<std::string> Missing() const {
    std::vector<std::string> missing;
    for (std::size_t i = 0; i < names_.size(); ++i) {
      if (!isMet_[i]) missing.push_back(names_[i]);
    }
    return missing;
  }

 private:
  // Names are asked for as declared ("data[3]") or as the map has them ("data_3").
  void Add(const std::string& name, std::size_t index) {
    whole_.emplace(name, index);
    const DesignNames rewritten = RewriteName(name);
    std::string base = rewritten.base;
    std::int64_t number = 0;
    // "data[7:0]" is the whole signal only.
    if (rewritten.isRange) return;
    // A bit of a bus, or a signal of that very name.
    if (TakeEntryNumber(base, number)) {
      bits_[base].emplace(number, index);
    } else if (base != name) {
      whole_.emplace(base, index);
    }
  }
  // All that were asked for under the name, even if one of them is enough.
  template <class Range>
  bool Meet(Range range) {
    for (auto met = range.first; met != range.second; ++met) isMet_[met->second] = true;
    return range.first != range.second;
  }

  // The names belong to the caller.
  const std::vector<std::string>& names_;
  // Whether a name was met, by its number.
  std::vector<bool> isMet_;
  // Names of whole signals, with the numbers of the names that ask for them.
  std::multimap<std::string, std::size_t> whole_;
  // Names of bits, by base and then by number.
  std::map<std::string, std::multimap<std::int64_t, std::size_t>> bits_;
};

}  // namespace

FlatMap::Entry FlatMap::EntryOf(const Declarations& declarations, std::uint32_t variable) {
  const DesignNames names = RewriteName(declarations.variables[variable].name);
  Entry entry{names.base, names.isRange, names.isRange, names.low, names.high, variable};
  // A signal data_3 takes the place of bit 3 of data in the order, and its name, if declared
  // before.
  if (!entry.isRange && TakeEntryNumber(entry.base, entry.low)) {
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
    // Asked in any case, so that every name that means one of the bits counts as met.
    const std::vector<std::int64_t> numbers =
        entry.isRange ? selection.NumbersIn(entry.base, entry.low, entry.high)
                      : std::vector<std::int64_t>();
    // As the dump writes it, with its range or without it.
    const bool isWhole = selection.HasWhole(name) ||
                         (entry.isRange && selection.HasWhole(name.substr(0, name.find('['))));
    if (isWhole || (!entry.hasNumber && selection.HasWhole(entry.base)) ||
        (entry.hasNumber && !entry.isRange && selection.HasNumber(entry.base, entry.low))) {
      entries_.push_back(std::move(entry));
      continue;
    }
    // Single bits of a bus that was not asked for as a whole.
    for (const std::int64_t number : numbers) {
      entries_.push_back({entry.base, true, true, number, number, variable});
    }
  }
  missing_ = selection.Missing();
  Sort();
}

void FlatMap::Sort() {
  // Of entries that begin at the same number the first declared comes first.
  std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
    return std::tie(a.base, a.hasNumber, a.low, a.variable) <
           std::tie(b.base, b.hasNumber, b.low, b.variable);
  });
}

std::uint64_t FlatMap::RangeNames() const {
  std::uint64_t names = 0;
  // Single entries are few; ranges may stand for more names than memory holds.
  for (const Entry& entry : entries_) {
    if (entry.isRange) names += static_cast<std::uint64_t>(entry.high - entry.low) + 1;
  }
  return names;
}

void FlatMap::Walk(
    const std::function<void(const std::string& name, std::uint32_t variable)>& visit) const {
  for (std::size_t begin = 0; begin < entries_.size();) {
    // A group has one base; with numbers it is walked number by number.
    std::size_t end = begin + 1;
    while (end < entries_.size() && entries_[end].base == entries_[begin].base &&
           entries_[end].hasNumber == entries_[begin].hasNumber) {
      ++end;
    }
    if (entries_[begin].hasNumber) {
      WalkGroup(begin, end, visit);
    } else {
      // Equal names without a number: the first declared is the first of the group.
      visit(entries_[begin].base, entries_[begin].variable);
    }
    begin = end;
  }
}

/// Walks the numbers of entries with the same base. Where some overlap, the first declared has the
/// name.
void FlatMap::WalkGroup(std::size_t begin, std::size_t end,
                        const std::function<void(const std::string&, std::uint32_t)>& visit) const {
  // A bus of a million bits is one entry here, too.
  std::multiset<std::pair<std::uint32_t, std::int64_t>>
      open;  // by variable, with their last number
  std::size_t next = begin;
  std::int64_t number = 0;
  while (next < end || !open.empty()) {
    // A gap between ranges is stepped over at once.
    if (open.empty()) number = entries_[next].low;
    // Those that begin here join those that are open.
    for (; next < end && entries_[next].low <= number; ++next) {
      open.emplace(entries_[next].variable, entries_[next].high);
    }
    // Only the one in front matters; others that have ended are found when they come to the front.
    while (!open.empty() && open.begin()->second < number) open.erase(open.begin());
    if (open.empty()) continue;
    visit(entries_[begin].base + std::to_string(number), open.begin()->first);
    ++number;
  }
}

}  // namespace orsa::kesncd
