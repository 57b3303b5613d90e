// From tables back to figures. Every number that leads to another row is checked before it is
// followed, and the sum of each table that is read has to be the one that was written.
#include "database/database_reader.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <utility>

#include "activity/activity_rows.h"
#include "activity/activity_run.h"
#include "activity/activity_tallies.h"
#include "database/part_profile_tables.h"
#include "database/part_tables.h"
#include "database/profile_tables.h"
#include "database/schema.h"
#include "database/table_reader.h"
#include "vcd/bit_names.h"
#include "vcd/time_text.h"

namespace orsa::kesncd {

namespace {

/// 0 where it cannot be had: then no text may be read at all.
std::uint64_t SizeOf(const std::string& path) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  return error ? 0 : size;
}

}  // namespace

/// 16 bytes with the NUL at the end.
bool IsSqlite(std::string_view firstBytes) {
  using namespace std::string_view_literals;
  return firstBytes.starts_with("SQLite format 3\0"sv);
}

ActivityDatabase::ActivityDatabase(const std::string& path, const std::string& name)
    : name_(name), connection_(Connection::ReadOnly(path, name)), budget_(SizeOf(path)) {
  CheckKind();
  CheckTables();
  ReadFacts();
}

/// No sum protects these: they come from the file's header.
std::int64_t ActivityDatabase::Number(const char* sql) {
  TableReader rows(connection_, sql, budget_);
  if (!rows.Next()) connection_.FailCorrupt();
  return static_cast<std::int64_t>(rows.Count());
}

/// Any program's database may be given by mistake.
void ActivityDatabase::CheckKind() {
  if (Number("SELECT application_id FROM pragma_application_id") != kApplicationId) {
    throw Failure(FailureKind::Unusable, name_ + ": is an SQLite database, but none of activity");
  }
  // An older or a newer program's: its figures cannot be trusted to mean the same.
  const std::int64_t version = Number("SELECT user_version FROM pragma_user_version");
  if (version == kSchemaVersion) return;
  throw Failure(FailureKind::Unusable,
                name_ + ": is a database of version " + std::to_string(version) +
                    "; this program reads version " + std::to_string(kSchemaVersion));
}

/// What is called like a table but is a view, or computes its columns, would run what a stranger
/// wrote.
void ActivityDatabase::CheckTables() {
  FactsByName found;
  // Indices are SQLite's own and not used for reading.
  TableReader rows(connection_, "SELECT name, type, sql FROM sqlite_schema WHERE type <> 'index'",
                   budget_);
  while (rows.Next()) {
    std::string name = rows.Text();
    const std::string type = rows.Text();
    // Letter by letter: a column more, or computed, is another table.
    const Fact sql = rows.Value();
    if (type == "table") found[std::move(name)] = sql;
  }
  const auto check = [&](const SchemaPart& table) {
    const auto place = found.find(std::string(table.name));
    if (place != found.end() && place->second == Fact(std::string(table.sql))) return;
    throw Failure(FailureKind::Unusable, name_ + ": is no database of this program's: its table " +
                                             std::string(table.name) + " is another");
  };
  for (const SchemaPart& table : SchemaTables()) check(table);
  // Whether the file has such tables, all of which have to be right then.
  const auto has = [&](std::span<const SchemaPart> tables) {
    if (!found.contains(std::string(tables.front().name))) return false;
    std::for_each(tables.begin(), tables.end(), check);
    return true;
  };
  if (has(SchemaPartTables())) facts_.part.emplace();
  if (has(SchemaPartProfileTables())) facts_.partWindows.emplace();
  facts_.hasProfile = has(SchemaProfileTables());
}

