// Time scales and top modules as hosts read them from a header.
#include <sstream>

#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

using Header = FreshState;

TEST_F(Header, ConvertsTimeScales) {
  // What is returned, and what timeScale holds, which was 7. Without a number the scale before is
  // multiplied. The unit is the second piece, also after a point, and compared case by case.
  const char* const table =
      "1ns => 1 1;100ps => 0.1 0.1;10 us => 10000 10000;1s => 1e+09 1e+09;1 fs => 1e-06 1e-06;"
      "100 ms => 1e+08 1e+08;1.5 ns => 1.5 1.5;1e1 ns => 10 10;0x10 ns => 16 16;0end ns => 0 0;"
      "x us => 7000 7000;1.5ns => -1 1;1NS => -1 1;1 sec => -1 1;1 => -1 1;$end => -1 7;"
      "1 ns $end => -1 7; => -1 7";
  for (const auto& row : Rows(table, ";")) {
    Mem splitter;
    int count = 0;
    char** words = splitter.GetArrayOfTokens(row[0].c_str(), " ", &count);
    timeScale = 7;
    std::ostringstream text;
    text << KesNCD().GetTimeInVCD(words, count);
    text << " " << timeScale;
    EXPECT_EQ(text.str(), row[1]) << row[0];
  }
}

TEST_F(Header, ProposesTheTopModule) {
  const char* const rows[][2] = {
      {"TOP~U~CLK", "u"},
      {"TOP~CLK~U", "top"},
      {"TOP~UP~#1~b0 !~U~", "u"},
      {"$date a b c d~$scope task t $end~$scope module tb stop~$scope task t $end~U", "tb"},
      {"$scope module top~$SCOPE module top $end", ""}};
  const TempDir dir;
  std::string top;
  std::string message = "untouched";
  for (const auto& [dump, expected] : rows) {
    top = "before";
    EXPECT_TRUE(KesNCD().GetTopModuleNameInVCD(dir.Write("d.vcd", Dump(dump)), top, message));
    EXPECT_EQ(top + " " + message, std::string(expected) + " untouched");
  }
  EXPECT_FALSE(KesNCD().GetTopModuleNameInVCD("no/such.vcd", top = "before", message));
  EXPECT_EQ(top + message, "beforeERROR: Can not open 'no/such.vcd' to read.\n");
}

}  // namespace
}  // namespace orsa::kesncd
