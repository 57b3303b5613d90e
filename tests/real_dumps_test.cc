// Dumps as simulators wrote them. They lie outside the project: KESNCD_REAL_DUMPS names the folder.
//
// The figures come from count_dump.py, which reads a dump in another way. Where the readers' rules
// make something else of a dump, the row says why and holds what the rules give.
#include <cstdlib>
#include <sstream>

#include "tests/support.h"

namespace orsa::kesncd {
namespace {

using RealDumps = FreshState;

struct Row {
  const char* file;
  const char* top;   // as the header proposes it
  const char* flat;  // signals and changes of the top module, span in ns
  const char* tree;  // scopes, signals and changes that the root reaches
  const char* why = "";
  const char* grammar = nullptr;  // what the grammar reader makes of the top module, if not `flat`
  const char* grammarWhy = "";
};

const Row kRows[] = {
    {"icarus-counter.vcd", "counter_tb", "5 660 2202", "2 10 1320"},
    {"icarus-counter-gates.vcd", "counter0", "15 1121 300", "28 170 10441"},
    {"icarus-picorv32.vcd", "testbench", "10 4166 11000", "2 232 31184",
     "four scopes of tasks that end a module or hold nothing", "10 4119 11000",
     "the code # of a bus is a stamp"},
    {"icarus-serv-gates.vcd", "tb_gate", "10 314 962", "2 780 7244"},
    {"systemc-fifo.vcd", "SystemC", "1 400 1995", "3 6 1400"},
    {"questa-cpu-cut.vcd", "cpu_tb", "94 342 1200", "652 7750 39481", "one begin scope is no node"},
    {"verilator-serv.vcd", "tb_serv", "5 1407 0", "32 811 76598", "time scale not read",
     "5 1406 43369", "the code # is a stamp, and the change behind it is taken for the code"},
    {"icarus-features.vcd", "features_tb", "7 846 1300", "4 21 2235", "begin and fork scopes"},
    {"icarus-serv.vcd", "tb_serv", "4 524 16089", "8 394 10430", "begin scopes"},
    {"ghdl-blink.vcd", "blink_tb", "5 456 1500", "1 0 0", "the root is an empty package",
     "5 308 1500", "the code B starts a vector, whose code the change behind it is taken for"},
    {"ghdl-fifo.vcd", "fifo_tb", "9 382 9000", "1 0 0", "and the last stamp has a word's tail",
     "9 382 900"},
    {"vcs-ahb-slave.vcd", "tb_top", "2 204 1005000000000", "1 0 0", "the root is an empty unit"},
    {"verilator-structs.vcd", "svmix", "6 759 0", "3 17 2885",
     "struct and interface scopes: the first one's three variables go to the module around it",
     "3 457 1522", "a struct ends the top module"},
    {"sigrok-demo.vcd", "libsigrok", "8 0 0", "1 8 0", "stamps and changes share their lines",
     "8 3292 7500000"},
    {"not-a-vcd-lxt2.vcd", "", "0 0 0", "0 0 0", "another format"},
};

std::string FlatFigures() {
  std::int64_t changes = 0;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) changes += topMod.GetSignalChange(i);
  std::ostringstream text;
  text << topMod.GetSignalSize() << " " << changes << " "
       << static_cast<std::int64_t>((endCycle - startCycle) * timeScale + 0.5);
  return text.str();
}

std::string TreeFigures(const VmodHier* root) {
  std::int64_t scopes = 0;
  std::int64_t signals = 0;
  std::int64_t changes = 0;
  std::vector<const VmodHier*> pending;
  if (root != nullptr) pending.push_back(root);
  while (!pending.empty()) {
    const VmodHier* scope = pending.back();
    pending.pop_back();
    ++scopes;
    signals += static_cast<std::int64_t>(scope->signals.size());
    for (const auto& [code, signal] : scope->signals) changes += signal.changes;
    pending.insert(pending.end(), scope->subMods.begin(), scope->subMods.end());
  }
  return std::to_string(scopes) + " " + std::to_string(signals) + " " + std::to_string(changes);
}

/// What loading the library gives, the top module aside.
void ResetSpan() {
  startCycle = endCycle = -1;
  timeScale = 0;
  recording = 1;
  isTopModNameEverMatched = 0;
}

TEST_F(RealDumps, GiveTheirFigures) {
  const char* const folder = std::getenv("KESNCD_REAL_DUMPS");
  if (folder == nullptr) GTEST_SKIP() << "KESNCD_REAL_DUMPS names no folder of dumps";
  for (const Row& row : kRows) {
    const TempDir dir;  // a run writes beside its dump
    const std::string dump =
        dir.Write(row.file, ReadAll((std::filesystem::path(folder) / row.file).string()));
    KesNCD analyser;
    std::string top;
    std::string message;
    ASSERT_TRUE(analyser.GetTopModuleNameInVCD(dump, top, message));
    EXPECT_EQ(top, row.top) << row.file;
    analyser.SetTopModule(top);
    ResetSpan();
    const TextStream stream(ReadAll(dump));
    topMod.Clear();
    analyser.ParseVcdFile(stream);
    // Only where words and stamps share a splitter does a comment's tail reach a stamp.
    const bool tailed = row.file == std::string("ghdl-fifo.vcd");
    EXPECT_EQ(FlatFigures(), tailed ? "9 382 900" : row.flat) << row.file << ": " << row.why;
    std::set<std::string> every;
    for (int i = 0; i < topMod.GetSignalSize(); ++i) every.insert(topMod.GetSignalName(i));
    ResetSpan();
    EXPECT_EQ(analyser.SetVCDFile(dump, every, message), row.top[0] != '\0') << message;
    EXPECT_EQ(FlatFigures(), row.flat) << row.file << ": " << row.why;
    ResetSpan();
    EXPECT_EQ(analyser.SetVCDFileHier(dump, {}, message), row.top[0] != '\0') << row.file;
    EXPECT_EQ(TreeFigures(analyser.hierRoot), row.tree) << row.file << ": " << row.why;
    ResetSpan();
    topMod.Clear();
    std::rewind(stream);
    EXPECT_EQ(::orsa::kesncd::ParseVcdFile(stream), 0) << row.file;
    const char* const grammar = row.grammar == nullptr ? row.flat : row.grammar;
    EXPECT_EQ(FlatFigures(), grammar) << row.file << ": " << row.grammarWhy;
  }
}

}  // namespace
}  // namespace orsa::kesncd
