// Memory that runs out: every operation is made to fail at its first allocation, its second, and so
// on until it succeeds. It throws bad_alloc, keeps no memory, leaves results of earlier runs as
// they were or complete, and works the next time.
#include <cstdlib>
#include <functional>
#include <new>

#include "tests/support/allocations.h"
#include "tests/support/test_host.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

const std::string kDump =
    Dump("SCALE~$comment " + std::string(300, 'w') + std::string(80, ' ') +
         " $end~TOP~CLK~"
         "$var wire 1 12345 five $end~$var wire 1 a-code-of-more-than-eight bits [3:0] $end~"
         "$var wire 1 ! a_name_that_is_longer_than_a_short_string_is/q $end~U~$var wire 1 % q "
         "$end~UP~UP~"
         "$scope module apart $end~$var wire 1 & r $end~UP~END~#0~1!~0!~b1 12345~"
         "b1 a-code-of-more-than-eight~1%~0%~" +
         std::string(5000, 'x') + "~#10~");
const std::string kReport = "Preference | Constraint\n" + std::string(50, '-') +
                            "\nFREQUENCY NET \"a_clock_net_with_a_name_of_some_length\" 5 MHz ;|" +
                            "6 MHz|7 MHz|1\n | | |\n";
using Frequencies = std::map<std::string, double>;
const Frequencies kEarlier{{"earlier", 1.0}};

/// Words, pieces and lines that make a splitter grow in each of its ways.
std::string Split() {
  static const std::string words = Times(40, "w1") + Times(30, " w w");
  static const std::string longPiece(700, 'p');
  Mem mem;
  int count = 0;
  mem.GetArrayOfPieces(words.c_str(), &count);
  mem.GetArrayOfTokens(words.c_str(), " ", &count);
  mem.GetArrayOfTokens(longPiece.c_str(), " ", &count);
  return mem.GetArrayOfPieces(longPiece.c_str(), &count)[0];
}

std::string SplitFreely() {
  int count = 0;
  for (const bool tokens : {false, true}) {
    char** parts = tokens ? GetArrayOfTokens("a b c d e f g h i j k", " ", &count)
                          : GetArrayOfNumbersAndLetters("a1b2c3d4", &count);
    for (int i = 0; i < count; ++i) std::free(parts[i]);
    std::free(parts);
  }
  return std::to_string(count);
}

using Work = std::function<std::string()>;

class AllocationFailure : public FreshState {
 protected:
  std::string Run(const Work& work) {
    topMod.Clear();
    testHost.calls.clear();
    return work();
  }

  /// The module's lists are in step: every signal can be described and counted.
  static void CountEach() {
    for (int i = 0; i < topMod.GetSignalSize(); ++i) {
      EXPECT_NE(topMod.GetSignalSymb(i), "");
      topMod.IncreaseChangeForSymbol(topMod.GetSignalSymb(i));
    }
  }

  /// Runs `work` with its n-th allocation failing; false when it makes no so many.
  bool FailAt(long n, const Work& work, const std::string& expected) {
    analyser.signalFreqs = analyser.clockFreqs = kEarlier;
    (void)Run(work);
    const long held = allocations.held;
    analyser.signalFreqs = analyser.clockFreqs = kEarlier;
    bool threw = false;
    allocations.failing = allocations.made + n;
    try {
      (void)Run(work);
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    EXPECT_EQ(threw, allocations.made >= allocations.failing);
    allocations.failing = 0;
    if (threw && TextOf(analyser.signalFreqs) != TextOf(kEarlier)) {
      EXPECT_EQ(TextOf(analyser.signalFreqs), expected);
    }
    EXPECT_TRUE(!threw || analyser.clockFreqs == kEarlier);
    CountEach();
    EXPECT_EQ(Run(work), expected) << "the next time";
    EXPECT_EQ(allocations.held, held) << "memory is kept";
    return threw;
  }

  void FailEach(const char* name, const Work& work) {
    const std::string expected = Run(work);
    CountEach();  // keeps an index
    long n = 1;
    while (FailAt(n, work, expected) && !HasFailure()) ++n;
    EXPECT_GT(n, 1);
    ASSERT_FALSE(HasFailure()) << name << " at allocation " << n;
  }

  std::string Lookups() {
    double frequency = -1;
    std::string text;
    for (const char* signal : {"clk", "bits_2_", "u/q", "none_of_these_is_there"}) {
      analyser.hierRoot->FindSignalFreqHier("top", signal, frequency, false);
      text += std::to_string(frequency) + " ";
    }
    return text;
  }

  std::string Stream(const std::function<int(std::FILE*)>& read) {
    std::rewind(dump);
    const int result = read(dump);
    return std::to_string(result) + TopModCounts();
  }

  const TempDir dir;
  const TextStream dump{kDump};
  KesNCD analyser;
};

TEST_F(AllocationFailure, IsSaidAndForgotten) {
  const std::string path = dir.Write("d.vcd", kDump);
  PD_DATA data;
  PD_TBLSECT section;
  PD_TABLE table;
  testHost = {};
  testHost.section = &section;
  section.table = &table;
  for (const char* name : {"clk", "bits_1_", "q", "u/q", "five", "r", "clk", "clk"}) {
    table.rows.insert(table.rows.end(), {{"SIGNAL", name, ""}, {"INPUT", "five", "LUT"}});
  }
  analyser.twrFile = dir.Write("r.twr", kReport);
  analyser.SetTopModule("top");
  std::string message, top;
  const std::pair<const char*, Work> works[] = {
      {"flat run",
       [&] {
         return analyser.SetVCDFile(path, {"clk", "u/q"}, message), TextOf(analyser.signalFreqs);
       }},
      {"tree", [&] { return analyser.SetVCDFileHier(path, {}, message) ? Lookups() : ""; }},
      {"records",
       [&] { return std::to_string(analyser.CreateKesSigFreq(&data, 4.0, true).size()); }},
      {"unfiltered",
       [&] { return Stream([&](std::FILE* file) { return int{analyser.ParseVcdFile(file)}; }); }},
      {"grammar", [&] { return Stream(ParseVcdFile); }},
      {"report", [&] { return std::to_string(analyser.ReadTWR2(0)); }},
      {"earlier report", [&] { return std::to_string(analyser.ReadTWR(0)); }},
      {"header",
       [&] { return analyser.GetTopModuleNameInVCD(path, top, message) ? top + "" : ""; }},
      {"extraction", [&] { return std::to_string(analyser.ExtractNCD()); }},
      {"top module", [&] { return analyser.SetTopModule(std::string(40, 't')), topModName; }},
      {"splitter", Split},
      {"free splitters", SplitFreely}};
  for (const auto& [name, work] : works) FailEach(name, work);
}

}  // namespace
}  // namespace orsa::kesncd
