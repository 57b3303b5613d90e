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

std::string TextOf(const std::vector<Expected>& findings) {
  std::ostringstream text;
  for (const Expected& finding : findings) {
    text << kesncd_cli::TextOf(finding.kind).finding << ": " << finding.count << "\n";
  }
  return text.str();
}

void ExpectFindings(const std::string& dump, const std::vector<Expected>& expected,
                    const std::string& what) {
  TextSource source(dump, std::string::npos);
  const DumpCheck check = CheckDump(source, what);
  std::vector<Expected> found;
  for (const Finding& finding : check.findings) {
    found.push_back({finding.kind, finding.tally.count, finding.tally.line});
  }
  ASSERT_EQ(TextOf(found), TextOf(expected)) << what;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const bool isCompared = expected[i].line > 0;
    EXPECT_EQ(isCompared ? found[i].line : 0, expected[i].line)
        << what << ": " << kesncd_cli::TextOf(expected[i].kind).finding;
  }
}

const char kHeader[] = "$timescale\n1ns\n$end\n$scope module a $end\n";
const char kTwo[] = "$var wire 1 ! x $end\n$var wire 2 \" y [1:0] $end\n";
const char kBody[] = "$upscope $end\n$enddefinitions $end\n#0\n";

TEST(Check, FindsWhatTheReadersGetWrong) {
  const std::string header = kHeader;
  const std::string clean = header + kTwo + kBody;
  const struct {
    std::string dump;
    std::vector<Expected> findings;
  } rows[] = {
      {clean + "1!\n$dumpoff\nx!\n$end\n$dumpon\n0!\n$end\n#5\n", {}},
      {clean.substr(20) + "#5", {{NoTimescale, 1}}},
      {"$timescale\n1 parsec\n$end\n" + clean.substr(20) + "#5", {{OddTimescale, 1, 1}}},
      {"\n$timescale 1ns $end\n" + clean.substr(20) + "#5", {{UnreadTimescale, 1, 2}}},
      {"$timescale\n1ns $end\n" + clean.substr(20) + "#5", {{UnreadTimescale, 1, 1}}},
      {"$timescale\n1NS\n$end\n" + clean.substr(20) + "#5", {{UnreadTimescale, 1, 1}}},
      {header + kTwo, {{Torn, 1}, {NoSpan, 1}}},
      {clean, {{NoSpan, 1}}},
      {header + kTwo + "#0\n#1\n", {{OpenDefinitions, 1}}},
      {header + kTwo + "$upscope $end x\n$enddefinitions $end #0\n$x\n1!\n#1\n",
       {{OpenDefinitions, 1, 8}, {QuotedItems, 1, 10}, {ScopeLines, 1, 7}, {Unended, 1, 9}}},
      {header + "$var wire 1 ! x $end $var wire 1 # q\n$end\n$var wire 8 % d [7 : 0] $end\n" +
           kBody + "#1",
       {{Overlooked, 3, 5}}},
      {clean + "1! 1!\nb1\n\"\nx! 0!\n#5 b1 \" $dumpoff\n1!\n0!\n$dumpon $end\n#6\n",
       {{StampsNotAlone, 1, 14},
        {ChangesInLine, 4, 10},
        {CommandsNotAlone, 1, 17},
        {Unknown, 1, 5}}},
      {clean + "#1 1?\n$dumpoff 1?\n#5 ?\n",
       {{StampsNotAlone, 2, 10}, {CommandsNotAlone, 1, 11}, {Undeclared, 2, 10}, {Strays, 1, 12}}},
      {clean + "1 !\nx !\n0!\n#5\n", {{ChangesInLine, 1, 10}, {Unknown, 1, 5}}},
      {clean + "#1\np\n1!", {{TornValue, 1, 11}}},
      {clean + "pU 0 6 !\npDU 66 66 \"\n#1\n", {{Ports, 2, 10}, {MisreadSpan, 1, 12}}},
      {header + "$var wire 8 longlonglong7 d $end\n" + kBody + "b1 longlonglong7\n#12345678901\n",
       {}},
      {header + "$var wire 8 longlong777 d $end\n" + kBody + "b1 longlong777\n#12345678\n",
       {{MisreadSpan, 1, 10}}},
      {clean + "#100\n#50\n#200\n", {{Backward, 1, 11}}},
      {clean + "#100\nb1 \"\"\n#50\n",
       {{MisreadSpan, 1, 12}, {Backward, 1, 12}, {Undeclared, 1, 11}}},
      {header + "$var wire 1 ! x $end\n$var wire 1 ! y $end\n$var wire 1 ! x $end\n" + kBody +
           "#1\n",
       {{Doubled, 1, 6}, {Hidden, 1, 6}}},
      {header + "$scope begin b $end\n$var wire 1 ! x $end\n$upscope $end\n$var wire 1 # y $end\n" +
           kBody + "#1\n",
       {{Unreachable, 1, 8}, {WrongScope, 2, 6}, {Foreign, 1, 5}, {Late, 1, 8}, {EmptyTop, 0}}},
      {header +
           "$var wire 1 ! x $end\n$upscope $end\n$scope module a $end\n$var wire 1 # y $end\n" +
           kBody + "#1\n",
       {{Unreachable, 1, 8}, {Split, 1, 7}}},
      {header + "$scope module b $end $var wire 1 ! x $end\n$upscope $end\n" + kBody + "#1\n",
       {{Overlooked, 1, 5}, {ScopeLines, 1, 5}, {EmptyTop, 1, 4}}},
      {clean + "$DUMPOFF\n$end\n$dumpportson\n$end\n#1\n", {{PortCommands, 2, 10}}},
      {header + kTwo +
           "$UPSCOPE $end\n$upscope $END\n$COMMENT $END\n$enddefinitions $end\n#0\n#1\n",
       {{Keywords, 2, 7}}},
      {header + "$comment\n$var wire 1 ! x $end\n" + kTwo + kBody + "$comment\nx\n1!\n$end\n#1\n",
       {{QuotedDeclarations, 1, 6}, {QuotedItems, 1, 14}}},
      {clean + "H!\n#1\n", {{Weak, 1, 10}}},
      {clean + std::string("b1\0!\n#1\n", 8), {{ControlBytes, 1, 10}}},
      {header + "$var wire 2 # x $end\n$var wire 1 b y $end\n$var real 1 r z $end\n" + kBody +
           "#1\n",
       {{GrammarCodes, 2, 5}}},
      {clean + "b" + std::string(1000, '0') + " \"\n#1\n", {{LongValues, 1, 10}}},
      {clean.substr(0, clean.size() - 3) + "1!\n#1\n#2\n", {{BeforeFirstStamp, 1, 9}}},
      {clean + "x!\n1!\nz!\n#1\n1?\nsu \"\nq\n#2.5\n$var wire 1 & k $end\n$comment\n",
       {{Unknown, 1, 5},
        {Undeclared, 1, 14},
        {Strings, 1, 15},
        {Unended, 1, 19},
        {LateDeclarations, 1, 18},
        {Strays, 1, 16},
        {Fractions, 1, 17}}},
      {header +
           "$var wire 1 ! \\q/r $end\n$var wire 8 + m[1] [7:0] $end\n$var wire 1 % m_1 $end\n"
           "$var wire 4 & d [3:0] $end\n$var wire 1 ( d_2 $end\n$var wire 1 ) d_02 $end\n"
           "$var wire 5000 * w(1) $end\n$var $end\n" +
           kBody + "#1\n",
       {{Malformed, 1, 12},
        {Escaped, 1, 5},
        {TwoIndices, 1, 6},
        {Parentheses, 1, 11},
        {Collisions, 2, 9},
        {WideRanges, 1, 11}}},
  };
  for (const auto& row : rows) {
    std::vector<Expected> expected = row.findings;
    std::erase_if(expected, [](const Expected& finding) { return finding.count == 0; });
    ExpectFindings(row.dump, expected, row.dump);
  }
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
      {std::string("\x7F"
                   "ELF\0\0",
                   6),
       "a binary file"},
      {"", "is empty"},
      {"hello\n", "declares no variable"},
  };
  for (const auto& row : rows) {
    for (const std::size_t chunk : {std::size_t{1}, std::string::npos}) {
      TextSource source(row.bytes, chunk);
      try {
        CheckDump(source, "d");
        ADD_FAILURE() << row.message;
      } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), ExitStatus::Unusable);
        EXPECT_NE(std::string(failure.what()).find(row.message), std::string::npos)
            << failure.what();
      }
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
