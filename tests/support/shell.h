// Commands as a user types them.
#ifndef KESNCD_TESTS_SUPPORT_SHELL_H_
#define KESNCD_TESTS_SUPPORT_SHELL_H_

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <regex>
#include <string>

#include "tests/support/testing.h"

namespace orsa::kesncd {

struct Outcome {
  int status;
  std::string out;
};

/// Runs a shell command in `folder`, with the built programs in the path.
inline Outcome Shell(const std::string& folder, const std::string& command) {
  const std::string line =
      "cd '" + folder + "' && export PATH=\"" KESNCD_TEST_PROGRAMS ":$PATH\" && " + command;
  std::FILE* pipe = popen(line.c_str(), "r");
  Outcome outcome{-1, ""};
  std::array<char, 4096> buffer{};
  while (const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
    outcome.out.append(buffer.data(), got);
  }
  outcome.status = WEXITSTATUS(pclose(pipe));
  return outcome;
}

/// Runs the commands of a table: each with its status and, where they are not empty, regular
/// expressions for standard output and standard error.
inline void ExpectRuns(const TempDir& dir, const std::string& table) {
  for (std::vector<std::string> row : Rows(table)) {
    row.resize(4);
    const Outcome run = Shell(dir.Path("."), "(" + row[0] + ") 2>errors");
    EXPECT_EQ(std::to_string(run.status), row[1]) << row[0];
    EXPECT_TRUE(std::regex_match(run.out, std::regex(row[2]))) << row[0] << "\n" << run.out;
    const std::string errors = ReadAll(dir.Path("errors"));
    EXPECT_TRUE(std::regex_match(errors, std::regex(row[3]))) << row[0] << "\n" << errors;
  }
}

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SUPPORT_SHELL_H_
