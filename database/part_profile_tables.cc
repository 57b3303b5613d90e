// The tables of a part's profile. A row of toggles is one list without the windows before the first
// toggle; its sums wrap around, so they are kept as signed numbers.
#include "database/part_profile_tables.h"

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "database/number_list.h"
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
      const std::string toggles = NumberListText<std::int64_t>(row.toggles);
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
  void End(const std::string& table, TableWriter& rows) {
    facts_["checksum_" + table] = rows.Finish();
  }

  Connection& to_;
  FactsByName& facts_;
};

/// Calling order: construct, Read once.
class Reader {
 public:
  Reader(Connection& from, const FactReader& facts, std::uint64_t& budget)
      : from_(from), facts_(facts), budget_(budget) {}

  ProfilePart Read() {
    ProfilePart part;
    part.windows = PartWindowsOf(facts_);
    ForEachNumber(part, [this](const std::string& name, auto& value) {
      using Value = std::remove_reference_t<decltype(value)>;
      constexpr std::uint64_t kMost = std::is_same_v<Value, bool> ? 1 : UINT64_MAX;
      value = static_cast<Value>(facts_.CountOf(name, kMost));
    });
    Words(part.toggles);
    Toggles(part.rows);
    part.unobserved = Numbers("part_unobserved", "window, ticks");
    part.gaps = Numbers("part_gap", "first_tick, last_tick");
    Clocks(part);
    return part;
  }

 private:
  static Opening Word(TableReader& rows, std::uint64_t ticks) {
    Opening word;
    word.ticks = ticks;
    word.codeId = rows.Small();
    word.word = rows.Small();
    word.bits = rows.Signed();
    word.values = rows.Signed();
    return word;
  }

  void Words(TogglePart& part) {
    TableReader openings(from_,
                         "SELECT tick, code, word, bits, levels FROM part_opening NOT INDEXED"
                         " ORDER BY rowid",
                         budget_);
    while (openings.Next()) {
      const std::uint64_t ticks = openings.Count();
      part.openings.push_back(Word(openings, ticks));
    }
    facts_.CheckSum(openings, "part_opening");
    TableReader levels(from_,
                       "SELECT code, word, bits, levels FROM part_level NOT INDEXED"
                       " ORDER BY rowid",
                       budget_);
    while (levels.Next()) part.levels.push_back(Word(levels, 0));
    facts_.CheckSum(levels, "part_level");
  }

  void Toggles(std::vector<ProfileRow>& sums) {
    TableReader rows(
        from_, "SELECT sum, window, toggles FROM part_toggles NOT INDEXED ORDER BY sum", budget_);
    while (rows.Next()) {
      ProfileRow row;
      row.sum = rows.Small();
      row.window = rows.Count();
      std::optional<std::vector<std::uint64_t>> toggles =
          NumberListOf<std::int64_t>(rows.Text(), SIZE_MAX);
      if (!toggles || toggles->empty()) from_.FailCorrupt();
      row.toggles = std::move(*toggles);
      sums.push_back(std::move(row));
    }
    facts_.CheckSum(rows, "part_toggles");
  }

  Pairs Numbers(const std::string& table, const std::string& columns) {
    Pairs pairs;
    const std::string select =
        "SELECT " + columns + " FROM " + table + " NOT INDEXED ORDER BY rowid";
    TableReader rows(from_, select.c_str(), budget_);
    while (rows.Next()) {
      const std::uint64_t first = rows.Count();
      pairs.emplace_back(first, rows.Count());
    }
    facts_.CheckSum(rows, table);
    return pairs;
  }

  /// A level is 0 before the first known value, then '0' or '1'.
  char Level(TableReader& rows) const {
    const std::uint32_t level = rows.Small('1');
    if (level != 0 && level != '0' && level != '1') from_.FailCorrupt();
    return static_cast<char>(level);
  }

  void Clocks(ProfilePart& part) {
    TableReader rows(from_,
                     "SELECT code, level, first_level, first_time, toggles, first_tick, last_tick"
                     " FROM part_clock NOT INDEXED ORDER BY rowid",
                     budget_);
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
    facts_.CheckSum(rows, "part_clock");
  }

  Connection& from_;
  const FactReader& facts_;
  std::uint64_t& budget_;
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

PartWindows PartWindowsOf(const FactReader& facts) {
  PartWindows windows;
  windows.parts = facts.OptionalCountOf("part_profile_parts").value_or(0);
  windows.length = facts.OptionalCountOf("part_profile_length_fs");
  windows.first = facts.OptionalCountOf("part_profile_dump_first");
  windows.last = facts.OptionalCountOf("part_profile_dump_last");
  // Equal parts of the span or a length, and neither of them 0.
  if ((windows.parts == 0) == !windows.length || windows.length == 0) facts.FailCorrupt();
  return windows;
}

ProfilePart ReadPartProfile(Connection& from, const FactReader& facts, std::uint64_t& budget) {
  return Reader(from, facts, budget).Read();
}

}  // namespace orsa::kesncd
