// What `kesncd check` finds in dumps.
#include <cstdlib>
#include <sstream>

#include "cli/dump_findings.h"
#include "cli/exit_status.h"
#include "tests/support.h"
#include "tests/text_stream.h"

namespace orsa::kesncd {
namespace {

using namespace kesncd_cli;
using enum FindingKind;

struct Expected {
  FindingKind kind;
  std::uint64_t count;
  std::uint64_t line = 0;  // of the example; not compared where it is 0
};

void ExpectFindings(const std::string& dump, const std::vector<Expected>& expected,
                    const std::string& what) {
  TextSource source(dump, std::string::npos);
  const std::vector<Finding> found = CheckDump(source, what).findings;
  std::string text, wanted;
  const auto add = [](std::string& to, FindingKind kind, std::uint64_t count, std::uint64_t line) {
    to += std::string(TextOf(kind).finding) + ": " + std::to_string(count) + " in line " +
          std::to_string(line) + "\n";
  };
  for (std::size_t i = 0; i < found.size(); ++i) {
    const bool isCompared = i < expected.size() && expected[i].line > 0;
    add(text, found[i].kind, found[i].tally.count, isCompared ? found[i].tally.line : 0);
  }
  for (const auto& [kind, count, line] : expected) add(wanted, kind, count, line);
  EXPECT_EQ(text, wanted) << what;
}

TEST(Check, FindsWhatTheReadersGetWrong) {
  const std::string bare = "TOP~CLK~BUS~UP~END~#0~";
  const std::string clean = "SCALE~" + bare;
  const std::string open = "SCALE~TOP~", close = "~UP~END~#0~";
  const struct {
    std::string dump;
    std::vector<Expected> findings;
  } rows[] = {
      {clean + "1!~$dumpoff~x!~$end~$dumpon~0!~$end~#5~", {}},
      {bare + "#5", {{NoTimescale, 1}}},
      {"$timescale~1 parsec~$end~" + bare + "#5", {{OddTimescale, 1, 1}}},
      {" ~$timescale 1ns $end~" + bare + "#5", {{UnreadTimescale, 1, 2}}},
      {"$timescale~1ns $end~" + bare + "#5", {{UnreadTimescale, 1, 1}}},
      {"$timescale~1NS~$end~" + bare + "#5", {{UnreadTimescale, 1, 1}}},
      {open + "CLK~BUS~", {{Torn, 1}, {NoSpan, 1}}},
      {clean, {{NoSpan, 1}}},
      {open + "CLK~BUS~#0~#1~", {{OpenDefinitions, 1}}},
      {open + "CLK~BUS~$upscope $end x~$enddefinitions $end #0~$x~1!~#1~",
       {{OpenDefinitions, 1, 8}, {QuotedItems, 1, 10}, {ScopeLines, 1, 7}, {Unended, 1, 9}}},
      {open + "$var wire 1 ! x $end $var wire 1 # q~$end~$var wire 8 % d [7 : 0] $end" + close +
           "#1",
       {{Overlooked, 3, 5}}},
      {clean + "1! 1!~b1~\"~x! 0!~#5 b1 \" $dumpoff~1!~0!~$dumpon $end~#6~",
       {{StampsNotAlone, 1, 14},
        {ChangesInLine, 4, 10},
        {CommandsNotAlone, 1, 17},
        {Unknown, 1, 5}}},
      {clean + "#1 1?~$dumpoff 1?~#5 ?~",
       {{StampsNotAlone, 2, 10}, {CommandsNotAlone, 1, 11}, {Undeclared, 2, 10}, {Strays, 1, 12}}},
      {clean + "1 !~x !~0!~#5~", {{ChangesInLine, 1, 10}, {Unknown, 1, 5}}},
      {clean + "#1~p~1!", {{TornValue, 1, 11}}},
      {clean + "pU 0 6 !~pDU 66 66 \"~#1~", {{Ports, 2, 10}, {MisreadSpan, 1, 12}}},
      {open + "$var wire 8 longlonglong7 d $end" + close + "b1 longlonglong7~#12345678901~", {}},
      {open + "$var wire 8 longlong777 d $end" + close + "b1 longlong777~#12345678~",
       {{MisreadSpan, 1, 10}}},
      {clean + "#100~#50~#200~", {{Backward, 1, 11}}},
      {clean + "#100~b1 \"\"~#50~", {{MisreadSpan, 1, 12}, {Backward, 1, 12}, {Undeclared, 1, 11}}},
      {open + "CLK~$var wire 1 ! y $end~CLK" + close + "#1~", {{Doubled, 1, 6}, {Hidden, 1, 6}}},
      {open + "$scope begin b $end~CLK~UP~QU" + close + "#1~",
       {{Unreachable, 1, 8}, {WrongScope, 2, 6}, {Foreign, 1, 5}, {Late, 1, 8}}},
      {open + "CLK~UP~TOP~QU" + close + "#1~", {{Unreachable, 1, 8}, {Split, 1, 7}}},
      {open + "$scope module b $end $var wire 1 ! x $end~UP" + close + "#1~",
       {{Overlooked, 1, 5}, {ScopeLines, 1, 5}, {EmptyTop, 1, 4}}},
      {clean + "$DUMPOFF~$end~$dumpportson~$end~#1~", {{PortCommands, 2, 10}}},
      {open + "CLK~BUS~$UPSCOPE $end~$upscope $END~$COMMENT $END~END~#0~#1~", {{Keywords, 2, 7}}},
      {open + "$comment~CLK~CLK~BUS" + close + "$comment~x~1!~$end~#1~",
       {{QuotedDeclarations, 1, 6}, {QuotedItems, 1, 14}}},
      {clean + "H!~#1~", {{Weak, 1, 10}}},
      {clean + std::string("b1\0!~#1~", 8), {{ControlBytes, 1, 10}}},
      {open + "$var wire 2 # x $end~$var wire 1 b y $end~$var real 1 r z $end" + close + "#1~",
       {{GrammarCodes, 2, 5}}},
      {clean + "b" + std::string(1000, '0') + " \"~#1~", {{LongValues, 1, 10}}},
      {"SCALE~TOP~CLK~BUS~UP~END~1!~#1~#2~", {{BeforeFirstStamp, 1, 9}}},
      {clean + "x!~1!~z!~#1~1?~su \"~q~#2.5~$var wire 1 & k $end~$comment~",
       {{Unknown, 1, 5},
        {Undeclared, 1, 14},
        {Strings, 1, 15},
        {Unended, 1, 19},
        {LateDeclarations, 1, 18},
        {Strays, 1, 16},
        {Fractions, 1, 17}}},
      {open +
           "$var wire 1 ! \\q/r $end~$var wire 8 + m[1] [7:0] $end~$var wire 1 % m_1 $end~"
           "$var wire 4 & d [3:0] $end~$var wire 1 ( d_2 $end~$var wire 1 ) d_02 $end~"
           "$var wire 5000 * w(1) $end~$var $end" +
           close + "#1~",
       {{Malformed, 1, 12},
        {Escaped, 1, 5},
        {TwoIndices, 1, 6},
        {Parentheses, 1, 11},
        {Collisions, 2, 9},
        {WideRanges, 1, 11}}},
  };
  for (const auto& row : rows) ExpectFindings(Dump(row.dump), row.findings, row.dump);
}

TEST(Check, NamesWhatIsNoDump) {
  const struct {
    std::string bytes;
    const char* message;
  } rows[] = {
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
      {"", "declares no variable"},
      {"hello\n", "declares no variable"},
  };
  for (const auto& [bytes, message] : rows) {
    for (const std::size_t chunk : {std::size_t{1}, std::string::npos}) {
      TextSource source(bytes, chunk);
      std::string said;
      try {
        CheckDump(source, "d");
      } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), ExitStatus::Unusable);
        said = failure.what();
      }
      EXPECT_NE(said.find(message), std::string::npos) << message << " is not in: " << said;
    }
  }
}

