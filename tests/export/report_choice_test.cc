// What a report leaves out, against a plain account: which modules, courses and signals are listed
// under any limits, where the others are summed, and that hostile names and the page's format hold.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <numeric>
#include <random>
#include <regex>
#include <set>
#include <string>

#include "activity/activity_rows.h"
#include "activity/profile/profile_run.h"
#include "export/report_figures.h"
#include "tests/support/text_stream.h"

namespace orsa::kesncd {
namespace {

using Json = nlohmann::json;

/// Names as a dump has them and as a reader of the figures gets them; a number follows each.
struct Spelling {
  std::string dumped;
  std::string shown;
};
const Spelling kSpellings[] = {
    {"u", "u"},
    {"</script><!--", "</script><!--"},
    {"a\"b\\u003c", "a\"b\\u003c"},
    {"\\esc{'}&lt;", "\\esc{'}&lt;"},
    {"\xff\xc3", "\ufffd\ufffd"},
    {"\xed\xa0\x80", "\ufffd\ufffd\ufffd"},  // half of a pair of UTF-16
    {"\u00e9\u2028\u202e", "\u00e9\u2028\u202e"},
    {"\x01\x7f", "\x01\x7f"},
};

std::string Shown(const std::string& name) {
  const std::size_t digits = name.find_last_not_of("0123456789") + 1;
  for (const Spelling& spelling : kSpellings)
    if (name.substr(0, digits) == spelling.dumped) return spelling.shown + name.substr(digits);
  return name;
}

/// Modules in modules, some without signals, with codes that several of them name; a pause.
std::string RandomDesign(unsigned seed) {
  std::mt19937 random(seed);
  const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  std::string text = "$timescale 1ns $end $date </date> $end\n";
  unsigned depth = 0;
  const unsigned codes = 20;
  for (unsigned scope = 0; scope < 40; ++scope) {
    text += "$scope module " + kSpellings[below(8)].dumped + std::to_string(scope) + " $end\n";
    for (unsigned names = below(5); names > 0; --names) {
      text += "$var wire 3 " + std::string(1, static_cast<char>('A' + below(codes))) + " " +
              kSpellings[below(8)].dumped + std::to_string(10 * scope + names) + " $end\n";
    }
    for (++depth; depth > 0 && below(5) < 2; --depth) text += "$upscope $end\n";
  }
  text += "$enddefinitions $end\n";
  for (unsigned time = 0; time < 60; ++time) {
    text += "#" + std::to_string(time) +
            (time == 30   ? "\n$dumpoff\n"
             : time == 33 ? "\n$dumpon\n"
                          : "\n");
    for (unsigned changes = below(6); changes > 0; --changes) {
      // Later codes toggle less, the last ones never.
      const unsigned code = std::min(below(codes), below(codes - 3));
      text += std::string("b") + "01x"[below(3)] + "01"[below(2)] + "1x"[below(9) / 8] + " " +
              static_cast<char>('A' + code) + "\n";
    }
  }
  return text;
}

struct Limits {
  std::size_t modules, courses, signals, standOut;
  std::uint32_t levels;
};

/// A dump with the figures of its scopes, straight from the definitions.
struct Account {
  explicit Account(unsigned seed) {
    TextSource dump(RandomDesign(seed));
    ProfileOptions options;
    options.counting.dump = "d";
    options.depth = UINT32_MAX;
    options.parts = 7;
    run = CountActivityAndProfile(dump, options);
    const ActivityRows rows(run.base);
    sums = rows.ModuleSums();
    depths.resize(scopes().size());
    own.resize(scopes().size());
    for (std::uint32_t id = 1; id < scopes().size(); ++id)
      depths[id] = depths[scopes()[id].parent] + 1;
    std::map<std::uint32_t, std::uint32_t> owners;  // by code: the highest, of those the first
    for (const DumpVariable& name : run.base.declarations.variables) {
      const auto [owner, isNew] = owners.try_emplace(name.codeId, name.scope);
      if (!isNew && depths[name.scope] < depths[owner->second]) owner->second = name.scope;
    }
    for (const auto& [code, scope] : owners) own[scope].Add(run.base.BitsOf(code));
    for (std::uint32_t id = 0; id < scopes().size(); ++id)
      if (id == 0 || sums[id].bits > 0) order.push_back(id);
    std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
      return std::pair(sums[b].tc, depths[a]) < std::pair(sums[a].tc, depths[b]);
    });
  }
  const std::vector<DumpScope>& scopes() const { return run.base.declarations.scopes; }

