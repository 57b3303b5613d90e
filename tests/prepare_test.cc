// Prepared dumps: what the hierarchical reader makes of them, and what is said about them. The fuzz
// target for `prepare` holds them to its rules, and the other readers to the same figures.
#include <cstdlib>
#include <regex>
#include <sstream>

#include "free_format/dump_look.h"
#include "fuzz/prepared_dump.h"
#include "tests/support.h"
#include "tests/text_stream.h"
#include "text/failure.h"
#include "vcd/time_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

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

/// Ends the process where the fuzz target finds something wrong with the prepared dump.
void ExpectGood(const std::string& dump) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(dump.data()), dump.size());
}

/// "0..30 @1 top.clk=2 top/u.q=1": the span in ticks, the tick in ns, and the changes.
std::string TreeText(const std::string& dump) {
  const fuzz::Figures figures = fuzz::TreeFigures(dump);
  std::ostringstream text;
  text.precision(12);
  text << startCycle << ".." << endCycle << " @" << timeScale;
  for (const auto& [signal, changes] : figures) {
    text << " " << signal.first << "." << signal.second << "=" << changes;
  }
  return text.str();
}

// What a dump is like, its lines, what the hierarchical reader makes of it once it is prepared, and
// a regular expression for the remarks.
const char kRows[] =
    R"(all on one line, codes apart from their values, no final newline
     => $timescale 1 ns $end $scope module a $end $var wire 1 ! x $end $var wire 2 # y [ 1 : 0 ] $end $upscope $end
     $enddefinitions $end #0 $dumpvars 1! b0 # $end #5 0 ! b101~# #70 B1 # R1 #
     => 0..70 @1 a.x=2 a.y[1:0]=4
no $end anywhere, and no end of the definitions
     => $date today~$timescale 1us~$scope module a~$var wire 1 ! x~$scope begin b~$var wire 1 # y~
    $upscope~$upscope~#0~$dumpvars~1!~$dumpall~0#~#3~0!~ => 0..3 @1000 a.x=2 a/b.y=1
comments hold anything, attributes are passed over
     => $comment $var wire 1 ? no~$scope module no $end $attrbegin misc 02 a 1 $end~HEAD~
    $comment 1! #7 $dumpoff $end #0~1!~$version 1! $end~#2 $comment~~$end 0!~
     => 0..2 @1 top.clk=2 top.d[7:0]=0
an open comment at the end
     => HEAD~#0~1!~#1~$comment 0!~#2~
     => 0..1 @1 top.clk=1 top.d[7:0]=0 => section without \$end, .*: 1 .*line 12\)\n
several tops, empty ones, one opened again, other kinds, late variables, one without a scope
     => $timescale 1s $end $scope package p $end $upscope $end $scope module a $end $scope fork u $end
     $var reg 1 ! q $end $upscope $end $var wire 1 # x $end $upscope $end $var wire 1 % o $end
     $scope struct s $end $var wire 1 ! f $end $upscope $end $scope module a $end $var wire 1 & z $end
     $scope module u $end $var wire 1 ' r $end $upscope $end $upscope $end $upscope $end
     $enddefinitions $end #1 1! 1! 1# 0# 1# 1% 1& 1' 0'~#4
     => 1..4 @1000000000 all_scopes.o=1 all_scopes/a.x=3 all_scopes/a.z=1 all_scopes/a/u.q=2
     all_scopes/a/u.r=2 all_scopes/s.f=2 => \$upscope with no scope open: 1 .*\nit has several .* all_scopes\n
several names of a code in a scope, in several scopes, a repeated declaration
     => $timescale 1fs $end $scope module a $end $var wire 1 ! x $end $var wire 1 ! y $end
     $var wire 1 ! x $end $var wire 2 # v $end $var wire 2 # w $end $scope module u $end
     $var wire 1 ! p $end $var wire 1 ! q $end $var wire 1 ! r $end $upscope $end
     $enddefinitions $end #0 1! b1 # x! #1 0! #2
     => 0..2 @1e-06 a.v=1 a.w=1 a.x=2 a.y=2 a/u.p=2 a/u.q=2 a/u.r=2
     => 1 of 4 changes are to x or z, .*\n
