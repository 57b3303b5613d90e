// Runs a test over a folder of dumps and their expected results.
#include "tests/support/case_files.h"

#include <cstdlib>
#include <fstream>
#include <map>

#include "tests/support/testing.h"

namespace orsa::kesncd {

namespace {

/// What is expected of each dump, by the dump's name.
std::map<std::string, std::string> ReadExpected(const std::string& path) {
  std::map<std::string, std::string> expected;
  std::string text = ReadAll(path);
  if (!text.empty()) text.pop_back();  // every part gets its last newline back
  for (const std::string& part : Cut("\n" + text, "\n== ")) {
    const std::size_t end = part.find('\n');
    if (end != std::string::npos) expected[part.substr(0, end)] = part.substr(end + 1) + "\n";
  }
  return expected;
}

/// The lines that say why the case is there.
std::string Reasons(const std::string& expected) {
  std::size_t end = 0;
  while (expected.compare(end, 2, "# ") == 0) end = expected.find('\n', end) + 1;
  return expected.substr(0, end);
}

}  // namespace

std::string CasesOf(const std::string& room) {
  return KESNCD_TEST_SOURCE "/tests/cases/" + room;
}

void ExpectCases(const std::string& dumps, const std::string& room,
                 const std::function<std::string(const std::string& dump)>& made) {
  const bool isUpdate = std::getenv("KESNCD_UPDATE_CASES") != nullptr;
  const std::string path = CasesOf(room) + "/expected.txt";
  std::map<std::string, std::string> expected = ReadExpected(path);
  std::map<std::string, std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator(dumps)) {
    if (entry.path().extension() != ".vcd") continue;
    const std::string name = entry.path().stem().string();
    found[name] = Reasons(expected[name]) + made(ReadAll(entry.path().string()));
    if (!isUpdate) {
      EXPECT_EQ(found[name], expected[name]) << name;
    }
  }
  EXPECT_FALSE(found.empty()) << dumps;
  if (isUpdate) {
    std::ofstream file(path, std::ios::binary);
    for (const auto& [name, text] : found) file << "== " << name << "\n" << text;
  } else {
    EXPECT_EQ(found.size(), expected.size()) << "results without a dump in " << path;
  }
}

}  // namespace orsa::kesncd
