// Databases that are cut, have bits flipped, or were made to do harm: a result that differs from
// what was written is never given, and nothing a file says is run.
#include <sqlite3.h>

#include <functional>
#include <random>

#include "activity/profile/profile_run.h"
#include "database/database_reader.h"
#include "database/database_writer.h"
#include "tests/support/testing.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"

namespace orsa::kesncd {
namespace {

/// Counts that SQLite has no integer for, names that are no UTF-8, notes, an alias and a real.
StoredRun OddRun() {
  ActivityOptions options;
  options.dump = "d.vcd";
  TextSource dump(
      Dump("SCALE~$date a \"day\" $end~TOP~CLK~$var wire 4 # d\xFF [3:0] $end~"
           "$var wire 4 # alias $end~$var real 64 % r $end~UP~END~"
           "#0~0!~b0101 #~#9~stray~1!~r1 %~#18446744073709551613~0!~bx #~#1~"));
  ProfileOptions windows;
  windows.counting = options;
  windows.counting.watch = [](const Declarations&) { return std::vector<std::uint32_t>{0}; };
  windows.parts = 3;
  windows.last = 18446744073709551613U;
  ProfiledRuns both = CountBothAndProfile(dump, windows);
  StoredRun run;
  run.facts.dump = "d.vcd";
  run.exact = std::move(both.runs.exact);
  run.host = std::move(both.runs.host);
  run.profile = std::move(both.profile);
  return run;
}

std::string Written(const StoredRun& run) {
  TextSink sink;
  WriteDatabase(run, sink);
  return sink.text;
}

/// What a file reads as, written again; the message where it cannot be read.
std::string ReadBack(const std::string& path, std::string* message = nullptr) {
  try {
    ActivityDatabase database(path, "f");
    (void)database.ReadHost();
    return Written(database.ReadAll());
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.kind(), FailureKind::Unusable);
    if (message != nullptr) *message = failure.what();
    return "";
  }
}

TEST(Database, HoldsWhatWasWritten) {
  const TempDir dir;
  const StoredRun run = OddRun();
  const std::string bytes = Written(run);
  ActivityDatabase database(dir.Write("a ?#%.kact", bytes), "f");
  const StoredRun read = database.ReadAll();
  EXPECT_EQ(read.exact.bits, run.exact.bits);
  EXPECT_EQ(read.exact.bits.front().tc, 2U);
  EXPECT_EQ(RemarksOn(read.exact), RemarksOn(run.exact));
  EXPECT_EQ(RemarksOn(read.exact).size(), 3U);
  EXPECT_EQ(read.host.changes, run.host.changes);
  EXPECT_EQ(read.host.remarks, run.host.remarks);
  EXPECT_EQ(read.host.spanTicks, run.host.spanTicks);
  EXPECT_EQ(read.exact.declarations.variables[1].name, "d\xFF[3:0]");
  EXPECT_EQ(read.profile->profile.toggles, run.profile->profile.toggles);
  EXPECT_EQ(read.profile->profile.toggles[0].size(), 3U);
  EXPECT_EQ(read.profile->clocks.front().span.last, run.profile->clocks.front().span.last);
  EXPECT_EQ(Written(read), bytes);
}

TEST(Database, NeverGivesOtherFiguresWhenItIsCorrupt) {
  const TempDir dir;
  const std::string bytes = Written(OddRun());
  std::mt19937 random(1);
  std::size_t refused = 0;
  for (int round = 0; round < 800; ++round) {
    std::string corrupt = bytes;
    // Most of a small file is free space: the pages' heads and ends are where it hurts.
    const std::size_t page = random() % (bytes.size() / 16384) * 16384;
    const std::size_t place = page + (round % 2 == 0 ? random() % 120 : 16383 - random() % 600);
    corrupt[place] = static_cast<char>(corrupt[place] ^ 1 << random() % 8);
    const std::string read = ReadBack(dir.Write("f", corrupt));
    refused += read.empty() ? 1 : 0;
    EXPECT_TRUE(read.empty() || read == bytes) << "byte " << place;
  }
  EXPECT_GT(refused, 100U);
  for (std::size_t size = 0; size < bytes.size(); size += 2048) {
    EXPECT_EQ(ReadBack(dir.Write("f", bytes.substr(0, size))), "") << size;
  }
}

TEST(Database, RunsNothingThatAFileSays) {
  const TempDir dir;
  const std::string bytes = Written(OddRun());
  const char* const kEndless =
      "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n) SELECT i";
  const std::pair<std::string, const char*> rows[] = {
      {"DROP TABLE bit; CREATE VIEW bit(id, t0, t1, tx, tz, tc, ig) AS " + std::string(kEndless) +
           ", 0, 0, 0, 0, 0, 0 FROM n",
       "f: is no database of this program's: its table bit is another"},
      {"DROP TABLE run; CREATE TABLE run(name TEXT PRIMARY KEY, value AS (zeroblob(1e9)))",
       "f: is no database of this program's: its table run is another"},
      {"PRAGMA user_version = 7", "f: is a database of version 7; this program reads version 1"},
      {"PRAGMA application_id = 7", "f: is an SQLite database, but none of activity"},
      {"UPDATE bit SET tc = tc + 1", "f: is a corrupt database: it does not hold what was written"},
      {"UPDATE signal SET scope = 9",
       "f: is a corrupt database: it does not hold what was written"},
      {"UPDATE signal SET width = -1",
       "f: is a corrupt database: it does not hold what was written"},
      {"UPDATE code SET bits = 4294967296",
       "f: is a corrupt database: it does not hold what was written"},
      {"UPDATE scope SET parent = id",
       "f: is a corrupt database: it does not hold what was written"},
      {"DROP TABLE time_window", "f: is a corrupt database: it does not hold what was written"},
      {"DROP TABLE clock", "f: is no database of this program's: its table clock is another"},
      {"UPDATE module_toggles SET toggles = '[1,2'",
       "f: is a corrupt database: it does not hold what was written"},
      {"UPDATE module_toggles SET own = '[1,2,3,4]' WHERE scope = 1",
       "f: is a corrupt database: it does not hold what was written"},
      {"UPDATE module_toggles SET scope = 99 WHERE scope = 1",
       "f: is a corrupt database: it does not hold what was written"},
      {"UPDATE time_window SET last_tick = first_tick",
       "f: is a corrupt database: it does not hold what was written"},
      {"DELETE FROM run WHERE name = 'tick_fs'",
       "f: is a corrupt database: it does not hold what was written"},
      {"CREATE TABLE mine(note); CREATE INDEX busy ON bit(tc); ANALYZE", nullptr},
  };
  for (const auto& [sql, expected] : rows) {
    const std::string path = dir.Write("f", bytes);
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &handle), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    sqlite3_close(handle);
    std::string message;
    const std::string read = ReadBack(path, &message);
    EXPECT_EQ(message, expected == nullptr ? "" : expected) << sql;
    if (expected == nullptr) {
      EXPECT_EQ(read, bytes);
    }
  }
}

}  // namespace
}  // namespace orsa::kesncd
