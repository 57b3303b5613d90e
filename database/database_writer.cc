// From figures to tables, each in one go and in the order of its rows.
#include "database/database_writer.h"

#include <algorithm>
#include <string>
#include <vector>

#include "activity/activity_rows.h"
#include "activity/activity_tallies.h"
#include "database/facts.h"
#include "database/part_profile_tables.h"
#include "database/part_tables.h"
#include "database/profile_tables.h"
#include "database/schema.h"
#include "database/sqlite.h"
#include "database/table_writer.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd {

namespace {

/// A path that may be cut at its start: of scopes nested without end, whole paths would be out of
/// all proportion to the dump. Enough for any design; see RowPath, which bounds what commands
/// print.
std::string BoundedPath(const Declarations& declarations, std::uint32_t scope) {
  constexpr std::size_t kLongest = 1000;
  const std::string& own = declarations.scopes[scope].name;
  // A single name that is longer: its end.
  if (own.size() > kLongest) return ".../" + own.substr(own.size() - kLongest);
  std::size_t length = 0;
  std::uint32_t top = scope;
  // Upwards as long as the path stays short enough.
  while (top != Declarations::kDump &&
         length + declarations.scopes[top].name.size() + 1 <= kLongest + 1) {
    length += declarations.scopes[top].name.size() + 1;
    top = declarations.scopes[top].parent;
  }
  const std::string path = declarations.PathBelow(top, scope);
  return top == Declarations::kDump ? path : ".../" + path;
}

/// Where scopes stand in a walk of the tree: a scope and all below it are a range of places. So
/// "all scopes below soc" is `place BETWEEN soc.place AND soc.last` in SQL, without recursion.
struct ScopePlaces {
  std::vector<std::uint32_t> first;
  std::vector<std::uint32_t> last;

  explicit ScopePlaces(const std::vector<DumpScope>& scopes)
      : first(scopes.size()), last(scopes.size()) {
    // Depth first; backwards onto the stack, to come off in the dump's order.
    std::vector<std::uint32_t> pending{Declarations::kDump};
    for (std::uint32_t place = 0; !pending.empty(); ++place) {
      const std::uint32_t scope = pending.back();
      pending.pop_back();
      first[scope] = last[scope] = place;
      const auto& below = scopes[scope].scopes;
      pending.insert(pending.end(), below.rbegin(), below.rend());
    }
    // A scope is declared after the one that it is in.
    for (std::size_t scope = scopes.size(); scope-- > 1;) {
      std::uint32_t& outer = last[scopes[scope].parent];
      outer = std::max(outer, last[scope]);
    }
  }
};

/// Calling order: construct, Write once. The connection is a new database in memory.
class DatabaseWriter {
 public:
  DatabaseWriter(const StoredRun& run, Connection& to)
      : run_(run), declarations_(run.exact.declarations), to_(to) {}

  void Write() {
    // In memory nothing has to survive a failure; pages of 16 KiB suit tables of millions of rows.
    to_.Run("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA page_size=16384");
    // Both are in the file's header, where the reader looks first.
    to_.Run(("PRAGMA application_id=" + std::to_string(kApplicationId)).c_str());
    to_.Run(("PRAGMA user_version=" + std::to_string(kSchemaVersion)).c_str());
    // One transaction, or every row would be one.
    to_.Run("BEGIN");
    for (const SchemaPart& table : SchemaTables()) to_.Run(table.sql);
    MakeFurtherTables();
    WriteScopes();
    WriteCodes();
    WriteSignals();
    WriteBits();
    WriteTallies();
    WriteHostRemarks();
    if (run_.facts.part) WritePartTables(run_.part, to_, facts_);
    if (HasPartProfile()) WritePartProfile(*run_.part.profile, to_, facts_);
    if (run_.profile) WriteProfileTables(*run_.profile, to_, facts_);
    WriteFacts();
    to_.Run("COMMIT");
  }

 private:
  bool HasPartProfile() const { return run_.facts.part && run_.part.profile; }

  void MakeFurtherTables() {
    const auto make = [this](std::span<const SchemaPart> schema) {
      for (const SchemaPart& one : schema) to_.Run(one.sql);
    };
    make(run_.facts.part ? SchemaPartTables() : SchemaViews());
    if (HasPartProfile()) make(SchemaPartProfileTables());
    if (!run_.profile) return;
    make(SchemaProfileTables());
    make(SchemaProfileViews());
  }

