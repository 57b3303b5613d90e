// The proposal of a top module against a plain reading of the rule: the last module of the first
// run of "$scope module" lines that no other line of four words or more breaks.
#include <algorithm>

#include "fuzz/support.h"
#include "kesncd/kesncd.h"

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

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string dump(reinterpret_cast<const char*>(data), size);
  const fuzz::MemoryFile file(dump);
  orsa::kesncd::KesNCD analyser;
  std::string top = "before";
  std::string message = "untouched";
  fuzz::Require(analyser.GetTopModuleNameInVCD(file.Path(), top, message), "the file opens");
  fuzz::Require(message == "untouched", "a message is for failures");
  fuzz::Require(top == ProbePlainly(dump), "proposed '" + top + "'");
  return 0;
}
