// What `kesncd check` finds in dumps.
#include <algorithm>
#include <cstdlib>

#include "free_format/dump_findings.h"
#include "tests/support.h"
#include "tests/text_stream.h"
#include "text/failure.h"

namespace orsa::kesncd {
namespace {

/// Compares what is found with a text such as "further names 1@6; time stamps go back 2": how each
/// finding's text begins, its count and, where "@" stands, the line of its example.
void ExpectFindings(const std::string& dump, const std::string& expected, const std::string& what) {
  TextSource source(dump, std::string::npos);
  const std::vector<std::string> wanted = Cut(expected, "; ");
  std::string found;
  for (const auto& [kind, tally] : CheckDump(source, what).findings) {
    const auto place = static_cast<std::size_t>(std::count(found.begin(), found.end(), ';'));
    const std::string want = place < wanted.size() ? wanted[place] : "";
    found += std::string(TextOf(kind).finding).substr(0, want.rfind(' ')) + " ";
    found += std::to_string(tally.count);
    if (want.find('@') != std::string::npos) found += "@" + std::to_string(tally.line);
    found += "; ";
  }
  EXPECT_EQ(found, expected.empty() ? "" : expected + "; ") << what;
}

TEST(Check, FindsWhatTheReadersGetWrong) {
  const std::string rows = R"(HEAD~#0~1!~$dumpoff~x!~$end~$dumpon~0!~$end~#5~ => 
TOP~CLK~BUS~UP~END~#0~#5 => no time scale 1
$timescale~1 parsec~$end~TOP~CLK~BUS~UP~END~#0~#5 => time scale not understood 1@1
 ~$timescale 1ns $end~TOP~CLK~BUS~UP~END~#0~#5 => time scale not read 1@2
$timescale~1ns $end~TOP~CLK~BUS~UP~END~#0~#5 => time scale not read 1@1
$timescale~1NS~$end~TOP~CLK~BUS~UP~END~#0~#5 => time scale not read 1@1
TOP~CLK~BUS~SCALE~UP~END~#0~#5 => time scale behind a scope 1@4
SCALE~TOP~CLK~BUS~ => dump ends inside 1; no time span 1
HEAD~#0~ => no time span 1
SCALE~TOP~CLK~BUS~#0~#1~ => no $enddefinitions 1
SCALE~TOP~CLK~BUS~$upscope $end x~$enddefinitions $end #0~$x~1!~#1~
     => no $enddefinitions 1@8; lines of comments that readers take for changes 1@10;
     scope lines 1@7; section without $end 1@9
SCALE~TOP~$var wire 1 ! x $end $var wire 1 # q~$end~$var wire 8 % d [7 : 0] $end~UP~END~#0~#1
     => declarations not on a line 3@5
HEAD~#0~1! 1!~b1~"~x! 0!~#5 b1 " $dumpoff~1!~0!~$dumpon $end~#6~
     => time stamps that share their lines 1@14; changes behind another word 4@10;
     dump commands that share 1@17; more than 1 % of the changes 1@5
HEAD~#0~#1 1?~$dumpoff 1?~#5 ?~
     => time stamps that share their lines 2@10; dump commands that share 1@11;
     changes of codes 2@10; words that are not understood 1@12
HEAD~#0~1 !~x !~0!~#5~ => changes behind another word 1@10; more than 1 % of the changes 1@5
HEAD~#0~#1~p~1! => value without a code 1@11
HEAD~#0~pU 0 6 !~pDU 66 66 "~#1~ => values of port dumps 2@10; readers misread the time span 1@12
SCALE~TOP~$var wire 8 longlonglong7 d $end~UP~END~#0~b1 longlonglong7~#12345678901~ => 
SCALE~TOP~$var wire 8 longlong777 d $end~UP~END~#0~b1 longlong777~#12345678~
     => readers misread the time span 1@10
HEAD~#0~#100~#50~#200~ => time stamps go back 1@11
HEAD~#0~#100~b1 ""~#50~
     => readers misread the time span 1@12; time stamps go back 1@12; changes of codes 1@11
SCALE~TOP~CLK~$var wire 1 ! y $end~CLK~UP~END~#0~#1~
     => signals with several names 1@6; further names 1@6
SCALE~TOP~$scope begin b $end~CLK~UP~QU~UP~END~#0~#1~
     => signals not reachable 1@8; signals stand in the wrong scope 2@6;
     scopes other than module 1@5; signals declared behind a sub-scope 1@8
SCALE~TOP~CLK~UP~TOP~QU~UP~END~#0~#1~ => signals not reachable 1@8; scopes opened again 1@7
SCALE~TOP~$scope module b $end $var wire 1 ! x $end~UP~UP~END~#0~#1~
     => declarations not on a line 1@5; scope lines 1@5; outermost module declares no signal 1@4
HEAD~#0~$DUMPOFF~$end~$dumpportson~$end~#1~ => dump commands in capitals 2@10
SCALE~TOP~CLK~BUS~$UPSCOPE $end~$upscope $END~$COMMENT $END~END~#0~#1~
     => declarations with keywords in capitals 2@7
SCALE~TOP~$comment~CLK~CLK~BUS~UP~END~#0~$comment~x~1!~$end~#1~
     => lines of comments that readers take for declarations 1@6;
     lines of comments that readers take for changes 1@14
HEAD~#0~H!~H?~#1~ => changes to H or L 1@10; changes of codes 1@11
SCALE~TOP~$var wire 2 # x $end~$var wire 1 b y $end~$var real 1 r z $end~UP~END~#0~#1~
     => codes that the grammar reader takes 2@5
SCALE~TOP~CLK~BUS~UP~END~1!~#1~#2~ => changes before the first time stamp 1@9
HEAD~#0~x!~1!~z!~#1~1?~su "~q~#2.5~$var wire 1 & k $end~$comment~
     => more than 1 % of the changes 1@5; changes of codes 1@14; changes to strings 1@15;
     section without $end 1@19; declarations behind the definitions 1@18;
     words that are not understood 1@16; time stamps with fractions 1@17
SCALE~TOP~$var wire 1 ! \q/r $end~$var wire 8 + m[1] [7:0] $end~$var wire 1 % m_1 $end~
    $var wire 4 & d [3:0] $end~$var wire 1 ( d_2 $end~$var wire 1 ) d_02 $end~
    $var wire 5000 * w(1) $end~$var $end~UP~END~#0~#1~
     => declarations without a code 1@12; escaped names 1@5; names with two indices 1@6;
     names with parentheses 1@11; different signals with one name 2@9; ranges over 4096 1@11)";
  for (const auto& row : Rows(rows)) ExpectFindings(Dump(row[0]), row[1], row[0]);
  const std::string clean = Dump("HEAD~#0~");
  ExpectFindings(clean + std::string("b1\0!\n#1\n", 8), "control bytes 1@10", "a NUL");
  ExpectFindings(clean + "b" + std::string(1000, '0') + " \"\n#1\n", "values too long 1@10",
                 "long");
}

TEST(Check, NamesWhatIsNoDump) {
  const std::pair<std::string, const char*> rows[] = {
      {"\x1F\x8B\x08", "gzip"},
      {"\x28\xB5\x2F\xFD", "zstd"},
      {std::string("\0\0\0\0\0\0\0\x01\x49", 9), "FST"},
      {std::string("\x13\x80\0\x01", 4), "LXT2"},
      {"\x01\x38", "LXT,"},
      {"version https://git-lfs.github.com/spec/v1\noid", "git lfs pull"},
      {std::string("\xFF\xFE$\0d\0", 6), "UTF-16"},
      {std::string("$\0d\0a\0", 6), "UTF-16"},
      {std::string("\0$\0d", 4), "UTF-16"},
      {std::string("\x7F\x45LF\0\0", 6), "a binary file"},
      {"", "is empty"},
      {"hello\n", "declares no variable"}};
  for (const auto& [bytes, message] : rows) {
    for (const std::size_t chunk : {std::size_t{1}, std::string::npos}) {
      TextSource source(bytes, chunk);
      std::string said;
      try {
        CheckDump(source, "d");
      } catch (const Failure& failure) {
        EXPECT_EQ(failure.kind(), FailureKind::Unusable);
        said = failure.what();
      }
      EXPECT_NE(said.find(message), std::string::npos) << message << " is not in: " << said;
    }
  }
}

TEST(Check, FindsWhatIsKnownOfRealDumps) {
  const char* const folder = std::getenv("KESNCD_REAL_DUMPS");
  if (folder == nullptr) GTEST_SKIP() << "KESNCD_REAL_DUMPS names no folder of dumps";
  const std::string rows = R"(icarus-counter.vcd => 
icarus-counter-gates.vcd => outermost module declares no signal 1; escaped names 3
icarus-serv.vcd
     => signals not reachable 457; signals with several names 2; further names 2;
     signals stand in the wrong scope 14; scopes other than module 24;
     codes that the grammar reader takes 12; more than 1 % of the changes 81
verilator-structs.vcd
     => time scale not read 1@2; signals not reachable 45; signals stand in the wrong scope 33;
     scopes other than module 14; outermost module declares no signal 1;
     codes that the grammar reader takes 3; names with two indices 12
ghdl-fifo.vcd => signals not reachable 19; readers misread the time span 1@1125; changes to H or L 6
systemc-fifo.vcd => changes before the first time stamp 6
sigrok-demo.vcd
     => time scale not read 1; time stamps that share their lines 706;
     changes behind another word 3292)";
  for (const auto& row : Rows(rows)) {
    ExpectFindings(ReadAll((std::filesystem::path(folder) / row[0]).string()), row[1], row[0]);
  }
}

}  // namespace
}  // namespace orsa::kesncd
