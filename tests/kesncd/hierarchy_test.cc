// The module tree: its nodes, the hierarchical run, and lookup by design names.
#include <sstream>

#include "tests/support/case_files.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

using Hierarchy = FreshState;

TEST_F(Hierarchy, FirstDeclarationStays) {
  VmodHier node("u");
  node.AddSignal("clk", "wire", "!", 1);
  node.AddSignal("clock", "reg", "!", 9);
  node.AddSignal("clk", "reg", "#", 2);
  ASSERT_EQ(node.signals.size(), 2U);
  const VmodSignal& first = node.signals["!"];
  EXPECT_EQ(first.name + first.type + std::to_string(first.width), "clkwire1");
  EXPECT_EQ(node.signals["#"].name, "clk") << "a known name with a new code is a signal";
  EXPECT_EQ(node.names, (std::map<std::string, std::string>{{"clk", "!"}, {"clock", "!"}}));
  EXPECT_EQ(node.GetNameHier("a/b") + VmodHier::GetNameFlat("a/b//c"), "a/ba_b__c");
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
  EXPECT_TRUE(root.IncreaseChangeForSymbol("!") && root.IncreaseChangeForSymbol("%"));
  EXPECT_FALSE(root.IncreaseChangeForSymbol("?"));
  EXPECT_EQ(root.subMods[0]->subMods[0]->signals["!"].changes, 1);
  EXPECT_EQ(root.subMods[1]->subMods[0]->signals["!"].changes, 0);
  root.Clear();
  EXPECT_TRUE(root.name.empty() && root.subMods.empty() && root.parent == &root);
}

const std::string kDump = CaseIn("tests/cases/kesncd.txt", "scopes and second top").dump;

TEST_F(Hierarchy, FindsSignalsByTheirDesignNames) {
  const TempDir dir;
  KesNCD analyser;
  std::string message;
  ASSERT_TRUE(analyser.SetVCDFileHier(dir.Write("d.vcd", kDump), {}, message)) << message;
  // The frequency exactly and whatever the case, -1 where nothing is found. Only the start node is
  // asked for the module's name; a ':' in a scope's name hides its signals, but not those of its
  // children; a second top-level scope is out of reach.
  const char* const table =
      "tb clk => 1 1;tb CLK => -1 1;TB clk => -1 1;other clk => -1 -1;nobody q => 0.5 0.5;"
      "u2[1:0] rst => 0 0;tb hidden => -1 -1;tb cnt_2_ => 1 1;tb cnt[4] => -1 -1;tb apart => -1 -1";
  for (const auto& row : Rows(table, ";")) {
    const std::vector<std::string> names = Cut(row[0], " ");
    double found[] = {-1, -1};
    for (const bool exact : {true, false}) {
      double& frequency = found[exact ? 0 : 1];
      const bool isThere =
          analyser.hierRoot->FindSignalFreqHier(names[0], names[1], frequency, exact);
      EXPECT_EQ(isThere, frequency >= 0);
    }
    std::ostringstream text;
    text << found[0] << " " << found[1];
    EXPECT_EQ(text.str(), row[1]) << row[0];
  }
  std::map<std::string, double> all{{"clk", 7}};
  debug = 1;
  analyser.hierRoot->GetSignalFreqHier(all);
  EXPECT_EQ(onlyOnce, 0);
  EXPECT_EQ(all, (std::map<std::string, double>{
                     {"clk", 7}, {"q", 0.5}, {"rst", 0}, {"hidden", 0.5}, {"cnt[3:0]", 1}}));
  for (const char* code : {"&", "none"}) analyser.IncreaseChangeForSymbol(code);
  EXPECT_EQ(analyser.codeIndex["&"][0]->signals["&"].changes, 4);
  EXPECT_EQ(analyser.codeIndex["#"][0]->name, "u1") << "in the order of their declarations";
}

TEST_F(Hierarchy, RunReportsAndKeepsTheTreeUntilItReads) {
  const TempDir dir;
  const std::string good = dir.Write("good.vcd", kDump);
  const std::string empty = dir.Write("empty.vcd", "#1\n");
  KesNCD analyser;
  const std::string rows[][2] = {{empty, "ERROR : Not match top module name. 0"},
                                 {good, "- 6 tb"},
                                 {"", "ERROR: VCD file is not set. 6 tb"},
                                 {"a.vcd", "ERROR: Cannot open 'a.vcd'to read. 6 tb"},
                                 {good, "- 6 tb"},
                                 {empty, "- 0"}};
  for (const auto& [path, expected] : rows) {
    std::string message = "-";
    const bool done = analyser.SetVCDFileHier(path, {"clk"}, message);
    EXPECT_EQ(done, message == "-");
    message += " " + std::to_string(analyser.codeIndex.size());
    EXPECT_EQ(analyser.hierRoot ? message + " " + analyser.hierRoot->name : message, expected);
  }
}

TEST_F(Hierarchy, ReadsAMillionScopes) {
  constexpr int kMany = 1000000;
  const std::string root = "$scope module root $end\n";
  const std::string open = "$scope module m $end\n";
  const std::string siblings = Times(kMany, open + "$upscope $end\n") + open;
  const std::string unlinked = root + "$var wire 1 ? x $end\n$upscope $end\n" + siblings;
  for (const std::string& scopes : {root + Times(kMany, open), root + siblings, unlinked}) {
    KesNCD analyser;
    const TextStream stream(scopes + "$var wire 1 ! deep $end\n$enddefinitions $end\n1!\n");
    ASSERT_TRUE(analyser.ParseVcdFileHier(stream, {}));
    const std::string found = scopes == unlinked ? "x" : "deep";
    double frequency = -1;
    EXPECT_TRUE(analyser.hierRoot->FindSignalFreqHier("root", found, frequency, true));
    EXPECT_EQ(analyser.hierRoot->IncreaseChangeForSymbol("!"), found == "deep");
    std::map<std::string, double> all;
    analyser.hierRoot->GetSignalFreqHier(all);
    EXPECT_EQ(all.size() + all.count(found), 2U);
  }
}

}  // namespace
}  // namespace orsa::kesncd
