// The flat module by itself: names that repeat, codes that are shared, what removal leaves.
#include <limits>

#include "names/frequency.h"
#include "tests/support/testing.h"
#include "vcd/change_count.h"

namespace orsa::kesncd {
namespace {

class FlatModule : public FreshState {
 protected:
  FlatModule() : module("m") {
    module.AddSignal("a", "wire", "!", 1);
    module.AddSignal("b", "reg", "#", 2);
    module.AddSignal("a", "reg", "!", 3);
  }

  /// The signals after changes of some codes: "name/type/code/width=changes ..."
  std::string Count(const std::vector<std::string>& codes = {}) {
    for (const std::string& code : codes) module.IncreaseChangeForSymbol(code);
    std::string text = module.GetName();
    for (int i = 0; i < module.GetSignalSize(); ++i) {
      text += " " + module.GetSignalName(i) + "/" + module.GetSignalType(i) + "/" +
              module.GetSignalSymb(i) + "/" + std::to_string(module.GetSignalNbit(i)) + "=" +
              std::to_string(module.GetSignalChange(i));
    }
    return text;
  }

  Vmod module;
};

TEST_F(FlatModule, TurnsCountsIntoFrequencies) {
  // changes, span, scale, MHz
  const double rows[][4] = {{1, 1000, 1, 0},
                            {2, 1000, 1, 0.5},
                            {3, 100, 1, 10},
                            {3, 1000, 0.001, 1000},
                            {3, 0, 1, 0},
                            {3, 1000, 0, 0},
                            {3, -1000, 1, -1},
                            {0, 1000, 1, 0},
                            {2147483647, 1, 1, 1000 / (1 / (2147483646 * 0.5))}};
  for (const auto& [changes, span, scale, megahertz] : rows) {
    EXPECT_EQ(ToggleFrequency(static_cast<int>(changes), span, scale), megahertz)
        << changes << " " << span;
  }
  const double frequency = ToggleFrequency(3, std::numeric_limits<double>::quiet_NaN(), 1);
  EXPECT_NE(frequency, frequency);
}

TEST_F(FlatModule, CountsTheFirstSignalOfACodeAlsoAfterRemovals) {
  EXPECT_EQ(Count({"!", "!", "#", "?", "!x", ""}), "m a/wire/!/1=2 b/reg/#/2=1 a/reg/!/3=0");
  module.RemoveSignal(0);
  EXPECT_EQ(Count({"!"}), "m b/reg/#/2=1 a/reg/!/3=1");
  module.AddSignal("c", "reg", "%", 4);
  EXPECT_EQ(Count({"%"}), "m b/reg/#/2=1 a/reg/!/3=1 c/reg/%/4=1");
  module.Clear();
  EXPECT_EQ(Count({"%"}), "");
}

TEST_F(FlatModule, RemovesSignals) {
  for (const int index : {-1, 3, std::numeric_limits<int>::min()}) module.RemoveSignal(index);
  module.RemoveSignal("none");
  module.RemoveSignal("b", "wire");
  module.RemoveSignal("a", "reg");
  EXPECT_EQ(Count(), "m a/wire/!/1=0 b/reg/#/2=0");
  module.RemoveSignal("a");
  EXPECT_EQ(Count(), "m b/reg/#/1=0") << "the widths stay behind";
  EXPECT_EQ(module.GetSignalName(-1) + module.GetSignalSymb(2), "");
  EXPECT_EQ(module.GetSignalChange(7), 0);
}

TEST_F(FlatModule, StopsCountingAtTheLargestCount) {
  int count = 2147483645;
  for (const std::uint32_t changes : {1U, 1U, 5U, 4294967295U}) AddToCount(count, changes);
  EXPECT_EQ(count, 2147483647);
}

TEST_F(FlatModule, PrintsAndDumps) {
  startCycle = 0;
  endCycle = 3000;
  timeScale = 1;
  Count({"!", "!", "!"});
  Vsig signal("s");
  signal.SetSig("t", "wire", 5.0);
  debug = 1;
  EXPECT_EQ(Printed([&] { signal.PrintSig(); }), "PrintSig: name=t type= freq=-1\n");
  EXPECT_EQ(Printed([&] { module.PrintModSimple(); }),
            "name=m\n  a  freq: 0.333333\n  b  freq: 0\n  a  freq: 0\n");
  EXPECT_EQ(onlyOnce, 0);
  const TempDir dir;
  module.RemoveSignal(2);
  module.DumpIntoFile(dir.Write("d.txt", "before\n"));
  EXPECT_EQ(ReadAll(dir.Path("d.txt")),
            "before\nmodule | m\nsignal | a | 0.333333\nsignal | b | 0.000000\n");
  module.DumpIntoFile(dir.Path("no/such/folder"));
}

}  // namespace
}  // namespace orsa::kesncd
