// The profile's own tables. A module's toggles are one list, a number for each window: modules
// times windows would be more rows than all other tables have.
//
// The tables, all in ticks of the dump:
//   time_window     id, first_tick, last_tick, observed       a row for each window, in order
//   module_toggles  scope, toggles, own                       lists such as "[0,12,7]"
//   dumping_gap     first_tick, last_tick                     stretches without observation
//   clock           code, toggles, first_tick, last_tick      of signals called like clocks
//
// Each has a checksum among the facts. It finds a file that was changed by accident; one that was
// made to deceive may have right sums, so the reader relies on nothing that it did not check: a
// list with too few numbers would be read beyond its end later.
#include "database/profile_tables.h"

#include <string>
#include <utility>

#include "database/number_list.h"
#include "database/table_reader.h"
#include "database/table_writer.h"

namespace orsa::kesncd {

namespace {

// Windows touch, so each edge is written twice, for those who ask in SQL; the reader checks that
// they meet.
void WriteWindows(const Profile& profile, Connection& to, FactsByName& facts) {
  TableWriter rows(to, "time_window", 3, RowNumbers::FromZero);
  for (std::size_t window = 0; window < profile.windows(); ++window) {
    rows.Count(profile.edges[window]);
    rows.Count(profile.edges[window + 1]);
    rows.Count(profile.observed[window]);
    rows.EndRow();
  }
  facts["checksum_time_window"] = rows.Finish();
}

/// By scope, not by module: a database has scopes for everything, and modules are numbered anew for
/// whatever scope is asked for. A scope without toggles has no row.
void WriteToggles(const Profile& profile, Connection& to, FactsByName& facts) {
  TableWriter rows(to, "module_toggles", 3);
  const std::vector<std::uint32_t>& places = profile.modules.places;
  for (std::size_t scope = 0; scope < places.size(); ++scope) {
    const std::uint32_t module = places[scope];
    if (profile.toggles[module].empty() && profile.own[module].empty()) continue;
    const std::string toggles = NumberListText<std::uint64_t>(profile.toggles[module]);
    const std::string own = NumberListText<std::uint64_t>(profile.own[module]);
    rows.Count(std::uint64_t{scope});
    rows.Text(toggles);
    rows.Text(own);
    rows.EndRow();
  }
  facts["checksum_module_toggles"] = rows.Finish();
}

/// In the order of time.
void WriteGaps(const Profile& profile, Connection& to, FactsByName& facts) {
  TableWriter rows(to, "dumping_gap", 2);
  for (const auto& [begin, end] : profile.gaps) {
    rows.Count(begin);
    rows.Count(end);
    rows.EndRow();
  }
  facts["checksum_dumping_gap"] = rows.Finish();
}

/// `first_tick` and `last_tick` are those of the first and the last toggle; both are 0 without any.
void WriteClocks(const std::vector<KeptProfile::Clock>& clocks, Connection& to,
                 FactsByName& facts) {
  TableWriter rows(to, "clock", 4);
  for (const KeptProfile::Clock& clock : clocks) {
    rows.Count(std::uint64_t{clock.codeId});
    rows.Count(clock.span.toggles);
    rows.Count(clock.span.first);
    rows.Count(clock.span.last);
    rows.EndRow();
  }
  facts["checksum_clock"] = rows.Finish();
}

/// Calling order: construct, Read once. Whatever is missing, of another kind than it was written,
/// or does not fit together throws Failure with Unusable, which names the file as corrupt. `budget`
/// bounds what texts take together (see TableReader).
class ProfileReader {
 public:
  ProfileReader(Connection& from, const Declarations& declarations, const FactReader& facts,
                std::uint64_t& budget)
      : from_(from), declarations_(declarations), facts_(facts), budget_(budget) {}

  /// Windows come before lists, whose lengths are checked against their number.
  KeptProfile Read() {
    KeptProfile kept;
    kept.parts = facts_.OptionalCountOf("profile_parts").value_or(0);
    kept.length = facts_.OptionalCountOf("profile_length_fs");
    kept.profile.isFolded = facts_.CountOf("profile_folded", 1) == 1;
    // Either parts or a length, and neither of them 0.
    if ((kept.parts == 0) == !kept.length || kept.length == 0) from_.FailCorrupt();
    ReadWindows(kept.profile);
    ReadToggles(kept.profile);
    ReadGaps(kept.profile);
    ReadClocks(kept.clocks);
    // What readers of a profile rely on.
    if (kept.profile.isFolded && kept.profile.windows() == 0) from_.FailCorrupt();
    return kept;
  }

