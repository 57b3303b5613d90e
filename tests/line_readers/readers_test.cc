// Pages of dumps against all line readers: what they do alike, and each deliberate difference.
#include "line_readers/dump_rules.h"
#include "tests/support/case_files.h"
#include "tests/support/line_readers.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

using Readers = FreshState;

/// What each reader makes of a dump.
std::string ReadAllWays(const std::string& dump) {
  static constexpr const char* kNames[] = {"unfiltered", "filtered", "tree"};
  std::string text;
  for (const Reader reader : kReaders) {
    const Reading reading = ReadDump(reader, TextStream(dump));
    text += std::string(kNames[static_cast<int>(reader)]) + ": " +
            (reading.complete ? "" : "gave up ") + reading.text;
    text.erase(text.find_last_not_of(' ') + 1);
    text += "\n";
  }
  return text;
}

TEST_F(Readers, TakeTheSameDumps) {
  ExpectCases("tests/cases/line_readers",
              [](const Case& of, const std::string&) { return ReadAllWays(of.dump); });
}

TEST_F(Readers, LeaveTheStreamBehindTheLastLineHandled) {
  for (const std::string dump : {"$timescale~bad~12", "HEAD~1!~$timescale~bad~12"}) {
    for (const Reader reader : kReaders) {
      const TextStream stream(Dump(dump));
      ReadDump(reader, stream);
      EXPECT_EQ(std::ftell(stream) + 2, static_cast<long>(Dump(dump).size())) << dump;
    }
  }
}

TEST_F(Readers, CountCodesThatTheModuleHeldOnlyWhenUnfiltered) {
  for (const bool filtered : {false, true}) {
    ResetReaderState();
    topMod.AddSignal("earlier", "wire", "?", 1);
    topMod.AddSignal("same", "wire", "!", 1);
    topMod.AddSignal("unseen", "wire", std::string("!\0", 2), 1);
    KesNCD analyser;
    analyser.SetTopModule("top");
    const TextStream dump(Dump("HEAD~1?~1!~1!"));
    filtered ? (void)analyser.ParseVcdFile2(dump, {"clk"}) : (void)analyser.ParseVcdFile(dump);
    EXPECT_EQ(TopModCounts(), std::string(filtered ? "earlier=0" : "earlier=1") +
                                  " same=2 unseen=0 clk=0 d[7:0]=0");
  }
}

TEST_F(Readers, KeepASpanWithOneNegativeBound) {
  // the span, a stamp, and the span after it
  const double rows[][5] = {{-1, -1, 4, 4, 4}, {4, 4, 9, 4, 9},   {4, 9, 2, 4, 2},
                            {-1, 9, 5, -1, 9}, {4, -1, 5, 4, -1}, {-1, -1, -3, -3, -3}};
  for (const auto& [start, end, stamp, newStart, newEnd] : rows) {
    for (const bool inDump : {false, true}) {
      if (inDump && stamp < 0) continue;  // no dump holds such a stamp
      startCycle = start;
      endCycle = end;
      const TextStream dump(Dump("HEAD~x!~#" + std::to_string(static_cast<int>(stamp)) + "~"));
      inDump ? (void)KesNCD().ParseVcdFileHier(dump, {}) : TakeStamp(stamp, startCycle, endCycle);
      EXPECT_EQ(std::pair(startCycle, endCycle), std::pair(newStart, newEnd)) << stamp;
    }
  }
}

// Short codes are looked up as integers, long ones as strings; all of them are different.
TEST_F(Readers, TellManyCodesApart) {
  std::string dump = Dump("SCALE~TOP");
  std::string body = Dump("\n~UP~END");
  for (int i = 0; i < 5000; ++i) {
    const std::string code = std::string(1, static_cast<char>('!' + i % 90)) + std::to_string(i) +
                             (i % 3 == 0 ? "-and-longer" : "");
    dump += "\n$var wire 1 " + code + " s $end";
    for (int k = 0; k < i % 4; ++k) body += "\n1" + code;
  }
  ReadDump(Reader::Unfiltered, TextStream(dump + body));
  ASSERT_EQ(topMod.GetSignalSize(), 5000);
  for (int i = 0; i < 5000; ++i) ASSERT_EQ(topMod.GetSignalChange(i), i % 4) << i;
}

}  // namespace
}  // namespace orsa::kesncd
