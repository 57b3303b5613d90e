// One table of dumps against all line readers: what they do alike, and each deliberate difference.
#include <sstream>

#include "line_readers/dump_rules.h"
#include "tests/line_readers.h"
#include "tests/support.h"

namespace orsa::kesncd {
namespace {

using Readers = FreshState;

/// What the unfiltered reader makes of a dump, and where the others make something else, that.
std::string ReadAllWays(const std::string& dump) {
  std::string texts[3];
  for (const Reader reader : kReaders) {
    const Reading reading = ReadDump(reader, TextStream(dump));
    texts[static_cast<int>(reader)] = (reading.complete ? "" : "gave up ") + reading.text;
  }
  return texts[0] + (texts[1] == texts[0] ? "" : " FILTERED " + texts[1]) +
         (texts[2] == texts[0] ? "" : " TREE " + texts[2]);
}

const std::string kCases =
    R"(0, 1, vectors and reals count, x and z do not, repeats do
HEAD~#0~$dumpvars~0!~b0 "~$end~#10~1!~x!~z!~X!~Z!~#500~1!~B1 "~r1 "~R1 " => 0-500 top(clk=3 d[7:0]=4)
a time scale on its keyword's line is not read
$timescale 1ns $end~TOP~CLK~UP~END~1! => 0ns top(clk=1)
a time scale that is not understood ends the reading
$timescale~1.5ns~$end~TOP~CLK~UP~END => gave up -1ns  FILTERED -1ns 
a scope in place of the time scale opens a node in the hierarchy only
$timescale~TOP~CLK~UP~END~1! => gave up -1ns  FILTERED -1ns  TREE 0ns top(clk=1)
recording off and on, in any state; only alone on a line
$dumpoff~HEAD~1!~$dumpon~1!~$dumpoff~1!~$dumpall~0!~$dumpoff ~1!~$dumpvars x~1! => off top(clk=2 d[7:0]=0)
stamps: alone on their line, after the definitions, with the tail of a longer one
SCALE~#3~TOP~CLK~UP~END~#10 1!~#1000~#5 => 1000-5000 top(clk=0)
a tail from a code, where words and stamps share a splitter
SCALE~TOP~$var wire 1 777 c[0] $end~UP~END~#1~b1 777~#12 => 1-12 top(c[0]=1) FILTERED 1-127 top(c[0]=1)
stamps without a number
HEAD~#x~#0~#x => 0-0 top(clk=0 d[7:0]=0)
a vector without a code, an empty code, an unknown code
HEAD~b1~1~0?~b0 ?~1! and more~b1 " and more~$end~1! => top(clk=2 d[7:0]=1)
the selection filters names without an index only
SCALE~TOP~QU~$var reg 1 a rst $end~$var reg 1 d x y $end~$var reg 4 e z [3]x $end~UP~END~1a~1#~1d~1e => top(u_q=1 rst=1 xy=1 z[3]x=1) FILTERED top(u_q=1 z[3]x=1)
declarations of other lengths are none
SCALE~TOP~$var wire 8 # d [7 : 0] $end~$var wire 1 ! $end~$VAR wire 1 ! no $end~$var wire 1 ! clk stop~UP~END~1!~b1 # => top(clk=1)
a sub-module ends the flat collection
SCALE~TOP~CLK~U~$var wire 1 ! i $end~UP~QU~UP~END~1!~1# => top(clk=1) TREE top(clk=1 u_q=1 u(i=1))
a top module that begins with a sub-module
SCALE~TOP~U~UP~CLK~UP~END~1! => gave up top() FILTERED top() TREE top(clk=1 u())
an empty top module
SCALE~TOP~UP~END~1! => gave up top() FILTERED top() TREE top()
no top module
SCALE~U~CLK~UP~END~1! => gave up  FILTERED  TREE u(clk=1)
a second scope of the top's name adds to it; the hierarchy links it nowhere
SCALE~TOP~CLK~UP~TOP~QU~UP~END~1!~1# => top(clk=1 u_q=1) TREE top(clk=1) +top(u_q=1)
one code, two names: the first counts, in the hierarchy twice
SCALE~TOP~CLK~$var wire 1 ! u_q $end~UP~END~1! => top(clk=1 u_q=0) TREE top(clk=2)
functions and tasks open a node; for the flat readers they are none, and end the top module
SCALE~TOP~CLK~$scope function f $end~$var reg 1 a f1 $end~UP~$scope task t $end~UP~QU~UP~END~1a => top(clk=0 f1=1) FILTERED top(clk=0) TREE top(clk=0 u_q=0 f(f1=1) t())
the end of a scope of another kind closes the node around it
SCALE~TOP~CLK~$scope begin b $end~$var reg 1 b b1[0] $end~UP~UP~QU~END~1b => top(clk=0 b1[0]=1)
definitions that end inside the top module
SCALE~TOP~CLK~END~1! => top(clk=0) TREE top(clk=1)
a scope after the definitions
HEAD~1!~$scope module late $end~1!~$var wire 1 ! again $end~END~1! => top(clk=3 d[7:0]=0) TREE top(clk=2 d[7:0]=0) +late(again=1)
a time scale after the definitions: the flat readers find back, the hierarchy does not
HEAD~1!~$timescale~1ps~$end~1!~END~1! => 0.001ns top(clk=2 d[7:0]=0) TREE 0.001ns top(clk=1 d[7:0]=0)
keywords count with exactly their words, case by case
SCALE~TOP~$upscope~$upscope $END~$upscope x $end~CLK~UP~END~$DUMPOFF~$dumpoff now~1! => top(clk=1))";

TEST_F(Readers, TakeTheSameDumps) {
  const std::vector<std::string> cases = Cut(kCases, "\n");
  for (std::size_t i = 0; i < cases.size(); i += 2) {
    const std::vector<std::string> row = Cut(cases[i + 1], " => ");
    EXPECT_EQ(ReadAllWays(Dump(row[0])), row[1]) << cases[i];
  }
  EXPECT_EQ(ReadAllWays(""), "0ns ");
  EXPECT_EQ(ReadAllWays(Dump(std::string("HEAD~1!\0x~\0~1!", 14))), "top(clk=2 d[7:0]=0)");
  EXPECT_EQ(ReadAllWays(Dump(
                "$timescale\r~\t1 \tps\r~$end~TOP~\t$var  wire 1\t! c[0] $end\r~UP~END~ 1!\r")),
            "0.001ns top(c[0]=1)");
  // The unfiltered reader cuts lines sooner: here in front of a change and of an $end.
  EXPECT_EQ(ReadAllWays(Dump("HEAD~x!~" + std::string(1023, 'x') + "1!~")),
            "top(clk=1 d[7:0]=0) FILTERED top(clk=0 d[7:0]=0) TREE top(clk=0 d[7:0]=0)");
  const std::string name = std::string(1005, 'n') + "[0]";
  EXPECT_EQ(ReadAllWays(Dump("SCALE~TOP~$var wire 1 ! " + name + " $end~UP~END~1!")),
            "gave up top() FILTERED top(" + name + "=1) TREE top(" + name + "=1)");
}

TEST_F(Readers, LeaveTheStreamBehindTheLastLineHandled) {
  for (const std::string dump : {"$timescale~bad~12", "HEAD~1!~$timescale~bad~12"}) {
    for (const Reader reader : kReaders) {
      const TextStream stream(Dump(dump));
      ReadDump(reader, stream);
      EXPECT_EQ(std::ftell(stream) + 2, static_cast<long>(Dump(dump).size())) << dump;
    }
  }
}

TEST_F(Readers, CountCodesThatTheModuleHeldOnlyWhenUnfiltered) {
  for (const bool filtered : {false, true}) {
    ResetReaderState();
    topMod.AddSignal("earlier", "wire", "?", 1);
    topMod.AddSignal("same", "wire", "!", 1);
    topMod.AddSignal("unseen", "wire", std::string("!\0", 2), 1);
    KesNCD analyser;
    analyser.SetTopModule("top");
    const TextStream dump(Dump("HEAD~1?~1!~1!"));
    filtered ? (void)analyser.ParseVcdFile2(dump, {"clk"}) : (void)analyser.ParseVcdFile(dump);
    EXPECT_EQ(TopModCounts(), std::string(filtered ? "earlier=0" : "earlier=1") +
                                  " same=2 unseen=0 clk=0 d[7:0]=0");
  }
}

TEST_F(Readers, KeepASpanWithOneNegativeBound) {
  // the span, a stamp, and the span after it
  const double rows[][5] = {{-1, -1, 4, 4, 4}, {4, 4, 9, 4, 9},   {4, 9, 2, 4, 2},
                            {-1, 9, 5, -1, 9}, {4, -1, 5, 4, -1}, {-1, -1, -3, -3, -3}};
  for (const auto& [start, end, stamp, newStart, newEnd] : rows) {
    for (const bool inDump : {false, true}) {
      if (inDump && stamp < 0) continue;  // no dump holds such a stamp
      startCycle = start;
      endCycle = end;
      const TextStream dump(Dump("HEAD~x!~#" + std::to_string(static_cast<int>(stamp)) + "~"));
      inDump ? (void)KesNCD().ParseVcdFileHier(dump, {}) : TakeStamp(stamp, startCycle, endCycle);
      EXPECT_EQ(std::pair(startCycle, endCycle), std::pair(newStart, newEnd)) << stamp;
    }
  }
}

// Short codes are looked up as integers, long ones as strings; all of them are different.
TEST_F(Readers, TellManyCodesApart) {
  std::string dump = Dump("SCALE~TOP");
  std::string body = Dump("\n~UP~END");
  for (int i = 0; i < 5000; ++i) {
    const std::string code = std::string(1, static_cast<char>('!' + i % 90)) + std::to_string(i) +
                             (i % 3 == 0 ? "-and-longer" : "");
    dump += "\n$var wire 1 " + code + " s $end";
    for (int k = 0; k < i % 4; ++k) body += "\n1" + code;
  }
  ReadDump(Reader::Unfiltered, TextStream(dump + body));
  ASSERT_EQ(topMod.GetSignalSize(), 5000);
  for (int i = 0; i < 5000; ++i) ASSERT_EQ(topMod.GetSignalChange(i), i % 4) << i;
}

}  // namespace
}  // namespace orsa::kesncd
