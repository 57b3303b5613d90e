// Signals and scopes by what a user calls them: random designs whose names collide are asked for
// names that mean several things, and a plain account tries every reading of every name on every
// signal.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "names/design_names.h"
#include "names/flat_map.h"
#include "names/name_match.h"
#include "names/name_order.h"
#include "names/scope_search.h"
#include "names/signal_search.h"
#include "tests/support/sanitizer_share.h"
#include "text/words.h"

namespace orsa::kesncd {
namespace {

class Design {
 public:
  Design() { declarations.scopes.emplace_back(); }

  std::uint32_t Scope(std::uint32_t parent, const std::string& name,
                      const std::string& kind = "module") {
    const auto id = static_cast<std::uint32_t>(declarations.scopes.size());
    declarations.scopes.emplace_back();
    declarations.scopes.back().name = name;
    declarations.scopes.back().kind = kind;
    declarations.scopes.back().parent = parent;
    declarations.scopes[parent].scopes.push_back(id);
    return id;
  }
  void Signal(std::uint32_t scope, const std::string& name, const std::string& code) {
    DumpVariable variable;
    variable.name = name;
    variable.nameWord = static_cast<std::uint32_t>(name.size());
    variable.width = 1;
    variable.codeId = declarations.codes.Add(code);
    variable.scope = scope;
    declarations.scopes[scope].variables.push_back(
        static_cast<std::uint32_t>(declarations.variables.size()));
    declarations.variables.push_back(variable);
  }

  Declarations declarations;
};

class Words {
 public:
  explicit Words(unsigned seed) : random_(seed) {}
  std::size_t Below(std::size_t limit) { return random_() % limit; }
  std::string One(std::initializer_list<const char*> of) { return of.begin()[Below(of.size())]; }
  std::string Scope() { return One({"t", "T", "u", "u/v", "v", "u[1]"}); }
  std::string Signal() {
    return One({"a", "A", "a_b", "a/b", "d", "u"}) +
           One({"", "", "I", "_1", "_1_", "[1]", "[0:3]", "[3:1]", "[-1:1]", "[12:9]", "_07"});
  }