values of VHDL, reals, strings
     => HEAD~#0 H! L! h! l! U! X! W! -! Z! bHLUXWZ- " r-1.5e+3 " shello " sx ! #1
     => 0..1 @1 top.clk=4 top.d[7:0]=2
     => changes to strings.*: 2 .*\nchanges to H or L.*: 4 .*line 9: H!\)\n5 of 11 changes .*\n
a port dump
     => $timescale 1 ns $end $scope module a.u $end $var port 1 <0 d $end $var port [3:0] <1 q $end
     $var port [ 1 : 0 ] <2 r[1:0] $end $upscope $end $enddefinitions $end #0 $dumpports pX 6 6 <0
     pDDUU 6666 6666 <1 pHL 66 66 <2 $end #10 pU 0 6 <0 pl 6 0 <0 pF 0 0 <0 $dumpportsoff pD 6 0 <0 $end
     $dumpportson pT 0 0 <0 pH 0 6 <0 $end $vcdclose #13 $end
     => 0..13 @1 a.u.d=3 a.u.q[3:0]=1 a.u.r[1:0]=1 => 3 of 9 changes .*\n
dumping off and on, on one line
     => HEAD~#0 1! $dumpoff x! 0! b1 " $end #5 0! $dumpon 1! b0 " $end 0! #7 $dumpoff $end
     1! $dumpall 0! $end => 0..7 @1 top.clk=4 top.d[7:0]=1
stamps: zeros in front, backward, fractions, others
     => HEAD~0!~#0010~1!~#1000~0!~#20.75~1!~#-5~#~#1e3~#99999999999999999999~#7~#7~
     => 10..7 @1 top.clk=4 top.d[7:0]=0
     => time stamps that go back in time: 2\nwords that are not .*: 4 .*#-5\)\ntime stamps that lose .*: 1 .*\n
codes as long as names and as short as values
     => $timescale 100ns $end $scope module a $end $var wire 1 12345678 x $end
     $var wire 1 123456789 y $end $var wire 2 #1 z $end $var wire 1 $end w $end $var wire 1 b v $end
     $upscope $end $enddefinitions $end #0 112345678 0123456789 b1 #1 1b #1 b0 #1 0b b1 #3 q1 1?
     => 0..3 @100 a.v=2 a.x=1 a.y=1 a.z=2
     => declarations without .*: 1 .*\nchanges of codes .*: 2 .*\nwords .*: 1 .*q1\)\n
the dump is cut in a value
     => HEAD~#0~1!~#8~b1 => 0..8 @1 top.clk=1 top.d[7:0]=0 => value without a code .*: 1 .*\n
or in the header, and nothing behind it
     => SCALE~TOP~CLK~ => -1..-1 @1 top.clk=0 => it ends inside .*\nit has no time stamp.*\n
no time scale, no span
     => TOP~CLK~UP~END~#3~1!~ => 3..3 @0 top.clk=1 => it has no time scale, .*\nit spans no time.*\n
a time scale nobody knows
     => $timescale 1 parsec $end~TOP~CLK~END~#3~#4 => 3..4 @0 top.clk=0
     => its time scale "1parsec" is not.*\n
a time scale with a fraction
     => $timescale 1.5 NS $end~TOP~CLK~END~#3~#4 => 3..4 @1.5 top.clk=0
variables declared too late
     => HEAD~#0~$var wire 1 & l $end~1&~1!~#1~ => 0..1 @1 top.clk=1 top.d[7:0]=0
     => declarations behind .*: 1 .*\nchanges of codes .*: 1 .*\n)";

using PreparedDumps = FreshState;

