// Activity databases of random dumps: all that was written is read back, whoever asks in SQL gets
// the figures of the rows, and a file whose maker knows the sums of tables can harm nobody.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <iomanip>
#include <random>
#include <sstream>

#include "activity/activity_rows.h"
#include "activity/both_runs.h"
#include "activity/profile/profile_sum.h"
#include "database/database_reader.h"
#include "database/database_writer.h"
#include "database/facts.h"
#include "database/row_sum.h"
#include "tests/support/small_dumps.h"
#include "tests/support/testing.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd {
namespace {

StoredRun RunOf(const std::string& text, std::mt19937& random) {
  TextSource dump(text);
  BothRuns both = CountBoth(dump, {});
  StoredRun run;
  run.facts.dump = "a\n\"dump\".vcd";
  run.facts.program = "1.2";
  if (random() % 2 == 0) run.facts.window = {random() % 100, {}};
  run.exact = std::move(both.exact);
  run.host = std::move(both.host);
  return run;
}

std::string RandomText(std::mt19937& random) {
  const std::string scales[] = {"1ns", "10ps", "-"};
  return SmallDump(RandomRun(random, scales[random() % 3]));
}

std::string Written(const StoredRun& run) {
  TextSink sink;
  WriteDatabase(run, sink);
  return sink.text;
}

TEST(StoredRuns, ReadBackAsTheyWereWritten) {
  const TempDir dir;
  std::mt19937 random(1);
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    const StoredRun run = RunOf(RandomText(random), random);
    const std::string bytes = Written(run);
    ActivityDatabase database(dir.Write("f", bytes), "f");
    const StoredRun read = database.ReadAll();
    EXPECT_EQ(FiguresText(read.exact), FiguresText(run.exact));
    EXPECT_EQ(read.exact.bits, run.exact.bits);
    EXPECT_EQ(read.exact.tick, run.exact.tick);
    EXPECT_EQ(read.exact.observedTicks, run.exact.observedTicks);
    EXPECT_EQ(read.exact.lastTick, run.exact.lastTick);
    EXPECT_EQ(read.exact.declarations.timescale, run.exact.declarations.timescale);
    EXPECT_EQ(read.facts.dump, run.facts.dump);
    EXPECT_EQ(read.facts.program, "1.2");
    EXPECT_EQ(read.facts.window.begin, run.facts.window.begin);
    EXPECT_EQ(read.facts.window.end, run.facts.window.end);
    EXPECT_EQ(read.host.changes, run.host.changes);
    EXPECT_EQ(read.host.spanTicks, run.host.spanTicks);
    EXPECT_EQ(read.host.nsPerTick, run.host.nsPerTick);
    EXPECT_EQ(read.host.whyUnknown, run.host.whyUnknown);
    EXPECT_EQ(database.ReadHost().changes, run.host.changes);
    EXPECT_EQ(Written(read), bytes);
  }
}

/// A database as SQL sees it.
class Sql {
 public:
  explicit Sql(const std::string& path) {
    EXPECT_EQ(sqlite3_open(path.c_str(), &handle_), SQLITE_OK);
  }
  ~Sql() { sqlite3_close(handle_); }
  Sql(const Sql&) = delete;
  Sql& operator=(const Sql&) = delete;

  void Run(const std::string& sql) {
    EXPECT_EQ(sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sql << ": " << sqlite3_errmsg(handle_);
  }
  /// Calls `visit(statement)` for each row.
  template <class Visit>
  void ForEachRow(const std::string& select, Visit visit) {
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(handle_, select.c_str(), -1, &statement, nullptr), SQLITE_OK)
        << select << ": " << sqlite3_errmsg(handle_);
    while (sqlite3_step(statement) == SQLITE_ROW) visit(statement);
    sqlite3_finalize(statement);
  }
  /// Rows as lines of values, numbers to twelve digits.
  std::string Rows(const std::string& select) {
    std::ostringstream text;
    text << std::setprecision(12);
    ForEachRow(select, [&](sqlite3_stmt* row) {
      for (int i = 0; i < sqlite3_column_count(row); ++i) {
        text << (i > 0 ? " " : "");
        if (sqlite3_column_type(row, i) == SQLITE_FLOAT) {
          text << sqlite3_column_double(row, i);
        } else if (sqlite3_column_type(row, i) == SQLITE_NULL) {
          text << "-";
        } else {
          text << reinterpret_cast<const char*>(sqlite3_column_text(row, i));
        }
      }
      text << "\n";
    });
    return text.str();
  }