 private:
  /// Each window begins where the one before it ends, holds at least a tick, and lies in the
  /// interval of the figures. So edges grow, and differences of them never wrap around.
  void ReadWindows(Profile& profile) {
    const std::uint64_t first = facts_.CountOf("first_tick");
    const std::uint64_t last = facts_.CountOf("last_tick");
    TableReader rows(from_,
                     "SELECT id, first_tick, last_tick, observed FROM time_window NOT INDEXED"
                     " ORDER BY id",
                     budget_);
    while (rows.Next()) {
      rows.Place(profile.observed.size());
      const std::uint64_t begin = rows.Count();
      const std::uint64_t end = rows.Count();
      const std::uint64_t observed = rows.Count();
      if (profile.edges.empty()) profile.edges.push_back(begin);
      // Not trusted, whatever the checksum says: a later difference of two edges would be a huge
      // number.
      if (begin != profile.edges.back() || end <= begin || observed > end - begin ||
          begin < first || end > last) {
        from_.FailCorrupt();
      }
      profile.edges.push_back(end);
      profile.observed.push_back(observed);
    }
    facts_.CheckSum(rows, "time_window");
  }

  /// A list with a number for each window, or none at all.
  std::vector<std::uint64_t> List(const std::string& text, std::size_t windows) const {
    std::optional<std::vector<std::uint64_t>> numbers = NumberListOf<std::uint64_t>(text, windows);
    if (!numbers || (!numbers->empty() && numbers->size() != windows)) from_.FailCorrupt();
    std::uint64_t sum = 0;
    for (const std::uint64_t number : *numbers) {
      if (__builtin_add_overflow(sum, number, &sum)) from_.FailCorrupt();  // totals are added up
    }
    return std::move(*numbers);
  }

  /// A module without a row has empty lists, which stand for zeros.
  void ReadToggles(Profile& profile) {
    // All scopes are modules here, as they were when the profile was counted.
    profile.modules = ModulesIn(declarations_, Declarations::kDump, UINT32_MAX);
    const std::vector<std::uint32_t>& places = profile.modules.places;
    profile.toggles.resize(profile.modules.size());
    profile.own.resize(profile.modules.size());
    TableReader rows(from_,
                     "SELECT scope, toggles, own FROM module_toggles NOT INDEXED ORDER BY scope",
                     budget_);
    while (rows.Next()) {
      const std::uint64_t scope = rows.Count();
      if (scope >= places.size() || places[scope] == ModuleTree::kOutside) from_.FailCorrupt();
      profile.toggles[places[scope]] = List(rows.Text(), profile.windows());
      profile.own[places[scope]] = List(rows.Text(), profile.windows());
    }
    facts_.CheckSum(rows, "module_toggles");
  }

  void ReadGaps(Profile& profile) {
    TableReader rows(
        from_, "SELECT first_tick, last_tick FROM dumping_gap NOT INDEXED ORDER BY rowid", budget_);
    while (rows.Next()) {
      const std::uint64_t begin = rows.Count();
      const std::uint64_t end = rows.Count();
      if (begin > end) from_.FailCorrupt();
      profile.gaps.emplace_back(begin, end);
    }
    facts_.CheckSum(rows, "dumping_gap");
  }

  /// Whether the code exists is for who asks for it by code: unknown ones are never found.
  void ReadClocks(std::vector<KeptProfile::Clock>& clocks) {
    TableReader rows(from_,
                     "SELECT code, toggles, first_tick, last_tick FROM clock NOT INDEXED"
                     " ORDER BY rowid",
                     budget_);
    while (rows.Next()) {
      KeptProfile::Clock clock;
      clock.codeId = rows.Small();
      clock.span.toggles = rows.Count();
      clock.span.first = rows.Count();
      clock.span.last = rows.Count();
      // Two toggles have two times.
      const bool isPoint = clock.span.first == clock.span.last;
      if (clock.span.first > clock.span.last || (isPoint && clock.span.toggles > 1)) {
        from_.FailCorrupt();
      }
      clocks.push_back(clock);
    }
    facts_.CheckSum(rows, "clock");
  }

  Connection& from_;
  const Declarations& declarations_;
  const FactReader& facts_;
  std::uint64_t& budget_;
};

}  // namespace

/// One of the first two facts is NULL: a profile has windows of a length or a number of parts.
void WriteProfileTables(const KeptProfile& kept, Connection& to, FactsByName& facts) {
  facts["profile_parts"] = kept.length ? Fact() : FactOfCount(kept.parts);
  facts["profile_length_fs"] = kept.length ? FactOfCount(*kept.length) : Fact();
  facts["profile_folded"] = FactOfCount(kept.profile.isFolded ? 1 : 0);
  WriteWindows(kept.profile, to, facts);
  WriteToggles(kept.profile, to, facts);
  WriteGaps(kept.profile, to, facts);
  WriteClocks(kept.clocks, to, facts);
}

// A profile that is not there is for the caller to know, from the facts: here each fact has to be.
KeptProfile ReadProfileTables(Connection& from, const Declarations& declarations,
                              const FactReader& facts, std::uint64_t& budget) {
  return ProfileReader(from, declarations, facts, budget).Read();
}

}  // namespace orsa::kesncd
