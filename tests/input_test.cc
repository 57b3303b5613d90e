// Ways of a dump into the program: packed, through pipes, prepared on its way or untouched, with
// progress on a terminal, interrupted.
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstring>
#include <regex>
#include <thread>

#include "cli/dump_look.h"
#include "cli/progress.h"
#include "tests/shell.h"
#include "tests/support.h"
#include "tests/text_stream.h"

namespace orsa::kesncd {
namespace {

using namespace kesncd_cli;
using enum FindingKind;

// A time scale that the library's readers do not see, two top-level scopes, a signal of two names.
const char kOdd[] =
    "$timescale 1ns $end\n$scope module p $end\n$upscope $end\n$scope module tb $end\n"
    "$scope begin u $end\n$var wire 1 ! q $end\n$upscope $end\n$var wire 1 ! clk $end\n"
    "$var wire 1 ! ck2 $end\n$upscope $end\n$scope module tc $end\n$var wire 1 \" r $end\n"
    "$upscope $end\n$enddefinitions $end\n#0\n1!\n0!\n1!\n#10\n";

TEST(Input, ReachesTheLibraryInEveryWay) {
  const TempDir dir;
  dir.Write("odd.vcd", kOdd);
  const std::string flat = "signal,freq_mhz\r\nck2,100\r\nclk,100\r\n";
  const std::string find = "name,scope,signal,freq_mhz\r\nr,tc,r,0\r\nno,not found,,\r\n";
  const std::string through = "kesncd: [^\n]*: read through prepare: time scale not read: [^\n]*\n";
  const std::string top = "kesncd: [^\n]*: top module is tb; --top chooses another\n";
  const struct {
    std::string command;
    int status;
    std::string out;
    std::string error;  // a regular expression
  } rows[] = {
      {"gzip -k odd.vcd; zstd -q odd.vcd; mkfifo pipe; split -b 100 odd.vcd part; "
       "for p in part*; do gzip -c $p; done > many.gz",
       0, "", ""},
      {"kesncd flat odd.vcd --format csv", 0, flat, through + top},
      {"cat odd.vcd.txt odd.vcd.gz.txt", 1,
       "module | tb\nsignal | clk | 100.000000\nsignal | ck2 | 100.000000\n", ".*\n"},
      {"kesncd flat odd.vcd.gz --format csv && rm odd.vcd*.txt", 0, flat, through + top},
      {"kesncd flat odd.vcd.zst --format csv --activity a && cmp a odd.vcd.zst.txt", 2, flat,
       through + top + "cmp: [^\n]*\n"},
      {"kesncd flat - --format csv < odd.vcd", 0, flat, through + top},
      {"cat many.gz | kesncd flat - --format csv --activity b && cmp a b", 0, flat, through + top},
      {"cat odd.vcd > pipe & kesncd flat pipe --format csv", 0, flat, through + top},
      {"kesncd flat odd.vcd --reader grammar --format csv --activity b && cmp a b", 0,
       "signal,freq_mhz\r\nclk,100\r\nck2,100\r\n", through + top},
      {"kesncd find odd.vcd.gz r no --format csv", 0, find, through},
      {"kesncd tree odd.vcd --format csv | cut -d, -f1-4", 0,
       "path,kind,signals,changes\ntb,module,2,6\ntb/u,module,1,3\ntc,module,1,0\n", through},
      {"kesncd tree odd.vcd --top tb/u --format csv | cut -d, -f1-4 | tail -1", 0,
       "tb/u,module,1,3\n", through},
      {"kesncd flat odd.vcd --as-is --format csv --top tb", 0, "signal,freq_mhz\r\nq,0\r\n",
       "kesncd: odd.vcd: no time scale [^\n]*\n"},
      {"kesncd find - r --as-is --format csv < odd.vcd", 1,
       "name,scope,signal,freq_mhz\r\nr,not found,,\r\n", "(.|\n)*2 further top-level scopes .*\n"},
      {"kesncd top odd.vcd.gz; kesncd top - < odd.vcd", 0, "tb\ntb\n", ""},
      {"kesncd check odd.vcd.zst --format csv | head -2 | cut -c-8", 0, "finding,\npacked: \n", ""},
      {"kesncd prepare odd.vcd.gz -o p.vcd && kesncd flat p.vcd --top tb --format csv", 0, flat,
       "kesncd: odd.vcd.gz: it has several [^\n]*\n"},
      {"head -c 90 odd.vcd.gz | kesncd flat - -o o", 2, "",
       "kesncd: .*: it is cut off inside .*\n"},
      {"head -c 90 odd.vcd.zst | kesncd tree -", 2, "", "kesncd: .*: it is cut off inside .*\n"},
      {"(head -c 40 odd.vcd.gz; head -c 400 /dev/zero) | kesncd check -", 2, "",
       "kesncd: .*: its packed bytes .*\n"},
      {"kesncd flat odd.vcd --activity no/such", 3, "", "(.|\n)*kesncd: no/such: cannot .*\n"},
      {"kesncd flat odd.vcd --activity /dev/full", 3, "", "(.|\n)*kesncd: /dev/full: .*\n"},
      {"ls", 0,
       "a\nb\nerrors\nmany.gz\nodd.vcd\nodd.vcd.gz\nodd.vcd.txt\nodd.vcd.zst\np.vcd\np.vcd.txt\n"
       "partaa\npartab\npartac\npipe\n",
       ""},
  };
  for (const auto& row : rows) {
    const Outcome run = Shell(dir.Path("."), "(" + row.command + ") 2>errors");
    EXPECT_EQ(run.status, row.status) << row.command;
    EXPECT_EQ(run.out, row.out) << row.command;
    const std::string errors = ReadAll(dir.Path("errors"));
    EXPECT_TRUE(std::regex_match(errors, std::regex(row.error))) << row.command << "\n" << errors;
  }
}

TEST(Input, ShowsProgressAndColourOnATerminalOnly) {
  const TempDir dir;
  dir.Write("odd.vcd", kOdd);
  const std::string slow = "(cat odd.vcd; sleep 0.6; echo '#11'; sleep 0.1; echo '#12')";
  const struct {
    std::string command;  // its standard error is a terminal
    std::string out;      // a regular expression
  } rows[] = {
      {slow + " | TERM=xterm kesncd flat - --as-is --top tb > out",
       "\r\n?standard input: 0 MB, 0 MB/s *\r *\r\x1b\\[1mkesncd:\x1b\\[0m standard (.|\r|\n)*"},
      {slow + " | TERM=xterm kesncd tree - --quiet > out",
       "\x1b\\[1mkesncd:\x1b\\[0m standard input: [^\r]*\r\n"},
      {"TERM=xterm NO_COLOR=1 kesncd tree odd.vcd > out", "kesncd: odd.vcd: [^\r]*\r\n"},
      {"TERM=dumb kesncd tree odd.vcd > out", "kesncd: odd.vcd: [^\r]*\r\n"},
      {"TERM=xterm kesncd tree odd.vcd 2>&1 | cat", "kesncd: odd.vcd: (.|\r|\n)*"},
  };
  if (std::system("script --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "there is no script";
  for (const auto& row : rows) {
    const Outcome run = Shell(dir.Path("."), "script -qec \"" + row.command + "\" /dev/null");
    EXPECT_TRUE(std::regex_match(run.out, std::regex(row.out))) << row.command << "\n" << run.out;
  }
  EXPECT_EQ(ProgressText(1'500'000'000, 4'000'000'000, 2.0), "37 %, 750 MB/s, 4 s left");
  EXPECT_EQ(ProgressText(4000, 1, 1.0), "100 %, 0 MB/s, 0 s left");
}

/// Runs the program on a dump that does not come to its end, and interrupts it.
int Interrupt(const TempDir& dir, const std::vector<const char*>& arguments) {
  std::array<int, 2> dump{};
  EXPECT_EQ(pipe(dump.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    (void)dup2(dump[0], STDIN_FILENO);
    std::vector<char*> words{const_cast<char*>("kesncd")};
    for (const char* argument : arguments) words.push_back(const_cast<char*>(argument));
    words.push_back(nullptr);
    if (chdir(dir.Path(".").c_str()) == 0) execv(KESNCD_TEST_PROGRAMS "/kesncd", words.data());
    _exit(99);
  }
  EXPECT_GT(write(dump[1], kOdd, std::strlen(kOdd)), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_EQ(kill(child, SIGINT), 0);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  close(dump[0]);
  close(dump[1]);
  return WEXITSTATUS(status);
}

TEST(Input, EndsAtOnceWhenInterrupted) {
  const TempDir dir;
  dir.Write("o", "earlier");
  EXPECT_EQ(Interrupt(dir, {"prepare", "-", "-o", "o"}), 130);
  EXPECT_EQ(Interrupt(dir, {"flat", "-", "-o", "o", "--activity", "o", "--reader", "grammar"}),
            130);
  EXPECT_EQ(Shell(dir.Path("."), "ls; cat o").out, "o\nearlier");
}

TEST(Look, FindsWhatPreparingMends) {
  const std::string header =
      "$timescale\n1ns\n$end\n$scope module a $end\n$var wire 1 ! x $end\n"
      "$var wire 2 \" y [1:0] $end\n";
  const std::string clean = header + "$upscope $end\n$enddefinitions $end\n#0\n";
  std::string body;  // longer than the look
  for (int i = 0; i < 60000; ++i) body += "0!\n1!\nb1 \"\n#" + std::to_string(i) + "\n";
  const auto declare = [&](const std::string& line) { return header + line + clean.substr(89); };
  const struct {
    std::string dump;
    std::vector<FindingKind> lines;
    std::vector<FindingKind> grammar;
  } rows[] = {
      {clean + body, {}, {}},
      {clean + body + "0! 1!\n", {}, {}},
      {clean + "0! 1!\n" + body, {ChangesInLine}, {ChangesInLine}},
      {clean + "0 !\n" + body, {ChangesInLine}, {ChangesInLine}},
      {clean + "0! H!", {ChangesInLine, Weak}, {ChangesInLine, Weak}},
      {declare("$var wire 1 # z $end\n") + body, {}, {}},
      {declare("$var wire 2 # z $end\n") + body, {}, {GrammarCodes}},
      {declare("$attrbegin misc 02 e 1 $end\n") + body, {}, {Attributes}},
      {declare("$comment\n$upscope\n$end\n") + body, {QuotedDeclarations}, {QuotedDeclarations}},
      {clean + "$comment\n1!\n$end\n", {QuotedItems}, {QuotedItems}},
      {declare("$VAR wire 1 # z $end\n") + body, {Keywords}, {Keywords}},
      {declare("$var port 1 # z $end\n") + body, {Ports}, {Ports}},
      {declare("$var wire 1000 % z $end\n") + body, {}, {LongValues}},
      {declare("$var wire 5000 % z $end\n") + body, {LongValues}, {LongValues}},
      {declare("$var wire 2 lo0000000000 z $end\n") + body, {MisreadSpan}, {MisreadSpan}},
      // A word that stood in the place of a stamp's digits goes on behind one of seven digits.
      {"$comment letters9 $end\n" + clean + body, {MisreadSpan}, {MisreadSpan}},
      {"$comment lettersx $end\n" + clean + body, {}, {}},
  };
  for (const auto& row : rows) {
    for (const Reader reader : {Reader::Lines, Reader::Grammar}) {
      TextSource source(row.dump, 10000);
      KeptSource kept(source);
      std::vector<FindingKind> reasons;
      for (const Finding& finding : LookAtDump(kept, "", reader).reasons) {
        reasons.push_back(finding.kind);
      }
      EXPECT_EQ(reasons, reader == Reader::Lines ? row.lines : row.grammar)
          << row.dump.substr(0, 300);
      EXPECT_LT(kept.TakeKept().size(), 600000U);
    }
  }
}

}  // namespace
}  // namespace orsa::kesncd