 private:
  sqlite3* handle_ = nullptr;
};

class RowText {
 public:
  RowText() { text_ << std::setprecision(12); }
  RowText& Add(const std::string& name, const ActivitySums& sums, const ActivityResult& result) {
    text_ << name << ' ' << sums.bits;
    for (const WideCount count : {sums.tc, sums.ig, sums.t0, sums.t1, sums.tx, sums.tz})
      text_ << ' ' << static_cast<std::uint64_t>(count);
    const ActivityRates rates = RatesOf(sums, result);
    for (const std::optional<double>& rate : {rates.toggleRate, rates.high}) {
      text_ << ' ';
      rate ? text_ << *rate : text_ << "-";
    }
    text_ << "\n";
    return *this;
  }
  std::string str() const { return text_.str(); }

 private:
  std::ostringstream text_;
};

constexpr const char* kFigures = ", bits, toggles, ig, t0, t1, tx, tz, toggle_rate, high FROM ";

// One code with three names of two widths, in two modules.
constexpr const char* kWidths =
    "$timescale 1 ns $end $scope module tb $end $var wire 4 ! low $end $scope module u $end\n"
    "$var wire 4 ! low $end $var wire 8 ! all $end $upscope $end $upscope $end\n"
    "$enddefinitions $end #0 b00000000 ! #5 b11110101 ! #9 b00000001 ! #12\n";

TEST(StoredRuns, AnswerInSqlWhatTheRowsSay) {
  const TempDir dir;
  std::mt19937 random(2);
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    const StoredRun run = RunOf(round == 0 ? kWidths : RandomText(random), random);
    const Declarations& declarations = run.exact.declarations;
    const ActivityRows rows(run.exact);
    Sql sql(dir.Write("f", Written(run)));
    RowText modules;
    const std::vector<ActivitySums> sums = rows.ModuleSums();
    for (std::uint32_t id = 1; id < sums.size(); ++id)
      if (sums[id].bits > 0) modules.Add(declarations.PathOf(id), sums[id], run.exact);
    EXPECT_EQ(sql.Rows(std::string("SELECT path") + kFigures + "module_activity ORDER BY id"),
              modules.str());
    RowText signals;
    RowText bits;
    rows.ForEachSignal(Declarations::kDump, [&](const SignalRow& row) {
      if (row.IsWhollyRepeated()) return;
      ActivitySums all;
      all.Add(row.figures);
      signals.Add(declarations.PathOf(row.variable), all, run.exact);
      for (std::uint32_t bit = 0; bit < row.names.width(); ++bit) {
        std::string path = declarations.PathOf(row.variable.scope);
        if (!path.empty()) path += '/';
        row.names.AppendName(bit, path);
        ActivitySums one;
        one.Add(row.figures.subspan(bit, 1));
        bits.Add(path, one, run.exact);
      }
    });
    EXPECT_EQ(sql.Rows(std::string("SELECT path") + kFigures + "signal_activity ORDER BY id"),
              signals.str());
    std::vector<std::string> expected = Cut(bits.str(), "\n");
    std::vector<std::string> found =
        Cut(sql.Rows("SELECT path, 1, tc, ig, t0, t1, tx, tz, toggle_rate, high FROM bit_activity"),
            "\n");
    std::sort(expected.begin(), expected.end());
    std::sort(found.begin(), found.end());  // the view's order is nobody's promise
    EXPECT_EQ(found, expected);
  }
}