  /// The scopes that are kept, in the dump's order.
  std::vector<std::uint32_t> First(std::size_t most, std::uint32_t levels) const {
    std::vector<std::uint32_t> first;
    for (const std::uint32_t id : order)
      if (first.size() < most && depths[id] <= levels) first.push_back(id);
    std::sort(first.begin(), first.end());
    return first;
  }
  /// By scope, the place among those listed of the lowest one that it is or is in.
  std::vector<std::size_t> PlacesIn(const std::vector<std::uint32_t>& listed) const {
    std::vector<std::size_t> places(scopes().size());
    for (std::uint32_t id = 0; id < places.size(); ++id) {
      const auto at = std::find(listed.begin(), listed.end(), id);
      places[id] = at != listed.end() ? static_cast<std::size_t>(at - listed.begin())
                                      : places[scopes()[id].parent];
    }
    return places;
  }

  ProfileRun<Profile> run;
  std::vector<ActivitySums> sums;  // by scope
  std::vector<ActivitySums> own;
  std::vector<std::uint32_t> depths;
  std::vector<std::uint32_t> order;  // scopes with bits, the most worth a look first
};

std::uint64_t Narrow(WideCount count) {
  return static_cast<std::uint64_t>(count);
}

void CheckModules(const Account& account, const Json& json, const Limits& limits) {
  const std::vector<std::uint32_t> listed = account.First(limits.modules, limits.levels);
  const std::vector<std::size_t> places = account.PlacesIn(listed);
  Json expected;
  std::vector<std::uint64_t> hidden(listed.size());
  for (const char* key : {"signals", "own_bits", "own_toggles"})
    expected[key] = std::vector<std::uint64_t>(listed.size());
  for (const std::uint32_t id : listed) {
    expected["name"].push_back(id == 0 ? "" : Shown(account.scopes()[id].name));
    expected["depth"].push_back(account.depths[id]);
    expected["bits"].push_back(account.sums[id].bits);
    expected["toggles"].push_back(Narrow(account.sums[id].tc));
    expected["glitches"].push_back(Narrow(account.sums[id].ig));
  }
  const auto add = [&](const char* key, std::size_t place, std::uint64_t more) {
    expected[key][place] = expected[key][place].get<std::uint64_t>() + more;
  };
  for (std::uint32_t id = 0; id < places.size(); ++id) {
    add("signals", places[id], account.scopes()[id].variables.size());
    add("own_bits", places[id], account.own[id].bits);
    add("own_toggles", places[id], Narrow(account.own[id].tc));
    if (listed[places[id]] != id && account.sums[id].bits > 0) ++hidden[places[id]];
  }
  for (const auto& [key, list] : expected.items()) EXPECT_EQ(json["modules"][key], list) << key;
  for (std::size_t i = 0; i < json["hidden"]["module"].size(); ++i)
    hidden[json["hidden"]["module"][i]] -= json["hidden"]["modules"][i].get<std::uint64_t>();
  EXPECT_EQ(hidden, std::vector<std::uint64_t>(listed.size()));
}

void CheckCourses(const Account& account, const Json& json, const Limits& limits) {
  const std::vector<std::uint32_t> listed = account.First(limits.modules, limits.levels);
  const std::vector<std::uint32_t> courses =
      account.First(std::min(limits.courses, limits.modules), limits.levels);
  std::vector<std::uint64_t> expected(courses.size());
  const std::vector<std::size_t> places = account.PlacesIn(courses);
  for (std::uint32_t id = 0; id < places.size(); ++id)
    expected[places[id]] += Narrow(account.own[id].tc);
  ASSERT_EQ(json["activity"]["module"].size(), courses.size());
  for (std::size_t i = 0; i < courses.size(); ++i) {
    EXPECT_EQ(listed[json["activity"]["module"][i]], courses[i]);
    const auto windows = json["activity"]["toggles"][i].get<std::vector<std::uint64_t>>();
    EXPECT_EQ(windows.size() + 1, json["activity"]["edges"].size());
    EXPECT_EQ(std::accumulate(windows.begin(), windows.end(), std::uint64_t{0}), expected[i]);
  }
}

