// One table of dumps against all line readers: what they do alike, and each deliberate difference.
#include <functional>
#include <sstream>

#include "kesncd/vcd/dump_rules.h"
#include "tests/support.h"

namespace orsa::kesncd {
namespace {

using Readers = FreshState;

const std::string kScale = "$timescale\n1ns\n$end\n";
const std::string kTop = "$scope module top $end\n";
const std::string kVars = "$var wire 1 ! clk $end\n$var wire 8 # d [7:0] $end\n";
const std::string kEnd = "$upscope $end\n$enddefinitions $end\n";
const std::string kHeader = kScale + kTop + kVars + kEnd;

std::string State(bool complete) {
  std::ostringstream text;
  text << (complete ? "" : "gave up ") << timeScale << " " << startCycle << "-" << endCycle;
  return text.str();
}

std::string Flat(const std::string& dump, bool filtered) {
  ResetReaderState();
  KesNCD analyser;
  analyser.SetTopModule("top");
  const TextStream stream(dump);
  bool complete = true;
  if (filtered) {
    EXPECT_EQ(analyser.ParseVcdFile2(stream, {"clk", "u/q"}), 0);
  } else {
    complete = analyser.ParseVcdFile(stream);
  }
  return State(complete) + " " + TopModCounts();
}

/// Scopes with their signals: "top(clk=1 d[7:0]=0 u(x=0))", and those that hang nowhere behind.
void Describe(const VmodHier& scope, std::ostream& out) {
  out << scope.name << "(";
  const char* blank = "";
  for (const auto& [code, signal] : scope.signals) {
    out << blank << signal.name << "=" << signal.changes;
    blank = " ";
  }
  for (const VmodHier* child : scope.subMods) {
    out << blank;
    blank = " ";
    Describe(*child, out);
  }
  out << ")";
}

std::string Hierarchical(const std::string& dump) {
  ResetReaderState();
  KesNCD analyser;
  const TextStream stream(dump);
  const bool complete = analyser.ParseVcdFileHier(stream, {});
  std::ostringstream text;
  text << State(complete) << " ";
  if (analyser.hierRoot != nullptr) Describe(*analyser.hierRoot, text);
  std::set<const VmodHier*> shown;
  for (const auto& [code, scopes] : analyser.codeIndex) {
    for (const VmodHier* scope : scopes) {
      const bool unlinked = scope->parent == nullptr && scope != analyser.hierRoot;
      if (unlinked && shown.insert(scope).second) Describe(*scope, text << " +");
    }
  }
  return text.str();
}

struct Row {
  const char* why;
  std::string dump;
  std::string unfiltered, filtered, hierarchical;
};

const std::string kLong(1100, 'n');

const Row kRows[] = {
    {"0, 1, vectors and reals count, x and z do not, repeats do",
     kHeader +
         "#0\n$dumpvars\n0!\nb0 #\n$end\n#10\n1!\nx!\nz!\nX!\nZ!\n#500\n1!\nB1 #\nr1 #\nR1 #\n",
     "1 0-500 clk=3 d[7:0]=4", "1 0-500 clk=3 d[7:0]=4", "1 0-500 top(clk=3 d[7:0]=4)"},
    {"time scale of two words; blanks, tabs and CR between words",
     "$timescale\r\n\t10 \tps\r\n$end\n" + kTop + "\t$var  wire 1\t! clk $end\r\n" + kEnd +
         " #0\n  1!\r\n",
     "0.01 0-0 clk=1", "0.01 0-0 clk=1", "0.01 0-0 top(clk=1)"},
    {"a time scale on its keyword's line is not read",
     "$timescale 1ns $end\n" + kTop + kVars + kEnd + "1!\n", "0 -1--1 clk=1 d[7:0]=0",
     "0 -1--1 clk=1 d[7:0]=0", "0 -1--1 top(clk=1 d[7:0]=0)"},
    {"a time scale that is not understood ends the reading",
     "$timescale\n1.5ns\n$end\n" + kTop + kVars + kEnd, "gave up -1 -1--1 ", "-1 -1--1 ",
     "gave up -1 -1--1 "},
    {"a scope in place of the time scale opens a node in the hierarchy only",
     "$timescale\n" + kTop + kVars + kEnd + "1!\n", "gave up -1 -1--1 ", "-1 -1--1 ",
     "0 -1--1 top(clk=1 d[7:0]=0)"},
    {"recording off and on, in any state; only alone on a line",
     "$dumpoff\n" + kHeader +
         "1!\n$dumpon\n1!\n$dumpoff\n1!\n$dumpall\n0!\n$dumpoff \t\n1!\n$dumpvars x\n1!\n",
     "1 -1--1 clk=2 d[7:0]=0", "1 -1--1 clk=2 d[7:0]=0", "1 -1--1 top(clk=2 d[7:0]=0)"},
    {"stamps: alone on their line, after the definitions, with the tail of a longer one",
     kScale + "#3\n" + kTop + kVars + kEnd + "#10 1!\n#1000\n#5\n", "1 1000-5000 clk=0 d[7:0]=0",
     "1 1000-5000 clk=0 d[7:0]=0", "1 1000-5000 top(clk=0 d[7:0]=0)"},
    {"a tail from a code, where words and stamps share a splitter",
     kScale + kTop + "$var wire 1 777 c[0] $end\n" + kEnd + "#1\nb1 777\n#12\n", "1 1-12 c[0]=1",
     "1 1-127 c[0]=1", "1 1-12 top(c[0]=1)"},
    {"stamps without a number", kHeader + "#x\n#0\n#x\n", "1 0-0 clk=0 d[7:0]=0",
     "1 0-0 clk=0 d[7:0]=0", "1 0-0 top(clk=0 d[7:0]=0)"},
    {"a vector without a code, an empty code, an unknown code",
     kHeader + "b1\n1\n0?\nb0 ?\n1! and more\nb1 # and more\n$end\n1!", "1 -1--1 clk=2 d[7:0]=1",
     "1 -1--1 clk=2 d[7:0]=1", "1 -1--1 top(clk=2 d[7:0]=1)"},
    {"a NUL hides the rest of its line", kHeader + std::string("1!\0x\n\0\n1!\n", 9),
     "1 -1--1 clk=2 d[7:0]=0", "1 -1--1 clk=2 d[7:0]=0", "1 -1--1 top(clk=2 d[7:0]=0)"},
    {"the selection filters names without an index only",
     kScale + kTop +
         "$var reg 1 a rst $end\n$var reg 1 b u_q $end\n$var reg 1 c m[0] $end\n"
         "$var reg 1 d x y $end\n$var reg 4 e z [3:0] $end\n" +
         kEnd + "1a\n1b\n1c\n1d\n1e\n",
     "1 -1--1 rst=1 u_q=1 m[0]=1 xy=1 z[3:0]=1", "1 -1--1 u_q=1 m[0]=1 z[3:0]=1",
     "1 -1--1 top(rst=1 u_q=1 m[0]=1 xy=1 z[3:0]=1)"},
    {"declarations of other lengths are none",
     kScale + kTop + "$var wire 8 # d [7 : 0] $end\n$var wire 1 ! $end\n$var wire 1 ! clk stop\n" +
         "$VAR wire 1 ! no $end\n" + kEnd + "1!\nb1 #\n",
     "1 -1--1 clk=1", "1 -1--1 clk=1", "1 -1--1 top(clk=1)"},
    {"a sub-module ends the flat collection",
     kScale + kTop +
         "$var wire 1 ! clk $end\n$scope module u $end\n$var wire 1 ! i $end\n"
         "$upscope $end\n$var wire 1 # u_q $end\n" +
         kEnd + "1!\n1#\n",
     "1 -1--1 clk=1", "1 -1--1 clk=1", "1 -1--1 top(clk=1 u_q=1 u(i=1))"},
    {"a top module that begins with a sub-module",
     kScale + kTop + "$scope module u $end\n$upscope $end\n" + kVars + kEnd + "1!\n",
     "gave up 1 -1--1 ", "1 -1--1 ", "1 -1--1 top(clk=1 d[7:0]=0 u())"},
    {"an empty top module", kScale + kTop + kEnd + "1!\n", "gave up 1 -1--1 ", "1 -1--1 ",
     "1 -1--1 top()"},
    {"no top module", kScale + "$scope module tap $end\n" + kVars + kEnd + "1!\n",
     "gave up 1 -1--1 ", "1 -1--1 ", "1 -1--1 tap(clk=1 d[7:0]=0)"},
    {"a second scope of the top's name adds to it; the hierarchy links it nowhere",
     kScale + kTop + "$var wire 1 ! clk $end\n$upscope $end\n" + kTop + "$var wire 1 # u_q $end\n" +
         kEnd + "1!\n1#\n",
     "1 -1--1 clk=1 u_q=1", "1 -1--1 clk=1 u_q=1", "1 -1--1 top(clk=1) +top(u_q=1)"},
    {"one code, two names: the first counts, in the hierarchy twice",
     kScale + kTop + "$var wire 1 ! clk $end\n$var wire 1 ! u_q $end\n" + kEnd + "1!\n",
     "1 -1--1 clk=1 u_q=0", "1 -1--1 clk=1 u_q=0", "1 -1--1 top(clk=2)"},
    {"functions and tasks open a node, other kinds close the node around them; for the flat "
     "readers both are none, and the first end of a scope ends the top module",
     kScale + kTop +
         "$var wire 1 ! clk $end\n$scope function f $end\n$var reg 1 a f1 $end\n"
         "$upscope $end\n$scope begin b $end\n$var reg 1 b b1 $end\n$upscope $end\n"
         "$var reg 1 c lost $end\n$upscope $end\n$enddefinitions $end\n1a\n1b\n1c\n",
     "1 -1--1 clk=0 f1=1", "1 -1--1 clk=0", "1 -1--1 top(clk=0 b1=1 f(f1=1))"},
    {"definitions that end inside the top module",
     kScale + kTop + kVars + "$enddefinitions $end\n1!\n", "1 -1--1 clk=0 d[7:0]=0",
     "1 -1--1 clk=0 d[7:0]=0", "1 -1--1 top(clk=1 d[7:0]=0)"},
    {"a scope after the definitions",
     kHeader +
         "1!\n$scope module late $end\n1!\n$var wire 1 ! again $end\n$enddefinitions $end\n1!\n",
     "1 -1--1 clk=3 d[7:0]=0", "1 -1--1 clk=3 d[7:0]=0",
     "1 -1--1 top(clk=2 d[7:0]=0) +late(again=1)"},
    {"a time scale after the definitions: the flat readers find back, the hierarchy does not",
     kHeader + "1!\n$timescale\n1ps\n$end\n1!\n$enddefinitions $end\n1!\n",
     "0.001 -1--1 clk=2 d[7:0]=0", "0.001 -1--1 clk=2 d[7:0]=0", "0.001 -1--1 top(clk=1 d[7:0]=0)"},
    {"long lines are cut, for the unfiltered reader sooner",
     kScale + kTop + "$var wire 1 ! " + kLong + "[0] $end\n" + kEnd + "1!\n", "gave up 1 -1--1 ",
     "1 -1--1 " + kLong + "[0]=1", "1 -1--1 top(" + kLong + "[0]=1)"},
    {"keywords count with exactly their words, case by case",
     kScale + kTop + kVars + "$upscope\n$upscope $END\n$upscope x $end\n" + kEnd +
         "$DUMPOFF\n$dumpoff now\n1!\n",
     "1 -1--1 clk=1 d[7:0]=0", "1 -1--1 clk=1 d[7:0]=0", "1 -1--1 top(clk=1 d[7:0]=0)"},
    {"nothing at all", "", "0 -1--1 ", "0 -1--1 ", "0 -1--1 "},
};

TEST_F(Readers, TakeTheSameDumps) {
  for (const Row& row : kRows) {
    EXPECT_EQ(Flat(row.dump, false), row.unfiltered) << row.why;
    EXPECT_EQ(Flat(row.dump, true), row.filtered) << row.why;
    EXPECT_EQ(Hierarchical(row.dump), row.hierarchical) << row.why;
  }
}

TEST_F(Readers, LeaveTheStreamBehindTheLastLineHandled) {
  const std::string text = "$timescale\nbad\n1 ns rest\n";
  const std::function<void(KesNCD&, std::FILE*)> readers[] = {
      [](KesNCD& analyser, std::FILE* file) { analyser.ParseVcdFile(file); },
      [](KesNCD& analyser, std::FILE* file) { analyser.ParseVcdFile2(file, {}); },
      [](KesNCD& analyser, std::FILE* file) { analyser.ParseVcdFileHier(file, {}); },
  };
  for (const auto& read : readers) {
    const TextStream stream(text);
    KesNCD analyser;
    read(analyser, stream);
    EXPECT_EQ(std::ftell(stream), 15);
  }
}

TEST_F(Readers, CountCodesThatTheModuleHeldOnlyWhenUnfiltered) {
  for (const bool filtered : {false, true}) {
    ResetReaderState();
    KesNCD analyser;
    analyser.SetTopModule("top");
    topMod.AddSignal("earlier", "wire", "?", 1);
    topMod.AddSignal("same", "wire", "!", 1);
    topMod.AddSignal("unseen", "wire", std::string("!\0", 2), 1);
    const TextStream stream(kHeader + "1?\n1!\n1!\n");
    if (filtered) {
      analyser.ParseVcdFile2(stream, {"clk"});
    } else {
      analyser.ParseVcdFile(stream);
    }
    EXPECT_EQ(TopModCounts(), filtered ? "earlier=0 same=2 unseen=0 clk=0 d[7:0]=0"
                                       : "earlier=1 same=2 unseen=0 clk=0 d[7:0]=0");
  }
}

TEST_F(Readers, KeepASpanWithOneNegativeBound) {
  const struct {
    double start, end, stamp, newStart, newEnd;
  } rows[] = {{-1, -1, 4, 4, 4}, {4, 4, 9, 4, 9},   {4, 9, 2, 4, 2},
              {-1, 9, 5, -1, 9}, {4, -1, 5, 4, -1}, {-1, -1, -3, -3, -3}};
  for (const auto& row : rows) {
    for (const bool inDump : {false, true}) {
      if (inDump && row.stamp < 0) continue;  // no dump holds such a stamp
      startCycle = row.start;
      endCycle = row.end;
      const TextStream dump(kHeader + "#" + std::to_string(static_cast<int>(row.stamp)) + "\n");
      inDump ? (void)KesNCD().ParseVcdFileHier(dump, {}) : TakeStamp(row.stamp);
      EXPECT_EQ(startCycle, row.newStart);
      EXPECT_EQ(endCycle, row.newEnd);
    }
  }
}

// Short codes are looked up as integers, long ones as strings; all of them are different.
TEST_F(Readers, TellManyCodesApart) {
  std::string dump = kScale + kTop;
  std::string body;
  for (int i = 0; i < 5000; ++i) {
    const std::string code = std::string(1, static_cast<char>('!' + i % 90)) + std::to_string(i) +
                             (i % 3 == 0 ? "-and-longer" : "");
    dump += "$var wire 1 " + code + " s" + std::to_string(i) + " $end\n";
    for (int k = 0; k < i % 4; ++k) body += "1" + code + "\n";
  }
  ASSERT_NE(Flat(dump + kEnd + body, false), "");
  ASSERT_EQ(topMod.GetSignalSize(), 5000);
  for (int i = 0; i < 5000; ++i) ASSERT_EQ(topMod.GetSignalChange(i), i % 4) << i;
}

}  // namespace
}  // namespace orsa::kesncd
