// Name matching against the plain walk over all indices that it stands for.
#include <strings.h>

#include <random>
#include <sstream>
#include <vector>

#include "kesncd/activity/name_index.h"
#include "tests/support.h"

namespace orsa::kesncd {
namespace {

bool Equal(const std::string& a, const std::string& b, bool exact) {
  return exact ? a == b : strcasecmp(a.c_str(), b.c_str()) == 0;
}

int Bound(const std::string& text) {
  std::istringstream stream(text);
  int value = 0;
  stream >> value;  // clamps on overflow, 0 without a number
  return value;
}

bool PlainMatch(const std::string& vcd, const std::string& design, bool exact) {
  if (vcd.find(':') == std::string::npos) {
    const std::string flat = VmodHier::GetNameFlat(design);
    for (const std::string& name : {design, design + "I", flat, flat + "I"}) {
      if (Equal(vcd, name, exact)) return true;
    }
    if (vcd.empty() || vcd.back() != ']') return false;
    std::string cut = vcd.substr(0, vcd.size() - 1);
    const std::size_t open = cut.rfind('[');
    if (open == std::string::npos) return false;
    cut[open] = '_';
    return PlainMatch(cut + "_", design, exact);
  }
  std::string copy = vcd;
  if (copy.find(']') != std::string::npos) copy.resize(copy.rfind(']'));
  const std::size_t open = copy.rfind('[');
  if (open == std::string::npos) return false;
  const std::size_t colon = copy.find(':');
  if (colon == std::string::npos) return PlainMatch(copy, design, exact);
  if (colon < open) return false;
  const int a = Bound(copy.substr(open + 1, colon - open - 1));
  const int b = Bound(copy.substr(colon + 1));
  for (int i = std::min(a, b); i <= std::max(a, b); ++i) {
    if (PlainMatch(copy.substr(0, open + 1) + std::to_string(i) + "]", design, exact)) return true;
  }
  return false;
}

TEST(NameMatch, WorkedExamples) {
  const std::string nul("a\0b", 3);
  const struct {
    std::string vcd, design;
    bool exact, equal;
  } rows[] = {
      {"clk", "clk", true, true},
      {"CLK", "clk", true, false},
      {"CLK", "clk", false, true},
      {"rstI", "rst", true, true},
      {"rst", "rstI", true, false},
      {"rsti", "rst", false, true},
      {"u1_q", "u1/q", true, true},
      {"u1_qI", "u1/q", true, true},
      {"cnt[3]", "cnt[3]", true, true},
      {"cnt[3]", "cnt_3_", true, true},
      {"cnt[3]", "cnt_3_I", true, false},
      {"cnt[3]", "cnt/3/", true, true},
      {"m[1][2]", "m[1]_2_", true, true},
      {"data[7:0]", "data[5]", true, true},
      {"data[7:0]", "data_5_", true, true},
      {"data[0:7]", "data[5]", true, true},
      {"data[7:0]", "data[8]", true, false},
      {"data[7:0]", "data[05]", true, false},
      {"data[7:0]", "data[7:0]", true, false},
      {"data[7:0]", "data", true, false},
      {"Data[2:0]", "DATA_1_", false, true},
      {"a_b[2:0]", "a/b/1/", true, true},
      {"a_b[2:0]", "a/b[1]", true, true},
      {"b[4:4]", "b[4]", true, true},
      {"n[-1:1]", "n[-1]", true, true},
      {"n[-1:1]", "n[-0]", true, false},
      {"odd]", "odd]", true, true},
      {"odd]", "odd_", true, false},
      {"a:b", "a:b", true, false},
      {"a[1]:", "a_1", true, false},
      {"a:[1:0]", "a:[1]", true, false},
      {"w[2147483647:-2147483648]", "w[-2147483648]", true, true},
      {"w[2147483647:-2147483648]", "w[2147483648]", true, false},
      {"w[99999999999:2147483647]", "w[2147483647]", true, true},
      {"w[ +3:\t2]", "w_3_", true, true},
      {"w[:x]", "w[0]", true, true},
      {"", "", true, true},
      {"I", "", true, true},
      {nul, nul, true, true},
      {nul, "a", true, false},
      {nul, "a", false, true},
      {nul + "[3:0]", "A", false, true},
      {"aI", nul, false, false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(VmodHier::IsNameEqual(row.vcd, row.design, row.exact), row.equal)
        << row.vcd << " " << row.design << " " << row.exact;
    if (row.vcd[0] == 'w') continue;  // the plain walk would take hours
    EXPECT_EQ(PlainMatch(row.vcd, row.design, row.exact), row.equal)
        << row.vcd << " " << row.design << " " << row.exact;
  }
}

void Names(const std::string& alphabet, std::size_t longest, std::vector<std::string>& names) {
  names.push_back("");
  for (std::size_t i = 0; names[i].size() < longest; ++i) {
    for (const char c : alphabet) names.push_back(names[i] + c);
  }
}

// Every pair of short names, and ranges glued to every short base against every longer name.
TEST(NameMatch, AgreesWithThePlainWalk) {
  const std::string alphabet = "a_I/[]:01-";
  std::vector<std::string> names;
  Names(alphabet, 3, names);
  std::vector<std::string> designs;
  Names("a_/[]1-", 4, designs);
  const char* const ranges[] = {"[1:0]", "[0:11]", "[-1:1", "[1:]", "[:-11]x"};
  std::size_t matches = 0;
  const auto compare = [&matches](const std::string& vcd, const std::string& design) {
    for (const bool exact : {true, false}) {
      const bool equal = VmodHier::IsNameEqual(vcd, design, exact);
      ASSERT_EQ(equal, PlainMatch(vcd, design, exact)) << vcd << " " << design << " " << exact;
      matches += equal ? 1 : 0;
    }
  };
  for (const std::string& vcd : names) {
    for (const std::string& design : names) compare(vcd, design);
  }
  for (const char* base : {"", "a", "_", "]", "[", "I"}) {
    for (const char* range : ranges) {
      for (const std::string& design : designs) compare(std::string(base) + range, design);
    }
  }
  EXPECT_GT(matches, 1000U);
}

// Random trees of names made to collide, asked for names made to match.
TEST(NameMatch, IndexFindsWhatTheSearchFinds) {
  static const char* const kScopes[] = {"t", "T", "u:1", "u[1:0]", ""};
  static const char* const kStems[] = {"a", "A", "a_b", "a/b", "aI", "", "x[2]"};
  static const char* const kEnds[] = {"",       "I",      "_1_",   "[1]",    "/1/", "_1/",
                                      "[0:3]",  "[3:1]",  "[7:7]", "[-1:1]", "[:]", "]",
                                      "[1:0]:", "[1:0]]", "[01]",  "_-1_",   "_3_", "[07]"};
  std::mt19937 random(11);
  const auto name = [&random] {
    std::string text = kStems[random() % std::size(kStems)];
    text += kEnds[random() % std::size(kEnds)];
    if (random() % 30 == 0) text.insert(text.size() / 2, 1, '\0');
    return text;
  };
  int found = 0;
  for (int tree = 0; tree < 400; ++tree) {
    VmodHier root(kScopes[random() % std::size(kScopes)]);
    std::vector<VmodHier*> scopes{&root};
    for (std::size_t i = random() % 6; i > 0; --i) {
      auto* child = new VmodHier(kScopes[random() % std::size(kScopes)]);
      scopes[random() % scopes.size()]->AddSubMod(child);
      scopes.push_back(child);
    }
    for (std::size_t i = random() % 30; i > 0; --i) {
      VmodHier& scope = *scopes[random() % scopes.size()];
      scope.AddSignal(name(), "wire", std::to_string(random() % 100), 1);
      // Each count gives a frequency of its own, which tells the signals apart.
      scope.signals.begin()->second.changes = static_cast<int>(2 + random() % 100000);
    }
    startCycle = 0;
    endCycle = timeScale = 1;
    for (const bool exact : {true, false}) {
      std::vector<std::string> asked;
      for (int i = 0; i < 200; ++i) asked.push_back(name());
      const NameIndex index(root, exact, {asked.begin(), asked.end()});
      for (const std::string& signal : asked) {
        const std::string module = kScopes[random() % std::size(kScopes)];
        double plain = -1;
        double indexed = -1;
        const bool isThere = root.FindSignalFreqHier(module, signal, plain, exact);
        ASSERT_EQ(index.Find(module, signal, indexed), isThere) << module << " " << signal;
        ASSERT_EQ(indexed, plain) << module << " " << signal << " " << exact;
        found += isThere ? 1 : 0;
      }
    }
  }
  EXPECT_GT(found, 10000);
  ResetReaderState();
}

}  // namespace
}  // namespace orsa::kesncd
