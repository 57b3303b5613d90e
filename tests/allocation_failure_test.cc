// Memory that runs out: every operation is made to fail at its first allocation, its second, and so
// on until it succeeds. It throws bad_alloc or says that it failed, keeps nothing, leaves results
// of earlier runs as they were or complete, and works the next time.
#include <cstdlib>
#include <functional>
#include <new>

#include "tests/allocations.h"
#include "tests/support.h"
#include "tests/test_host.h"

namespace orsa::kesncd {
namespace {

const std::string kWide = "$comment " + std::string(300, 'w') + " " + std::string(80, ' ') + "$end";
const std::string kDump =
    "$timescale\n1ns\n$end\n" + kWide + "\n$scope module top $end\n$var wire 1 ! clk $end\n" +
    "$var wire 1 12345 five $end\n$var wire 1 a-code-of-more-than-eight bits [3:0] $end\n" +
    "$var wire 1 ! a_name_that_is_longer_than_a_short_string_is/q $end\n$scope module u $end\n" +
    "$var wire 1 % q $end\n$upscope $end\n$upscope $end\n$scope module apart $end\n" +
    "$var wire 1 & r $end\n$upscope $end\n$enddefinitions $end\n#0\n1!\n0!\nb1 12345\n" +
    "b1 a-code-of-more-than-eight\n1%\n0%\n" + std::string(5000, 'x') + "\n#10\n";
const std::string kReport = "Preference | Constraint\n" + std::string(50, '-') +
                            "\nFREQUENCY NET \"a_clock_net_with_a_name_of_some_length\" 5 MHz ;|" +
                            "6 MHz|7 MHz|1\n | | |\n";

std::string TextOf(const std::map<std::string, double>& frequencies) {
  std::string text;
  for (const auto& [name, frequency] : frequencies) {
    text += name + "=" + std::to_string(frequency) + " ";
  }
  return text;
}

const std::map<std::string, double> kEarlier{{"earlier", 1.0}};

class AllocationFailure : public FreshState {
 protected:
  /// Runs `work` with each of its allocations failing in turn, then untroubled.
  void FailEach(const char* name, const std::function<std::string()>& work) {
    const std::string expected = Work(work);
    CountEach(name);  // keeps an index
    bool failed = true;
    long n = 0;
    while (failed) {
      analyser.signalFreqs = analyser.clockFreqs = kEarlier;
      (void)Work(work);
      const long held = allocations.held;
      analyser.signalFreqs = analyser.clockFreqs = kEarlier;
      bool threw = false;
      std::string result;
      {
        const FailingAllocation failing(++n);
        try {
          topMod.Clear();
          result = work();
        } catch (const std::bad_alloc&) {
          threw = true;
        }
        failed = failing.WasReached();
      }
      ASSERT_EQ(threw, failed) << name << " " << n;
      if (threw) {
        if (TextOf(analyser.signalFreqs) != TextOf(kEarlier)) {
          EXPECT_EQ(TextOf(analyser.signalFreqs), expected) << name << " " << n;
        }
        EXPECT_EQ(TextOf(analyser.clockFreqs), TextOf(kEarlier)) << name << " " << n;
        CountEach(name);
      } else {
        EXPECT_EQ(result, expected) << name;
      }
      result.clear();
      result.shrink_to_fit();
      ASSERT_EQ(Work(work), expected) << name << " after failure " << n;
      EXPECT_EQ(allocations.held, held) << name << " keeps memory after failure " << n;
    }
    EXPECT_GT(n, 1) << name << " allocates nothing";
  }

  static std::string Work(const std::function<std::string()>& work) {
    topMod.Clear();
    return work();
  }

  /// The module's lists are in step: every signal can be described and counted.
  static void CountEach(const char* name) {
    for (int i = 0; i < topMod.GetSignalSize(); ++i) {
      EXPECT_NE(topMod.GetSignalSymb(i), "") << name;
      topMod.IncreaseChangeForSymbol(topMod.GetSignalSymb(i));
    }
  }

