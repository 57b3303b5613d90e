// Dumps counted directly: the figures are a host's of the prepared dump, on every dump at hand.
#include <cstdlib>

#include "tests/support/case_files.h"
#include "tests/support/reading_rules.h"
#include "tests/support/require.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

void ExpectAgreement(const std::string& dump, const std::string& name) {
  for (const char* const window : support::kWindows) {
    EXPECT_NO_THROW(support::CheckCountingDirectly(support::Input(dump + window)))
        << name << window;
  }
}

TEST(DirectRun, CountsWhatAHostFindsInThePreparedDump) {
  for (const char* const page : {"free_format", "line_readers", "activity.txt"}) {
    for (const Case& of : CasesIn(std::string("tests/cases/") + page)) {
      ExpectAgreement(of.dump, of.name);
    }
  }
}

// With more codes than a processor's cache holds, what changes need is fetched ahead of them; codes
// of up to three, of up to eight and of more characters are kept in different places.
TEST(DirectRun, CountsDumpsOfManyCodesAlike) {
  constexpr int kCodes = 40000;
  const auto code = [](int number) {
    const char* const ends[] = {"", "", "", "long", "longer_than_eight"};
    return "!" + std::to_string(number) + ends[number % 5];
  };
  std::string text = "$timescale 1ns $end\n$scope module top $end\n";
  for (int i = 0; i < kCodes; ++i) {
    text += "$var wire " + std::string(i % 7 == 0 ? "4 " : "1 ") + code(i) + " n" +
            std::to_string(i) + " $end\n";
  }
  text += "$upscope $end\n$enddefinitions $end\n#0\n";
  for (int i = 0, at = 0; i < 3 * kCodes; ++i, at = (at + 7919) % kCodes) {
    text += (at % 7 == 0 ? "b1x0 " : i % 2 == 0 ? "0" : "1") + code(at) + "\n";
    if (i % 100 == 0) text += "#" + std::to_string(i) + "\n\n0 " + code(at) + "\n1unknown\n";
  }
  EXPECT_NO_THROW(support::CheckCountingDirectly(support::Input(text + "\xFF\n\n")));
}

TEST(DirectRun, CountsRealDumpsAlike) {
  const char* const folder = std::getenv("KESNCD_REAL_DUMPS");
  if (folder == nullptr) GTEST_SKIP() << "KESNCD_REAL_DUMPS names no folder of dumps";
  for (const std::string& dump : DumpsIn(folder)) ExpectAgreement(ReadAll(dump), dump);
}

}  // namespace
}  // namespace orsa::kesncd
