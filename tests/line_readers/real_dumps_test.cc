// Dumps as simulators wrote them. They lie outside the project: KESNCD_REAL_DUMPS names the folder.
//
// The figures were counted by a free reading of the words, as count_dump.py does it. Where the
// readers' rules make something else of a dump, the row says why and holds what the rules give.
#include <cstdlib>
#include <sstream>

#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

using RealDumps = FreshState;

// The file, its top module as the header proposes it; signals and changes of that module with the
// span in ns, first by the unfiltered reader; scopes, signals and changes that the root reaches;
// what the filtered and the grammar reader make of the module where that is something else; and
// why.
const char kRows[] = R"(icarus-counter.vcd => counter_tb => 5 660 2202 => 2 10 1320
icarus-counter-gates.vcd => counter0 => 15 1121 300 => 28 170 10441
icarus-picorv32.vcd => testbench => 10 4166 11000 => 2 232 31184 =>  => 10 4119 11000
     => four scopes of tasks that end a module or hold nothing; the code # of a bus is a stamp
icarus-serv-gates.vcd => tb_gate => 10 314 962 => 2 780 7244
systemc-fifo.vcd => SystemC => 1 400 1995 => 3 6 1400
questa-cpu-cut.vcd => cpu_tb => 94 342 1200 => 652 7750 39481 =>  =>  => one begin scope is no node
verilator-serv.vcd => tb_serv => 5 1407 0 => 32 811 76598 =>  => 5 1406 43369
     => time scale not read; the code # is a stamp, and the change behind it is taken for the code
icarus-features.vcd => features_tb => 7 846 1300 => 4 21 2235 =>  =>  => begin and fork scopes
icarus-serv.vcd => tb_serv => 4 524 16089 => 8 394 10430 =>  =>  => begin scopes
ghdl-blink.vcd => blink_tb => 5 456 1500 => 1 0 0 =>  => 5 308 1500
     => the root is an empty package; the code B starts a vector, whose code the change behind it is
ghdl-fifo.vcd => fifo_tb => 9 382 900 => 1 0 0 => 9 382 9000 => 
     => where words and stamps share a splitter, the last stamp has a word's tail
vcs-ahb-slave.vcd => tb_top => 2 204 1005000000000 => 1 0 0 =>  =>  => the root is an empty unit
verilator-structs.vcd => svmix => 6 759 0 => 3 17 2885 =>  => 3 457 1522
     => the first scope of a struct gives its variables to the module around it, or ends that
sigrok-demo.vcd => libsigrok => 8 0 0 => 1 8 0 =>  => 8 3292 7500000
     => stamps and changes share their lines
not-a-vcd-lxt2.vcd =>  => 0 0 0 => 0 0 0 =>  =>  => another format)";

std::string FlatFigures() {
  std::int64_t changes = 0;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) changes += topMod.GetSignalChange(i);
  std::ostringstream text;
  text << topMod.GetSignalSize() << " " << changes << " "
       << static_cast<std::int64_t>((endCycle - startCycle) * timeScale + 0.5);
  return text.str();
}

/// Adds to the scopes, signals and changes.
void Count(const VmodHier& scope, std::int64_t (&figures)[3]) {
  ++figures[0];
  figures[1] += static_cast<std::int64_t>(scope.signals.size());
  for (const auto& [code, signal] : scope.signals) figures[2] += signal.changes;
  for (const VmodHier* child : scope.subMods) Count(*child, figures);
}

std::string TreeFigures(const VmodHier* root) {
  std::int64_t figures[3] = {0, 0, 0};
  if (root != nullptr) Count(*root, figures);
  return std::to_string(figures[0]) + " " + std::to_string(figures[1]) + " " +
         std::to_string(figures[2]);
}

TEST_F(RealDumps, GiveTheirFigures) {
  const char* const folder = std::getenv("KESNCD_REAL_DUMPS");
  if (folder == nullptr) GTEST_SKIP() << "KESNCD_REAL_DUMPS names no folder of dumps";
  for (std::vector<std::string> row : Rows(kRows)) {
    row.resize(7);
    const std::string path = std::string(folder) + "/" + row[0];
    const TextStream dump(ReadAll(path));
    KesNCD analyser;
    std::string top, message;
    ASSERT_TRUE(analyser.GetTopModuleNameInVCD(path, top, message));
    EXPECT_EQ(top, row[1]) << row[0];
    std::set<std::string> every;
    const auto expectFigures = [&](const std::string& figures, const auto& read) {
      ResetReaderState();
      analyser.SetTopModule(top);
      std::rewind(dump);
      read();
      EXPECT_EQ(FlatFigures(), figures.empty() ? row[2] : figures) << row[0] << ": " << row[6];
    };
    expectFigures("", [&] { analyser.ParseVcdFile(dump); });
    for (int i = 0; i < topMod.GetSignalSize(); ++i) every.insert(topMod.GetSignalName(i));
    expectFigures(row[4], [&] { analyser.ParseVcdFile2(dump, every); });
    expectFigures(row[5], [&] { EXPECT_EQ(::orsa::kesncd::ParseVcdFile(dump), 0) << row[0]; });
    std::rewind(dump);
    analyser.ParseVcdFileHier(dump, {});
    EXPECT_EQ(TreeFigures(analyser.hierRoot), row[3]) << row[0] << ": " << row[6];
  }
}

}  // namespace
}  // namespace orsa::kesncd
