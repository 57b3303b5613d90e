// The module tree: its nodes, the hierarchical run, and lookup by design names.
#include <chrono>
#include <sstream>

#include "tests/support.h"

namespace orsa::kesncd {
namespace {

using Hierarchy = FreshState;

TEST_F(Hierarchy, FirstDeclarationStays) {
  VmodHier node("u");
  node.AddSignal("clk", "wire", "!", 1);
  node.AddSignal("clock", "reg", "!", 9);
  node.AddSignal("clk", "reg", "#", 2);
  ASSERT_EQ(node.signals.size(), 2U);
  EXPECT_EQ(node.signals["!"].name + node.signals["!"].type, "clkwire");
  EXPECT_EQ(node.signals["!"].width, 1);
  EXPECT_EQ(node.signals["#"].name, "clk") << "a known name with a new code is a signal";
  EXPECT_EQ(node.names, (std::map<std::string, std::string>{{"clk", "!"}, {"clock", "!"}}));
  EXPECT_EQ(node.GetNameHier("a/b"), "a/b");
  EXPECT_EQ(VmodHier::GetNameFlat("a/b//c"), "a_b__c");
}

TEST_F(Hierarchy, CountsInTheFirstNodeOfAWalkAndClears) {
  VmodHier root("root");
  root.parent = &root;
  for (const char* name : {"a", "b"}) {
    auto* child = new VmodHier(name);
    child->AddSubMod(new VmodHier("deep"));
    child->subMods[0]->AddSignal("s", "wire", "!", 1);
    child->AddSignal("t", "wire", "%", 1);
    root.AddSubMod(child);
  }
  root.AddSubMod(nullptr);
  EXPECT_TRUE(root.IncreaseChangeForSymbol("!"));
  EXPECT_TRUE(root.IncreaseChangeForSymbol("%"));
  EXPECT_FALSE(root.IncreaseChangeForSymbol("?"));
  EXPECT_EQ(root.subMods[0]->subMods[0]->signals["!"].changes, 1);
  EXPECT_EQ(root.subMods[1]->subMods[0]->signals["!"].changes, 0);
  root.Clear();
  EXPECT_TRUE(root.name.empty() && root.subMods.empty());
  EXPECT_EQ(root.parent, &root);
}

const char kDump[] =
    "$timescale\n1ns\n$end\n$scope module tb $end\n$var wire 1 ! clk $end\n"
    "$scope module u1 $end\n$var wire 1 # q $end\n$var wire 1 $ rst $end\n$upscope $end\n"
    "$scope module u2[1:0] $end\n$var wire 1 % hidden $end\n$scope module in $end\n"
    "$var wire 4 & cnt [3:0] $end\n$var wire 1 ' q $end\n$upscope $end\n$upscope $end\n"
    "$upscope $end\n$scope module other $end\n$var wire 1 ( apart $end\n$upscope $end\n"
    "$enddefinitions $end\n#0\n1!\n1!\n1!\n1$\n1#\n1#\n1%\n1%\nb1 &\nb1 &\nb1 &\n1(\n1(\n#1000\n";

TEST_F(Hierarchy, FindsSignalsByTheirDesignNames) {
  const TempDir dir;
  KesNCD analyser;
  std::string message;
  ASSERT_TRUE(analyser.SetVCDFileHier(dir.Write("d.vcd", kDump), {}, message)) << message;
  const struct {
    const char* module;
    const char* signal;
    bool exact;
    double megahertz;  // -1: not found
  } rows[] = {
      {"tb", "clk", true, 1},      {"tb", "CLK", true, -1},    {"TB", "CLK", false, 1},
      {"other", "clk", true, -1},   // the start node is asked for its name
      {"nobody", "q", true, 0.5},   // those below it are not
      {"u2[1:0]", "rst", true, 0},  // found, without activity
      {"tb", "hidden", true, -1},   // a ':' in a scope's name hides its signals
      {"tb", "cnt_2_", true, 1},   {"tb", "cnt[4]", true, -1},  // but not those of its children
      {"tb", "apart", true, -1},  // a second top-level scope is out of reach
  };
  for (const auto& row : rows) {
    double frequency = -1;
    EXPECT_EQ(analyser.hierRoot->FindSignalFreqHier(row.module, row.signal, frequency, row.exact),
              row.megahertz >= 0)
        << row.module << " " << row.signal;
    EXPECT_EQ(frequency, row.megahertz) << row.module << " " << row.signal;
  }
  std::map<std::string, double> all{{"clk", 7}};
  debug = 1;
  analyser.hierRoot->GetSignalFreqHier(all);
  EXPECT_EQ(onlyOnce, 0);
  EXPECT_EQ(all, (std::map<std::string, double>{
                     {"clk", 7}, {"q", 0.5}, {"rst", 0}, {"hidden", 0.5}, {"cnt[3:0]", 1}}));
  analyser.IncreaseChangeForSymbol("&");
  analyser.IncreaseChangeForSymbol("none");
  EXPECT_EQ(analyser.codeIndex["&"][0]->signals["&"].changes, 4);
}

TEST_F(Hierarchy, RunReportsAndKeepsTheTreeUntilItReads) {
  const TempDir dir;
  const std::string good = dir.Write("good.vcd", kDump);
  const std::string empty = dir.Write("empty.vcd", "#1\n");
  KesNCD analyser;
  const struct {
    std::string path;
    const char* message;
    std::size_t codes;
    bool hasRoot;
  } rows[] = {
      {empty, "ERROR : Not match top module name.", 0, false},
      {good, "-", 7, true},
      {"", "ERROR: VCD file is not set.", 7, true},
      {"a.vcd", "ERROR: Cannot open 'a.vcd'to read.", 7, true},
      {good, "-", 7, true},
      {empty, "-", 0, false},
  };
  for (const auto& row : rows) {
    std::string message = "-";
    EXPECT_EQ(analyser.SetVCDFileHier(row.path, {"clk"}, message), row.message == message);
    EXPECT_EQ(message, row.message);
    EXPECT_EQ(analyser.codeIndex.size(), row.codes) << row.path;
    EXPECT_EQ(analyser.hierRoot != nullptr, row.hasRoot) << row.path;
  }
}

TEST_F(Hierarchy, ReadsAMillionScopes) {
  constexpr int kScopes = 1000000;
  const std::string open = "$scope module m $end\n";
  const std::string close = "$upscope $end\n";
  const std::string signal = "$var wire 1 ! deep $end\n";
  std::string nested = "$scope module root $end\n";
  std::string siblings = nested;
  for (int i = 0; i < kScopes; ++i) {
    nested += open;
    siblings += open + (i + 1 < kScopes ? "" : signal) + close;
  }
  nested += signal;
  std::string unlinked = nested.substr(0, 24) + close;
  for (int i = 0; i < kScopes; ++i) unlinked += open + close;
  for (const std::string* text : {&nested, &siblings, &unlinked}) {
    KesNCD analyser;
    const TextStream stream(*text + "$enddefinitions $end\n1!\n");
    ASSERT_TRUE(analyser.ParseVcdFileHier(stream, {}));
    double frequency = -1;
    EXPECT_EQ(analyser.hierRoot->FindSignalFreqHier("root", "deep", frequency, true),
              text != &unlinked);
    EXPECT_EQ(analyser.hierRoot->IncreaseChangeForSymbol("!"), text != &unlinked);
    std::map<std::string, double> all;
    analyser.hierRoot->GetSignalFreqHier(all);
    EXPECT_EQ(all.size(), text != &unlinked ? 1U : 0U);
  }
}

}  // namespace
}  // namespace orsa::kesncd
