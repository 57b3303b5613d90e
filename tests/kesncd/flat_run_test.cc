// The flat run: from a dump to the map of frequencies and the activity file.
#include <algorithm>
#include <clocale>
#include <cstdlib>

#include "tests/support/case_files.h"
#include "tests/support/line_readers.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

class FlatRun : public FreshState {
 protected:
  FlatRun() { analyser.SetTopModule("top"); }

  /// "message: name=MHz name=MHz ..." of a run
  std::string Run(const std::string& path) {
    std::string message = "-";
    const bool done = analyser.SetVCDFile(path, {"clk"}, message);
    EXPECT_EQ(done, message == "-") << message;
    return message + ":" + TextOf(analyser.signalFreqs);
  }

  const TempDir dir;
  KesNCD analyser;
};

/// What both runs make of a dump: the frequencies, the activity file, the tree with its changes.
std::string RunsOf(const std::string& dump) {
  ResetReaderState();
  const TempDir dir;
  const std::string path = dir.Write("d.vcd", dump);
  KesNCD analyser;
  analyser.SetTopModule("top");
  std::string message = "done";
  (void)analyser.SetVCDFile(path, {"clk"}, message);
  std::string text = "flat run: " + message + "\n";
  for (const std::string& frequency : Cut(TextOf(analyser.signalFreqs), " ")) {
    if (!frequency.empty()) text += "  " + frequency + "\n";
  }
  text += "activity file:\n" + ReadAll(path + ".txt");
  ResetReaderState();
  message = "done";
  (void)analyser.SetVCDFileHier(path, {}, message);
  return text + "tree run: " + message + "\n  " + TreeText(analyser) + "\n";
}

TEST_F(FlatRun, AndTheTreeRunReadTheCases) {
  ExpectCases("tests/cases/kesncd.txt",
              [](const Case& of, const std::string&) { return RunsOf(of.dump); });
}

TEST_F(FlatRun, ReportsFailuresAndKeepsTheMap) {
  const std::string good = dir.Write("good.vcd", Dump("SCALE~TOP~CLK~UP~END~#0~1!~"));
  const std::string wide =
      dir.Write("wide.vcd", Dump("TOP~$var wire 1 ! a[16777215:0] $end~$var wire 1 ! b[1:1] $end"));
  const std::string huge =
      dir.Write("huge.vcd", Dump("TOP~$var wire 1 ! a[2147483647:-2147483648] $end"));
  const std::string other = dir.Write("other.vcd", "$scope module tap $end\n");
  const std::string rows[][2] = {
      {"", "ERROR: VCD file is not set.:"},
      {other, "ERROR : Not match top module name.:"},
      {good, "-: clk=0"},
      {"no/sim.vcd", "ERROR: Cannot open 'no/sim.vcd'to read.: clk=0"},
      {wide, "ERROR: Too many bus bits.: clk=0"},
      {huge, "ERROR: Too many bus bits.: clk=0"},
      {other, "-:"},  // once matched, never reported again
  };
  for (const auto& [path, expected] : rows) EXPECT_EQ(Run(path), expected);
}

TEST_F(FlatRun, WritesTheActivityFileAfresh) {
  const std::string dump = dir.Write(
      "d.vcd",
      Dump("SCALE~TOP~$var wire 2 ! d [1:0] $end~$var wire 1 # c $end~UP~END~#0~1!~1!~#250~"));
  for (int run = 0; run < 2; ++run) {
    EXPECT_EQ(Run(dump), "-: d_0=2 d_1=2");
    EXPECT_EQ(ReadAll(dump + ".txt"), "module | top\nsignal | d[1:0] | 2.000000\n");
  }
  std::filesystem::remove(dump + ".txt");
  std::filesystem::create_directory(dump + ".txt");  // a place that is passed over
  debug = 1;
  EXPECT_EQ(Printed([&] { EXPECT_EQ(Run(dump), "-: d_0=2 d_1=2"); }),
            "PrintMod: name=top\n  d[1:0] (wire) symbol= ! (bit=2) change: 2  freq: 2\n");
}

TEST_F(FlatRun, StartsFromWhatTheLastRunLeft) {
  EXPECT_EQ(Run(dir.Write("a.vcd", Dump("SCALE~TOP~CLK~UP~END~#0~1!~#10~#500~$dumpoff~"))),
            "-: clk=0");
  EXPECT_EQ(recording, 0);
  const KesNCD another;  // does not start afresh
  analyser.SetTopModule("top");
  EXPECT_EQ(Run(dir.Write("b.vcd", Dump("TOP~CLK~UP~END~#100~1!~$dumpon~1!~1!~#200~"))),
            "-: clk=2.5");
  EXPECT_EQ(startCycle, 0);
  // A stamp that opens the span and is no number: the span opens with the begin that is there.
  startCycle = -2;
  endCycle = -4;
  (void)Run(dir.Write("c.vcd", Dump("TOP~CLK~UP~END~#x~1!~")));
  EXPECT_EQ(endCycle, -2);
}

// A host may run under a locale with a decimal comma; figures and files must not follow it.
TEST_F(FlatRun, IgnoresTheHostsLocale) {
  setenv("LOCPATH", KESNCD_TEST_LOCALES, 1);
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) {
    GTEST_SKIP() << "no locale with a decimal comma (package locales)";
  }
  const std::string dump =
      dir.Write("d.vcd", Dump("$timescale~1.5 ns~$end~TOP~CLK~UP~END~#0~1!~1!~#100~"));
  EXPECT_EQ(Run(dump), "-: clk=3.33333");
  EXPECT_EQ(ReadAll(dump + ".txt"), "module | top\nsignal | clk | 3.333333\n");
  EXPECT_EQ(Printed([] { topMod.PrintModSimple(); }), "name=top\n  clk  freq: 3.33333\n");
  debug = 1;
  const TextStream grammarDump("$timescale 2.5 ns $end #0.5");
  EXPECT_EQ(Printed([&] { ParseVcdFile(grammarDump); }), "$timescale2 2.5 ns $end=2.500000\n#0\n");
  EXPECT_EQ(cur_time, 0.5);
  char text[8];
  std::snprintf(text, sizeof text, "%.1f", 1.5);
  EXPECT_STREQ(text, "1,5") << "the host's locale is left as it was";
  std::setlocale(LC_ALL, "C");
}

TEST_F(FlatRun, EntersEveryBitOfARangeOnce) {
  const std::int64_t ranges[][2] = {{0, 9},
                                    {120, 3},
                                    {-12, 3},
                                    {99, 101},
                                    {0, 1234},
                                    {7, 7},
                                    {1000, 1001},
                                    {0, 0},
                                    {-5, -5},
                                    {500, 1500},
                                    {2147483646, 2147483647}};
  std::string variables;
  std::map<std::string, double> expected;
  for (const auto& [first, second] : ranges) {
    const std::string base = "d" + std::to_string(first) + "x" + std::to_string(second);
    variables += "$var wire 1 ! " + base + "[" + std::to_string(first) + ":" +
                 std::to_string(second) + "] $end\n";
    for (std::int64_t bit = std::min(first, second); bit <= std::max(first, second); ++bit) {
      expected.emplace(base + "_" + std::to_string(bit), 0.0);
    }
  }
  analyser.SetTopModule("top");
  std::string message;
  ASSERT_TRUE(analyser.SetVCDFile(dir.Write("d.vcd", Dump("SCALE~TOP~") + variables), {}, message));
  EXPECT_EQ(analyser.signalFreqs, expected);
}

}  // namespace
}  // namespace orsa::kesncd