TEST_F(PreparedDumps, ReadAsTheDumpSays) {
  std::vector<std::vector<std::string>> rows = Rows(kRows);
  rows.push_back({"CR LF, tabs, NULs, a byte order mark",
                  "\xEF\xBB\xBF$TIMESCALE\r~\t10ps\r~$End\r~$scope\r~module\r~a\r~$end\r~"
                  "$var wire 1\t! x $end\r~$upscope $end\r~$enddefinitions $end\r~#0\r~1!\r~" +
                      std::string(3, '\0') + "\v0!\r~#9\r~",
                  "0..9 @0.01 a.x=2"});
  rows.push_back(
      {"values longer than a line and than a block",
       "HEAD~#0~b" + std::string(5000, '1') + " \"~1!~b" + std::string(700000, '0') + " \"~#1~",
       "0..1 @1 top.clk=1 top.d[7:0]=2", "values cut .*: 2 .*\n"});
  for (std::vector<std::string>& row : rows) {
    row.resize(4);
    const std::string dump = Dump(row[1]);
    const Prepared prepared = Prepare(dump);
    EXPECT_EQ(TreeText(prepared.text), row[2]) << row[0];
    EXPECT_TRUE(std::regex_match(prepared.remarks, std::regex(row[3]))) << row[0] << "\n"
                                                                        << prepared.remarks;
    ExpectGood(dump);
  }
}

TEST_F(PreparedDumps, GiveNamesToWhatHasNoneAndPlainValues) {
  const std::string dump = Dump(
      "$timescale 1ns $end $scope module $end $var wire 1 ! $end $var wire 8 # \\a/b[1] [7 : 0] "
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
19.5ns- => 20..50 @1 top.clk=5 top.d[7:0]=2
35ns- => 35..50 @1 top.clk=2 top.d[7:0]=1
22ns-28ns => 22..28 @1 top.clk=1 top.d[7:0]=1
51ns- => : nothing lies in the window
-9ns => : nothing lies in the window)";
  for (const auto& row : Rows(rows)) {
    const std::vector<std::string> window = Cut(row[0], "-");
    PrepareOptions options;
    options.begin = Femtoseconds(window[0]);
    options.end = Femtoseconds(window[1]);
    const Prepared prepared = Prepare(dump, options);
    EXPECT_EQ(prepared.text.empty() ? prepared.remarks : TreeText(prepared.text), row[1]) << row[0];
    ExpectGood(dump + "\xFF\n\n" + window[0] + "\n" + window[1]);
  }
}

TEST_F(PreparedDumps, TakeATimeScaleAndATop) {
  const std::string two = Dump(
      "$scope module a $end $var wire 1 ! x $end $upscope $end $scope module b $end "
      "$scope module c $end $upscope $end $scope module d $end $var wire 1 ! y $end $upscope $end "
      "$upscope $end $enddefinitions $end #1 1! #3");
  PrepareOptions options;
  options.tick = Femtoseconds("100ps");
  for (const char* top : {"d", "b/d"}) {
    options.top = top;
    const Prepared prepared = Prepare(two, options);
    EXPECT_EQ(prepared.remarks + TreeText(prepared.text).substr(0, 9),
              "it has several top-level scopes, which now stand in all_scopes\n1..3 @0.1");
    EXPECT_LT(prepared.text.find("module d"), prepared.text.find("module c"));
    EXPECT_LT(prepared.text.find("module c"), prepared.text.find("module a $"));
  }
}

TEST_F(PreparedDumps, KeepTheRulesOfTheFuzzTarget) {
  const std::filesystem::path inputs = KESNCD_TEST_SOURCE "/fuzz/corpus/prepare";
  for (const auto& input : std::filesystem::directory_iterator(inputs)) {
    ExpectGood(ReadAll(input.path().string()));
  }
}

// What simulators' dumps say is counted apart by docs/make_dump_table.
TEST_F(PreparedDumps, OfSimulatorsAreReadAsTheyAre) {
  const char* const folder = std::getenv("KESNCD_REAL_DUMPS");
  if (folder == nullptr) GTEST_SKIP() << "KESNCD_REAL_DUMPS names no folder of dumps";
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() != ".vcd") continue;
    const std::string dump = ReadAll(entry.path().string());
    const std::string prepared = Prepare(dump).text;
    if (prepared.empty()) continue;
    ExpectGood(dump);
    TextSource source(prepared, std::string::npos);
    KeptSource kept(source);
    EXPECT_TRUE(LookAtDump(kept, "", Reader::Lines).reasons.empty()) << entry.path();
  }
}

}  // namespace
}  // namespace orsa::kesncd
