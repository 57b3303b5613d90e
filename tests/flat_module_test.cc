#include <cmath>
#include <limits>

#include "kesncd/activity/frequency.h"
#include "kesncd/vcd/change_count.h"
#include "tests/support.h"

namespace orsa::kesncd {
namespace {

using FlatModule = FreshState;

TEST_F(FlatModule, TurnsCountsIntoFrequencies) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    int changes;
    double start, end, scale, megahertz;
  } rows[] = {
      {0, 0, 1000, 1, 0},
      {1, 0, 1000, 1, 0},
      {2, 0, 1000, 1, 0.5},
      {3, 0, 1000, 1, 1},
      {3, 0, 100, 1, 10},
      {3, 500, 1500, 0.001, 1000},
      {3, 7, 7, 1, 0},
      {3, 0, 1000, 0, 0},
      {3, 1000, 0, 1, -1},
      {3, 0, kNan, 1, kNan},
      {2147483647, 0, 1, 1, 1000 / (1 / (2147483646 * 0.5))},
  };
  for (const auto& row : rows) {
    timeScale = row.scale;
    const double result = ToggleFrequency(row.changes, row.end - row.start);
    EXPECT_TRUE(result == row.megahertz || (std::isnan(result) && std::isnan(row.megahertz)))
        << row.changes << " over " << row.end << ": " << result;
  }
}

Vmod ThreeSignals() {
  Vmod module("m");
  module.AddSignal("a", "wire", "!", 1);
  module.AddSignal("b", "reg", "#", 2);
  module.AddSignal("a", "reg", "!", 3);
  return module;
}

std::string Shown(const Vmod& module) {
  std::string text;
  for (int i = 0; i < module.GetSignalSize(); ++i) {
    text += module.GetSignalName(i) + "/" + module.GetSignalType(i) + "/" +
            module.GetSignalSymb(i) + "/" + std::to_string(module.GetSignalNbit(i)) + "=" +
            std::to_string(module.GetSignalChange(i)) + " ";
  }
  return text;
}

TEST_F(FlatModule, CountsTheFirstSignalOfACodeAlsoAfterRemovals) {
  Vmod module = ThreeSignals();
  for (const char* code : {"!", "!", "#", "?", "!x", ""}) module.IncreaseChangeForSymbol(code);
  EXPECT_EQ(Shown(module), "a/wire/!/1=2 b/reg/#/2=1 a/reg/!/3=0 ");
  module.RemoveSignal(0);
  module.IncreaseChangeForSymbol("!");
  EXPECT_EQ(Shown(module), "b/reg/#/2=1 a/reg/!/3=1 ");
  module.AddSignal("c", "reg", "%", 4);
  module.IncreaseChangeForSymbol("%");
  EXPECT_EQ(Shown(module), "b/reg/#/2=1 a/reg/!/3=1 c/reg/%/4=1 ");
  module.Clear();
  module.IncreaseChangeForSymbol("%");
  EXPECT_EQ(Shown(module) + module.GetName(), "");
}

TEST_F(FlatModule, RemovesSignals) {
  Vmod byName = ThreeSignals();
  byName.RemoveSignal("a");
  EXPECT_EQ(Shown(byName), "b/reg/#/1=0 a/reg/!/2=0 ") << "the widths stay behind";
  byName.RemoveSignal(1);
  EXPECT_EQ(Shown(byName), "b/reg/#/1=0 ");
  Vmod byType = ThreeSignals();
  byType.RemoveSignal("a", "reg");
  EXPECT_EQ(Shown(byType), "a/wire/!/1=0 b/reg/#/2=0 ");
  for (const int index : {-1, 2, std::numeric_limits<int>::min()}) byType.RemoveSignal(index);
  byType.RemoveSignal("none");
  byType.RemoveSignal("b", "wire");
  EXPECT_EQ(byType.GetSignalSize(), 2);
  EXPECT_EQ(byType.GetSignalName(-1) + byType.GetSignalSymb(2), "");
  EXPECT_EQ(byType.GetSignalChange(7), 0);
}

TEST_F(FlatModule, StopsCountingAtTheLargestCount) {
  int count = 2147483646;
  AddToCount(count, 1);
  EXPECT_EQ(count, 2147483647);
  AddToCount(count, 1);
  EXPECT_EQ(count, 2147483647);
  count = 5;
  AddToCount(count, std::numeric_limits<std::uint32_t>::max());
  EXPECT_EQ(count, 2147483647);
}

TEST_F(FlatModule, PrintsAndDumps) {
  startCycle = 0;
  endCycle = 3000;
  timeScale = 1;
  Vmod module = ThreeSignals();
  for (int i = 0; i < 3; ++i) module.IncreaseChangeForSymbol("!");
  Vsig signal("s");
  signal.SetSig("t", "wire", 5.0);
  debug = 1;
  testing::internal::CaptureStdout();
  module.PrintMod();
  module.PrintModSimple();
  signal.PrintSig();
  Vsig().PrintSig();
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "PrintMod: name=m\n"
            "  a (wire) symbol= ! (bit=1) change: 3  freq: 0.333333\n"
            "  b (reg) symbol= # (bit=2) change: 0  freq: 0\n"
            "  a (reg) symbol= ! (bit=3) change: 0  freq: 0\n"
            "name=m\n  a  freq: 0.333333\n  b  freq: 0\n  a  freq: 0\n"
            "PrintSig: name=t type= freq=-1\nPrintSig: name= type= freq=-1\n");
  EXPECT_EQ(onlyOnce, 0);
  const TempDir dir;
  const std::string path = dir.Write("d.txt", "before\n");
  module.DumpIntoFile(path);
  EXPECT_EQ(ReadAll(path),
            "before\nmodule | m\nsignal | a | 0.333333\nsignal | b | 0.000000\n"
            "signal | a | 0.000000\n");
  module.DumpIntoFile(dir.Path("no/such/folder"));
}

}  // namespace
}  // namespace orsa::kesncd
