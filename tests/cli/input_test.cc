// Ways of a dump into the program: packed, through pipes, prepared on its way or untouched, with
// progress on a terminal, interrupted.
#include <regex>

#include "cli/process/progress.h"
#include "tests/support/shell.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

using namespace cli;

// A time scale that the library's readers do not see, two top-level scopes, a signal of two names.
const std::string kOdd = Dump(
    "$timescale 1ns $end~$scope module p $end~UP~$scope module tb $end~$scope begin u $end~"
    "$var wire 1 ! q $end~UP~CLK~$var wire 1 ! ck2 $end~UP~$scope module tc $end~"
    "$var wire 1 \" r $end~UP~END~#0~1!~0!~1!~#10~");

TEST(Input, ReachesTheLibraryInEveryWay) {
  const TempDir dir;
  dir.Write("odd.vcd", kOdd);
  std::string rows =
      R"(gzip -k odd.vcd; zstd -q odd.vcd; mkfifo pipe; split -b 100 odd.vcd part; for p in part*; do gzip -c $p; done > many.gz => 0
kesncd flat odd.vcd --format csv; ls *.txt => 2 => FLAT => TOPls: .*\n
kesncd flat odd.vcd --format csv --activity -q && kesncd flat odd.vcd --as-is --top tb -q => 0 => FLATsignal +freq_mhz\nq +0\n
cat odd.vcd.txt odd.vcd.gz.txt => 1 => module \| tb\nsignal \| clk \| 100.000000\n
    signal \| ck2 \| 100.000000\n => .*\n
kesncd flat odd.vcd.gz --format csv --activity && rm odd.vcd*.txt => 0 => FLAT => TOP
kesncd flat odd.vcd.zst --format csv --activity=a && cmp a odd.vcd.zst.txt => 2 => FLAT => TOPcmp: .*\n
kesncd flat - --format csv < odd.vcd => 0 => FLAT => TOP
cat many.gz | kesncd flat - --format csv --activity=b && cmp a b => 0 => FLAT => TOP
cat odd.vcd > pipe & kesncd flat pipe --format csv => 0 => FLAT => TOP
kesncd flat odd.vcd --reader grammar --format csv --activity=b && cmp a b => 0 => signal,freq_mhz\r\n
    clk,100\r\nck2,100\r\n
kesncd find odd.vcd.gz r no --format csv => 0 => name,scope,signal,freq_mhz,status\r\nr,tc,r,0,found\r\n
    no,,,,not found\r\n
kesncd tree odd.vcd --format csv | cut -d, -f1-4 => 0 => path,kind,signals,changes\ntb,module,1,3\n
    tb/u,module,1,3\ntc,module,1,0\n
kesncd tree odd.vcd --top tb/u --format csv | cut -d, -f1-4 | tail -1 => 0 => tb/u,module,1,3\n
kesncd flat odd.vcd --as-is --format csv --top tb => 0 => signal,freq_mhz\r\n
    q,0\r\n => kesncd: odd.vcd: no time scale .*\n
kesncd find - r --as-is --format csv < odd.vcd => 1 => name,scope,signal,freq_mhz,status\r\n
    r,,,,not found\r\n => (.|\n)*2 further top-level scopes .*\n
kesncd top odd.vcd.gz; kesncd top - < odd.vcd => 0 => tb\ntb\n
kesncd check odd.vcd.zst --format csv | head -2 | cut -c-8 => 0 => finding,\npacked: \n
kesncd prepare odd.vcd.gz -o p.vcd && kesncd flat p.vcd --top tb --format csv => 0 => FLAT => kesncd: odd.vcd.gz: it has several [^\n]*\n
head -c 90 odd.vcd.gz | kesncd flat - -o o => 2 =>  => kesncd: .*: it is cut off inside .*\n
head -c 90 odd.vcd.zst | kesncd tree - => 2 =>  => kesncd: .*: it is cut off inside .*\n
(head -c 40 odd.vcd.gz; head -c 400 /dev/zero) | kesncd check - => 2 =>  => kesncd: .*: its packed bytes .*\n
kesncd flat odd.vcd --activity=no/such => 3 =>  => (.|\n)*kesncd: no/such: cannot .*\n
kesncd flat odd.vcd --activity=/dev/full => 3 =>  => (.|\n)*kesncd: /dev/full: .*\n
xz -k odd.vcd; for p in part*; do xz -c $p; done | kesncd flat - --format csv => 0 => FLAT => TOP
bzip2 -k odd.vcd; for p in part*; do bzip2 -c $p; done | kesncd flat - --format csv => 0 => FLAT => TOP
kesncd flat odd.vcd.xz --format csv; kesncd flat odd.vcd.bz2 --format csv -q => 0 => FLATFLAT => TOP
(printf 'P\052M\030\003\000\000\000abc'; cat odd.vcd.zst) | kesncd flat - --format csv => 0 => FLAT => TOP
head -c 90 odd.vcd.xz | kesncd tree - => 2 =>  => kesncd: .*: it is cut off inside .*\n
head -c 90 odd.vcd.bz2 | kesncd tree - => 2 =>  => kesncd: .*: it is cut off inside .*\n
(head -c 90 odd.vcd.xz; head -c 400 /dev/zero) | kesncd check - => 2 =>  => kesncd: .*: its packed bytes .*\n
(head -c 90 odd.vcd.bz2; head -c 400 /dev/zero) | kesncd check - => 2 =>  => kesncd: .*: its packed bytes .*\n
rm odd.vcd.xz odd.vcd.bz2 => 0
ls => 0 => a\nb\nerrors\nmany.gz\nodd.vcd\nodd.vcd.gz\nodd.vcd.zst\np.vcd\n
    partaa\npartab\npartac\npipe\n
kesncd flat - --activity < odd.vcd => 2 =>  => kesncd: standard input: is no file .*; --activity=FILE\n
cp odd.vcd odd.vcd.txt; kesncd flat odd.vcd --activity; cmp odd.vcd odd.vcd.txt => 0 =>  => kesncd: odd.vcd.txt: is there already and is no activity file; .*\n
kesncd flat odd.vcd --as-is --top tb --activity=many.gz => 2 =>  => kesncd: many.gz: is there already .*\n)";
  for (const auto& [word, text] :
       {std::pair("FLAT", R"(signal,freq_mhz\r\nck2,100\r\nclk,100\r\n)"),
        {"TOP", R"(kesncd: .*: top module is tb; --top chooses another\n)"}}) {
    rows = std::regex_replace(rows, std::regex(word), text);
  }
  ExpectRuns(dir, rows);
}

