// Name matching against the plain walk over all indices that it stands for.
#include <algorithm>
#include <random>
#include <vector>

#include "kesncd/model/tree_index.h"
#include "tests/support/plain_names.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

// Names of a dump, and names of a design that mean the same ("="), mean it whatever the case ("~")
// or do not ("!"); "@" stands for a NUL.
TEST(NameMatch, WorkedExamples) {
  std::string table =
      "clk => =clk ~CLK;rstI => =rst;rst => !rstI;rsti => ~rst;u1_q => =u1/q;u1_qI => =u1/q;"
      "cnt[3] => =cnt[3] =cnt_3_ !cnt_3_I =cnt/3/;m[1][2] => =m[1]_2_;data[0:7] => =data[5];"
      "data[7:0] => =data[5] =data_5_ !data[8] !data[05] !data[7:0] !data;Data[2:0] => ~DATA_1_;"
      "a_b[2:0] => =a/b/1/ =a/b[1];b[4:4] => =b[4];n[-1:1] => =n[-1] !n[-0];odd] => =odd] !odd_;"
      "a:b => !a:b;a[1]: => !a_1;a:[1:0] => !a:[1];w[ +3:\t2] => =w_3_;w[:x] => =w[0]; => =;I => =;"
      "w[2147483647:-2147483648] => =w[-2147483648] !w[2147483648];"
      "w[99999999999:2147483647] => =w[2147483647];a@b => =a@b ~a;a@b[3:0] => ~A;aI => !a@b";
  std::replace(table.begin(), table.end(), '@', '\0');
  for (const auto& row : Rows(table, ";")) {
    for (const std::string& word : Cut(row[1], " ")) {
      for (const bool exact : {true, false}) {
        const bool equal = word[0] == '=' || (word[0] == '~' && !exact);
        EXPECT_EQ(VmodHier::IsNameEqual(row[0], word.substr(1), exact), equal) << row[0] << word;
        const auto plain = support::PlainlyEqual(row[0], word.substr(1), exact);
        EXPECT_EQ(plain.value_or(equal), equal) << row[0] << word;
      }
    }
  }
}

std::vector<std::string> Names(const std::string& alphabet, std::size_t longest) {
  std::vector<std::string> names{""};
  for (std::size_t i = 0; names[i].size() < longest; ++i) {
    for (const char c : alphabet) names.push_back(names[i] + c);
  }
  return names;
}

// Every pair of short names, and ranges glued to every short base against every longer name.
TEST(NameMatch, AgreesWithThePlainWalk) {
  const std::vector<std::string> names = Names("a_I/[]:01-", 3);
  const std::vector<std::string> designs = Names("a_/[]1-", 4);
  std::size_t matches = 0;
  const auto compare = [&matches](const std::string& vcd, const std::string& design) {
    for (const bool exact : {true, false}) {
      const bool equal = VmodHier::IsNameEqual(vcd, design, exact);
      ASSERT_EQ(equal, support::PlainlyEqual(vcd, design, exact))
          << vcd << " " << design << " " << exact;
      matches += equal ? 1 : 0;
    }
  };
  for (const std::string& vcd : names) {
    for (const std::string& design : names) compare(vcd, design);
  }
  for (const char* base : {"", "a", "_", "]", "[", "I"}) {
    for (const char* range : {"[1:0]", "[0:11]", "[-1:1", "[1:]", "[:-11]x"}) {
      for (const std::string& design : designs) compare(std::string(base) + range, design);
    }
  }
  EXPECT_GT(matches, 1000U);
}

// Random trees of names made to collide, asked for names made to match.
TEST(NameMatch, IndexFindsWhatTheSearchFinds) {
  std::mt19937 random(11);
  const auto one = [&random](const std::string& of) {
    const std::vector<std::string> all = Cut(of, " ");
    return all[random() % all.size()];
  };
  const auto scopeName = [&] { return one("t T u:1 u[1:0] u[1] "); };
  const auto name = [&] {
    std::string text = one("a A a_b a/b aI  x[2]") +
                       one(" I _1_ [1] /1/ _1/ [0:3] [3:1] [7:7] [-1:1] [:] ] [1:0]: [1:0]] [01] "
                           "_-1_ _3_ [07]");
    if (random() % 30 == 0) text.insert(text.size() / 2, 1, '\0');
    return text;
  };
  startCycle = 0;
  endCycle = timeScale = 1;
  for (int tree = 0; tree < 400; ++tree) {
    VmodHier root(scopeName());
    std::vector<VmodHier*> scopes{&root};
    for (std::size_t i = random() % 6; i > 0; --i) {
      VmodHier* const parent = scopes[random() % scopes.size()];
      parent->AddSubMod(scopes.emplace_back(new VmodHier(scopeName())));
    }
    for (std::size_t i = random() % 30; i > 0; --i) {
      VmodHier& scope = *scopes[random() % scopes.size()];
      scope.AddSignal(name(), "wire", std::to_string(random() % 100), 1);
      // Each count gives a frequency of its own, which tells the signals apart.
      scope.signals.begin()->second.changes = static_cast<int>(2 + random() % 100000);
    }
    for (const bool exact : {true, false}) {
      std::vector<std::string> asked(200);
      std::generate(asked.begin(), asked.end(), name);
      const TreeIndex index(root, exact, {asked.begin(), asked.end()});
      for (const std::string& signal : asked) {
        const std::string module = scopeName();
        double plain = -1;
        double indexed = -1;
        const bool isThere = root.FindSignalFreqHier(module, signal, plain, exact);
        ASSERT_EQ(index.Find(module, signal, indexed), isThere) << module << " " << signal;
        ASSERT_EQ(indexed, plain) << module << " " << signal << " " << exact;
      }
    }
  }
  ResetReaderState();
}

}  // namespace
}  // namespace orsa::kesncd
