// Dumps counted directly: the figures are a host's of the prepared dump, on every dump at hand.
#include <cstdlib>
#include <filesystem>

#include "tests/support/case_files.h"
#include "tests/support/direct_rules.h"
#include "tests/support/require.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

void ExpectAgreement(const std::string& folder) {
  int dumps = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() != ".vcd") continue;
    const std::string text = ReadAll(entry.path().string());
    for (const char* const window : {"",
                                     "\xFF"
                                     "10ns\n",
                                     "\xFF"
                                     "1ns\n20ns\n",
                                     "\xFF\n7ps\n"}) {
      EXPECT_NO_THROW(support::CheckCountingDirectly(support::Input(text + window)))
          << entry.path() << window;
    }
    ++dumps;
  }
  EXPECT_GT(dumps, 0);
}

TEST(DirectRun, CountsWhatAHostFindsInThePreparedDump) {
  ExpectAgreement(CasesOf("free_format"));
  ExpectAgreement(CasesOf("line_readers"));
  ExpectAgreement(CasesOf("activity"));
}

TEST(DirectRun, CountsRealDumpsAlike) {
  const char* const folder = std::getenv("KESNCD_REAL_DUMPS");
  if (folder == nullptr) GTEST_SKIP() << "KESNCD_REAL_DUMPS names no folder of dumps";
  ExpectAgreement(folder);
}

}  // namespace
}  // namespace orsa::kesncd