void ActivityDatabase::ReadFacts() {
  // Its own sum is left out of the sum.
  TableReader rows(connection_,
                   "SELECT name, value FROM run WHERE name <> 'checksum_run' ORDER BY name",
                   budget_);
  while (rows.Next()) {
    std::string name = rows.Text();
    byName_[std::move(name)] = rows.Value();
  }
  TableReader sum(connection_, "SELECT value FROM run WHERE name = 'checksum_run'", budget_);
  // A row that is missing, or whose sum is another.
  if (!sum.Next() || sum.Count() != rows.sum()) connection_.FailCorrupt();
  facts_.dump = named_.TextOf("dump");
  facts_.program = named_.TextOf("program");
  facts_.window = {named_.OptionalCountOf("window_begin_fs"),
                   named_.OptionalCountOf("window_end_fs")};
  facts_.runs = named_.CountOf("runs");
  facts_.hasHost = named_.CountOf("has_host", 1) == 1;
  if (named_.Has("profile_parts") != facts_.hasProfile) connection_.FailCorrupt();
  // Older parts have none; but facts and tables go together.
  if (named_.Has("part_profile_parts") != facts_.partWindows.has_value()) {
    connection_.FailCorrupt();
  }
  if (facts_.partWindows) facts_.partWindows = PartWindowsOf(named_);
  if (!facts_.part) return;
  const auto small = [this](const char* name) {
    return static_cast<std::uint32_t>(named_.CountOf(name, UINT32_MAX));
  };
  facts_.part = {small("part_first"), small("part_last"), small("part_count")};
  facts_.dumpBytes = named_.CountOf("part_dump_bytes");
  facts_.dumpSample = named_.CountOf("part_dump_sample");
}

void ActivityDatabase::RefusePart() const {
  if (!facts_.part) return;
  throw Failure(FailureKind::Unusable, name_ + ": holds part " +
                                           std::to_string(facts_.part->first + 1) + " of " +
                                           std::to_string(facts_.part->parts) +
                                           " of a dump; kesncd merge adds all parts up");
}

/// The sums of their tables stand for the declarations; what a dump says of itself must agree too.
std::uint64_t ActivityDatabase::DeclarationsSum() const {
  RowSum sum;
  for (const char* const table : {"scope", "code", "signal"}) {
    sum.Add(named_.CountOf(std::string("checksum_") + table));
  }
  // Two runs of one design differ in their dates, even if they declare the same.
  sum.Add(named_.TextOf("date"));
  sum.Add(named_.TextOf("timescale"));
  return sum.value();
}

/// firstBit[i] and firstBit[i+1] are the ends of code i's bits, as in ActivityResult.
void ActivityDatabase::ReadCodes(std::vector<std::uint64_t>& firstBit,
                                 std::vector<std::uint32_t>& changes) {
  firstBit.assign(1, 0);
  TableReader rows(connection_,
                   "SELECT id, first_bit, bits, changes FROM code NOT INDEXED ORDER BY id",
                   budget_);
  while (rows.Next()) {
    // Rows are numbered from 0 on: one entry more than codes, hence the 1.
    rows.Place(firstBit.size() - 1);
    // Each code begins where the one before it ends.
    if (rows.Count() != firstBit.back()) connection_.FailCorrupt();
    firstBit.push_back(firstBit.back() + rows.Count(INT32_MAX));
    const std::optional<std::uint64_t> changed = rows.OptionalCount();
    // Counts of hosts for all codes or for none.
    if (changed.has_value() != facts_.hasHost || changed.value_or(0) > kMostChanges) {
      connection_.FailCorrupt();
    }
    if (changed) changes.push_back(static_cast<std::uint32_t>(*changed));
  }
  named_.CheckSum(rows, "code");
}

/// Scopes are written with parents before children, which keeps a circle from being possible.
void ActivityDatabase::ReadScopes(Declarations& declarations) {
  TableReader rows(connection_, "SELECT id, parent, kind, name FROM scope NOT INDEXED ORDER BY id",
                   budget_);
  std::vector<DumpScope>& scopes = declarations.scopes;
  while (rows.Next()) {
    const auto id = static_cast<std::uint32_t>(scopes.size());
    rows.Place(id);
    scopes.emplace_back();
    // The parent is an earlier one; of scope 0 itself.
    scopes[id].parent = rows.Small(id == 0 ? 0 : id - 1);
    scopes[id].kind = rows.Text();
    scopes[id].name = rows.Text();
    // The whole dump has no name.
    if (id == Declarations::kDump) continue;
    if (scopes[id].name.empty()) connection_.FailCorrupt();
    // In the order of the file, which is the dump's.
    scopes[scopes[id].parent].scopes.push_back(id);
  }
  named_.CheckSum(rows, "scope");
  // At least the whole dump.
  if (scopes.empty()) connection_.FailCorrupt();
}