/// What of a table takes part in its sum: a letter for each column, c for a count, o for one that
/// may be missing, t for a text, v for either, s for a signed number.
struct SummedTable {
  std::string name, select, kinds;
};
const SummedTable kSummed[] = {
    {"scope", "SELECT parent, kind, name FROM scope ORDER BY id", "ctt"},
    {"code", "SELECT first_bit, bits, changes FROM code ORDER BY id", "cco"},
    {"signal", "SELECT scope, code, type, width, name, range_at, line FROM signal ORDER BY id",
     "cctctcc"},
    {"bit", "SELECT t0, t1, tx, tz, tc, ig FROM bit ORDER BY id", "cccccc"},
    {"tally", "SELECT name, count, line, example FROM tally ORDER BY name", "tcct"},
    {"host_remark", "SELECT text FROM host_remark ORDER BY id", "t"},
    {"part_bit", "SELECT piece, bit, t0, t1, tx, tz, tc, ig, edge FROM part_bit ORDER BY rowid",
     "ccssssssc"},
    {"part_code", "SELECT id, changes, last, first_value, first_kind FROM part_code ORDER BY id",
     "ccccc"},
    {"part_opening", "SELECT tick, code, word, bits, levels FROM part_opening ORDER BY rowid",
     "cccss"},
    {"part_level", "SELECT code, word, bits, levels FROM part_level ORDER BY rowid", "ccss"},
    {"part_toggles", "SELECT sum, window, toggles FROM part_toggles ORDER BY sum", "cct"},
    {"part_unobserved", "SELECT window, ticks FROM part_unobserved ORDER BY rowid", "cc"},
    {"part_gap", "SELECT first_tick, last_tick FROM part_gap ORDER BY rowid", "cc"},
    {"part_clock",
     "SELECT code, level, first_level, first_time, toggles, first_tick, last_tick FROM part_clock"
     " ORDER BY rowid",
     "ccccccc"},
    {"run", "SELECT name, value FROM run WHERE name <> 'checksum_run' ORDER BY name", "tv"},
};

/// The sum that a table's rows have now.
std::uint64_t SumOf(Sql& sql, const SummedTable& table) {
  RowSum sum;
  sql.ForEachRow(table.select, [&](sqlite3_stmt* row) {
    for (int i = 0; i < sqlite3_column_count(row); ++i) {
      const char kind = table.kinds[static_cast<std::size_t>(i)];
      const int type = sqlite3_column_type(row, i);
      if (kind == 'o') sum.Add(std::uint64_t{type == SQLITE_NULL ? 0U : 1U});
      if (type == SQLITE_NULL) continue;
      const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(row, i));
      const std::string_view text(bytes == nullptr ? "" : bytes,
                                  static_cast<std::size_t>(sqlite3_column_bytes(row, i)));
      if (type == SQLITE_INTEGER) {
        sum.Add(static_cast<std::uint64_t>(sqlite3_column_int64(row, i)));
      } else if (kind == 'c' || kind == 'o') {
        sum.Add(LongCount(text).value_or(0));
      } else {
        sum.Add(text);
      }
    }
  });
  return sum.value();
}

/// Changes a file as somebody would who knows how it is made: the sums fit afterwards.
void Forge(const std::string& path, const std::string& change) {
  Sql sql(path);
  sql.Run(change);
  for (const SummedTable& table : kSummed) {
    if (sql.Rows("SELECT 1 FROM sqlite_schema WHERE name = '" + table.name + "'").empty()) continue;
    sql.Run("UPDATE run SET value = " + std::to_string(SumOf(sql, table)) +
            " WHERE name = 'checksum_" + table.name + "'");
  }
}

