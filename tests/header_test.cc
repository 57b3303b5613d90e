#include <vector>

#include "tests/support.h"

namespace orsa::kesncd {
namespace {

using Header = FreshState;

TEST_F(Header, ConvertsTimeScales) {
  constexpr double kBefore = 7.0;
  const struct {
    std::vector<std::string> words;
    double result, left;  // what is returned, what timeScale holds
  } rows[] = {
      {{"1ns"}, 1, 1},
      {{"1", "ns"}, 1, 1},
      {{"100ps"}, 100 * 0.001, 100 * 0.001},
      {{"10", "us"}, 10000, 10000},
      {{"1s"}, 1e9, 1e9},
      {{"1", "fs"}, 1e-6, 1e-6},
      {{"100", "ms"}, 1e8, 1e8},
      {{"1.5", "ns"}, 1.5, 1.5},
      {{"1e1", "ns"}, 10, 10},
      {{"0x10", "ns"}, 16, 16},
      {{"0end", "ns"}, 0, 0},
      {{"1.5ns"}, -1, 1},         // the unit is always the second piece, "."
      {{"1NS"}, -1, 1},           // and compared case by case
      {{"1", "sec"}, -1, 1},      // the number stays unconverted
      {{"1"}, -1, 1},             // no unit
      {{"$end"}, -1, kBefore},    // no number either
      {{"x", "us"}, 7000, 7000},  // no number: the scale before is multiplied
      {{"1", "ns", "$end"}, -1, kBefore},
      {{}, -1, kBefore},
  };
  for (auto row : rows) {
    std::vector<char*> words;
    std::string text;
    for (std::string& word : row.words) {
      words.push_back(word.data());
      text += word + " ";
    }
    timeScale = kBefore;
    EXPECT_EQ(KesNCD().GetTimeInVCD(words.data(), static_cast<int>(words.size())), row.result)
        << text;
    EXPECT_EQ(timeScale, row.left) << text;
  }
}

TEST_F(Header, ProposesTheTopModule) {
  const struct {
    const char* dump;
    const char* top;
  } rows[] = {
      {"$scope module tb $end\n$scope module dut $end\n$var wire 1 ! clk $end\n", "dut"},
      {"$scope module tb $end\n$var wire 1 ! clk $end\n$scope module dut $end\n", "tb"},
      {"$scope module tb $end\n$scope task t $end\n$scope module dut $end\n", "tb"},
      {"$scope module tb $end\n$upscope $end\n#1\nb0 !\n$scope module b $end\n", "b"},
      {"$date a b c d\n$scope task t $end\n$scope module tb stop\n", "tb"},
      {"$scope module top\n", ""},
      {"$SCOPE module top $end\n", ""},
      {"", ""},
  };
  const TempDir dir;
  KesNCD analyser;
  for (const auto& row : rows) {
    std::string top = "before";
    std::string message = "untouched";
    EXPECT_TRUE(analyser.GetTopModuleNameInVCD(dir.Write("d.vcd", row.dump), top, message));
    EXPECT_EQ(top, row.top) << row.dump;
    EXPECT_EQ(message, "untouched");
  }
  std::string top = "before";
  std::string message;
  EXPECT_FALSE(analyser.GetTopModuleNameInVCD("no/such.vcd", top, message));
  EXPECT_EQ(message, "ERROR: Can not open 'no/such.vcd' to read.\n");
  EXPECT_EQ(top, "before");
}

}  // namespace
}  // namespace orsa::kesncd
