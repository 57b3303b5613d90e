// Files that were cut off and files with a damaged byte, through every reader: each ends in a
// result that keeps its promises. The sanitizers' build watches the memory meanwhile.

#include <algorithm>
#include <regex>

#include "kesncd/vcd/header_probe.h"
#include "tests/line_readers.h"
#include "tests/support.h"

namespace orsa::kesncd {
namespace {

using HostileInput = FreshState;

const std::string kDumps[] = {
    "$date today $end\n$timescale\n10 ps\n$end\n$scope module top $end\n$var wire 1 ! clk $end\n"
    "$var reg 8 long-code-1 d [7:0] $end\n$scope module u $end\n$var wire 1 ! q $end\n$upscope "
    "$end\n"
    "$upscope $end\n$enddefinitions $end\n#0\n$dumpvars\nx!\nb0 long-code-1\n$end\n#5\n1!\n"
    "b101 long-code-1\n$dumpoff\n0!\n$dumpon\n#12\n0!\n",
    "$timescale 1ns $end\r\n$scope module top $end\r\n$var real 64 0\" r[3] $end\r\n"
    "$var wire 1 # s[0] $end\r\n$upscope $end\r\n$enddefinitions $end\r\n#1\r\nr1.5 0\"\r\n1#\r\n"
    "#20 \r\n  z#\r\n0# \r\nr-1e9\t0\"\r\n#3",
    "$comment one line for all $end $scope task t $end $var wire 1 a x[0] $end $upscope $end\n"
    "$timescale\n1us\n$end\n$scope module top $end $scope module top $end\n$scope module top $end\n"
    "$var wire 1 bb x [1] $end\n$upscope $end\n$enddefinitions $end\n"
    "$dumpvars 0a b1 bb $end\n0a\nb1 bb\n#7\n0a\n#7\n$dumpall\n1a\n$end\n"};
const std::string kHostile("\0\1\t\n\r !\"#$-09[\x7f\xff", 16);

/// All ways to cut a text off.
std::vector<std::string> CutsOf(const std::string& text) {
  std::vector<std::string> cuts;
  for (std::size_t at = 0; at <= text.size(); ++at) cuts.push_back(text.substr(0, at));
  return cuts;
}
/// All ways to damage a byte of it.
std::vector<std::string> DamagesOf(const std::string& text) {
  std::vector<std::string> damages;
  const std::size_t values = kHostile.size();
  for (std::size_t i = 0; i < text.size() * values; i += kShare) {
    damages.push_back(std::string(text).replace(i / values, 1, 1, kHostile[i % values]));
  }
  return damages;
}

TEST_F(HostileInput, LineReadersCountNoMoreThanLines) {
  for (const std::string& dump : kDumps) {
    for (const Reader reader : kReaders) {
      const long long scopes = reader == Reader::Hierarchical ? 3 : 1;
      long long before = 0;
      for (const std::string& cut : CutsOf(dump)) {
        const long long changes = ExpectSamePaths(reader, cut).changes;
        if (!cut.ends_with('\n')) continue;
        EXPECT_GE(changes, before) << cut;
        EXPECT_LE(changes - before, scopes) << cut << "\nfor one line";
        before = changes;
      }
      EXPECT_GT(before, 0) << "nothing counted in\n" << dump;
      for (const std::string& damaged : DamagesOf(dump)) {
        const auto lines = std::count(damaged.begin(), damaged.end(), '\n') + 1;
        EXPECT_LE(ExpectSamePaths(reader, damaged).changes, lines * scopes) << damaged;
      }
    }
  }
}

TEST_F(HostileInput, GrammarReaderAndHeaderProbeEndInAResult) {
  testing::internal::CaptureStderr();
  for (std::string dump : kDumps) {
    // The reader ends the process at a time scale that it does not understand.
    dump = std::regex_replace(dump, std::regex("timescale"), "comment");
    std::vector<std::string> texts = CutsOf(dump);
    for (std::string& damaged : DamagesOf(dump)) texts.push_back(std::move(damaged));
    for (const std::string& text : texts) {
      const Reading reading = ReadDump(Reader::Grammar, TextStream(text));
      EXPECT_LE(reading.changes, static_cast<long long>(text.size()) / 2) << text;
      EXPECT_TRUE(yyps >= yys && yyps < std::end(yy_yys) && yysptr <= yysbuf + 1) << text;
      EXPECT_NE(text.find(ProbeTopModule(TextStream(text))), std::string::npos) << text;
    }
  }
  testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace orsa::kesncd