 private:
  std::mt19937 random_;
};

void Fill(Words& words, Design& design) {
  for (std::size_t scopes = 1 + words.Below(8); scopes > 0; --scopes) {
    const auto parent = static_cast<std::uint32_t>(words.Below(design.declarations.scopes.size()));
    design.Scope(parent, words.Scope());
  }
  for (std::size_t signals = words.Below(40); signals > 0; --signals) {
    const auto scope = static_cast<std::uint32_t>(words.Below(design.declarations.scopes.size()));
    design.Signal(scope, words.Signal(), std::to_string(words.Below(20)));
  }
}

/// The names under which the flat map lists a signal.
std::vector<std::string> FlatNames(const std::string& declared) {
  const DesignNames names = RewriteName(declared);
  if (!names.isRange) return {names.base};
  std::vector<std::string> all;
  for (std::int64_t i = names.low; i <= names.high; ++i)
    all.push_back(names.base + std::to_string(i));
  return all;
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

/// The surest way in which a signal is what a text calls it: 0 for the dump's own name, 1 for a
/// design's, 2 for one of the flat map, 3 for none.
int TierOf(const std::string& name, const std::string& called, bool exact) {
  const auto same = [&](const std::string& a, const std::string& b) {
    return exact ? a == b : Lower(a) == Lower(b);
  };
  if (called.empty()) return 3;
  if (same(name, called)) return 0;
  if (NamesMatch(name, called, exact)) return 1;
  for (const std::string& flat : FlatNames(name))
    if (same(flat, called) || same(flat, SlashesFlattened(called))) return 2;
  return 3;
}

/// What a name means, by trying every cut of it on every signal.
std::vector<std::uint32_t> PlainAnswer(const Declarations& declarations, const std::string& name,
                                       bool exact) {
  std::map<std::tuple<bool, std::size_t, int>, std::vector<std::uint32_t>> readings;
  std::vector<std::size_t> cuts;  // of the name into a scope and a signal, the last one first
  for (std::size_t at = name.size(); at-- > 1;)
    if (name[at] == '/') cuts.push_back(at);
  cuts.push_back(std::string::npos);
  for (const std::uint32_t scope : ScopesByDepth(declarations, Declarations::kDump)) {
    std::vector<std::pair<std::string, bool>> ends{{"", scope == Declarations::kDump}};
    for (std::uint32_t at = scope; at != Declarations::kDump; at = declarations.scopes[at].parent) {
      const std::uint32_t parent = declarations.scopes[at].parent;
      const std::string& inner = ends.back().first;
      ends.emplace_back(declarations.scopes[at].name + (inner.empty() ? "" : "/" + inner),
                        parent == Declarations::kDump);
    }
    for (const std::uint32_t variable : declarations.scopes[scope].variables) {
      for (std::size_t rank = 0; rank < cuts.size(); ++rank) {
        const bool isBare = cuts[rank] == std::string::npos;
        const std::string around = isBare ? "" : name.substr(0, cuts[rank]);
        const int tier = TierOf(declarations.variables[variable].name,
                                isBare ? name : name.substr(cuts[rank] + 1), exact);
        for (const auto& [end, isWhole] : ends) {
          if (tier < 3 && (exact ? end == around : Lower(end) == Lower(around)))
            readings[{!isWhole, rank, tier}].push_back(variable);
        }
      }
    }
  }
  std::vector<std::uint32_t> answer;
  std::set<std::uint32_t> codes;
  if (readings.empty()) return answer;
  for (const std::uint32_t variable : readings.begin()->second)
    if (codes.insert(declarations.variables[variable].codeId).second) answer.push_back(variable);
  return answer;
}

TEST(SignalSearch, FindsWhatTheSurestReadingMeans) {
  std::size_t found = 0;
  std::size_t ambiguous = 0;
  for (unsigned seed = 0; seed < 300 / kSanitizerShare; ++seed) {
    Words words(seed);
    Design design;
    Fill(words, design);
    std::vector<std::string> names;
    for (int i = 0; i < 60; ++i) {
      std::string name = words.Signal();
      for (std::size_t scopes = words.Below(3); scopes > 0; --scopes)
        name.insert(0, words.Scope() + "/");
      names.push_back(name + words.One({"", "", "", "", "/", "_1"}));
    }
    for (const bool exact : {true, false}) {
      const SignalSearch search(design.declarations, Declarations::kDump, exact, names);
      for (std::size_t i = 0; i < names.size(); ++i) {
        const SignalAnswer& answer = search.Answer(i);
        ASSERT_EQ(answer.variables, PlainAnswer(design.declarations, names[i], exact))
            << seed << " " << names[i] << " " << exact;
        EXPECT_EQ(answer.more, 0U);
        found += answer.variables.empty() ? 0 : 1;
        ambiguous += answer.variables.size() > 1 ? 1 : 0;
      }
    }
  }
  EXPECT_GT(found, 4000U / kSanitizerShare);
  EXPECT_GT(ambiguous, 800U / kSanitizerShare);
}

TEST(SignalSearch, KeepsAFewOfManyAnswersAndLooksBelowAScopeOnly) {
  Design design;
  const std::uint32_t top = design.Scope(0, "top");
  for (int i = 0; i < 100; ++i) {
    const std::uint32_t unit = design.Scope(top, "u" + std::to_string(i));
    design.Signal(unit, "q", std::to_string(i));
    design.Signal(unit, "clk", "clock");
  }
  const std::vector<std::string> names{"q", "clk", "q", "u7/q", "top/u7/q", "u7/d"};
  const SignalSearch search(design.declarations, top, true, names);
  EXPECT_EQ(search.Answer(0).variables.size(), 64U);
  EXPECT_EQ(search.Answer(0).more, 36U);
  EXPECT_EQ(search.Answer(1).variables, std::vector<std::uint32_t>{1});  // one net, the first name
  EXPECT_EQ(search.Answer(2).variables, search.Answer(0).variables);
  EXPECT_EQ(search.Answer(3).variables, std::vector<std::uint32_t>{14});
  EXPECT_EQ(search.Answer(4).variables, std::vector<std::uint32_t>{14});
  EXPECT_TRUE(search.Answer(5).variables.empty());
  const SignalSearch below(design.declarations, 4, true, {"q", "u7/q"});
  EXPECT_EQ(below.Answer(0).variables, std::vector<std::uint32_t>{4});
  EXPECT_TRUE(below.Answer(1).variables.empty());
}

TEST(ScopeSearch, FindsWhatAPathOrItsEndNames) {
  for (unsigned seed = 0; seed < 300; ++seed) {
    Words words(seed);
    Design design;
    Fill(words, design);
    const Declarations& declarations = design.declarations;
    for (int i = 0; i < 40; ++i) {
      std::string text = words.Scope();
      for (std::size_t scopes = words.Below(4); scopes > 0; --scopes)
        text += words.One({"/", "/", "/", "", "//"}) + words.Scope();
      std::vector<std::uint32_t> expected;
      for (const std::uint32_t scope : ScopesByDepth(declarations, Declarations::kDump)) {
        std::string end;
        for (std::uint32_t at = scope; at != Declarations::kDump;) {
          end = declarations.scopes[at].name + (end.empty() ? "" : "/" + end);
          at = declarations.scopes[at].parent;
          if (end != text) continue;
          if (at == Declarations::kDump && (expected.empty() || expected.front() != UINT32_MAX)) {
            expected = {UINT32_MAX, scope};  // a whole path, and the first of its name
          } else if (expected.empty() || expected.front() != UINT32_MAX) {
            expected.push_back(scope);
          }
        }
      }
      if (!expected.empty() && expected.front() == UINT32_MAX) expected.erase(expected.begin());
      ASSERT_EQ(FindScopes(declarations, text), expected) << seed << " " << text;
    }
    std::vector<std::uint32_t> inOrder = ScopesInOrder(declarations, Declarations::kDump);
    for (std::size_t i = 1; i < inOrder.size(); ++i) {
      const auto parent =
          std::find(inOrder.begin(), inOrder.end(), declarations.scopes[inOrder[i]].parent);
      ASSERT_LT(parent - inOrder.begin(), static_cast<std::ptrdiff_t>(i));
    }
    std::sort(inOrder.begin(), inOrder.end());
    EXPECT_EQ(inOrder.size(), declarations.scopes.size());
    EXPECT_EQ(std::unique(inOrder.begin(), inOrder.end()), inOrder.end());
  }
}

TEST(ScopeSearch, TellsWhatMayHaveBeenMeant) {
  struct Row {
    const char* name;
    const char* meant;
    bool looksLike;
  };
  const Row rows[] = {
      {"counter", "Counter", true},
      {"counter", "couter", true},
      {"counter", "conuter", true},
      {"counter", "cpunt3r", true},
      {"counter", "cont", false},
      {"ab", "ac", false},
      {"abc", "abd", true},
      {"u1", "U1", true},
      {"", "", false},
      {"a", "", false},
      {"counter", "timer", false},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(LooksLike(row.name, row.meant), row.looksLike) << row.name << " " << row.meant;
    EXPECT_EQ(LooksLike(row.meant, row.name), row.looksLike) << row.name << " " << row.meant;
  }
  EXPECT_FALSE(LooksLike(std::string(65, 'a'), std::string(65, 'a')));
  Design design;
  const std::uint32_t top = design.Scope(0, "tb");
  for (const char* name : {"fifo_1", "fifo_2", "uart", "fifo_3", "FIFO", "fifo_4", "fifo_5"})
    design.Scope(top, name);
  using Paths = std::vector<std::string>;
  EXPECT_EQ(NearScopes(design.declarations, "soc/uatr.uarr"), Paths{"tb/uart"});
  EXPECT_EQ(NearScopes(design.declarations, "fifo_9"),
            (Paths{"tb/fifo_1", "tb/fifo_2", "tb/fifo_3", "tb/FIFO", "tb/fifo_4"}));
  EXPECT_EQ(NearScopes(design.declarations, ""), Paths{});
}

TEST(FlatMap, ListsTheNamesOfAScopeInTheOrderOfTheirNumbers) {
  for (unsigned seed = 0; seed < 300; ++seed) {
    Words words(seed);
    Design design;
    for (std::size_t signals = words.Below(12); signals > 0; --signals)
      design.Signal(0, words.Signal(), std::to_string(words.Below(20)));
    std::map<std::string, std::uint32_t> expected;
    std::uint64_t rangeNames = 0;
    for (std::uint32_t id = 0; id < design.declarations.variables.size(); ++id) {
      const std::string& name = design.declarations.variables[id].name;
      for (const std::string& flat : FlatNames(name)) expected.try_emplace(flat, id);
      rangeNames += RewriteName(name).RangeSize();
    }
    const FlatMap flat(design.declarations, 0);
    EXPECT_EQ(flat.RangeNames(), rangeNames);
    std::map<std::string, std::uint32_t> walked;
    std::map<std::string, std::int64_t> last;  // number, by the base
    flat.Walk([&](const std::string& name, std::uint32_t variable) {
      EXPECT_TRUE(walked.emplace(name, variable).second) << name << " twice";
      std::string_view base = name;
      std::int64_t number = 0;
      if (!TakeBitNumber(base, number)) return;
      const auto [place, isNew] = last.try_emplace(std::string(base), number);
      EXPECT_TRUE(isNew || place->second < number) << name;
      place->second = number;
    });
    ASSERT_EQ(walked, expected) << seed;
  }
}

/// A name in pieces: its characters, and its numbers without zeros in front, padded to one length.
std::string Padded(const std::string& name) {
  std::string padded;
  for (std::size_t at = 0; at < name.size();) {
    const std::size_t end = std::min(name.find_first_not_of("0123456789", at), name.size());
    if (end == at) {
      padded += name[at++];
      continue;
    }
    const std::size_t digits = std::min(name.find_first_not_of('0', at), end - 1);
    padded += std::string(40 - (end - digits), '0') + name.substr(digits, end - digits);
    at = end;
  }
  return padded;
}

TEST(NameOrder, IsThatOfNamesWithPaddedNumbers) {
  std::mt19937 random(1);
  for (int trial = 0; trial < 50000; ++trial) {
    std::string names[2];
    for (std::string& name : names) {
      for (std::size_t length = random() % 8; length > 0; --length)
        name += "0019a_[\xff"[random() % 8];
    }
    const auto& [a, b] = names;
    const bool isBefore = Padded(a) != Padded(b) ? Padded(a) < Padded(b) : a < b;
    ASSERT_EQ(IsNameBefore(a, b), isBefore) << a << " " << b;
  }
}

TEST(DesignNames, TakeBitNumbersAsTheyAreWritten) {
  struct Row {
    std::string_view name, base;
    std::int64_t number;
  };
  const Row rows[] = {
      {"d_0", "d_", 0},
      {"d_12", "d_", 12},
      {"d_-3", "d_", -3},
      {"a_1_2", "a_1_", 2},
      {"_5", "_", 5},
      {"d_2147483647", "d_", 2147483647},
      {"d_-2147483648", "d_", -2147483648LL},
  };
  for (const Row& row : rows) {
    std::string_view name = row.name;
    std::int64_t number = 77;
    EXPECT_TRUE(TakeBitNumber(name, number)) << row.name;
    EXPECT_EQ(name, row.base);
    EXPECT_EQ(number, row.number);
  }
  for (const char* none : {"", "5", "-5", "d", "d5", "d_", "d-5", "d_05", "d_-0", "d_-05", "d_+5",
                           "d_2147483648", "d_-2147483649", "d_5x"}) {
    std::string_view name = none;
    std::int64_t number = 77;
    EXPECT_FALSE(TakeBitNumber(name, number)) << none;
    EXPECT_EQ(name, none);
    EXPECT_EQ(number, 77);
  }
}

}  // namespace
}  // namespace orsa::kesncd
