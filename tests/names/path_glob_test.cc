// Patterns for paths of names, and the order of names.
#include "names/path_glob.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "names/name_order.h"

namespace orsa::kesncd {
namespace {

TEST(PathGlob, MatchesPathsAndNames) {
  struct Row {
    std::string pattern;
    std::string path;
    bool matches;
  };
  const Row rows[] = {
      {"tb/clk", "tb/clk", true},
      {"tb/clk", "x/tb/clk", false},  // a path begins at the top
      {"clk", "x/tb/clk", true},      // a name is in any scope
      {"c?k*", "tb/clk_2", true},
      {"*", "tb/u/q", true},
      {"tb/*", "tb/u/q", false},
      {"tb/*/q", "tb/u/q", true},
      {"tb/?/q", "tb/uv/q", false},
      {"**", "tb/u/q", true},
      {"tb/**", "tb/u/q", true},
      {"tb/**", "tb", false},
      {"**/q", "tb/u/q", true},
      {"**/q", "q", true},
      {"tb/**/q", "tb/q", true},
      {"tb/**/q", "tb/a/b/q", true},
      {"tb/**/q", "tb/a/bq", false},
      {"tb/**q", "tb/a/bq", true},
      {"tb/a**/**/q", "tb/ab/q", true},
      {"d[0-3]", "tb/d2", true},
      {"d[!0-3]", "tb/d2", false},
      {"d[^x]", "tb/d2", true},
      {"d[]x]", "tb/d]", true},
      {"d[3]", "tb/d[3]", true},  // letter by letter, for all that it looks like a set
      {"d[3]", "tb/d3", true},
      {"d\\[*\\]", "tb/d[3]", true},
      {"d\\[*\\]", "tb/d3", false},
      {"d[3", "tb/d[3", true},
      {"\\esc", "tb/\\esc", true},
      {"tb[/]q", "tb/q", false},
      {"", "tb/q", false},
      {"*a*a*a*a*a*a*a*a*a*a*b", "tb/" + std::string(5000, 'a'), false},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(PathGlob(row.pattern).Matches(row.path, row.path.rfind('/') + 1), row.matches)
        << row.pattern << " " << row.path;
  }
}

TEST(NameOrder, CountsNumbersAsNumbers) {
  const std::vector<std::string> ordered = {"",      "a",      "a/b",     "dA9",   "d[1]",   "d[2]",
                                            "d[10]", "d[10]x", "d[0011]", "d[11]", "d[100]", "da1"};
  std::vector<std::string> names(ordered.rbegin(), ordered.rend());
  std::sort(names.begin(), names.end(), IsNameBefore);
  EXPECT_EQ(names, ordered);
}

}  // namespace
}  // namespace orsa::kesncd