  void WriteScopes() {
    TableWriter rows(to_, "scope", 6, RowNumbers::FromZero);
    const ScopePlaces places(declarations_.scopes);
    for (std::uint32_t id = 0; id < declarations_.scopes.size(); ++id) {
      const DumpScope& scope = declarations_.scopes[id];
      rows.Count(std::uint64_t{scope.parent});
      rows.Text(scope.kind);
      rows.Text(scope.name);
      // The program builds its paths from names; this one is for those who ask in SQL.
      const std::string path = BoundedPath(declarations_, id);
      rows.DerivedText(path);
      rows.DerivedNumber(places.first[id]);
      rows.DerivedNumber(places.last[id]);
      rows.EndRow();
    }
    facts_["checksum_scope"] = rows.Finish();
  }

  /// Where each code's bits are, and how often hosts counted it.
  void WriteCodes() {
    TableWriter rows(to_, "code", 3, RowNumbers::FromZero);
    const std::vector<std::uint64_t>& first = run_.exact.firstBit;
    // One entry more than codes.
    for (std::size_t id = 0; id + 1 < first.size(); ++id) {
      rows.Count(first[id]);
      rows.Count(first[id + 1] - first[id]);
      // NULL for a database without figures of hosts.
      rows.Count(run_.facts.hasHost ? std::optional<std::uint64_t>(run_.host.changes[id])
                                    : std::nullopt);
      rows.EndRow();
    }
    facts_["checksum_code"] = rows.Finish();
  }

  /// All variables, also those without bits, in the dump's order.
  void WriteSignals() {
    // Which rows `kesncd activity` leaves out, so that views can do the same.
    const ActivityRows activity(run_.exact);
    // By the number of the type, so that texts are compared once.
    std::vector<bool> typeHasBits;
    for (const std::string& type : declarations_.types) typeHasBits.push_back(TypeHasBits(type));
    TableWriter rows(to_, "signal", 12, RowNumbers::FromZero);
    for (std::uint32_t id = 0; id < declarations_.variables.size(); ++id) {
      // Reals have a width too, but no bits.
      const DumpVariable& variable = declarations_.variables[id];
      WriteSignal(id, typeHasBits[variable.typeId] ? variable.width : 0,
                  activity.IsWhollyRepeated(id), rows);
    }
    facts_["checksum_signal"] = rows.Finish();
  }

  /// Written are what the declarations need; derived are what views need to name bits.
  void WriteSignal(std::uint32_t id, std::uint32_t bits, bool isRepeated, TableWriter& rows) {
    const DumpVariable& variable = declarations_.variables[id];
    rows.Count(std::uint64_t{variable.scope});
    rows.Count(std::uint64_t{variable.codeId});
    rows.Text(declarations_.TypeOf(variable));
    rows.Count(std::uint64_t{variable.width});
    rows.Text(variable.name);
    rows.Count(std::uint64_t{variable.nameWord});
    const BitNames names(variable);
    // The name without its index or range; NULL where that is all of it.
    const bool isWhole = bits == 0 || names.Base().size() == variable.name.size();
    rows.DerivedText(isWhole ? std::nullopt : std::optional(names.Base()));
    // Names of bits are base[low + step * bit]: step is 1, -1, or 0 for a single bit.
    const std::optional<std::int64_t> low = bits > 0 ? names.IndexNumber(0) : std::nullopt;
    const std::optional<std::int64_t> next = bits > 1 && low ? names.IndexNumber(1) : low;
    rows.DerivedNumber(next ? low : std::nullopt);
    rows.DerivedNumber(next ? *next - *low : 0);
    rows.Count(variable.line);
    rows.DerivedNumber(bits);
    rows.DerivedNumber(isRepeated ? 1 : 0);
    rows.EndRow();
  }

  /// The bits of all codes, by number: code.first_bit leads here.
  void WriteBits() {
    TableWriter rows(to_, "bit", 6, RowNumbers::FromZero);
    for (std::size_t id = 0; id < run_.exact.bits.size(); ++id) {
      const BitFigures& bit = run_.exact.bits[id];
      for (const std::uint64_t count : {bit.t0, bit.t1, bit.tx, bit.tz, bit.tc, bit.ig}) {
        rows.Count(count);
      }
      rows.EndRow();
    }
    // Each table's sum is kept as a fact; FactReader::CheckSum compares it.
    facts_["checksum_bit"] = rows.Finish();
  }