TEST(Check, FindsWhatIsKnownOfRealDumps) {
  const char* const folder = std::getenv("KESNCD_REAL_DUMPS");
  if (folder == nullptr) GTEST_SKIP() << "KESNCD_REAL_DUMPS names no folder of dumps";
  const struct {
    const char* file;
    std::vector<Expected> findings;
  } rows[] = {
      {"icarus-counter.vcd", {}},
      {"icarus-counter-gates.vcd", {{EmptyTop, 1}, {Escaped, 3}}},
      {"icarus-serv.vcd",
       {{Unreachable, 457},
        {Doubled, 2},
        {Hidden, 2},
        {WrongScope, 14},
        {Foreign, 24},
        {GrammarCodes, 12},
        {Unknown, 81}}},
      {"verilator-structs.vcd",
       {{UnreadTimescale, 1, 2},
        {Unreachable, 45},
        {WrongScope, 33},
        {Foreign, 14},
        {EmptyTop, 1},
        {GrammarCodes, 3},
        {TwoIndices, 12}}},
      {"ghdl-fifo.vcd", {{Unreachable, 19}, {MisreadSpan, 1, 1125}, {Weak, 6}}},
      {"systemc-fifo.vcd", {{BeforeFirstStamp, 6}}},
      {"sigrok-demo.vcd", {{UnreadTimescale, 1}, {StampsNotAlone, 706}, {ChangesInLine, 3292}}},
  };
  for (const auto& row : rows) {
    ExpectFindings(ReadAll((std::filesystem::path(folder) / row.file).string()), row.findings,
                   row.file);
  }
}

}  // namespace
}  // namespace orsa::kesncd
