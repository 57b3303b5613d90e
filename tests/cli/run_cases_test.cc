// Databases, merged runs, differences and parts as a user meets them: pages of commands, each with
// what it writes, in tests/cases/runs/. KESNCD_UPDATE_CASES=1 writes the pages anew.
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/support/shell.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

/// A page with what its commands write now, and "[status]" where that is not 0.
std::string Played(const std::string& page, const TempDir& dir) {
  std::istringstream lines(page);
  std::string played;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("# ")) played += line + "\n";
    if (!line.starts_with("$ ")) continue;
    std::ofstream(dir.Path("command")) << line.substr(2) << "\n";
    const Outcome run =
        Shell(dir.Path("."), "bash command >out 2>&1; status=$?; tr -d '\\r' <out; exit $status");
    played += line + "\n" + run.out;
    if (run.status != 0) played += "[" + std::to_string(run.status) + "]\n";
  }
  return played;
}

TEST(Runs, GiveWhatTheirPagesShow) {
  const std::filesystem::path cases =
      std::filesystem::path(KESNCD_TEST_SOURCE) / "tests/cases/runs";
  std::size_t pages = 0;
  for (const auto& file : std::filesystem::directory_iterator(cases)) {
    if (file.path().extension() != ".txt") continue;
    ++pages;
    const TempDir dir;
    std::filesystem::copy(cases, dir.Path("."), std::filesystem::copy_options::recursive);
    const std::string page = ReadAll(file.path().string());
    const std::string played = Played(page, dir);
    if (std::getenv("KESNCD_UPDATE_CASES") != nullptr) {
      std::ofstream(file.path()) << played;
    } else {
      EXPECT_EQ(played, page) << file.path();
    }
  }
  EXPECT_EQ(pages, 7U);
}

}  // namespace
}  // namespace orsa::kesncd