/// Variables with their scopes and codes; types are numbered as they are met.
void ActivityDatabase::ReadSignals(const std::vector<std::uint64_t>& firstBit,
                                   Declarations& declarations) {
  TableReader rows(connection_,
                   "SELECT id, scope, code, type, width, name, range_at, line FROM signal NOT"
                   " INDEXED ORDER BY id",
                   budget_);
  std::unordered_map<std::string, std::uint32_t> types;
  std::vector<DumpScope>& scopes = declarations.scopes;
  while (rows.Next()) {
    const auto id = static_cast<std::uint32_t>(declarations.variables.size());
    rows.Place(id);
    DumpVariable variable;
    // Each is checked to be a number of something that is there.
    variable.scope = rows.Small(static_cast<std::uint32_t>(scopes.size() - 1));
    variable.codeId = rows.Small();
    if (std::uint64_t{variable.codeId} + 1 >= firstBit.size()) connection_.FailCorrupt();
    const auto [type, isNew] =
        types.try_emplace(rows.Text(), static_cast<std::uint32_t>(declarations.types.size()));
    // Types are texts in the file, as SQL wants them, and numbers here.
    if (isNew) declarations.types.push_back(type->first);
    variable.typeId = type->second;
    variable.width = rows.Small(INT32_MAX);
    // A variable may see fewer bits than its code has, never more.
    const std::uint64_t bits = firstBit[variable.codeId + 1] - firstBit[variable.codeId];
    if (variable.width > bits && TypeHasBits(type->first)) connection_.FailCorrupt();
    variable.name = rows.Text();
    // Names are never empty, also in a dump with empty ones: see Declarations.
    if (variable.name.empty() || variable.name.size() > UINT32_MAX) connection_.FailCorrupt();
    variable.nameWord = rows.Small(static_cast<std::uint32_t>(variable.name.size()));
    variable.line = rows.Count();
    scopes[variable.scope].variables.push_back(id);
    declarations.variables.push_back(std::move(variable));
  }
  named_.CheckSum(rows, "signal");
  // A database without variables is none that this program writes.
  if (declarations.variables.empty()) connection_.FailCorrupt();
  // From the leaves up: whether anything is declared in a scope or below.
  for (std::size_t scope = scopes.size(); scope-- > 0;) {
    scopes[scope].populated = scopes[scope].populated || !scopes[scope].variables.empty();
    if (scopes[scope].populated) scopes[scopes[scope].parent].populated = true;
  }
  declarations.date = named_.TextOf("date");
  declarations.version = named_.TextOf("simulator");
  declarations.timescale = named_.TextOf("timescale");
  declarations.tick = named_.OptionalCountOf("tick_fs");
  declarations.ended = named_.CountOf("declarations_ended", 1) == 1;
  // Codes are only counted from here on.
  declarations.codes.AddUnnamed(static_cast<std::uint32_t>(firstBit.size() - 1));
}

void ActivityDatabase::ReadTallies(ActivityResult& result) {
  std::map<std::string, Tally> tallies;
  TableReader rows(connection_, "SELECT name, count, line, example FROM tally ORDER BY name",
                   budget_);
  while (rows.Next()) {
    Tally& tally = tallies[rows.Text()];
    tally.count = rows.Count();
    tally.line = rows.Count();
    tally.example = rows.Text();
  }
  named_.CheckSum(rows, "tally");
  ForEachTally(result, [&](const char* name, Tally& tally) {
    // A name that this program does not know is never asked for.
    const auto place = tallies.find(name);
    if (place != tallies.end()) tally = std::move(place->second);
  });
}

/// The bits' figures, which are most of the file. `observedTicks` and firstBit must be there.
void ActivityDatabase::ReadBits(ActivityResult& result) {
  TableReader rows(connection_,
                   "SELECT id, t0, t1, tx, tz, tc, ig FROM bit NOT INDEXED ORDER BY id", budget_);
  while (rows.Next()) {
    rows.Place(result.bits.size());
    BitFigures bit;
    for (std::uint64_t* count : {&bit.t0, &bit.t1, &bit.tx, &bit.tz, &bit.tc, &bit.ig}) {
      *count = rows.Count();
    }
    // In a database of one run all bits were observed for all of the time; merged runs may lack
    // some.
    const WideCount known = WideCount{bit.t0} + bit.t1 + bit.tx + bit.tz;
    if (known > result.observedTicks || (known < result.observedTicks && facts_.runs == 1)) {
      connection_.FailCorrupt();
    }
    result.bits.push_back(bit);
  }
  named_.CheckSum(rows, "bit");
  // As many as the codes say.
  if (result.bits.size() != result.firstBit.back()) connection_.FailCorrupt();
}