  /// What was passed over in the dump, by kind; kinds without any have no row.
  void WriteTallies() {
    std::map<std::string, Tally> tallies;  // in the order in which they are read
    ForEachTally(run_.exact, [&](const char* name, const Tally& tally) { tallies[name] = tally; });
    TableWriter rows(to_, "tally", 4);
    for (const auto& [name, tally] : tallies) {
      if (!tally) continue;
      rows.Text(name);
      rows.Count(tally.count);
      rows.Count(tally.line);
      rows.Text(tally.example);
      rows.EndRow();
    }
    facts_["checksum_tally"] = rows.Finish();
  }

  /// What the hosts' reading said, in its order.
  void WriteHostRemarks() {
    TableWriter rows(to_, "host_remark", 1, RowNumbers::FromZero);
    for (const std::string& remark : run_.host.remarks) {
      rows.Text(remark);
      rows.EndRow();
    }
    facts_["checksum_host_remark"] = rows.Finish();
  }

  /// A fact that is a number or nothing.
  void Note(const std::string& name, const std::optional<std::uint64_t>& count) {
    facts_[name] = count ? FactOfCount(*count) : Fact();
  }

  /// All that is said once of the run. Names are part of the format.
  void GatherFacts() {
    const ActivityResult& exact = run_.exact;
    facts_["dump"] = run_.facts.dump;
    facts_["program"] = run_.facts.program;
    facts_["date"] = declarations_.date;
    facts_["simulator"] = declarations_.version;
    facts_["timescale"] = declarations_.timescale;
    Note("window_begin_fs", run_.facts.window.begin);
    Note("window_end_fs", run_.facts.window.end);
    // Numbers that are not known are facts without a value, so that every fact is always there.
    Note("runs", run_.facts.runs);
    Note("tick_fs", exact.tick);
    Note("first_tick", exact.firstTick);
    Note("last_tick", exact.lastTick);
    Note("observed_ticks", exact.observedTicks);
    Note("backward_stamps", exact.notes.backwardStamps);
    Note("dumping_pauses", exact.notes.pauses);
    Note("has_stamps", exact.notes.hasStamps ? 1 : 0);
    Note("end_cut_back", exact.notes.isEndCutBack ? 1 : 0);
    Note("declarations_ended", declarations_.ended || declarations_.hasWord ? 1 : 0);
    Note("has_host", run_.facts.hasHost ? 1 : 0);
    if (run_.facts.part) {
      Note("part_dump_bytes", run_.facts.dumpBytes);
      Note("part_dump_sample", run_.facts.dumpSample);
    }
    // Without figures of hosts there is nothing further to say.
    if (!run_.facts.hasHost) return;
    Note("host_first_tick", run_.host.firstStamp);
    Note("host_last_tick", run_.host.lastStamp);
    facts_["host_unknown"] = run_.host.whyUnknown;
  }

  /// Last, since it holds the sums of the other tables. Its own sum is the last row, over all
  /// others.
  void WriteFacts() {
    GatherFacts();
    TableWriter rows(to_, "run", 2);
    for (const auto& [name, fact] : facts_) {
      rows.Text(name);
      if (const auto* const count = std::get_if<std::uint64_t>(&fact)) rows.Count(*count);
      if (const auto* const text = std::get_if<std::string>(&fact)) rows.Text(*text);
      if (std::holds_alternative<std::monostate>(fact)) rows.DerivedNumber({});
      rows.EndRow();
    }
    const std::uint64_t sum = rows.sum();
    // The table's own sum goes into it, so it is not part of itself.
    rows.Text("checksum_run");
    rows.Count(sum);
    rows.EndRow();
    rows.Finish();
  }

  const StoredRun& run_;
  const Declarations& declarations_;
  Connection& to_;
  FactsByName facts_;
};

}  // namespace

/// What messages call it: where it goes is not known here.
void WriteDatabase(const StoredRun& run, ByteSink& out) {
  Connection connection = Connection::InMemory("the result");
  DatabaseWriter(run, connection).Write();
  out.Write(connection.Bytes());
}

}  // namespace orsa::kesncd
