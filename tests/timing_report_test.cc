// Timing reports and the clocks that the two readers find in them, as "name=MHz ...".
#include <chrono>
#include <sstream>

#include "tests/support.h"

namespace orsa::kesncd {
namespace {

const std::string kSeparator = std::string(44, '-') + "\n";
const std::string kHeading = "Preference |   Constraint|  Actual|Levels\n";
const std::string kOpen = kHeading + kSeparator;
const std::string kBlank = "     |    |   |  \n";
const std::string kClk = "FREQUENCY NET \"clk\" 100.0 MHz ; | 100.0 MHz| 150.0 MHz| 3\n";
const std::string kPin = "FREQUENCY PORT \"pin\" 50 MHz ; | 50.0 MHz| 45.2 MHz| 4\n";

class TimingReport : public FreshState {
 protected:
  /// What ReadTWR2, then ReadTWR make of a report, parted by "/"; "-" where one finds nothing and
  /// leaves the map as it was.
  std::string Read(const std::string& report, int mode = 0) {
    analyser.twrFile = folder.Write("report.twr", report);
    return ReadSet(&KesNCD::ReadTWR2, mode) + "/" + ReadSet(&KesNCD::ReadTWR, mode);
  }

  std::string ReadSet(bool (KesNCD::*read)(int), int mode) {
    analyser.clockFreqs = {{"old", 1.0}};
    const bool found = (analyser.*read)(mode);
    std::ostringstream text;
    for (const auto& [name, frequency] : analyser.clockFreqs)
      text << name << "=" << frequency << " ";
    return !found && text.str() == "old=1 " ? "-" : text.str();
  }