/// Remarks in the order in which they were made.
void ActivityDatabase::ReadHostRemarks(HostRun& run) {
  TableReader rows(connection_, "SELECT id, text FROM host_remark NOT INDEXED ORDER BY id",
                   budget_);
  while (rows.Next()) {
    rows.Place(run.remarks.size());
    run.remarks.push_back(rows.Text());
  }
  named_.CheckSum(rows, "host_remark");
}

/// The hosts' span and why their frequencies may be unknown.
void ActivityDatabase::SetHost(HostRun& run) {
  run.SetSpan(named_.CountOf("host_first_tick"), named_.CountOf("host_last_tick"));
  if (const std::optional<std::uint64_t> tick = named_.OptionalCountOf("tick_fs")) {
    run.nsPerTick = Nanoseconds(*tick);
  }
  run.whyUnknown = named_.TextOf("host_unknown");
  ReadHostRemarks(run);
}

/// Everything but declarations and codes, which were read before.
void ActivityDatabase::SetExact(ActivityResult& result) {
  result.tick = result.declarations.tick;
  result.firstTick = named_.CountOf("first_tick");
  result.lastTick = named_.CountOf("last_tick");
  result.observedTicks = named_.CountOf("observed_ticks");
  result.notes.backwardStamps = named_.CountOf("backward_stamps");
  result.notes.pauses = named_.CountOf("dumping_pauses");
  result.notes.hasStamps = named_.CountOf("has_stamps", 1) == 1;
  result.notes.isEndCutBack = named_.CountOf("end_cut_back", 1) == 1;
  // Impossible for what was counted.
  if (result.firstTick > result.lastTick || result.tick == 0) connection_.FailCorrupt();
  ReadTallies(result);
  ReadBits(result);
}

/// Reads no bits, which are most of the file.
HostRun ActivityDatabase::ReadHost() {
  RefusePart();
  if (!facts_.hasHost) {
    throw Failure(FailureKind::Unusable,
                  name_ + ": has no figures of hosts: it was merged from several runs");
  }
  HostRun run;
  std::vector<std::uint64_t> firstBit;
  ReadCodes(firstBit, run.changes);
  ReadScopes(run.declarations);
  ReadSignals(firstBit, run.declarations);
  SetHost(run);
  return run;
}

/// Codes and bits have to fit together in a file that a stranger made.
void ActivityDatabase::ReadPartDeclarations(StoredRun& run) {
  ReadCodes(run.exact.firstBit, run.host.changes);
  // Before memory is asked for.
  if (run.exact.firstBit.back() > MostBitsInMemory()) {
    throw Failure(FailureKind::Unusable, name_ + ": has more bits than the memory holds");
  }
  ReadScopes(run.exact.declarations);
  ReadSignals(run.exact.firstBit, run.exact.declarations);
}

StoredRun ActivityDatabase::ReadPart(const CodeBits* known) {
  if (!facts_.part) {
    throw Failure(FailureKind::Unusable, name_ + ": holds a whole run, not a part of a dump");
  }
  StoredRun run;
  run.facts = facts_;
  std::optional<CodeBits> own;
  if (known == nullptr) {
    ReadPartDeclarations(run);
    known = &own.emplace(run.exact.declarations);
    if (own->all() != run.exact.firstBit) connection_.FailCorrupt();
  }
  ReadTallies(run.exact);
  run.part = ReadPartTables(connection_, *known, named_, budget_);
  if (facts_.partWindows) run.part.profile = ReadPartProfile(connection_, named_, budget_);
  run.part.items = std::move(run.exact.notes.items);
  return run;
}

StoredRun ActivityDatabase::ReadAll() {
  RefusePart();
  StoredRun run;
  run.facts = facts_;
  ReadCodes(run.exact.firstBit, run.host.changes);
  ReadScopes(run.exact.declarations);
  ReadSignals(run.exact.firstBit, run.exact.declarations);
  SetExact(run.exact);
  if (facts_.hasHost) SetHost(run.host);
  if (facts_.hasProfile) {
    run.profile = ReadProfileTables(connection_, run.exact.declarations, named_, budget_);
  }
  return run;
}

}  // namespace orsa::kesncd
