// Prepared dumps: what the library's four readers make of them, against what the dump says.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <random>
#include <regex>
#include <sstream>

#include "cli/dump_look.h"
#include "cli/exit_status.h"
#include "cli/prepare.h"
#include "cli/time_text.h"
#include "tests/support.h"
#include "tests/text_stream.h"

namespace orsa::kesncd {
namespace {

using namespace kesncd_cli;

struct Prepared {
  std::string text;
  std::string remarks;
};

/// A failure's text stands for the remarks.
Prepared Prepare(const std::string& dump, const PrepareOptions& options = {},
                 std::size_t chunk = std::string::npos) {
  TextSource source(dump, chunk);
  TextSink sink;
  try {
    std::string remarks;
    for (const std::string& remark : PrepareDump(source, sink, options).Remarks()) {
      remarks += remark + "\n";
    }
    return {sink.text, remarks};
  } catch (const Failure& failure) {
    return {"", failure.what()};
  }
}

/// Changes by scope path and name.
using Figures = std::map<std::pair<std::string, std::string>, std::int64_t>;

Figures TreeFigures(const std::string& dump) {
  ResetReaderState();
  KesNCD analyser;
  EXPECT_TRUE(analyser.ParseVcdFileHier(TextStream(dump), {}));
  Figures figures;
  std::vector<std::pair<const VmodHier*, std::string>> pending;
  if (analyser.hierRoot != nullptr) pending.emplace_back(analyser.hierRoot, "");
  while (!pending.empty()) {
    const auto [scope, before] = pending.back();
    const std::string path = before + scope->name;
    pending.pop_back();
    for (const auto& [code, signal] : scope->signals)
      figures[{path, signal.name}] += signal.changes;
    for (const VmodHier* child : scope->subMods) pending.emplace_back(child, path + "/");
  }
  return figures;
}

std::string SpanText() {
  std::ostringstream text;
  text.precision(12);
  text << startCycle << ".." << endCycle << " @" << timeScale;
  return text.str();
}

/// "0..30 @1 top.clk=2 top/u.q=1": the span in ticks, the tick in ns, and the changes.
std::string TreeText(const std::string& dump) {
  std::string text;
  for (const auto& [signal, changes] : TreeFigures(dump)) {
    text += " " + signal.first + "." + signal.second + "=" + std::to_string(changes);
  }
  return SpanText() + text;
}

/// What the readers of one module count, for each module whose name no other one has.
void ExpectFlatReadersAgree(const std::string& dump, const std::string& what) {
  const Figures tree = TreeFigures(dump);
  const std::string span = SpanText();
  std::map<std::string, std::map<std::string, std::int64_t>> modules;
  std::map<std::string, std::set<std::string>> paths;
  std::set<std::string> names;
  for (const auto& [signal, changes] : tree) {
    const std::string module = signal.first.substr(signal.first.rfind('/') + 1);
    modules[module][signal.second] = changes;
    paths[module].insert(signal.first);
    names.insert(signal.second);
  }
  const std::regex scope("\\$scope module (\\S+) \\$end");
  std::map<std::string, int> scopes;
  for (std::sregex_iterator at(dump.begin(), dump.end(), scope), end; at != end; ++at) {
    ++scopes[(*at)[1]];
  }
  int read = 0;
  for (const auto& [module, expected] : modules) {
    if (scopes[module] != 1 || ++read > 12) continue;
    for (int reader = 0; reader < 3; ++reader) {
      ResetReaderState();
      KesNCD analyser;
      analyser.SetTopModule(module);
      const TextStream stream(dump);
      if (reader == 0) analyser.ParseVcdFile(stream);
      if (reader == 1) analyser.ParseVcdFile2(stream, names);
      const int parsed = reader == 2 ? ParseVcdFile(stream) : 0;
      EXPECT_EQ(parsed, 0) << what;
      std::map<std::string, std::int64_t> counts;
      for (int i = 0; i < topMod.GetSignalSize(); ++i) {
        counts[topMod.GetSignalName(i)] += topMod.GetSignalChange(i);
      }
      EXPECT_EQ(counts, expected) << what << ": " << module << ", reader " << reader;
      EXPECT_EQ(SpanText(), span) << what << ": " << module << ", reader " << reader;
    }
  }
}

/// What every prepared dump keeps to.
void ExpectShape(const std::string& prepared, const std::string& what) {
  std::istringstream lines(prepared);
  for (std::string line; std::getline(lines, line);) ASSERT_LT(line.size(), 1000U) << what;
  EXPECT_EQ(Prepare(prepared).text, prepared) << what;
  TextSource source(prepared, std::string::npos);
  KeptSource kept(source);
  DumpLook look = LookAtDump(kept, what, Reader::Lines);
  std::erase_if(look.reasons, [](const Finding& f) { return f.kind == FindingKind::LongValues; });
  EXPECT_EQ(look.reasons.size(), 0U) << what << "\n" << prepared;
}

const char kTwo[] =
    "$timescale\n1ns\n$end\n$scope module a $end\n$var wire 1 ! x $end\n$var wire 2 # y [1:0] "
    "$end\n"
    "$upscope $end\n$enddefinitions $end\n";

struct Row {
  const char* what;
  std::string dump;
  const char* figures;
  const char* remarks = "";  // a regular expression
};

const Row kRows[] = {
    {"all on one line, codes apart from their values, no final newline",
     "$timescale 1 ns $end $scope module a $end $var wire 1 ! x $end $var wire 2 # y [ 1 : 0 ] "
     "$end "
     "$upscope $end $enddefinitions $end #0 $dumpvars 1! b0 # $end #5 0 ! b101\n# #70 B1 # R1 #",
     "0..70 @1 a.x=2 a.y[1:0]=4"},
    {"CR LF, tabs, NULs, a byte order mark",
     "\xEF\xBB\xBF$TIMESCALE\r\n\t10ps\r\n$End\r\n$scope\r\nmodule\r\na\r\n$end\r\n$var wire 1\t! x"
     " $end\r\n$upscope $end\r\n$enddefinitions $end\r\n#0\r\n1!\r\n" +
         std::string(3, '\0') + "\v0!\r\n#9\r\n",
     "0..9 @0.01 a.x=2"},
    {"no $end anywhere, and no end of the definitions",
     "$date today\n$timescale 1us\n$scope module a\n$var wire 1 ! x\n$scope begin b\n$var wire 1 # "
     "y\n"
     "$upscope\n$upscope\n#0\n$dumpvars\n1!\n$dumpall\n0#\n#3\n0!\n",
     "0..3 @1000 a.x=2 a/b.y=1"},
    {"comments hold anything, attributes are passed over",
     std::string("$comment $var wire 1 ? no\n$scope module no $end $attrbegin misc 02 a 1 $end\n") +
         kTwo + "$comment 1! #7 $dumpoff $end #0\n1!\n$version 1! $end\n#2 $comment\n\n$end 0!\n",
     "0..2 @1 a.x=2 a.y[1:0]=0"},
    {"an open comment at the end", std::string(kTwo) + "#0\n1!\n#1\n$comment 0!\n#2\n",
     "0..1 @1 a.x=1 a.y[1:0]=0", "section without \\$end, .*: 1 .*line 12\\)\n"},
    {"several tops, empty ones, one opened again, other kinds, late variables, one without a scope",
     "$timescale 1s $end $scope package p $end $upscope $end $scope module a $end $scope fork u "
     "$end "
     "$var reg 1 ! q $end $upscope $end $var wire 1 # x $end $upscope $end $var wire 1 % o $end "
     "$scope struct s $end $var wire 1 ! f $end $upscope $end $scope module a $end $var wire 1 & z "
     "$end $scope module u $end $var wire 1 ' r $end $upscope $end $upscope $end $upscope $end "
     "$enddefinitions $end #1 1! 1! 1# 0# 1# 1% 1& 1' 0'\n#4",
     "1..4 @1000000000 all_scopes.o=1 all_scopes/a.x=3 all_scopes/a.z=1 all_scopes/a/u.q=2 "
     "all_scopes/a/u.r=2 all_scopes/s.f=2",
     "\\$upscope with no scope open: 1 .*\nit has several .* all_scopes\n"},
    {"several names of a code in a scope, in several scopes, a repeated declaration",
     "$timescale 1fs $end $scope module a $end $var wire 1 ! x $end $var wire 1 ! y $end $var wire "
     "1 "
     "! x $end $var wire 2 # v $end $var wire 2 # w $end $scope module u $end $var wire 1 ! p $end "
     "$var wire 1 ! q $end $var wire 1 ! r $end $upscope $end $enddefinitions $end "
     "#0 1! b1 # x! #1 0! #2",
     "0..2 @1e-06 a.v=1 a.w=1 a.x=2 a.y=2 a/u.p=2 a/u.q=2 a/u.r=2",
     "1 of 4 changes are to x or z, .*\n"},
    {"names: none, escaped, blanks in ranges, two indices, a keyword, far too long",
     "$timescale 1ns $end $scope module $end $var wire 1 ! $end $var wire 8 # \\a/b[1] [7 : 0] "
     "$end "
     "$var wire 4 % m[0] [3:0] $end $scope begin $var $end $var wire 1 & " +
         std::string(70000, 'n') + " $end $enddefinitions $end #0 1! #1 b1 #",
     nullptr},
    {"values of VHDL, reals, strings",
     std::string(kTwo) + "#0 H! L! h! l! U! X! W! -! Z! bHLUXWZ- # r-1.5e+3 # shello # sx ! #1",
     "0..1 @1 a.x=4 a.y[1:0]=2",
     "changes to strings.*: 2 .*\nchanges to H or L.*: 4 .*line 9: H!\\)\n5 of 11 changes .*\n"},
    {"a port dump",
     "$timescale 1 ns $end $scope module a.u $end $var port 1 <0 d $end $var port [3:0] <1 q $end "
     "$var port [ 1 : 0 ] <2 r[1:0] $end $upscope $end $enddefinitions $end #0 $dumpports pX 6 6 "
     "<0 "
     "pDDUU 6666 6666 <1 pHL 66 66 <2 $end #10 pU 0 6 <0 pl 6 0 <0 pF 0 0 <0 $dumpportsoff pD 6 0 "
     "<0 "
     "$end $dumpportson pT 0 0 <0 pH 0 6 <0 $end $vcdclose #13 $end",
     "0..13 @1 a.u.d=3 a.u.q[3:0]=1 a.u.r[1:0]=1", "3 of 9 changes .*\n"},
    {"dumping off and on, on one line",
     std::string(kTwo) +
         "#0 1! $dumpoff x! 0! b1 # $end #5 0! $dumpon 1! b0 # $end 0! #7 $dumpoff $end "
         "1! $dumpall 0! $end",
     "0..7 @1 a.x=4 a.y[1:0]=1"},
    {"stamps: zeros in front, backward, fractions, others",
     std::string(kTwo) +
         "0!\n#0010\n1!\n#1000\n0!\n#20.75\n1!\n#-5\n#\n#1e3\n#99999999999999999999\n#7\n",
     "10..7 @1 a.x=4 a.y[1:0]=0",
     "time stamps that go back in time: 2\nwords that are not .*: 4 .*#-5\\)\ntime stamps that "
     "lose .*: 1 .*\n"},
    {"codes as long as names and as short as values",
     "$timescale 100ns $end $scope module a $end $var wire 1 12345678 x $end $var wire 1 123456789 "
     "y "
     "$end $var wire 2 #1 z $end $var wire 1 $end w $end $var wire 1 b v $end $upscope $end "
     "$enddefinitions $end #0 112345678 0123456789 b1 #1 1b #1 b0 #1 0b b1 #3 q1 1?",
     "0..3 @100 a.v=2 a.x=1 a.y=1 a.z=2",
     "declarations without .*: 1 .*\nchanges of codes .*: 2 .*\nwords .*: 1 .*q1\\)\n"},
    {"values longer than a line and than a block",
     std::string(kTwo) + "#0\nb" + std::string(5000, '1') + " #\n1!\nb" + std::string(700000, '0') +
         " #\n#1\n",
     "0..1 @1 a.x=1 a.y[1:0]=2", "values cut .*: 2 .*\n"},
    {"the dump is cut in a value, or in the header", std::string(kTwo) + "#0\n1!\n#8\nb1",
     "0..8 @1 a.x=1 a.y[1:0]=0", "value without a code .*: 1 .*\n"},
    {"nothing behind the header", std::string(kTwo).substr(0, 62), "-1..-1 @1 a.x=0",
     "it ends inside .*\nit has no time stamp.*\n"},
    {"no time scale, no span", std::string(kTwo).substr(19) + "#3\n1!\n",
     "3..3 @0 a.x=1 a.y[1:0]=0", "it has no time scale, .*\nit spans no time.*\n"},
    {"a time scale nobody knows",
     "$timescale 1 parsec $end" + std::string(kTwo).substr(19) + "#3\n#4",
     "3..4 @0 a.x=0 a.y[1:0]=0", "its time scale \"1parsec\" is not.*\n"},
    {"a time scale with a fraction",
     "$timescale 1.5 NS $end" + std::string(kTwo).substr(19) + "#3\n#4",
     "3..4 @1.5 a.x=0 a.y[1:0]=0"},
    {"variables declared too late", std::string(kTwo) + "#0\n$var wire 1 & l $end\n1&\n1!\n#1\n",
     "0..1 @1 a.x=1 a.y[1:0]=0", "declarations behind .*: 1 .*\nchanges of codes .*: 1 .*\n"},
};

using PreparedDumps = FreshState;

TEST_F(PreparedDumps, ReadAsTheDumpSays) {
  for (const Row& row : kRows) {
    const Prepared whole = Prepare(row.dump);
    if (row.figures != nullptr) {
      EXPECT_EQ(TreeText(whole.text), row.figures) << row.what;
      EXPECT_TRUE(std::regex_match(whole.remarks, std::regex(row.remarks))) << row.what << "\n"
                                                                            << whole.remarks;
    }
    ExpectShape(whole.text, row.what);
    ExpectFlatReadersAgree(whole.text, row.what);
    for (const std::size_t chunk : {1U, 3U, 4096U}) {
      EXPECT_EQ(Prepare(row.dump, {}, chunk).text, whole.text) << row.what << ", by " << chunk;
    }
  }
}

TEST_F(PreparedDumps, GiveNamesToWhatHasNone) {
  const Prepared prepared = Prepare(kRows[7].dump);
  EXPECT_NE(prepared.remarks.find("names that were missing, too long or keywords"),
            std::string::npos);
  const std::string header = prepared.text.substr(0, prepared.text.find("$upscope"));
  EXPECT_EQ(header,
            "$timescale\n1ns\n$end\n$scope module unnamed_1 $end\n$var wire 1 A unnamed_2 $end\n"
            "$var wire 8 C \\a/b[1][7:0] $end\n$var wire 4 D m[0][3:0] $end\n"
            "$scope module _$var $end\n$var wire 1 F " +
                std::string(798, 'n') + "_3 $end\n");
}

TEST_F(PreparedDumps, KeepTheirOrderInTheirCodes) {
  std::string dump = "$timescale 1ns $end $scope module a $end\n";
  for (int i = 0; i < 1700; ++i) {
    const std::string number = std::to_string(i);
    dump += "$var wire 1 c" + number + " n" + number + " $end\n";
  }
  const std::string text = Prepare(dump + "$enddefinitions $end\n#0\n1c41\n").text;
  std::string last;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string keyword, type, width, code;
    words >> keyword >> type >> width >> code;
    if (keyword != "$var") continue;
    EXPECT_LT(last, code);
    // Nothing that goes on a number or starts a value or a time.
    EXPECT_EQ(code.find_first_of("bBrRxXzZeEpP0123456789.+-#$_"), std::string::npos) << code;
    last = code;
  }
  EXPECT_NE(text.find("#0\n1ACC\n"), std::string::npos);
}

TEST_F(PreparedDumps, KeepAWindow) {
  const std::string body =
      "1!\n#10\n0!\nb0 "
      "#\n#20\n1!\n#30\n0!\n$dumpoff\nx!\n$end\n#40\n$dumpon\n1!\n$end\n#50\n0!\nb1 #\n";
  const struct {
    const char* begin;
    const char* end;
    const char* figures;  // empty: a failure
  } rows[] = {
      {nullptr, nullptr, "10..50 @1 a.x=6 a.y[1:0]=2"},
      {"0s", "1s", "10..50 @1 a.x=6 a.y[1:0]=2"},
      {nullptr, "25ns", "10..25 @1 a.x=3 a.y[1:0]=1"},
      {nullptr, "20ns", "10..20 @1 a.x=3 a.y[1:0]=1"},
      {"15ns", "0.045us", "15..45 @1 a.x=4 a.y[1:0]=1"},
      {"19.5ns", nullptr, "20..50 @1 a.x=5 a.y[1:0]=2"},
      {"35ns", nullptr, "35..50 @1 a.x=2 a.y[1:0]=1"},  // dumping is off when it opens
      {"22ns", "28ns", "22..28 @1 a.x=1 a.y[1:0]=1"},
      {"51ns", nullptr, ""},
      {nullptr, "9ns", ""},
  };
  for (const auto& row : rows) {
    PrepareOptions options;
    if (row.begin != nullptr) options.begin = Femtoseconds(row.begin);
    if (row.end != nullptr) options.end = Femtoseconds(row.end);
    const Prepared prepared = Prepare(kTwo + body, options);
    const std::string figures = prepared.text.empty() ? "" : TreeText(prepared.text);
    EXPECT_EQ(figures, row.figures) << (row.begin ? row.begin : "") << " " << prepared.remarks;
    if (!figures.empty()) ExpectShape(prepared.text, row.figures);
  }
}

TEST_F(PreparedDumps, TakeATimeScaleAndATop) {
  const std::string two =
      "$scope module a $end $var wire 1 ! x $end $upscope $end $scope module b $end $scope module "
      "c "
      "$end $upscope $end $scope module d $end $var wire 1 ! y $end $upscope $end $upscope $end "
      "$enddefinitions $end #1 1! #3";
  PrepareOptions options;
  options.tick = Femtoseconds("100ps");
  for (const char* top : {"d", "b/d"}) {
    options.top = top;
    const Prepared prepared = Prepare(two, options);
    EXPECT_EQ(prepared.remarks, "it has several top-level scopes, which now stand in all_scopes\n");
    EXPECT_EQ(TreeText(prepared.text).substr(0, 9), "1..3 @0.1");
    EXPECT_LT(prepared.text.find("module d"), prepared.text.find("module c"));
    EXPECT_LT(prepared.text.find("module c"), prepared.text.find("module a $"));
  }
  options.top = "e";
  EXPECT_EQ(Prepare(two, options).remarks, ": has no scope e");
  options = {};
  options.begin = 1;
  EXPECT_NE(Prepare(two, options).remarks.find("a window needs"), std::string::npos);
}

TEST_F(PreparedDumps, SurviveDamage) {
  std::mt19937 random(7);
  const std::string odd = "$ \n#01xb\t!sp[:";
  for (int round = 0; round < 4000; ++round) {
    std::string dump = kRows[random() % std::size(kRows)].dump;
    if (dump.size() > 4000) continue;
    for (std::size_t i = random() % 8; i-- > 0;) {
      const std::size_t at = random() % dump.size();
      switch (random() % 4) {
        case 0:
          dump[at] = static_cast<char>(random());
          break;
        case 1:
          dump[at] = odd[random() % odd.size()];
          break;
        case 2:
          dump.erase(at, random() % 20);
          dump += ' ';
          break;
        default:
          dump.insert(at, dump.substr(random() % dump.size(), random() % 40));
      }
    }
    const Prepared prepared = Prepare(dump, {}, 1 + random() % 64);
    if (!prepared.text.empty()) ExpectShape(prepared.text, dump);
    if (HasFailure()) return;
  }
}

TEST_F(PreparedDumps, OfSimulatorsReadAsTheyWereCountedApart) {
  const char* const folder = std::getenv("KESNCD_REAL_DUMPS");
  if (folder == nullptr) GTEST_SKIP() << "KESNCD_REAL_DUMPS names no folder of dumps";
  if (std::system("python3 --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "there is no python3";
  int dumps = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::string path = entry.path().string();
    if (entry.path().extension() != ".vcd" || path.find("not-a-vcd") != std::string::npos) continue;
    const Prepared prepared = Prepare(ReadAll(path));
    std::ostringstream figures;
    const Figures tree = TreeFigures(prepared.text);
    figures.precision(20);
    figures << "\t" << startCycle << "\t" << endCycle << "\n";
    for (const auto& [signal, changes] : tree) {
      figures << signal.first << "\t" << signal.second << "\t" << changes << "\n";
    }
    const TempDir dir;
    const std::string command = "python3 '" KESNCD_TEST_SOURCE "/tests/count_dump.py' --paths '" +
                                path + "' > '" + dir.Path("counts") + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << path;
    EXPECT_TRUE(figures.str() == ReadAll(dir.Path("counts"))) << path;
    ExpectShape(prepared.text, path);
    ExpectFlatReadersAgree(prepared.text, path);
    ++dumps;
  }
  EXPECT_GE(dumps, 14);
}

}  // namespace
}  // namespace orsa::kesncd
