// Runs a test over a folder of dumps and their expected results.
#include "tests/support/case_files.h"

#include <cstdlib>
#include <fstream>
#include <set>

#include "tests/support/testing.h"

namespace orsa::kesncd {

namespace {

/// The lines of an expected file that say why the case is there.
std::string Reasons(const std::string& expected) {
  std::size_t end = 0;
  while (expected.compare(end, 2, "# ") == 0) end = expected.find('\n', end) + 1;
  return expected.substr(0, end);
}

}  // namespace

std::string CasesOf(const std::string& room) {
  return KESNCD_TEST_SOURCE "/tests/cases/" + room;
}

void ExpectCases(const std::string& dumps, const std::string& expected,
                 const std::function<std::string(const std::string& dump)>& made) {
  std::set<std::filesystem::path> names;
  for (const auto& entry : std::filesystem::directory_iterator(dumps)) {
    if (entry.path().extension() == ".vcd") names.insert(entry.path());
  }
  EXPECT_FALSE(names.empty()) << dumps;
  for (const std::filesystem::path& dump : names) {
    const auto file = std::filesystem::path(expected) / dump.stem().concat(".expected");
    const std::string before = ReadAll(file.string());
    const std::string now = Reasons(before) + made(ReadAll(dump.string()));
    if (std::getenv("KESNCD_UPDATE_CASES") != nullptr) {
      std::ofstream(file, std::ios::binary) << now;
    } else {
      EXPECT_EQ(now, before) << file;
    }
  }
}

}  // namespace orsa::kesncd