/// What reading a file gives: its text, or why not.
template <class Read>
std::string OutcomeOf(const std::string& path, Read read) {
  try {
    ActivityDatabase database(path, "f");
    return read(database);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.kind(), FailureKind::Unusable);
    return failure.what();
  }
}

const char kCorrupt[] = "f: is a corrupt database: it does not hold what was written";
const char kDesign[] =
    "1ns a{ reg:2:!:d[1:0] real:64:r:r b{ wire:2:!:e[1:0] reg:1:q:q } } ; "
    "#0 b01 ! 0q #5 b11 ! r1 r #9 1q stray #20";

TEST(StoredRuns, OfAForgerDoNoHarm) {
  const TempDir dir;
  std::mt19937 random(3);
  const std::string bytes = Written(RunOf(SmallDump(kDesign), random));
  const auto figures = [](ActivityDatabase& database) {
    (void)database.ReadHost();
    return FiguresText(database.ReadAll().exact);
  };
  const std::string as =
      "a/d[1] 5 15 0 0 1 0, a/d[0] 0 20 0 0 0 0, a/b/e[1] 5 15 0 0 1 0, "
      "a/b/e[0] 0 20 0 0 0 0, a/b/q 9 11 0 0 1 0";
  const std::pair<std::string, std::string> rows[] = {
      {"SELECT 1", as},
      {"UPDATE bit SET tc = 7 WHERE id = 2",
       as.substr(0, as.size() - 3) + "7 0"},  // the sums are no secret, so this is his own file
      {"UPDATE bit SET tc = '9223372036854775808' WHERE id = 2",
       as.substr(0, as.size() - 3) + "9223372036854775808 0"},
      {"UPDATE bit SET tc = '12'", kCorrupt},
      {"UPDATE bit SET tc = '99999999999999999999'", kCorrupt},
      {"UPDATE bit SET tc = -1", kCorrupt},
      {"UPDATE bit SET tc = 1.5", kCorrupt},
      {"UPDATE bit SET tc = NULL", kCorrupt},
      {"UPDATE bit SET tc = x'31'", kCorrupt},
      {"UPDATE bit SET t0 = t0 + 1", kCorrupt},
      {"UPDATE bit SET t1 = t1 - 1 WHERE t1 > 0", kCorrupt},
      {"DELETE FROM bit WHERE id = 2", kCorrupt},
      {"DELETE FROM bit WHERE id = 1", kCorrupt},
      {"INSERT INTO bit VALUES(3, 20, 0, 0, 0, 0, 0)", kCorrupt},
      {"UPDATE bit SET id = id + 5", kCorrupt},
      {"UPDATE code SET bits = bits + 1", kCorrupt},
      {"UPDATE code SET bits = 4294967296", kCorrupt},
      {"UPDATE code SET first_bit = 1", kCorrupt},
      {"UPDATE code SET changes = 2147483648", kCorrupt},
      {"UPDATE code SET changes = NULL", kCorrupt},
      {"UPDATE code SET id = id + 9", kCorrupt},
      {"DELETE FROM code", kCorrupt},
      {"UPDATE scope SET parent = 2 WHERE id = 2", kCorrupt},
      {"UPDATE scope SET parent = 2 WHERE id = 1", kCorrupt},
      {"UPDATE scope SET parent = 1 WHERE id = 0", kCorrupt},
      {"UPDATE scope SET name = '' WHERE id = 1", kCorrupt},
      {"UPDATE scope SET kind = NULL", kCorrupt},
      {"UPDATE scope SET name = 5", kCorrupt},
      {"DELETE FROM scope", kCorrupt},
      {"DELETE FROM scope WHERE id = 2", kCorrupt},
      {"UPDATE signal SET scope = 3", kCorrupt},
      {"UPDATE signal SET code = 3", kCorrupt},
      {"UPDATE signal SET code = 4294967295", kCorrupt},
      {"UPDATE signal SET width = 3 WHERE id = 0", kCorrupt},
      {"UPDATE signal SET width = 4294967295 WHERE id = 1", kCorrupt},
      {"UPDATE signal SET type = 'reg'", kCorrupt},  // a number now has bits that its code has not
      {"UPDATE signal SET range_at = 100", kCorrupt},
      {"UPDATE signal SET name = ''", kCorrupt},
      {"DELETE FROM signal", kCorrupt},
      {"UPDATE tally SET count = -1", kCorrupt},
      {"UPDATE tally SET example = NULL", kCorrupt},
      {"UPDATE tally SET name = 'unheard of ' || name", as},
      {"UPDATE run SET value = 0 WHERE name = 'tick_fs'", kCorrupt},
      {"UPDATE run SET value = 21 WHERE name = 'first_tick'", kCorrupt},
      {"UPDATE run SET value = 19 WHERE name = 'observed_ticks'", kCorrupt},
      {"UPDATE run SET value = 2 WHERE name = 'has_host'", kCorrupt},
      {"UPDATE run SET value = 2 WHERE name = 'has_stamps'", kCorrupt},
      {"UPDATE run SET value = 'x' WHERE name = 'last_tick'", kCorrupt},
      {"UPDATE run SET value = NULL WHERE name = 'last_tick'", kCorrupt},
      {"UPDATE run SET value = 7 WHERE name = 'dump'", kCorrupt},
      {"UPDATE run SET value = 1.0 WHERE name = 'runs'", kCorrupt},
      {"DELETE FROM run WHERE name = 'host_unknown'", kCorrupt},
      {"UPDATE run SET value = 0 WHERE name = 'has_host'; UPDATE code SET changes = NULL",
       "f: has no figures of hosts: it was merged from several runs"},
      {"UPDATE run SET value = 2 WHERE name = 'runs'", as},
      {"DROP TABLE host_remark",
       "f: is no database of this program's: its table host_remark is another"},
  };
  for (const auto& [change, outcome] : rows) {
    const std::string path = dir.Write("f", bytes);
    Forge(path, change);
    EXPECT_EQ(OutcomeOf(path, figures), outcome) << change;
  }
}

