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

std::span<const SchemaPart> SchemaViews() {
  return kViews;
}

}  // namespace orsa::kesncd