  std::string Lookups() {
    std::string text;
    double frequency = -1;
    for (const char* signal : {"clk", "bits_2_", "u/q", "none_of_these_is_there"}) {
      analyser.hierRoot->FindSignalFreqHier("top", signal, frequency, false);
      text += std::to_string(frequency) + " ";
    }
    return text;
  }

  std::string Records() {
    testHost.calls.clear();
    std::string text;
    for (const KesSigFreq& record : analyser.CreateKesSigFreq(&data, 4.0, true)) {
      text += record.name + std::to_string(record.freq) + " ";
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
  PD_DATA data;
  PD_TBLSECT section;
  PD_TABLE table;
};

/// Words, pieces and lines that make a splitter grow in each of its ways.
std::string Split() {
  static const std::string words = [] {
    std::string text;
    for (int i = 0; i < 40; ++i) text += "w1";
    for (int i = 0; i < 70; ++i) text += " w";
    return text;
  }();
  static const std::string longPiece(700, 'p');
  Mem mem;
  int count = 0;
  mem.GetArrayOfPieces(words.c_str(), &count);
  mem.GetArrayOfTokens(words.c_str(), " ", &count);
  mem.GetArrayOfTokens(longPiece.c_str(), " ", &count);
  char** pieces = mem.GetArrayOfPieces(longPiece.c_str(), &count);
  return std::to_string(count) + pieces[0];
}

std::string FreeSplitters() {
  std::string text;
  for (const bool tokens : {false, true}) {
    int count = 0;
    char** parts = tokens ? GetArrayOfTokens("a b c d e f g h i j k", " ", &count)
                          : GetArrayOfNumbersAndLetters("a1b2c3d4", &count);
    for (int i = 0; i < count; ++i) std::free(parts[i]);
    std::free(parts);
    text += std::to_string(count);
  }
  return text;
}

TEST_F(AllocationFailure, IsSaidAndForgotten) {
  const std::string path = dir.Write("d.vcd", kDump);
  const std::string top = "a_top_module_with_a_long_name";
  testHost = {};
  testHost.section = &section;
  section.table = &table;
  for (const char* name : {"clk", "bits_1_", "q", "u/q", "five", "r", "clk", "clk"}) {
    table.rows.insert(table.rows.end(), {{"SIGNAL", name, ""}, {"INPUT", "five", "LUT"}});
  }
  analyser.twrFile = dir.Write("r.twr", kReport);
  std::string message;
  const auto clocks = [this](bool found) { return std::to_string(found) + "clocks"; };
  analyser.SetTopModule("top");
  FailEach("flat run", [&] {
    return analyser.SetVCDFile(path, {"clk", "u/q"}, message) ? TextOf(analyser.signalFreqs) : "";
  });
  FailEach("hierarchical run",
           [&] { return analyser.SetVCDFileHier(path, {}, message) ? Lookups() : ""; });
  FailEach("records", [&] { return Records(); });
  FailEach("unfiltered", [&] {
    return Stream([&](std::FILE* file) { return analyser.ParseVcdFile(file) ? 1 : 0; });
  });
  FailEach("grammar", [&] { return Stream(ParseVcdFile); });
  FailEach("report", [&] { return clocks(analyser.ReadTWR2(0)); });
  FailEach("earlier report", [&] { return clocks(analyser.ReadTWR(0)); });
  FailEach("header", [&] {
    std::string found;
    analyser.GetTopModuleNameInVCD(path, found, message);
    return found;
  });
  FailEach("extraction", [&] {
    testHost.calls.clear();
    analyser.extractName = std::string(50, 'e');
    return std::to_string(analyser.ExtractNCD());
  });
  FailEach("top module", [&] {
    analyser.SetTopModule(top);
    return std::string(topModName);
  });
  FailEach("splitter", Split);
  FailEach("free splitters", FreeSplitters);
}

}  // namespace
}  // namespace orsa::kesncd