/// A part of a dump as a job leaves it.
StoredRun PartOf(const std::string& text, const PartChoice& choice,
                 const ProfileOptions* windows = nullptr) {
  TextFile file(text);
  PartRun read = windows == nullptr ? ReadBodyPart(file, choice, {})
                                    : ReadProfiledPart(file, choice, *windows);
  StoredRun run;
  run.facts.part = choice;
  run.facts.dumpBytes = text.size();
  run.exact.declarations = std::move(read.declarations);
  const CodeBits codes(run.exact.declarations);
  run.exact.firstBit = codes.all();
  run.host.changes.resize(codes.codes());
  run.part = std::move(read.part);
  return run;
}

TEST(StoredParts, AddUpWithWhatWasReadBack) {
  const TempDir dir;
  std::mt19937 random(4);
  int added = 0;
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    const std::string text = RandomText(random);
    std::optional<StoredRun> sum;
    bool addsUp = true;
    for (std::uint32_t part = 0; part < 3; ++part) {
      const StoredRun run = PartOf(text, {part, part, 3});
      const std::string bytes = Written(run);
      ActivityDatabase database(dir.Write("f", bytes), "f");
      StoredRun read = database.ReadPart();
      EXPECT_EQ(read.facts.part->first, part);
      EXPECT_EQ(read.part.activity.front.figures, run.part.activity.front.figures);
      EXPECT_EQ(read.part.begin, run.part.begin);
      if (!sum) {
        sum = std::move(read);
      } else if (addsUp && sum->part.CanPrecede(read.part)) {
        sum->part.Add(CodeBits(read.exact.declarations), std::move(read.part));
      } else {
        addsUp = false;
      }
      EXPECT_EQ(OutcomeOf(dir.Path("f"), [](ActivityDatabase& f) { return Written(f.ReadAll()); }),
                "f: holds part " + std::to_string(part + 1) +
                    " of 3 of a dump; kesncd merge adds all parts up");
    }
    if (!addsUp) continue;
    ++added;
    TextSource dump(text);
    const ActivityResult whole = CountActivity(dump, {});
    const ActivityResult parted = FinishActivity(
        std::move(sum->exact.declarations), std::move(sum->part.activity), sum->part.items, {});
    EXPECT_EQ(parted.bits, whole.bits);
    EXPECT_EQ(parted.observedTicks, whole.observedTicks);
  }
  EXPECT_GT(added, 20);
}

