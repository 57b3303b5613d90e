// The tables of a part's profile. A row of toggles is one list without the windows before the first
// toggle; its sums wrap around, so they are kept as signed numbers.
#include "database/part_profile_tables.h"

#include <charconv>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "database/table_reader.h"
#include "database/table_writer.h"

namespace orsa::kesncd {

namespace {

/// Calls `visit(name, value)` for all that is one number, for writing and for reading. The names
/// are part of the format.
template <class Part, class Visit>
void ForEachNumber(Part& part, Visit visit) {
  auto& time = part.toggles.time;
  visit("part_profile_full", part.isFull);
  visit("part_profile_has_stamps", time.hasStamps);
  visit("part_profile_first_stamp", time.firstStamp);
  visit("part_profile_last_stamp", time.lastStamp);
  visit("part_profile_backward", time.backward);
  visit("part_profile_pauses", time.pauses);
  visit("part_profile_unobserved", time.unobserved);
  visit("part_profile_is_observing", time.isObserving);
  visit("part_profile_paused_at", time.pausedAt);
  visit("part_profile_many_gaps", part.hasManyGaps);
  visit("part_profile_clocks_over", part.watch.isOver);
}

std::string ListText(const std::vector<std::uint64_t>& numbers) {
  std::string text;
  for (const std::uint64_t number : numbers) {
    text += text.empty() ? '[' : ',';
    text += std::to_string(static_cast<std::int64_t>(number));
  }
  return text + "]";
}

Fact FactOf(const std::optional<std::uint64_t>& count) {
  return count ? FactOfCount(*count) : Fact();
}

using Pairs = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

/// Calling order: construct, the tables, each once.
class Writer {
 public:
  Writer(Connection& to, FactsByName& facts) : to_(to), facts_(facts) {}

  void Words(const char* table, const std::vector<Opening>& words, bool hasTicks) {
    TableWriter rows(to_, table, hasTicks ? 5 : 4);
    for (const Opening& word : words) {
      if (hasTicks) rows.Count(word.ticks);
      rows.Count(std::uint64_t{word.codeId});
      rows.Count(std::uint64_t{word.word});
      rows.Signed(word.bits);
      rows.Signed(word.values);
      rows.EndRow();
    }
    End(table, rows);
  }
  void Toggles(const std::vector<ProfileRow>& sums) {
    TableWriter rows(to_, "part_toggles", 3);
    for (const ProfileRow& row : sums) {
      const std::string toggles = ListText(row.toggles);
      rows.Count(std::uint64_t{row.sum});
      rows.Count(row.window);
      rows.Text(toggles);
      rows.EndRow();
    }
    End("part_toggles", rows);
  }
  void Numbers(const char* table, const Pairs& pairs) {
    TableWriter rows(to_, table, 2);
    for (const auto& [first, second] : pairs) {
      rows.Count(first);
      rows.Count(second);
      rows.EndRow();
    }
    End(table, rows);
  }
  void Clocks(const ProfilePart& part) {
    TableWriter rows(to_, "part_clock", 7);
    for (std::size_t i = 0; i < part.watched.size(); ++i) {
      const WatchedSignal& clock = part.watch.signals[i];
      rows.Count(std::uint64_t{part.watched[i]});
      rows.Count(static_cast<std::uint64_t>(clock.level));
      rows.Count(static_cast<std::uint64_t>(clock.first));
      rows.Count(clock.firstTime);
      rows.Count(clock.span.toggles);
      rows.Count(clock.span.first);
      rows.Count(clock.span.last);
      rows.EndRow();
    }
    End("part_clock", rows);
  }

 private:
  void End(const std::string& table, const TableWriter& rows) {
    facts_["checksum_" + table] = rows.sum();
  }

  Connection& to_;
  FactsByName& facts_;
};

/// Calling order: construct, Read once; or Windows.
class Reader {
 public:
  Reader(const Connection& from, const FactsByName& facts) : from_(from), facts_(facts) {}

  PartWindows Windows() const {
    PartWindows windows;
    windows.parts = CountOf("part_profile_parts").value_or(0);
    windows.length = CountOf("part_profile_length_fs");
    windows.first = CountOf("part_profile_dump_first");
    windows.last = CountOf("part_profile_dump_last");
    // Equal parts of the span or a length, and neither of them 0.
    if ((windows.parts == 0) == !windows.length || windows.length == 0) from_.FailCorrupt();
    return windows;
  }

  ProfilePart Read(Connection& from, std::uint64_t& budget) const {
    ProfilePart part;
    part.windows = Windows();
    ForEachNumber(part, [this](const std::string& name, auto& value) {
      using Value = std::remove_reference_t<decltype(value)>;
      const std::optional<std::uint64_t> count = CountOf(name);
      if (!count || (std::is_same_v<Value, bool> && *count > 1)) from_.FailCorrupt();
      value = static_cast<Value>(*count);
    });
    Words(from, budget, part.toggles);
    Toggles(from, budget, part.rows);
    part.unobserved = Numbers(from, budget, "part_unobserved", "window, ticks");
    part.gaps = Numbers(from, budget, "part_gap", "first_tick, last_tick");
    Clocks(from, budget, part);
    return part;
  }

