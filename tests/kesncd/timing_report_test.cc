// Timing reports and the clocks that the two readers find in them, as "name=MHz ...".
#include <chrono>

#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

const std::string kSeparator = std::string(44, '-') + "\n";
const std::string kHeading = "Preference |   Constraint|  Actual|Levels\n";
const std::string kClk = "FREQUENCY NET \"clk\" 100.0 MHz ; | 100.0 MHz| 150.0 MHz| 3\n";
const std::string kBlank = "     |    |   |  \n";

/// Lines that reports name.
const std::map<std::string, std::string> kLines = {
    {"separator", kSeparator},
    {"heading", kHeading},
    {"open", kHeading + kSeparator},
    {"almost", kSeparator.substr(1)},
    {"glued", "Preference Constraint" + kSeparator},
    {"blank", kBlank},
    {"crlf", " | | |\r\n"},
    {"nul", std::string("\0| | |\n", 7)},
    {"clk", kClk},
    {"pin", "FREQUENCY PORT \"pin\" 50 MHz ; | 50.0 MHz| 45.2 MHz| 4\n"},
    {"fast", "FREQUENCY NET \"clk\" 7 MHz ; | 7 MHz| 8 MHz| 3\n"},
    {"long", std::string(kClk).insert(kClk.size() - 2, 1000, ' ')}};

class TimingReport : public FreshState {
 protected:
  /// What ReadTWR2 / ReadTWR make of a report, whose lines are parted by "/"; "-" where one finds
  /// nothing and leaves the map as it was.
  std::string Read(const std::string& report, int mode = 0) {
    std::string text;
    for (const std::string& line : Cut(report, "/")) {
      const auto known = kLines.find(line);
      text += known == kLines.end() ? line + "\n" : known->second;
    }
    analyser.twrFile = folder.Write("report.twr", text);
    return ReadSet(&KesNCD::ReadTWR2, mode) + " /" + ReadSet(&KesNCD::ReadTWR, mode);
  }

  std::string ReadSet(bool (KesNCD::*read)(int), int mode) {
    analyser.clockFreqs = {{"old", 1.0}};
    const bool found = (analyser.*read)(mode);
    const std::string text = TextOf(analyser.clockFreqs);
    return !found && text == " old=1" ? " -" : text;
  }

  TempDir folder;
  KesNCD analyser;
};

