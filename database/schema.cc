// The statements that make a database. Columns without a type keep what they are given: counts that
// SQLite has no integer for are texts, names that are no UTF-8 are blobs.
#include "database/schema.h"

#include <array>

namespace orsa::kesncd {

namespace {

// In the order in which they are made. INTEGER PRIMARY KEY is the row's own number, WITHOUT ROWID
// keeps rows in the order of names.
constexpr std::array<SchemaPart, 7> kTables{{
    {"run", "CREATE TABLE run(name TEXT PRIMARY KEY, value) WITHOUT ROWID"},
    {"tally",
     "CREATE TABLE tally(name TEXT PRIMARY KEY, count, line, example)"
     " WITHOUT ROWID"},
    {"host_remark", "CREATE TABLE host_remark(id INTEGER PRIMARY KEY, text)"},
    {"scope",
     "CREATE TABLE scope(id INTEGER PRIMARY KEY, parent INTEGER, kind, name, path,"
     " place INTEGER, last INTEGER)"},
    {"code",
     "CREATE TABLE code(id INTEGER PRIMARY KEY, first_bit INTEGER, bits INTEGER,"
     " changes INTEGER)"},
    {"signal",
     "CREATE TABLE signal(id INTEGER PRIMARY KEY, scope INTEGER, code INTEGER, type,"
     " width INTEGER, name, range_at INTEGER, base, low INTEGER, step INTEGER,"
     " line INTEGER, bits INTEGER, repeated INTEGER)"},
    {"bit", "CREATE TABLE bit(id INTEGER PRIMARY KEY, t0, t1, tx, tz, tc, ig)"},
}};

constexpr std::array<SchemaPart, 2> kPartTables{{
    {"part_bit",
     "CREATE TABLE part_bit(piece INTEGER, bit INTEGER, t0, t1, tx, tz, tc, ig, edge INTEGER)"},
    {"part_code",
     "CREATE TABLE part_code(id INTEGER PRIMARY KEY, changes INTEGER, last INTEGER,"
     " first_value INTEGER, first_kind INTEGER)"},
}};

// Words are 64 bits of a code each, beginning with the lowest.
constexpr std::array<SchemaPart, 6> kPartProfileTables{{
    {"part_opening",
     "CREATE TABLE part_opening(tick, code INTEGER, word INTEGER, bits INTEGER, levels INTEGER)"},
    {"part_level",
     "CREATE TABLE part_level(code INTEGER, word INTEGER, bits INTEGER, levels INTEGER)"},
    {"part_toggles",
     "CREATE TABLE part_toggles(sum INTEGER PRIMARY KEY, window INTEGER, toggles TEXT)"},
    {"part_unobserved", "CREATE TABLE part_unobserved(window INTEGER, ticks)"},
    {"part_gap", "CREATE TABLE part_gap(first_tick, last_tick)"},
    {"part_clock",
     "CREATE TABLE part_clock(code INTEGER, level INTEGER, first_level INTEGER, first_time,"
     " toggles, first_tick, last_tick)"},
}};

// Lists of toggles are JSON: a number for each window.
constexpr std::array<SchemaPart, 4> kProfileTables{{
    {"time_window",
     "CREATE TABLE time_window(id INTEGER PRIMARY KEY, first_tick, last_tick, observed)"},
    {"module_toggles",
     "CREATE TABLE module_toggles(scope INTEGER PRIMARY KEY, toggles TEXT, own TEXT)"},
    {"dumping_gap", "CREATE TABLE dumping_gap(first_tick, last_tick)"},
    {"clock", "CREATE TABLE clock(code INTEGER, toggles, first_tick, last_tick)"},
}};

constexpr std::array<SchemaPart, 1> kProfileViews{{
    {"window_activity", R"(CREATE VIEW window_activity AS
SELECT scope.id AS scope, scope.path AS path, time_window.id AS window, first_tick, last_tick, observed,
  list.value AS toggles
FROM module_toggles JOIN scope ON scope.id = module_toggles.scope
  JOIN json_each(module_toggles.toggles) AS list JOIN time_window ON time_window.id = list.key)"},
}};

// Rates of a microsecond and of a bit: divided by ticks times bits, which are nothing or none of
// them where no time was observed. Views cost nothing until they are asked; the program itself uses
// none of them. bit_activity has a row a bit ("tb/q[3]"), signal_activity a row a variable,
// module_activity a row a scope with all below.
constexpr std::array<SchemaPart, 3> kViews{{
    {"bit_activity", R"(CREATE VIEW bit_activity AS
SELECT scope.id AS scope, iif(scope.path = '', '', scope.path || '/') || coalesce(base, signal.name) ||
    iif(low IS NULL, '', '[' || (low + step * (bit.id - first_bit)) || ']') AS path,
  t0, t1, tx, tz, tc, ig,
  tc * 1e9 / (t0 + t1 + tx + tz) / (SELECT value FROM run WHERE name = 'tick_fs') AS toggle_rate,
  t1 * 1.0 / (t0 + t1 + tx + tz) AS high
FROM signal JOIN scope ON scope.id = signal.scope JOIN code ON code.id = signal.code
  JOIN bit ON bit.id >= first_bit AND bit.id < first_bit + signal.bits
WHERE NOT repeated)"},
    {"signal_activity", R"(CREATE VIEW signal_activity AS
SELECT signal.id AS id, scope.id AS scope,
  iif(scope.path = '', '', scope.path || '/') || signal.name AS path, signal.name AS name,
  signal.bits AS bits, sum(tc) AS toggles, sum(ig) AS ig, sum(t0) AS t0, sum(t1) AS t1, sum(tx) AS tx, sum(tz) AS tz,
  sum(tc) * 1e9 / sum(t0 + t1 + tx + tz) / (SELECT value FROM run WHERE name = 'tick_fs')
    AS toggle_rate,
  sum(t1) * 1.0 / sum(t0 + t1 + tx + tz) AS high, changes
FROM signal JOIN scope ON scope.id = signal.scope JOIN code ON code.id = signal.code
  JOIN bit ON bit.id >= first_bit AND bit.id < first_bit + signal.bits
WHERE NOT repeated GROUP BY signal.id)"},
    {"module_activity", R"(CREATE VIEW module_activity AS
SELECT module.id AS id, path, count(*) AS bits, sum(tc) AS toggles, sum(ig) AS ig, sum(t0) AS t0,
  sum(t1) AS t1, sum(tx) AS tx, sum(tz) AS tz,
  sum(tc) * 1e9 / sum(t0 + t1 + tx + tz) / (SELECT value FROM run WHERE name = 'tick_fs')
    AS toggle_rate,
  sum(t1) * 1.0 / sum(t0 + t1 + tx + tz) AS high
FROM (SELECT outer.id AS id, outer.path AS path, signal.code AS code, max(signal.bits) AS seen
    FROM scope AS outer JOIN scope AS inner ON inner.place BETWEEN outer.place AND outer.last
      JOIN signal ON signal.scope = inner.id
    WHERE signal.bits > 0 AND outer.id > 0 GROUP BY outer.id, signal.code) AS module
  JOIN code ON code.id = module.code
  JOIN bit ON bit.id >= first_bit AND bit.id < first_bit + seen
GROUP BY module.id)"},
}};

}  // namespace

/// The lists are constants of the program: they may be kept and shared.
std::span<const SchemaPart> SchemaTables() {
  return kTables;
}

std::span<const SchemaPart> SchemaPartTables() {
  return kPartTables;
}

std::span<const SchemaPart> SchemaPartProfileTables() {
  return kPartProfileTables;
}

std::span<const SchemaPart> SchemaProfileTables() {
  return kProfileTables;
}

std::span<const SchemaPart> SchemaViews() {
  return kViews;
}

std::span<const SchemaPart> SchemaProfileViews() {
  return kProfileViews;
}

}  // namespace orsa::kesncd