 private:
  /// NULL is nothing; what is missing is corrupt.
  std::optional<std::uint64_t> CountOf(const std::string& name) const {
    const auto place = facts_.find(name);
    if (place == facts_.end()) from_.FailCorrupt();
    if (std::holds_alternative<std::monostate>(place->second)) return {};
    if (const auto* const number = std::get_if<std::uint64_t>(&place->second)) return *number;
    const std::optional<std::uint64_t> count = LongCount(std::get<std::string>(place->second));
    if (!count) from_.FailCorrupt();
    return count;
  }

  void CheckSum(const TableReader& rows, const std::string& table) const {
    if (CountOf("checksum_" + table) != rows.sum()) from_.FailCorrupt();
  }

  static Opening Word(TableReader& rows, std::uint64_t ticks) {
    Opening word;
    word.ticks = ticks;
    word.codeId = rows.Small();
    word.word = rows.Small();
    word.bits = rows.Signed();
    word.values = rows.Signed();
    return word;
  }

  void Words(Connection& from, std::uint64_t& budget, TogglePart& part) const {
    TableReader openings(from,
                         "SELECT tick, code, word, bits, levels FROM part_opening NOT INDEXED"
                         " ORDER BY rowid",
                         budget);
    while (openings.Next()) {
      const std::uint64_t ticks = openings.Count();
      part.openings.push_back(Word(openings, ticks));
    }
    CheckSum(openings, "part_opening");
    TableReader levels(from,
                       "SELECT code, word, bits, levels FROM part_level NOT INDEXED"
                       " ORDER BY rowid",
                       budget);
    while (levels.Next()) part.levels.push_back(Word(levels, 0));
    CheckSum(levels, "part_level");
  }

  /// "[3,-1]", of at least one number.
  std::vector<std::uint64_t> List(const std::string& text) const {
    std::vector<std::uint64_t> numbers;
    if (!text.starts_with('[') || !text.ends_with(']')) from_.FailCorrupt();
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at < end - 1) {
      if (*at != (numbers.empty() ? '[' : ',')) from_.FailCorrupt();
      std::int64_t number = 0;
      const auto [next, error] = std::from_chars(at + 1, end, number);
      if (error != std::errc()) from_.FailCorrupt();
      numbers.push_back(static_cast<std::uint64_t>(number));
      at = next;
    }
    if (numbers.empty()) from_.FailCorrupt();
    return numbers;
  }

  void Toggles(Connection& from, std::uint64_t& budget, std::vector<ProfileRow>& sums) const {
    TableReader rows(from, "SELECT sum, window, toggles FROM part_toggles NOT INDEXED ORDER BY sum",
                     budget);
    while (rows.Next()) {
      ProfileRow row;
      row.sum = rows.Small();
      row.window = rows.Count();
      row.toggles = List(rows.Text());
      sums.push_back(std::move(row));
    }
    CheckSum(rows, "part_toggles");
  }

  Pairs Numbers(Connection& from, std::uint64_t& budget, const std::string& table,
                const std::string& columns) const {
    Pairs pairs;
    const std::string select =
        "SELECT " + columns + " FROM " + table + " NOT INDEXED ORDER BY rowid";
    TableReader rows(from, select.c_str(), budget);
    while (rows.Next()) {
      const std::uint64_t first = rows.Count();
      pairs.emplace_back(first, rows.Count());
    }
    CheckSum(rows, table);
    return pairs;
  }

  /// A level is 0 before the first known value, then '0' or '1'.
  char Level(TableReader& rows) const {
    const std::uint32_t level = rows.Small('1');
    if (level != 0 && level != '0' && level != '1') from_.FailCorrupt();
    return static_cast<char>(level);
  }

  void Clocks(Connection& from, std::uint64_t& budget, ProfilePart& part) const {
    TableReader rows(from,
                     "SELECT code, level, first_level, first_time, toggles, first_tick, last_tick"
                     " FROM part_clock NOT INDEXED ORDER BY rowid",
                     budget);
    while (rows.Next()) {
      part.watched.push_back(rows.Small());
      WatchedSignal clock;
      clock.level = Level(rows);
      clock.first = Level(rows);
      clock.firstTime = rows.Count();
      clock.span.toggles = rows.Count();
      clock.span.first = rows.Count();
      clock.span.last = rows.Count();
      part.watch.signals.push_back(clock);
    }
    CheckSum(rows, "part_clock");
  }

  const Connection& from_;
  const FactsByName& facts_;
};

}  // namespace

void WritePartProfile(const ProfilePart& part, Connection& to, FactsByName& facts) {
  const PartWindows& windows = part.windows;
  facts["part_profile_parts"] = windows.length ? Fact() : FactOfCount(windows.parts);
  facts["part_profile_length_fs"] = FactOf(windows.length);
  facts["part_profile_dump_first"] = FactOf(windows.first);
  facts["part_profile_dump_last"] = FactOf(windows.last);
  ForEachNumber(part, [&](const char* name, const auto& value) {
    facts[name] = FactOfCount(static_cast<std::uint64_t>(value));
  });
  Writer writer(to, facts);
  writer.Words("part_opening", part.toggles.openings, true);
  writer.Words("part_level", part.toggles.levels, false);
  writer.Toggles(part.rows);
  writer.Numbers("part_unobserved", part.unobserved);
  writer.Numbers("part_gap", part.gaps);
  writer.Clocks(part);
}

PartWindows PartWindowsOf(const Connection& from, const FactsByName& facts) {
  return Reader(from, facts).Windows();
}

ProfilePart ReadPartProfile(Connection& from, const FactsByName& facts, std::uint64_t& budget) {
  return Reader(from, facts).Read(from, budget);
}

}  // namespace orsa::kesncd