TEST_F(TimingReport, Clocks) {
  const std::string cases =  // the mode, the report and what comes of it
      R"(0 open/blank/clk/blank/pin/blank/separator => clk=100 pin=45.2 / clk=100 pin=45.2
1 open/clk/blank/pin/blank => clk=100 pin=50 / clk=100 pin=50
2 open/clk/blank/pin/blank => clk=150 pin=45.2 / clk=150 pin=45.2
3 open/clk/blank/pin/blank => - / clk=150 pin=45.2
0 Preference/separator/clk/blank => - / -
0 heading/almost/clk/blank => - / -
0 glued/clk/blank => - / -
0 Constraint Preference//x/Preferences Constraints/separator/clk/blank => clk=100 / clk=100
0 open/heading/clk/blank => clk=100 / clk=100
0 open/separator/clk/blank => - / -
0 open/clk/blank/separator/fast/blank/open/pin/blank => clk=100 pin=45.2 / clk=100 pin=45.2
0 open/MAXDELAY NET "d" 5 MHz ; | 5 MHz| 6 MHz| 1/blank/clk/blank => clk=100 / clk=100
0 open/clk/separator/pin/blank => pin=45.2 / clk=100
0 open/FREQUENCY NET "c"| | |/separator/pin/blank => pin=45.2 / c--------------------------------------------=45.2
0 open/clk/pin/blank => pin=45.2 / clk=100 pin=45.2
0 open/long/blank => - / clk=100
0 open/clk/nul/blank => - / clk=100
0 open/FREQUENCY NET "a" | | | / 5 MHz ; | 6 MHz | 7 MHz | 1/blank => a=6 / a=6
2 open/FREQUENCY NET "a| | |/b" | | |/ 5 MHz ;| 6 MHz| 7 MHz| 1/blank => ab=7 / ab=7
0 open/FREQUENCY NET "a| | |/b" | | |/ 5 MHz| | |/ ;| 6 MHz| 7 MHz| 1/blank => ab=6 / ab5=6
0 open/FREQUENCY NET| | |/"a" 5 MHz ;| 6 MHz| 7 MHz| 1/blank => a=6 / a=6
0 open/FREQUENCY NET "a" 5| 6|7|1/ MHz ;| MHz| MHz| 1/blank => a=6 / -
0 open/FREQUENCY NET "a" 5 MHz ;| 6 ns| 7 MHz| 1/crlf => a=5 / a=6
2 open/FREQUENCY NET "a" 5 MHz ;| 6 ns| 7 ns| 1/blank => a=5 / -
0 open/FREQUENCY NET "a" 5 KHz ;| 6 MHz| 7 MHz| 1/blank => =6 / a=6
0 open/FREQUENCY NET "a" 5 KHz ;| 6 MHZ| 7 MHz| 1/blank => - / a=6
2 open/FREQUENCY NET "a" 5 MHz;| 6 MHz;| 7 MHz x| 1/blank => a=6 / -
0 open/FREQUENCY NET PORT "a" 5 MHz ;| 6 MHz| 7 MHz| 1/blank => =6 / -
0 open/FREQUENCY NET ; "a" 5 MHz ;| 6 MHz| 7 MHz| 1/blank => a=6 / ;=6
0 open/FREQUENCY NET "a" x MHz ;| x MHz| 7 MHz| 1/blank => - / a=-1
0 open/FREQUENCY NET "a" 5 MHz ;| 6end MHz| -7 MHz| 1/blank => a=6 / a=-7
1 open/FREQUENCY NET "a" 5 MHz ;| 0 MHz| 0x8 MHz| 1/blank => a=0 / a=0
1 open/FREQUENCY NET "a" nan MHz ;| | 7 MHz| 1/blank => - / a=-1
0 open/FREQUENCY NET "a" 5 MHz ;| 6 MHz| 7 MHz/blank => - / a=6
0 open/FREQUENCY NET "a" 5 MHz ;| 6 MHz| 7 MHz||/blank => a=6 / a=6
0 open/FREQUENCY NET "a" 5 MHz ;| 6 MHz| 7 MHz|1|1/blank => - / a=6
0 open/FREQUENCY NET "a" | | |/||||/ 5 MHz ;| 6 MHz| 7 MHz| 1/blank => - / -)";
  for (const auto& row : Rows(cases)) {
    EXPECT_EQ(Read(row[0].substr(row[0].find(' ') + 1), std::stoi(row[0])), " " + row[1]) << row[0];
  }
  for (const std::string& path : {std::string(), folder.Path("none"), folder.Path("")}) {
    analyser.twrFile = path;
    EXPECT_EQ(ReadSet(&KesNCD::ReadTWR2, 0) + ReadSet(&KesNCD::ReadTWR, 0), " - -") << path;
  }
}

TEST_F(TimingReport, CutReportsGiveNoOtherClocks) {
  const std::string whole = "open/clk/blank/pin/blank/separator/fast";
  for (int mode = 0; mode < 4; ++mode) {
    const std::vector<std::string> clocks = Cut(Read(whole, mode), " /");
    for (std::size_t at = 0; at < whole.size(); ++at) {
      const std::vector<std::string> cut = Cut(Read(whole.substr(0, at), mode), " /");
      for (const std::size_t reader : {0U, 1U}) {
        EXPECT_TRUE(cut[reader] == " -" || clocks[reader].starts_with(cut[reader])) << cut[reader];
      }
    }
  }
}

TEST_F(TimingReport, HostileReportsEndSoon) {
  const auto start = std::chrono::steady_clock::now();
  for (const std::string& row :
       {"| | |\n" + Times(100000, "a |6|7|\n"), '"' + std::string(100000, 'a') + "\" 5 MHz ;|",
        std::string(1000000, '|'), std::string(1000000, '"')}) {
    EXPECT_EQ(Read("open/FREQUENCY NET " + row + "/blank"), " - / -") << row.substr(0, 9);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace orsa::kesncd