  TempDir folder;
  KesNCD analyser;
};

TEST_F(TimingReport, ModesSelectTheValue) {
  const std::string report = kOpen + kBlank + kClk + kBlank + kPin + kBlank + kSeparator;
  EXPECT_EQ(Read(report, 0), "clk=100 pin=45.2 /clk=100 pin=45.2 ");
  EXPECT_EQ(Read(report, 1), "clk=100 pin=50 /clk=100 pin=50 ");
  EXPECT_EQ(Read(report, 2), "clk=150 pin=45.2 /clk=150 pin=45.2 ");
  for (const int mode : {3, -1}) EXPECT_EQ(Read(report, mode), "-/clk=150 pin=45.2 ");
  for (const std::string& path : {std::string(), folder.Path("none"), folder.Path("")}) {
    analyser.twrFile = path;
    EXPECT_EQ(ReadSet(&KesNCD::ReadTWR2, 0) + ReadSet(&KesNCD::ReadTWR, 0), "--") << path;
  }
}

TEST_F(TimingReport, Tables) {
  const std::string other = "FREQUENCY NET \"clk\" 7 MHz ; | 7 MHz| 8 MHz| 3\n";
  const std::string row = kClk + kBlank;
  const std::string both = "clk=100 /clk=100 ";
  const std::string cases[][2] = {
      {row, "-/-"},
      {kSeparator + row, "-/-"},
      {"Preference\n" + kSeparator + row, "-/-"},
      {kHeading + kSeparator.substr(1) + row, "-/-"},
      {"Preference Constraint" + kSeparator + row, "-/-"},  // a heading opens nothing
      {"Constraint Preference\n\nx\nPreferences Constraints\n" + kSeparator + row, both},
      {kOpen + kHeading + row, both},  // no heading inside a table
      {kOpen + kSeparator + row, "-/-"},
      {kOpen + row + kSeparator + other + kBlank + kOpen + kPin + kBlank,
       "clk=100 pin=45.2 /clk=100 pin=45.2 "},
      {kOpen + row + other + kBlank, both},
      {kOpen + "MAXDELAY NET \"d\" 5 MHz ; | 5 MHz| 6 MHz| 1\n" + kBlank + row, both},
      // Inside a row a separator is a line like any other, and closes no table.
      {kOpen + kClk + kSeparator + kPin + kBlank, "pin=45.2 /clk=100 "},
      {kOpen + "FREQUENCY NET \"c\"| | |\n" + kSeparator + kPin + kBlank,
       "pin=45.2 /c" + std::string(44, '-') + "=45.2 "},
      {kOpen + kClk + kPin + kBlank, "pin=45.2 /clk=100 pin=45.2 "},
      {kOpen + kClk, "-/clk=100 "},
      {kOpen + kClk + std::string("\0| | |\n", 7) + kBlank, "-/clk=100 "},
  };
  for (const auto& [report, clocks] : cases) EXPECT_EQ(Read(report), clocks) << report;
}

TEST_F(TimingReport, Rows) {
  struct Case {
    const char* row;  // "FREQUENCY NET " stands before it, a blank line behind
    int mode;
    const char* clocks;
  };
  const Case cases[] = {
      // Rows that wrap before the values, in the name, in the frequency.
      {"\"a\" | | | \n 5 MHz ; | 6 MHz | 7 MHz | 1\n", 0, "a=6 /a=6 "},
      {"\"a | | | \nb\" 5 MHz ; | 6 MHz | 7 MHz | 1\n", 1, "=6 /a=6 "},
      {"\"a| | |\nb\" | | |\n 5 MHz ;| 6 MHz| 7 MHz| 1\n", 2, "ab=7 /ab=7 "},
      {"\"a| | |\nb\" | | |\n 5 MHz| | |\n ;| 6 MHz| 7 MHz| 1\n", 0, "ab=6 /ab5=6 "},
      {"\"a\" 5| 6|7|1\n MHz ;| MHz| MHz| 1\n", 0, "a=6 /-"},
      // Units and words.
      {"\"a\" 5 MHz ;| 6 ns| 7 MHz| 1\r\n", 0, "a=5 /a=6 "},
      {"\"a\" 5 MHz ;| 6 ns| 7 ns| 1\n", 2, "a=5 /-"},
      {"\"a\" 5 KHz ;| 6 MHz| 7 MHz| 1\n", 0, "=6 /a=6 "},
      {"\"a\" 5 KHz ;| 6 MHZ| 7 MHz| 1\n", 0, "-/a=6 "},
      {"\"a\" 5 MHz;| 6 MHz;| 7 MHz x| 1\n", 2, "a=6 /-"},
      {"PORT \"a\" 5 MHz ;| 6 MHz| 7 MHz| 1\n", 0, "=6 /-"},
      {"; \"a\" 5 MHz ;| 6 MHz| 7 MHz| 1\n", 0, "a=6 /;=6 "},
      // Numbers that are none, or not wholly.
      {"\"a\" x MHz ;| x MHz| 7 MHz| 1\n", 0, "-/a=-1 "},
      {"\"a\" 5 MHz ;| 6end MHz| -7 MHz| 1\n", 0, "a=6 /a=-7 "},
      {"\"a\" nan MHz ;| | 7 MHz| 1\n", 1, "-/a=-1 "},
      // Columns: four, or none of it.
      {"\"a\" 5 MHz ;| 6 MHz| 7 MHz\n", 0, "-/a=6 "},
      {"\"a\" 5 MHz ;| 6 MHz\n", 0, "-/-"},
      {"\"a\" 5 MHz ;| 6 MHz| 7 MHz||\n", 0, "a=6 /a=6 "},
      {"\"a\" 5 MHz ;| 6 MHz| 7 MHz|1|1\n", 0, "-/a=6 "},
      {"\"a\" | | |\n||||\n 5 MHz ;| 6 MHz| 7 MHz| 1\n", 0, "-/-"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Read(kOpen + "FREQUENCY NET " + c.row + kBlank, c.mode), c.clocks) << c.row;
  }
}

TEST_F(TimingReport, HostileReportsEndSoon) {
  const auto start = std::chrono::steady_clock::now();
  std::string wrapped = "| | |\n";
  for (int i = 0; i < 100000; ++i) wrapped += "a |6|7|\n";
  for (const std::string& row : {wrapped, '"' + std::string(100000, 'a') + "\" 5 MHz ;|",
                                 std::string(1000000, '|'), std::string(1000000, '"')}) {
    EXPECT_EQ(Read(kOpen + "FREQUENCY NET " + row + "\n" + kBlank), "-/-") << row.substr(0, 9);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace orsa::kesncd
