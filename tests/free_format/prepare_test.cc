// Prepared dumps beyond what a case file can show: their names, codes and windows, and dumps that
// are large. All keep the rules of preparing, which the fuzz target for `prepare` tries on any
// bytes.
#include <cstdlib>
#include <regex>
#include <sstream>

#include "free_format/prepare/prepare.h"
#include "tests/support/case_files.h"
#include "tests/support/dump_figures.h"
#include "tests/support/reading_rules.h"
#include "tests/support/testing.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"
#include "vcd/time_text.h"

namespace orsa::kesncd {
namespace {

struct Prepared {
  std::string text;
  std::string remarks;
};

/// A failure's text stands for the remarks.
Prepared Prepare(const std::string& dump, const PrepareOptions& options = {}) {
  TextSource source(dump, std::string::npos);
  TextSink sink;
  try {
    std::string remarks;
    for (const std::string& remark : PrepareDump(source, sink, options).Remarks()) {
      remarks += remark + "\n";
    }
    return {sink.text, remarks};
  } catch (const Failure& failure) {
    return {"", failure.what()};
  }
}

void ExpectGood(const std::string& dump) {
  EXPECT_NO_THROW(support::CheckPreparing(support::Input(dump)));
}

/// "0..30 @1 top.clk=2 top/u.q=1": the span in ticks, the tick in ns, and the changes.
std::string TreeText(const std::string& dump) {
  const support::Figures figures = support::TreeFigures(dump);
  std::ostringstream text;
  text.precision(12);
  text << startCycle << ".." << endCycle << " @" << timeScale;
  for (const auto& [signal, changes] : figures) {
    text << " " << signal.first << "." << signal.second << "=" << changes;
  }
  return text.str();
}

using PreparedDumps = FreshState;

TEST_F(PreparedDumps, GiveNamesToWhatHasNoneAndPlainValues) {
  const std::string dump = Dump(
      "$timescale 1ns $end $scope module $end $var wire 1 ! $end $var port 8 # \\a/b[1] [7 : 0] "
      "$end $var wire 4 % m[0] [3:0] $end $scope begin $var $end $var wire 1 & " +
      std::string(70000, 'n') + " $end $enddefinitions $end #0 1! #1 b01zZHhLlUx #");
  const std::string text = Prepare(dump).text;
  EXPECT_EQ(text.substr(0, text.find("$upscope")),
            "$timescale\n1ns\n$end\n$scope module unnamed_1 $end\n$var wire 1 A unnamed_2 $end\n"
            "$var wire 8 C \\a/b[1][7:0] $end\n$var wire 4 D m[0][3:0] $end\n"
            "$scope module _$var $end\n$var wire 1 F " +
                std::string(798, 'n') + "_3 $end\n");
  EXPECT_NE(text.find("\nb01zz1100xx C\n"), std::string::npos) << text.substr(text.size() - 40);
  ExpectGood(dump);
}

TEST_F(PreparedDumps, KeepTheirOrderInTheirCodes) {
  std::string dump = Dump("SCALE~TOP~");
  for (int i = 0; i < 1700; ++i) dump += Dump("$var wire 1 c" + std::to_string(i) + " n $end~");
  const std::string text = Prepare(dump + "$enddefinitions $end\n#0\n1c41\n").text;
  std::string last;
  for (const std::string& line : Cut(text, "\n")) {
    if (line.rfind("$var", 0) != 0) continue;
    const std::string code = Cut(line, " ")[3];
    EXPECT_LT(std::exchange(last, code), code);
    // Nothing that goes on a number or starts a value or a time.
    EXPECT_EQ(code.find_first_of("bBrRxXzZeEpP0123456789.+-#$_"), std::string::npos) << code;
  }
  EXPECT_NE(text.find("#0\n1ACC\n"), std::string::npos);
}

TEST_F(PreparedDumps, KeepAWindow) {
  const std::string dump =
      Dump("HEAD~1!~#10~0!~b0 \"~#20~1!~#30~0!~$dumpoff~x!~$end~#40~$dumpon~1!~$end~#50~0!~b1 \"~");
  // The window's begin and end, and what is read. Dumping is off at 35 ns.
  const std::string rows = R"( - => 10..50 @1 top.clk=6 top.d[7:0]=2
0s-1s => 10..50 @1 top.clk=6 top.d[7:0]=2
5ns- => 10..50 @1 top.clk=6 top.d[7:0]=2
-25ns => 10..25 @1 top.clk=3 top.d[7:0]=1
-20ns => 10..20 @1 top.clk=3 top.d[7:0]=1
15ns-0.045us => 15..45 @1 top.clk=4 top.d[7:0]=1
19.5ns- => 20..50 @1 top.clk=4 top.d[7:0]=2
35ns- => 35..50 @1 top.clk=2 top.d[7:0]=1
22ns-28ns => 22..28 @1 top.clk=1 top.d[7:0]=1
51ns- => : nothing lies in the window
-9ns => : nothing lies in the window)";
  for (const auto& row : Rows(rows)) {
    const std::vector<std::string> window = Cut(row[0], "-");
    PrepareOptions options;
    options.window.begin = Femtoseconds(window[0]);
    options.window.end = Femtoseconds(window[1]);
    const Prepared prepared = Prepare(dump, options);
    EXPECT_EQ(prepared.text.empty() ? prepared.remarks : TreeText(prepared.text), row[1]) << row[0];
    ExpectGood(dump + "\xFF\n\n" + window[0] + "\n" + window[1]);
  }
}

TEST_F(PreparedDumps, TakeATimeScaleAndATop) {
  const std::string two = Dump(
      "$scope module a $end $var wire 1 ! x $end $upscope $end $scope module b $end "
      "$scope module c $end $upscope $end $scope module d $end $var wire 1 ! y $end $upscope $end "
      "$upscope $end $enddefinitions $end #1 1! #3\n");
  PrepareOptions options;
  options.tick = Femtoseconds("100ps");
  options.chooseTop = [](const Declarations& declarations) {
    return static_cast<std::uint32_t>(declarations.scopes.size() - 1);
  };
  const Prepared prepared = Prepare(two, options);
  EXPECT_EQ(prepared.remarks + TreeText(prepared.text).substr(0, 9),
            "it has several top-level scopes, which now stand in all_scopes\n1..3 @0.1");
  EXPECT_LT(prepared.text.find("module d"), prepared.text.find("module c"));
  EXPECT_LT(prepared.text.find("module c"), prepared.text.find("module a $"));
}

TEST_F(PreparedDumps, CutValuesLongerThanABlock) {
  const std::string dump = Dump("HEAD~#0~b" + std::string(5000, '1') + " \"~1!~b" +
                                std::string(700000, '0') + " \"~#1~");
  const Prepared prepared = Prepare(dump);
  EXPECT_EQ(TreeText(prepared.text), "0..1 @1 top.clk=1 top.d[7:0]=2");
  EXPECT_TRUE(std::regex_match(prepared.remarks, std::regex("values cut .*: 2 .*\n")));
  ExpectGood(dump);
}

TEST_F(PreparedDumps, KeepTheRulesOnWhatFuzzingFound) {
  for (const char* const page : {"fuzz/corpus/dumps.txt", "fuzz/corpus/prepare.txt"}) {
    for (const Case& of : CasesIn(page)) {
      SCOPED_TRACE(of.name);
      ExpectGood(of.dump + (of.Has("options") ? "\xFF" + of.TextOf("options") : ""));
    }
  }
}

// What simulators' dumps say is counted apart by docs/make_dump_table.
TEST_F(PreparedDumps, OfSimulatorsAreReadAsTheyAre) {
  const char* const folder = std::getenv("KESNCD_REAL_DUMPS");
  if (folder == nullptr) GTEST_SKIP() << "KESNCD_REAL_DUMPS names no folder of dumps";
  for (const std::string& path : DumpsIn(folder)) {
    const std::string dump = ReadAll(path);
    const std::string prepared = Prepare(dump).text;
    if (prepared.empty()) continue;
    ExpectGood(dump);
  }
}

}  // namespace
}  // namespace orsa::kesncd
