#include <clocale>
#include <cstdlib>
#include <sstream>

#include "tests/support.h"

namespace orsa::kesncd {
namespace {

using FlatRun = FreshState;

std::string Dump(const std::string& variables, const std::string& body) {
  return "$timescale\n1ns\n$end\n$scope module top $end\n" + variables +
         "$upscope $end\n$enddefinitions $end\n" + body;
}

/// "name=MHz name=MHz ..."
std::string Shown(const std::map<std::string, double>& frequencies) {
  std::ostringstream text;
  const char* blank = "";
  for (const auto& [name, frequency] : frequencies) {
    text << blank << name << "=" << frequency;
    blank = " ";
  }
  return text.str();
}

TEST_F(FlatRun, RewritesNamesAndExpandsRanges) {
  const struct {
    const char* variables;
    const char* names;
  } rows[] = {
      {"$var wire 1 ! clk $end\n", "clk=1"},
      {"$var wire 4 ! d [3:0] $end\n", "d_0=1 d_1=1 d_2=1 d_3=1"},
      {"$var wire 4 ! d [0:3] $end\n", "d_0=1 d_1=1 d_2=1 d_3=1"},
      {"$var wire 3 ! n[-1:1] $end\n", "n_-1=1 n_0=1 n_1=1"},
      {"$var wire 1 ! b[4:4] $end\n", "b_4=1"},
      {"$var wire 1 ! addr[5] $end\n", "addr_5=1"},
      {"$var wire 1 ! m[1][2] $end\n", "m_1=1"},          // cut before the first "]"
      {"$var wire 1 ! m[1 [2:0] $end\n", "m_0=1 m_1=1"},  // "1[2:0" begins with 1
      {"$var wire 1 ! odd]x[3] $end\n", "odd=1"},
      {"$var wire 1 ! d[x:] $end\n", "d_0=1"},                  // no digits are 0
      {"$var wire 1 ! d[ : $end\n", "d_0=1"},                   // two empty bounds
      {"$var wire 1 ! a:b[1] $end\n", "a:b_0=1 a:b_1=1"},       // the ":" in front counts
      {"$var wire 1 ! d[4294967297:0] $end\n", "d_0=1 d_1=1"},  // cut to 32 bits
      {"$var wire 1 ! d[1:0:9] $end\n", "d_0=1 d_1=1"},
      // The first of two equal names stays: one toggles, the other does not.
      {"$var wire 1 ! d [1:0] $end\n$var wire 1 # d[0] $end\n", "d_0=1 d_1=1"},
      {"$var wire 1 # d[0] $end\n$var wire 1 ! d [1:0] $end\n", "d_0=0 d_1=1"},
  };
  const TempDir dir;
  for (const auto& row : rows) {
    ResetReaderState();
    KesNCD analyser;
    analyser.SetTopModule("top");
    std::string message = "untouched";
    const std::string dump = dir.Write("d.vcd", Dump(row.variables, "#0\n1!\n1!\n1!\n#1000\n"));
    const bool done = analyser.SetVCDFile(dump, {"clk"}, message);
    EXPECT_TRUE(done && message == "untouched") << row.variables;
    EXPECT_EQ(Shown(analyser.signalFreqs), row.names) << row.variables;
  }
}

TEST_F(FlatRun, ReportsFailuresAndKeepsTheMap) {
  const TempDir dir;
  const std::string good = dir.Write("good.vcd", Dump("$var wire 1 ! clk $end\n", "#0\n1!\n"));
  const std::string wide = dir.Write(
      "wide.vcd", Dump("$var wire 1 ! a[16777215:0] $end\n$var wire 1 ! b[1:1] $end\n", ""));
  const std::string huge =
      dir.Write("huge.vcd", Dump("$var wire 1 ! a[2147483647:-2147483648] $end\n", ""));
  const std::string other = dir.Write("other.vcd", "$scope module tap $end\n");
  KesNCD analyser;
  analyser.SetTopModule("top");
  const struct {
    std::string path;
    const char* message;
    const char* map;
  } rows[] = {
      {"", "ERROR: VCD file is not set.", ""},
      {"no/sim.vcd", "ERROR: Cannot open 'no/sim.vcd'to read.", ""},
      {other, "ERROR : Not match top module name.", ""},
      {good, "-", "clk=0"},
      {"no/sim.vcd", "ERROR: Cannot open 'no/sim.vcd'to read.", "clk=0"},
      {wide, "ERROR: Too many bus bits.", "clk=0"},
      {huge, "ERROR: Too many bus bits.", "clk=0"},
      {other, "-", ""},  // once matched, never reported again
  };
  for (const auto& row : rows) {
    std::string message = "-";
    EXPECT_EQ(analyser.SetVCDFile(row.path, {"clk"}, message), row.message == message) << row.path;
    EXPECT_EQ(message, row.message) << row.path;
    EXPECT_EQ(Shown(analyser.signalFreqs), row.map) << row.path;
  }
}

TEST_F(FlatRun, WritesTheActivityFileAfresh) {
  const TempDir dir;
  const std::string dump = dir.Write(
      "d.vcd", Dump("$var wire 2 ! d [1:0] $end\n$var wire 1 # c $end\n", "#0\n1!\n1!\n#250\n"));
  KesNCD analyser;
  analyser.SetTopModule("top");
  std::string message;
  const char* const expected = "module | top\nsignal | d[1:0] | 2.000000\n";
  for (int run = 0; run < 2; ++run) {
    ASSERT_TRUE(analyser.SetVCDFile(dump, {}, message));
    EXPECT_EQ(ReadAll(dump + ".txt"), expected);
  }
  std::filesystem::remove(dump + ".txt");
  std::filesystem::create_directory(dump + ".txt");
  EXPECT_TRUE(analyser.SetVCDFile(dump, {}, message)) << "an unwritable place is passed over";
  debug = 1;
  testing::internal::CaptureStdout();
  EXPECT_TRUE(analyser.SetVCDFile(dump, {}, message));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "PrintMod: name=top\n  d[1:0] (wire) symbol= ! (bit=2) change: 2  freq: 2\n");
}

TEST_F(FlatRun, StartsFromWhatTheLastRunLeft) {
  const TempDir dir;
  const std::string vars = "$var wire 1 ! clk $end\n";
  const std::string first = dir.Write("a.vcd", Dump(vars, "#0\n1!\n#10\n#500\n$dumpoff\n"));
  const std::string second =
      dir.Write("b.vcd", Dump(vars, "#100\n1!\n$dumpon\n1!\n#200\n").substr(19));
  std::string message;
  for (const auto& path : {first, second}) {
    KesNCD analyser;  // another analyser does not start afresh
    analyser.SetTopModule("top");
    ASSERT_TRUE(analyser.SetVCDFile(path, {"clk"}, message));
    EXPECT_EQ(startCycle, 0);
    EXPECT_EQ(endCycle, path == first ? 500 : 200);
    EXPECT_EQ(TopModCounts(), "clk=1");
    EXPECT_EQ(timeScale, 1) << "stays without a time scale in the dump";
    EXPECT_EQ(recording, path == first ? 0 : 1);
  }
}

// A host may run under a locale with a decimal comma; figures and files must not follow it.
TEST_F(FlatRun, IgnoresTheHostsLocale) {
  setenv("LOCPATH", KESNCD_TEST_LOCALES, 1);
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) {
    GTEST_SKIP() << "no locale with a decimal comma (package locales)";
  }
  const TempDir dir;
  const std::string dump = dir.Write("d.vcd",
                                     "$timescale\n1.5 ns\n$end\n$scope module top $end\n"
                                     "$var wire 1 ! clk $end\n$upscope $end\n"
                                     "$enddefinitions $end\n#0\n1!\n1!\n#100\n");
  KesNCD analyser;
  analyser.SetTopModule("top");
  std::string message;
  ASSERT_TRUE(analyser.SetVCDFile(dump, {"clk"}, message));
  EXPECT_EQ(timeScale, 1.5);
  EXPECT_EQ(ReadAll(dump + ".txt"), "module | top\nsignal | clk | 3.333333\n");
  testing::internal::CaptureStdout();
  topMod.PrintModSimple();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "name=top\n  clk  freq: 3.33333\n");
  debug = 1;
  testing::internal::CaptureStdout();
  const TextStream grammarDump("$timescale 2.5 ns $end #0.5");
  EXPECT_EQ(::orsa::kesncd::ParseVcdFile(grammarDump), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "$timescale2 2.5 ns $end=2.500000\n#0\n");
  EXPECT_EQ(cur_time, 0.5);
  char text[8];
  std::snprintf(text, sizeof text, "%.1f", 1.5);
  EXPECT_STREQ(text, "1,5") << "the host's locale is left as it was";
  std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace orsa::kesncd