void CheckSignals(const Account& account, const Json& json, const Limits& limits) {
  const std::vector<std::uint32_t> listed = account.First(limits.modules, limits.levels);
  const std::vector<std::size_t> places = account.PlacesIn(listed);
  const Json& signals = json["signals"];
  EXPECT_LE(signals["name"].size(), limits.signals);
  EXPECT_TRUE(std::is_sorted(signals["module"].begin(), signals["module"].end()));
  std::map<std::string, std::size_t> rows;
  for (std::size_t i = 0; i < signals["name"].size(); ++i)
    EXPECT_TRUE(rows.emplace(signals["name"][i], i).second);
  const std::size_t sure = std::min(limits.standOut, limits.signals / 4);
  std::map<std::size_t, std::pair<std::uint64_t, std::uint64_t>> rest;
  for (const DumpVariable& name : account.run.base.declarations.variables) {
    ActivitySums sums;
    sums.Add(account.run.base.BitsOf(name.codeId));
    const auto row = rows.find(Shown(name.name));
    if (row != rows.end()) {
      EXPECT_EQ(listed[signals["module"][row->second]], name.scope);
      EXPECT_EQ(signals["toggles"][row->second], Narrow(sums.tc));
      EXPECT_EQ(signals["tx"][row->second], Narrow(sums.tx));
      continue;
    }
    auto& [names, toggles] = rest[places[name.scope]];
    ++names;
    toggles += Narrow(sums.tc);
    if (listed[places[name.scope]] != name.scope || sums.tc == 0) continue;
    EXPECT_GE(std::count_if(signals["toggles"].begin(), signals["toggles"].end(),
                            [&](const Json& other) { return other >= Narrow(sums.tc); }),
              static_cast<std::ptrdiff_t>(sure))
        << "one that toggles more than those that stand out is not listed";
  }
  Json expected{{"module", Json::array()}, {"signals", Json::array()}, {"toggles", Json::array()}};
  for (const auto& [place, sums] : rest) {
    expected["module"].push_back(place);
    expected["signals"].push_back(sums.first);
    expected["toggles"].push_back(sums.second);
  }
  EXPECT_EQ(json["rest"], expected);
}

TEST(ReportChoice, KeepsWhatStandsOutAndSumsTheRest) {
  for (unsigned seed = 0; seed < 12; ++seed) {
    const Account account(seed);
    for (const Limits& limits :
         {Limits{1000, 1000, 1000, 200, 1000}, Limits{12, 12, 8, 200, 1000}, Limits{9, 4, 3, 1, 3},
          Limits{1000, 5, 60, 3, 1}, Limits{2, 7, 1, 0, 1000}, Limits{1, 1, 0, 5, 0}}) {
      SCOPED_TRACE(std::to_string(seed) + " " + std::to_string(limits.modules));
      ReportLimits reportLimits;
      reportLimits.modules = limits.modules;
      reportLimits.courses = limits.courses;
      reportLimits.signals = limits.signals;
      reportLimits.standOut = limits.standOut;
      reportLimits.levels = limits.levels;
      const std::string text = ReportJson(account.run.base, account.run.figures, {}, reportLimits);
      EXPECT_EQ(text.find('<'), std::string::npos);
      const Json json = Json::parse(text);
      CheckModules(account, json, limits);
      CheckCourses(account, json, limits);
      CheckSignals(account, json, limits);
    }
  }
}

/// All keys of the objects in a value.
void AddKeys(const Json& json, std::set<std::string>& keys) {
  for (const auto& [key, value] : json.items()) {
    if (json.is_object()) keys.insert(key);
    if (value.is_structured()) AddKeys(value, keys);
  }
}

TEST(ReportChoice, HasTheKeysThatItsFormatNames) {
  ReportFacts facts;
  facts.clocks = {{"clk", 40.5, {}, ""}, {"</b>", {}, 100.0, "SDC"}};
  facts.findings = {ReportFacts::Finding{"note", "said \"so\""}};
  facts.reached = {{"pins", 3, UINT64_MAX, "n.json"}};
  const Account account(3);
  ReportLimits limits;
  limits.modules = 9;
  const Json json = Json::parse(ReportJson(account.run.base, account.run.figures, facts, limits));
  EXPECT_EQ(json["reached"][0]["total"], "18446744073709551615");  // more than 2^53: as a text
  EXPECT_EQ(json["clocks"][1]["mhz"], nullptr);
  EXPECT_EQ(json["activity"]["gaps"], Json({{30, 33}}));
  EXPECT_EQ(json["dump"]["date"], "</date>");
  std::set<std::string> written;
  AddKeys(json, written);
  std::set<std::string> named;
  std::set<std::string> required;
  std::ifstream page(KESNCD_TEST_SOURCE "/report/data_format.md");
  const std::regex word("`([a-z0-9_]+)`");
  for (std::string line; std::getline(page, line);) {
    const std::size_t cell = line.starts_with("| ") ? line.find(" |", 1) : 0;
    for (std::sregex_iterator at(line.begin(), line.end(), word), end; at != end; ++at) {
      named.insert((*at)[1]);
      if (static_cast<std::size_t>(at->position()) < cell) required.insert((*at)[1]);
    }
  }
  EXPECT_GT(required.size(), 20U);
  EXPECT_TRUE(std::includes(named.begin(), named.end(), written.begin(), written.end()));
  EXPECT_TRUE(std::includes(written.begin(), written.end(), required.begin(), required.end()));
}

}  // namespace
}  // namespace orsa::kesncd