TEST(Input, ReadsFstThroughItsConverter) {
  const TempDir dir;
  dir.Write("odd.vcd", kOdd);
  // What stands for the converter when it fails, and where it is not installed.
  std::filesystem::create_directories(dir.Path("fails"));
  std::filesystem::create_directories(dir.Path("none"));
  dir.Write("fails/fst2vcd", "#!/bin/sh\nhead -c 150 odd.vcd\nexit 3\n");
  dir.Write("fst", std::string("\0\0\0\0\0\0\0\x01\x49 and more", 19));
  ExpectRuns(
      dir,
      R"(chmod +x fails/fst2vcd; K=$(command -v kesncd); PATH=$PWD/none $K tree fst => 2 =>  => kesncd: fst: is FST, 
    no VCD file: it is read by fst2vcd, which is not installed \(Debian: gtkwave\)\n
PATH=$PWD/fails:$PATH kesncd activity fst --format csv => 2 =>  => kesncd: fst: fst2vcd could not read it\n
cat fst | kesncd tree - => 2 =>  => kesncd: standard input: is FST, .* not from a pipe\n)");
  if (std::system("command -v vcd2fst >/dev/null && command -v fst2vcd >/dev/null") != 0) {
    GTEST_SKIP() << "there is no fst2vcd";
  }
  ExpectRuns(
      dir,
      R"(vcd2fst odd.vcd d.fst >/dev/null && kesncd find d.fst clk --format csv => 0 => name,.*\r\nclk,tb,clk,100,found\r\n => .*
kesncd find - clk -q --format csv < d.fst => 0 => name,.*\r\nclk,(.|\r|\n)*
head -c 100 d.fst > cut; kesncd tree cut => 2 =>  => (.|\n)*kesncd: cut: fst2vcd could not read it\n)");
}

TEST(Input, ShowsProgressAndColourOnATerminalOnly) {
  const TempDir dir;
  dir.Write("odd.vcd", kOdd);
  dir.Write("slow", "cat odd.vcd; sleep 1.5; echo '#11'; sleep 0.1; echo '#12'");
  if (std::system("script --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "there is no script";
  // Each command has a terminal for its standard error.
  ExpectRuns(
      dir, R"(script -qec "sh slow | TERM=xterm kesncd flat - --as-is --top tb > out" /dev/null => 0
     => (\r\n?standard input: 0 MB, 0 MB/s *)+\r *\r\x1b\[1mkesncd:\x1b\[0m standard (.|\r|\n)*
script -qec "sh slow | TERM=xterm kesncd tree - --quiet > out" /dev/null => 0
script -qec "kesncd top odd.vcd -q; printf 'name \\033[2J\\302\\233x\\342\\200\\256\\377\\n' > names
     && kesncd find odd.vcd --names-from names --format csv -q" /dev/null => 1 => tb\r\n
    name,scope,signal,freq_mhz,status\r+\nname \?\[2J\?x\?\?,(.|\r|\n)*
script -qec "TERM=xterm NO_COLOR=1 kesncd flat odd.vcd > out" /dev/null => 0 => kesncd: odd.vcd: .*\r\n
script -qec "TERM=dumb kesncd flat odd.vcd > out" /dev/null => 0 => kesncd: odd.vcd: .*\r\n
script -qec "TERM=xterm kesncd flat odd.vcd 2>&1 | cat" /dev/null => 0 => kesncd: odd.vcd: (.|\r|\n)*)");
  EXPECT_EQ(ProgressText(1'500'000'000, 4'000'000'000, 2.0), "37 %, 750 MB/s, 4 s left");
  EXPECT_EQ(ProgressText(4000, 1, 1.0), "100 %, 0 MB/s, 0 s left");
}

TEST(Input, EndsAtOnceWhenInterrupted) {
  const TempDir dir;
  dir.Write("odd.vcd", kOdd);
  dir.Write("o", "earlier");
  // The dump does not come to its end before.
  const std::string run = "(cat odd.vcd; sleep 1) | timeout --preserve-status -s INT 0.4 kesncd ";
  for (const char* arguments : {"prepare - -o o", "flat - -o o --activity=a --reader grammar"}) {
    EXPECT_EQ(Shell(dir.Path("."), run + arguments).status, 130);
  }
  EXPECT_EQ(Shell(dir.Path("."), "ls; cat o").out, "o\nodd.vcd\nearlier");
}

}  // namespace
}  // namespace orsa::kesncd
