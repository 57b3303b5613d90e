// The program's search for many names against the library's for one.
#include "cli/commands/name_search.h"

#include <gtest/gtest.h>

#include <random>

namespace orsa::kesncd::cli {
namespace {

using orsa::kesncd::VmodHier;

class RandomNames {
 public:
  std::string Next() {
    static const std::vector<std::string> kParts{"a", "b",     "A",   "I",     "i",   "_1_", "[1]",
                                                 "/", "[2:0]", "_",   "[1:3]", ":",   "]",   "[",
                                                 "2", "-1",    "/0/", "[0",    "[-1]"};
    std::string name;
    for (std::size_t parts = random_() % 5; parts > 0; --parts) {
      name += kParts[random_() % kParts.size()];
    }
    return name;
  }

 private:
  std::mt19937 random_{20261121};
};

TEST(NameSearch, AnswersAsTheTreeDoes) {
  orsa::kesncd::timeScale = 1;
  orsa::kesncd::endCycle = orsa::kesncd::startCycle + 1000;
  RandomNames random;
  int found = 0;
  for (int round = 0; round < 60; ++round) {
    VmodHier root(random.Next());
    for (int changes = 2; changes < 90;) {
      auto* const scope = changes < 30 ? &root : new VmodHier(random.Next());
      for (int end = changes + 10; changes < end; ++changes) {
        scope->AddSignal(random.Next(), "wire", std::to_string(100 + changes), 1);
        for (auto& [code, signal] : scope->signals) signal.changes = std::stoi(code);
      }
      if (scope != &root) root.AddSubMod(scope);
    }
    std::vector<std::string> names;
    while (names.size() < 60) names.push_back(random.Next());
    const bool exact = round % 2 == 0;
    const std::string module = round % 3 == 0 ? "other" : root.name;
    const NameSearch search(root, module, exact, names);
    for (const std::string& name : names) {
      double frequency = -1;
      const bool isThere = root.FindSignalFreqHier(module, name, frequency, exact);
      const FoundSignal hit = search.Find(name);
      EXPECT_EQ(hit.signal == nullptr ? -1 : FrequencyOf(*hit.signal), frequency) << name;
      found += isThere ? 1 : 0;
    }
  }
  EXPECT_GT(found, 500);
}

}  // namespace
}  // namespace orsa::kesncd::cli
