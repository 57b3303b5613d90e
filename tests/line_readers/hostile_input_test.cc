// Files that were cut off and files with a damaged byte, through every reader: each ends in a
// result that keeps its promises. The sanitizers' build watches the memory meanwhile.

#include <algorithm>
#include <regex>

#include "line_readers/header_probe.h"
#include "tests/support/line_readers.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

using HostileInput = FreshState;

const std::string kDumps[] = {
    Dump("$date today $end~$timescale~10 ps~$end~TOP~CLK~$var reg 8 long-code-1 d [7:0] $end~U~"
         "$var wire 1 ! q $end~UP~UP~END~#0~$dumpvars~x!~b0 long-code-1~$end~#5~1!~"
         "b101 long-code-1~$dumpoff~0!~$dumpon~#12~0!~"),
    Dump("$timescale 1ns $end\r~$scope module top $end\r~$var real 64 0\" r[3] $end\r~"
         "$var wire 1 # s[0] $end\r~$upscope $end\r~$enddefinitions $end\r~#1\r~r1.5 0\"\r~1#\r~"
         "#20 \r~  z#\r~0# \r~r-1e9\t0\"\r~#3"),
    Dump("$comment one line for all $end $scope task t $end $var wire 1 a x[0] $end $upscope $end~"
         "$timescale~1us~$end~$scope module top $end $scope module top $end~TOP~"
         "$var wire 1 bb x [1] $end~UP~END~$dumpvars 0a b1 bb $end~0a~b1 bb~#7~0a~#7~$dumpall~1a~"
         "$end~")};
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
  for (std::size_t i = 0; i < text.size() * values; ++i) {
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