TEST(StoredParts, OfAForgerDoNoHarm) {
  const TempDir dir;
  const std::string bytes = Written(PartOf(SmallDump(kDesign), {0, 0, 2}));
  const auto read = [](ActivityDatabase& database) {
    return "part with " + std::to_string(database.ReadPart().part.host.codes.size()) + " codes";
  };
  const std::pair<std::string, std::string> rows[] = {
      {"SELECT 1", "part with 3 codes"},
      {"UPDATE part_bit SET piece = 3", kCorrupt},
      {"UPDATE part_bit SET bit = 3", kCorrupt},
      {"UPDATE part_bit SET bit = -1", kCorrupt},
      {"UPDATE part_bit SET edge = 256", kCorrupt},
      {"UPDATE part_bit SET t0 = 'x'", kCorrupt},
      {"UPDATE part_bit SET t0 = -5", "part with 3 codes"},  // differences wrap around
      {"UPDATE part_code SET id = id + 3", kCorrupt},
      {"UPDATE part_code SET changes = 2147483648", kCorrupt},
      {"UPDATE part_code SET last = 4294967296", kCorrupt},
      {"UPDATE part_code SET first_kind = 3", kCorrupt},
      {"UPDATE run SET value = 1 WHERE name = 'part_first'", kCorrupt},
      {"UPDATE run SET value = 2 WHERE name = 'part_last'", kCorrupt},
      {"UPDATE run SET value = 4294967296 WHERE name = 'part_count'", kCorrupt},
      {"UPDATE run SET value = 1000000 WHERE name = 'part_begin'", kCorrupt},
      {"UPDATE run SET value = 2 WHERE name = 'part_ends_dump'", kCorrupt},
      {"UPDATE run SET value = 3 WHERE name = 'part_first_switch'", kCorrupt},
      {"DELETE FROM run WHERE name = 'part_host_now'", kCorrupt},
      {"UPDATE code SET bits = 3 WHERE id = 2", kCorrupt},
      {"UPDATE code SET bits = 2147483647 WHERE id = 2", "f: has more bits than the memory holds"},
  };
  for (const auto& [change, outcome] : rows) {
    const std::string path = dir.Write("f", bytes);
    Forge(path, change);
    const std::string found = OutcomeOf(path, read);
    // How much memory there is, is not for a test to know.
    if (found == kCorrupt && outcome.ends_with("holds")) continue;
    EXPECT_EQ(found, outcome) << change;
  }
}

/// Toggles of the dump's 10 windows when a part's file was read and its other part added; why not.
std::string JoinedWith(ActivityDatabase& database, const StoredRun& first) {
  StoredRun read = database.ReadPart();
  ProfileSum sum(first.exact.declarations, "f", first.part.profile->windows);
  ProfilePart before = *first.part.profile;
  if (!sum.Add(std::move(before)) || !sum.Add(std::move(*read.part.profile))) return "no part";
  const std::optional<KeptProfile> kept = sum.Finish();
  if (!kept) return "other windows";
  std::string text = std::to_string(kept->clocks.front().span.toggles) + " of the clock;";
  for (const std::uint64_t toggles : kept->profile.toggles.front()) {
    text += ' ' + std::to_string(toggles);
  }
  return text;
}

