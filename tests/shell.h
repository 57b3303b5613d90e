// Commands as a user types them.
#ifndef KESNCD_TESTS_SHELL_H_
#define KESNCD_TESTS_SHELL_H_

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

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

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SHELL_H_
