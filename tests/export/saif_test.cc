// SAIF and Tcl as estimators read them: names, units, instances, and what must not become a file.
// The dumps of cases/export.txt have their files in full beside them.
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <sstream>

#include "activity/activity_run.h"
#include "export/netlist_pins.h"
#include "export/repeated_names.h"
#include "export/saif_text.h"
#include "export/saif_writer.h"
#include "export/tcl_writer.h"
#include "tests/support/case_files.h"
#include "tests/support/text_stream.h"
#include "text/byte_stream.h"
#include "text/failure.h"

namespace orsa::kesncd {
namespace {

const std::string kCases = "tests/cases/export.txt";

ActivityResult Count(const std::string& dump) {
  TextSource source(dump, 4096);
  return CountActivity(source, {});
}

ActivityResult CountCase(const std::string& name) {
  return Count(CaseIn(kCases, name).dump);
}

std::uint32_t ScopeCalled(const ActivityResult& result, const std::string& path) {
  const Declarations& declarations = result.declarations;
  for (std::uint32_t id = 0; id < declarations.scopes.size(); ++id) {
    if (declarations.PathOf(id) == path) return id;
  }
  ADD_FAILURE() << path;
  return 0;
}

SaifOptions Options() {
  SaifOptions options;
  options.version = "1.0.0";
  return options;
}

TclRates Rates() {
  TclRates rates;
  rates.version = "1.0.0";
  return rates;
}

/// The first failure's kind, or nothing.
template <class Work>
std::optional<FailureKind> FailureOf(Work work) {
  try {
    work();
  } catch (const Failure& failure) {
    return failure.kind();
  }
  return {};
}

using Files = std::map<std::string, std::string>;

std::string ReportText(const SaifReport& report) {
  return "nets " + std::to_string(report.nets) + ", unwritten " + std::to_string(report.unwritten) +
         ", joined scopes " + std::to_string(report.joined.size()) + "\n";
}

Files FilesOf(const ActivityResult& result) {
  std::ostringstream saif;
  std::ostringstream unwritten;
  std::ostringstream tcl;
  const std::string report = ReportText(WriteSaif(result, Options(), saif, &unwritten));
  TclOptions options;
  options.rates = Rates();
  WriteTcl(result, options, tcl);
  return {
      {"saif", saif.str()}, {"unwritten", unwritten.str()}, {"tcl", tcl.str()}, {"report", report}};
}

/// "fifo/_07_/A 10 20 0 0 1 0": each pin that was reached, its times and toggles.
std::string PinRowsOf(const NetlistPins& pins) {
  std::ostringstream rows;
  pins.ForEachPin([&](const CellPin& pin) {
    if (!pin.figures) return;
    std::string path;
    pins.AppendCellPath(pin, path);
    const BitFigures& f = *pin.figures;
    rows << path << "/" << pin.name << " " << f.t0 << " " << f.t1 << " " << f.tx << " " << f.tz
         << " " << f.tc << " " << f.ig << "\n";
  });
  return rows.str();
}

/// Where a netlist says to which pins figures go.
Files PinFilesOf(const ActivityResult& result, const std::string& json) {
  TextSource source(json, 4096);
  const Netlist netlist = ReadNetlist(source, "ports.json");
  const NetlistPins pins(netlist, result, {});
  std::ostringstream saif;
  std::ostringstream unwritten;
  std::ostringstream tcl;
  std::ostringstream unreached;
  const std::string report = ReportText(WritePinSaif(pins, result, Options(), saif, &unwritten));
  WritePinTcl(pins, result, Rates(), tcl);
  WriteUnreached(pins, unreached);
  return {{"saif", saif.str()},
          {"unwritten", unwritten.str()},
          {"tcl", tcl.str()},
          {"pins", PinRowsOf(pins)},
          {"unreached", unreached.str()},
          {"report", result.declarations.PathOf(pins.scope()) + ": reached " +
                         std::to_string(pins.reached()) + " of " + std::to_string(pins.pins()) +
                         ", " + report}};
}

TEST(Export, WritesWholeFilesAsTheCasesSay) {
  ExpectCases(kCases, [](const Case& of, const std::string& title) -> std::optional<std::string> {
    if (title == "netlist") return {};
    const ActivityResult result = Count(of.dump);
    return (of.Has("netlist") ? PinFilesOf(result, of.TextOf("netlist")) : FilesOf(result))
        .at(title);
  });
}

TEST(Saif, TakesTheWayToTheDesignOffOrWritesIt) {
  const ActivityResult result = CountCase("names");
  struct Row {
    std::string scope;
    bool strips;
    std::string root;
    std::string instances;  // in their order
  };
  const Row rows[] = {
      {"tb/g[0]", false, "", "tb g[0] u.2"},     {"tb/g[0]", true, "", "g[0] u.2"},
      {"tb/g[0]", true, "design", "design u.2"}, {"tb/g[0]/u.2", false, "chip", "chip g[0] u.2"},
      {"tb/g(0)", true, "g_0", "g_0 inner"},     {"tb/\\twice", true, "", "twice"},
      {"", false, "chip", "chip g[0] u.2"},
  };
  for (const Row& row : rows) {
    SaifOptions options = Options();
    options.scope = ScopeCalled(result, row.scope);
    options.stripsWay = row.strips;
    options.root = row.root;
    std::ostringstream saif;
    WriteSaif(result, options, saif, nullptr);
    std::istringstream words(saif.str());
    std::string instances;
    for (std::string word; words >> word;) {
      if (word == "(INSTANCE" && words >> word) instances += (instances.empty() ? "" : " ") + word;
    }
    EXPECT_EQ(instances, row.instances) << row.scope;
  }
}

TEST(Saif, RefusesWhatAReaderCouldNotUse) {
  const std::string head = "$scope module t $end $var wire 1 ! a $end $upscope $end ";
  struct Row {
    std::string dump;
    std::string root;
    std::vector<bool> kept;
    FailureKind kind;
  };
  const Row rows[] = {
      {head + "$enddefinitions $end #0 0! #5 ", "", {}, FailureKind::Unusable},
      {"$timescale 1ns $end " + head + "$enddefinitions $end #7 0! ",
       "",
       {},
       FailureKind::Unusable},
      {"$timescale 1ns $end " + head + "$enddefinitions $end #0 0! #5 ",
       "9",
       {},
       FailureKind::Unusable},
      {"$timescale 1ns $end " + head + "$enddefinitions $end #0 0! #5 ",
       "IG",
       {},
       FailureKind::Unusable},
      {"$timescale 1ns $end " + head + "$enddefinitions $end #0 0! #5 ",
       "",
       {false},
       FailureKind::NothingMatched},
      {"$timescale 1ns $end $scope module t(0) $end $var wire 1 ! a $end $enddefinitions $end #0 "
       "0! #5 ",
       "",
       {},
       FailureKind::Unusable},
  };
  for (const Row& row : rows) {
    const ActivityResult result = Count(row.dump);
    SaifOptions options = Options();
    options.root = row.root;
    options.kept = row.kept;
    std::ostringstream saif;
    EXPECT_EQ(FailureOf([&] { WriteSaif(result, options, saif, nullptr); }), row.kind) << row.dump;
    EXPECT_EQ(saif.str(), "");
  }
}

TEST(Saif, KnowsTheNamesThatReadersTake) {
  for (const char* name : {"a", "_", "A9$", "q[3]", "u.x", "a\\b", "T0x", "NET[1]", "net"}) {
    EXPECT_TRUE(IsSaifName(name)) << name;
  }
  for (const char* name : {"", "9a", "$a", "[3]", "a:b", "a/b", "q[-1]", "a b", "\xC3\xBC", "T0",
                           "SAIFILE", "PROGRAM_NAME", "a\"", "a("}) {
    EXPECT_FALSE(IsSaifName(name)) << name;
  }
  EXPECT_EQ(SaifNetName("m[3][7]"), "m\\[3\\]\\[7\\]");
}

TEST(Saif, PutsTimesIntoUnitsThatItHas) {
  struct Row {
    std::uint64_t tick;
    std::uint64_t numerator;
    std::uint64_t denominator;
    std::string unit;
    std::uint64_t of10;  // ten ticks
    std::uint64_t of3;
  };
  const Row rows[] = {
      {1, 1, 1, "1 fs", 10, 3},
      {1'000'000, 1, 1, "1 ns", 10, 3},
      {2'000'000, 1, 1, "1 ns", 20, 6},
      {250'000, 1, 1, "10 ps", 250, 75},
      {15'000'000, 1, 1, "1 ns", 150, 45},
      {1'000'000'000'000'000, 1, 1, "100 us", 100'000, 30'000},
      {1'000, 1, 5, "100 fs", 20, 6},
      {1'000, 6, 4, "100 fs", 150, 45},
      {1, 1, 3, "1 fs", 3, 1},
      {1, 2, 3, "1 fs", 7, 2},
  };
  for (const Row& row : rows) {
    const SaifTimes times(row.tick, row.numerator, row.denominator);
    EXPECT_EQ(times.unit(), row.unit) << row.tick;
    EXPECT_EQ(static_cast<std::uint64_t>(times.Until(10)), row.of10) << row.tick;
    EXPECT_EQ(static_cast<std::uint64_t>(times.Until(3)), row.of3) << row.tick;
  }
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  EXPECT_EQ(FailureOf([] { SaifTimes(kMost, kMost, 2); }), FailureKind::Unusable);
}

TEST(Saif, WritesTimesBeyond64BitsAndFillsUpWithX) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  std::ostringstream saif;
  SaifStream stream(saif, {"d", "x\"y\n\\", "1", kMost}, SaifTimes(1'000'000'000'000'000, 1, 1));
  stream.Open("d");
  stream.Net("n", {kMost - 2, 1, 0, 0, 5, 6});
  stream.Close();
  stream.Finish();
  EXPECT_NE(saif.str().find("(DURATION 184467440737095516150000)"), std::string::npos);
  EXPECT_NE(saif.str().find("(DATE \"xy \")"), std::string::npos);
  EXPECT_NE(saif.str().find("(n (T0 184467440737095516130000) (T1 10000) (TX 10000) (TZ 0) (TB 0) "
                            "(TC 5) (IG 6))"),
            std::string::npos);
}

TEST(Saif, FindsRepeatedNames) {
  RepeatedNames names;
  const auto addAll = [&] {
    for (const char* name : {"a", "b", "a", "c", "", "c", "c"}) names.Add(name);
  };
  addAll();
  names.Settle();
  addAll();
  for (const char* name : {"a", "c"}) EXPECT_TRUE(names.IsRepeated(name)) << name;
  for (const char* name : {"b", "", "d"}) EXPECT_FALSE(names.IsRepeated(name)) << name;
}

TEST(Tcl, IsRelativeToAClockAndBeginsAtTheDesign) {
  const ActivityResult result = CountCase("names");
  TclOptions options;
  options.rates = Rates();
  options.scope = ScopeCalled(result, "tb/g[0]/u.2");
  options.stripsWay = true;
  options.rates.clock = "clk";
  options.rates.period = 4'000'000;
  options.rates.periodText = "4ns";
  options.rates.scaleDenominator = 2;  // the design is twice as fast: 2 toggles in 12 ns
  std::ostringstream tcl;
  WriteTcl(result, options, tcl);
  EXPECT_EQ(tcl.str(),
            "# kesncd 1.0.0: exact activity of a simulation.\n"
            "# -activity is toggles per cycle of clk, 4ns; -duty is the share of time at 1.\n"
            "set_power_activity -pins [get_pins {\n  y\n}] "
            "-activity 0.6666666666666666 -duty 0.08333333333333333\n");
}

TEST(Tcl, QuotesEveryName) {
  const std::pair<const char*, const char*> rows[] = {
      {"u1/q[3]", "u1/q[3]"}, {"a\\b", "a\\\\b"}, {"a{b", "a\\{b"},     {"}", "\\}"},
      {"\"a", "\\\"a"},       {"a\"", "a\""},     {"$x;[y]", "$x;[y]"}, {"", "{}"},
  };
  for (const auto& [name, element] : rows) EXPECT_EQ(TclElement(name), element);
}

Netlist NetlistOf(const std::string& json) {
  TextSource source(json, 1);
  return ReadNetlist(source, "n.json");
}

TEST(Netlist, RefusesWhatIsNone) {
  const char* const texts[] = {
      "{}",
      "[]",
      "{\"modules\": [1]}",
      "{\"modules\": {\"a\": {\"cells\": {\"c\": {\"connections\": {\"A\": {\"x\": 1}}}}}}}",
      "{\"modules\": {\"a\": {\"ports\": {\"p\": {\"bits\": [\"2\"]}}}}}",
      "{\"modules\": {\"a\": {\"ports\": {\"p\": {\"bits\": [-1]}}}}}",
      "{\"modules\": {\"a\": {\"ports\": {\"p\": {\"bits\": [1.5]}}}}}",
      "{\"modules\": {\"a\": {\"cells\": {\"c\": {}, \"c\": {}}}}}",
      "{\"modules\": {\"a\": {\"ports\": {\"p\": {}, \"p\": {}}}}}",
      "{\"modules\": {\"a\": {\"ports\": {\"p\": {\"bits\": [[2]]}}}}}",
      "{\"modules\": {\"a\": {\"ports\": {\"p\": {\"bits\": 2}}}}}",
      "{\"modules\": {\"a\": {\"cells\": {\"c\": {\"connections\": {\"A\": [2], \"A\": [3]}}}}}}",
      "{\"modules\": {\"a\": {\"cells\": {\"c\": {\"connections\": {\"A\": \"x\"}}}}}}",
      "{\"modules\": {\"a\": {\"cells\": null}}}",
      "{\"modules\": {\"a\": 5}}",
      "{\"modules\": {\"a\": {}, \"a\": {}}}",
      "{\"modules\": {\"a\": {}}",
      "{\"modules\": {\"\xFF\": {}}}",
  };
  for (const char* text : texts) {
    EXPECT_EQ(FailureOf([&] { NetlistOf(text); }), FailureKind::Unusable) << text;
  }
}

TEST(Netlist, RefusesDesignsThatCannotBe) {
  const ActivityResult result = CountCase("ports");
  // Thirty modules with ten instances of the next one are more than any memory holds.
  std::string large = "{\"modules\": {";
  for (int i = 0; i < 30; ++i) {
    large += (i > 0 ? ", \"m" : "\"m") + std::to_string(i) + "\": {\"cells\": {";
    for (int c = 0; c < 10; ++c) {
      large += (c > 0 ? ", \"c" : "\"c") + std::to_string(c) + "\": {\"type\": \"m" +
               std::to_string(i + 1) + "\"}";
    }
    large += "}}";
  }
  struct Row {
    std::string json;
    std::string top;
    FailureKind kind;
  };
  const Row rows[] = {
      {large + "}}", "", FailureKind::Unusable},
      {"{\"modules\": {\"a\": {\"cells\": {\"c\": {\"type\": \"b\"}}}, "
       "\"b\": {\"cells\": {\"c\": {\"type\": \"a\"}}}}}",
       "a", FailureKind::Unusable},
      {"{\"modules\": {\"a\": {}, \"b\": {}}}", "", FailureKind::Unusable},
      {"{\"modules\": {}}", "", FailureKind::Unusable},
      {"{\"modules\": {\"a\": {}}}", "b", FailureKind::Unusable},
      {"{\"modules\": {\"a\": {\"netnames\": {\"\": {\"bits\": [2]}}}}}", "",
       FailureKind::NothingMatched},
      {"{\"modules\": {\"top\": {\"netnames\": {\"a\": {\"bits\": [2, 3]}}}}}", "",
       FailureKind::Unusable},
  };
  for (const Row& row : rows) {
    const Netlist netlist = NetlistOf(row.json);
    PinOptions options;
    options.top = row.top;
    EXPECT_EQ(FailureOf([&] { NetlistPins(netlist, result, options); }), row.kind) << row.json;
  }
}

}  // namespace
}  // namespace orsa::kesncd