TEST(StoredParts, OverTimeAreThoseOfTheDump) {
  const TempDir dir;
  ProfileOptions windows;
  windows.parts = 10;
  windows.last = 20;
  windows.counting.watch = [](const Declarations&) { return std::vector<std::uint32_t>{2}; };
  // The second part begins with #12.
  const std::string text =
      SmallDump("1ns a{ reg:2:!:d[1:0] real:64:r:r b{ wire:2:!:e[1:0] reg:1:q:q } } ; ") +
      "#0\n0q\nb01 !\n#5\nb11 !\n#9\n1q\nb00 !\n#12\n0q\nb01 !\n#20\n";
  const StoredRun first = PartOf(text, {0, 0, 2}, &windows);
  const std::string bytes = Written(PartOf(text, {1, 1, 2}, &windows));
  ASSERT_TRUE(first.part.profile->toggles.time.hasStamps);
  const std::string kRight = "2 of the clock; 0 0 1 0 3 2 0 0 0 0";
  const std::string kNone = "no part";
  const std::pair<std::string, std::string> rows[] = {
      {"SELECT 1", kRight},
      {"DROP TABLE part_level",
       "f: is no database of this program's: its table part_level is another"},
      {"DELETE FROM run WHERE name = 'part_profile_parts'", kCorrupt},
      {"DELETE FROM run WHERE name = 'part_profile_pauses'", kCorrupt},
      {"UPDATE run SET value = NULL WHERE name = 'part_profile_parts'", kCorrupt},
      {"UPDATE run SET value = 2 WHERE name = 'part_profile_is_observing'", kCorrupt},
      {"UPDATE run SET value = 9 WHERE name = 'part_profile_parts'", kNone},
      {"UPDATE run SET value = 1 WHERE name = 'part_profile_full'", kNone},
      {"UPDATE run SET value = 0 WHERE name = 'part_profile_first_stamp'", kNone},
      {"UPDATE run SET value = 1 WHERE name = 'part_profile_last_stamp'", kNone},
      {"UPDATE run SET value = 19 WHERE name = 'part_profile_last_stamp'", "other windows"},
      {"UPDATE part_opening SET tick = 1", kNone},
      {"UPDATE part_opening SET tick = 21", kNone},
      {"UPDATE part_opening SET code = 3", kNone},
      {"UPDATE part_opening SET word = 1", kNone},
      {"UPDATE part_opening SET code = 4294967296", kCorrupt},
      {"INSERT INTO part_level VALUES(0, 1, 1, 1)", kNone},
      {"INSERT INTO part_level VALUES(3, 0, 1, 1)", kNone},
      {"INSERT INTO part_level VALUES(0, 0, -1, -1)", kRight},
      {"INSERT INTO part_toggles VALUES(6, 0, '[1]')", kNone},
      {"INSERT INTO part_toggles VALUES(0, 99, '[1]')", kNone},
      {"INSERT INTO part_toggles VALUES(0, 0, '[1,1,1,1,1,1,1,1,1,1,1]')", kNone},
      {"INSERT INTO part_toggles VALUES(0, 0, '[1')", kCorrupt},
      {"INSERT INTO part_toggles VALUES(0, 0, '[]')", kCorrupt},
      {"INSERT INTO part_toggles VALUES(0, 0, '[99999999999999999999]')", kCorrupt},
      {"INSERT INTO part_unobserved VALUES(99, 1)", kNone},
      {"UPDATE part_clock SET level = 50", kCorrupt},
      {"UPDATE part_clock SET code = 1", kNone},
      {"DELETE FROM part_clock", kNone},
  };
  for (const auto& [change, outcome] : rows) {
    const std::string path = dir.Write("f", bytes);
    Forge(path, change);
    EXPECT_EQ(OutcomeOf(path, [&](ActivityDatabase& f) { return JoinedWith(f, first); }), outcome)
        << change;
  }
}

}  // namespace
}  // namespace orsa::kesncd
