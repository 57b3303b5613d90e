// A host's life with the library: analysers that come and go, runs after failures.
#include <algorithm>
#include <optional>

#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

using HostLife = FreshState;

const std::string kDump = Dump("SCALE~$scope module t $end~CLK~UP~END~#0~1!~0!~1!~#10~");

// Constructed, named and destroyed in every order that keeps each one's own.
TEST_F(HostLife, TwoAnalysersInEveryOrder) {
  std::string order = "AAABBB";
  do {
    std::optional<KesNCD> analysers[2];
    int steps[2] = {0, 0};
    std::string name;
    for (const char who : order) {
      std::optional<KesNCD>& analyser = analysers[who - 'A'];
      switch (steps[who - 'A']++) {
        case 0:
          analyser.emplace();
          name.clear();
          break;
        case 1:
          analyser->SetTopModule(name = std::string(1, who));
          analyser->SetTopModule(topModName);
          break;
        default:
          analyser.reset();
      }
      EXPECT_EQ(topModName == nullptr ? "" : topModName, name) << order;
    }
  } while (std::next_permutation(order.begin(), order.end()));
  char hostsOwn[] = "host";
  topModName = hostsOwn;  // not the library's to release
  KesNCD().SetTopModule("t");
  const KesNCD fresh;
  EXPECT_TRUE(fresh.signalFreqs.empty() && !fresh.twrFileOn && fresh.hierRoot == nullptr);
}

TEST_F(HostLife, EachRunWorksAfterEveryFailure) {
  const TempDir dir;
  const std::string good = dir.Write("good.vcd", kDump);
  const std::string scope = "$scope module t $end\n$var wire 1 ! clk[3:0] $end\n";
  const std::string failures[] = {
      "",
      dir.Path("none"),
      dir.Path(""),
      dir.Write("empty", ""),
      dir.Write("scale", "$timescale\n1 sec\n$end\n" + kDump),
      dir.Write("late", kDump + "$timescale\nodd\n"),
      dir.Write("bare", "$scope module t $end\n$upscope $end\n"),
      dir.Write("other", "$scope module u $end\n$enddefinitions $end\n1!\n"),
      dir.Write("wide", "$scope module t $end\n$var wire 1 ! w[2147483647:0] $end\n"),
      dir.Write("open", scope + scope + scope),
      dir.Write("words", std::string(5000, 'a') + " " + std::string(300, '\t') + "\n#\n" + scope),
      dir.Write("noise", "\xff\xfe\n\0$scope\n" + std::string(256, '\0') + "\x7f\x45LF"),
      dir.Write("report", "Preference Constraint\n")};
  KesNCD analyser;
  analyser.SetTopModule("t");
  std::string message;
  const auto runs = [&](const std::string& path) {
    std::string text = analyser.SetVCDFile(path, {"clk"}, message) ? "flat" : "";
    text += TextOf(analyser.signalFreqs);
    double frequency = -1;
    text += analyser.SetVCDFileHier(path, {}, message) ? " tree " : "";
    if (analyser.hierRoot != nullptr) {
      analyser.hierRoot->FindSignalFreqHier("t", "clk", frequency, true);
    }
    analyser.SetTWRFile(path, 0);
    return text + std::to_string(frequency) + " " + std::to_string(analyser.ExtractNCD());
  };
  const std::string expected = runs(good);
  EXPECT_NE(expected.find("flat clk=100 tree 100.000000"), std::string::npos) << expected;
  for (const std::string& first : failures) {
    for (const std::string& second : failures) {
      runs(first);
      runs(second);
      ASSERT_EQ(runs(good), expected) << first << " " << second;
    }
  }
}

}  // namespace
}  // namespace orsa::kesncd
