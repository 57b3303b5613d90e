// The proposal of a top module against a plain reading of the rule: the last module of the first
// run of "$scope module" lines that no other line of four words or more breaks.
#include <algorithm>

#include "fuzz/target.h"
#include "kesncd/kesncd.h"
#include "tests/support/require.h"
#include "tests/support/streams.h"

namespace {

std::vector<std::string> Words(std::string line) {
  line = line.substr(0, line.find('\0'));
  std::vector<std::string> words(1);
  for (const char c : line) {
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
      if (!words.back().empty()) words.emplace_back();
    } else {
      words.back() += c;
    }
  }
  if (words.back().empty()) words.pop_back();
  return words;
}

std::string ProbePlainly(std::string_view dump) {
  constexpr std::size_t kLongest = 1023;
  std::string candidate;
  while (!dump.empty()) {
    std::size_t end = std::min(dump.find('\n'), dump.size() - 1) + 1;
    end = std::min(end, kLongest);
    const std::vector<std::string> words = Words(std::string(dump.substr(0, end)));
    dump.remove_prefix(end);
    if (words.size() < 4) continue;
    if (words[0] == "$scope" && words[1] == "module") {
      candidate = words[2];
    } else if (!candidate.empty()) {
      break;
    }
  }
  return candidate;
}

}  // namespace

void CheckInput(std::string_view bytes) {
  const std::string dump(bytes);
  const support::MemoryFile file(dump);
  orsa::kesncd::KesNCD analyser;
  std::string top = "before";
  std::string message = "untouched";
  support::Require(analyser.GetTopModuleNameInVCD(file.Path(), top, message), "the file opens");
  support::Require(message == "untouched", "a message is for failures");
  support::Require(top == ProbePlainly(dump), [&] { return "proposed '" + top + "'"; });
}
