// Streams and files that fail: what was read counts as far as it came, and no failure passes for a
// result.
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "tests/support/line_readers.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

const std::string kDump = Dump("SCALE~TOP~$var wire 1 ! c[0] $end~UP~END~#0~1!~0!~#10~1!~");

/// A stream that hands out `text` a few bytes at a time, with faults between them.
struct FaultyStream {
  std::string text;
  std::size_t most;                // bytes of a read
  bool interrupted = false;        // every other read is interrupted by a signal
  std::size_t failsAt = SIZE_MAX;  // byte from which on reads fail
  std::size_t repeats = 0;         // further times that the text is handed out
  std::size_t from = 0;            // from this byte on

  std::FILE* Open() {
    cookie_io_functions_t functions{};
    functions.read = [](void* cookie, char* to, std::size_t bytes) {
      return static_cast<FaultyStream*>(cookie)->Read(to, bytes);
    };
    return fopencookie(this, "r", functions);
  }

  ssize_t Read(char* to, std::size_t bytes) {
    const bool isInterrupted = interrupted && reads++ % 2 == 0;
    errno = isInterrupted ? EINTR : EIO;
    if (isInterrupted || at >= failsAt) return -1;
    if (at == text.size() && repeats > 0) at = from, --repeats;
    const std::size_t got = text.copy(to, std::min({bytes, most, failsAt - at}), at);
    at += got;
    return static_cast<ssize_t>(got);
  }

  std::size_t at = 0;
  int reads = 0;
};

Reading ReadFaulty(Reader reader, FaultyStream faulty, const ReadingOptions& options = {}) {
  std::FILE* const stream = faulty.Open();
  const Reading reading = ReadDump(reader, stream, options);
  std::fclose(stream);
  return reading;
}

using IoFault = FreshState;

TEST_F(IoFault, ShortAndInterruptedReadsLoseNothing) {
  for (const Reader reader : kAllReaders) {
    const std::string expected = ReadFaulty(reader, {kDump, kDump.size()}).text;
    EXPECT_NE(expected.find("0-10 top(c[0]=3)"), std::string::npos) << expected;
    for (std::size_t most = 1; most < 9; ++most) {
      for (int way = 0; way < 4; ++way) {
        const Reading reading =
            ReadFaulty(reader, {kDump, most, way % 2 == 0}, {.scansPlainLines = way < 2});
        EXPECT_EQ(reading.text, expected) << most << " " << way;
        EXPECT_TRUE(reading.complete) << most << " " << way;
      }
    }
  }
}

TEST_F(IoFault, AReadErrorIsTheEndAndIsSaid) {
  testing::internal::CaptureStderr();
  for (std::size_t at = 0; at <= kDump.size(); ++at) {
    const std::string cut = kDump.substr(0, at);
    for (const Reader reader : kAllReaders) {
      const Reading reading = ReadFaulty(reader, {kDump, 7, false, at});
      EXPECT_EQ(reading.text, ReadFaulty(reader, {cut, at + 1}).text) << cut;
      if (reader != Reader::Grammar) {
        EXPECT_EQ(reading.complete, reader == Reader::Filtered) << cut;
      }
    }
  }
  testing::internal::GetCapturedStderr();
}

TEST_F(IoFault, UnreadableFilesFailTheRuns) {
  const TempDir dir;
  KesNCD analyser;
  analyser.SetTopModule("top");
  std::string message;
  ASSERT_TRUE(analyser.SetVCDFile(dir.Write("d.vcd", kDump), {}, message));
  analyser.clockFreqs = {{"old", 1.0}};
  for (const std::string& path : {dir.Path(""), std::string("/proc/self/mem")}) {
    EXPECT_FALSE(analyser.SetVCDFile(path, {}, message));
    EXPECT_EQ(message, "ERROR: Cannot read '" + path + "'.");
    EXPECT_EQ(analyser.signalFreqs.size(), 1U);
    EXPECT_FALSE(analyser.SetVCDFileHier(path, {}, message));
    EXPECT_EQ(message, "ERROR: Cannot read '" + path + "'.");
    analyser.SetTWRFile(path, 0);
    EXPECT_EQ(analyser.clockFreqs.count("old"), 1U);
  }
}

TEST_F(IoFault, TheActivityFileIsWholeOrAsItWas) {
  const TempDir dir;
  const std::string dump = dir.Write("d.vcd", kDump);
  const std::string written = "module | top\nsignal | c[0] | 100.000000\n";
  const auto run = [&] {
    std::string message;
    KesNCD analyser;
    analyser.SetTopModule("top");
    EXPECT_TRUE(analyser.SetVCDFile(dump, {}, message)) << "the frequencies are good";
    EXPECT_EQ(analyser.signalFreqs.size(), 1U);
  };
  constexpr auto kPrivate = std::filesystem::perms{0600};
  std::filesystem::permissions(dir.Write("d.vcd.txt", "earlier"), kPrivate);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit full{20, limit.rlim_max};  // no file grows beyond: as on a full disk
  (void)std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &full);
  run();
  setrlimit(RLIMIT_FSIZE, &limit);
  (void)std::signal(SIGXFSZ, SIG_DFL);
  EXPECT_EQ(ReadAll(dir.Path("d.vcd.txt")), "earlier");
  run();
  EXPECT_EQ(ReadAll(dir.Path("d.vcd.txt")), written);
  EXPECT_EQ(std::filesystem::status(dir.Path("d.vcd.txt")).permissions(), kPrivate);
  std::filesystem::rename(dir.Path("d.vcd.txt"), dir.Path("elsewhere"));
  std::filesystem::create_symlink("elsewhere", dir.Path("d.vcd.txt"));
  run();
  run();
  EXPECT_EQ(ReadAll(dir.Path("elsewhere")), written) << "through a link, and anew each time";
  for (const char* place : {"/dev/full", "no/such/folder", "."}) {
    std::filesystem::remove(dir.Path("d.vcd.txt"));
    std::filesystem::create_symlink(place, dir.Path("d.vcd.txt"));
    run();
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path("")), {}), 3) << "leftovers";
}

TEST_F(IoFault, LongTextsAreTakenAsFarAsLinesGo) {
  const std::string longText(1 << 20, 'n');
  for (const std::string& lines :
       {"$var wire 1 ! " + longText + " $end", "$var wire 1 " + longText + " l $end",
        longText + "~" + std::string(1 << 20, ' ')}) {
    const std::string dump = Dump("TOP~" + lines + "~$var wire 1 # s[0] $end~UP~END~1" + longText +
                                  "~b" + longText + " #~1#~");
    for (const Reader reader : kReaders) {
      EXPECT_EQ(ExpectSamePaths(reader, dump).changes, 1) << lines.substr(0, 20);
    }
  }
}

// Two billion changes, 6.4 GB, in each reader: only where it is asked for.
TEST_F(IoFault, CountsStopAtTheirLimitHoweverLongTheDump) {
  if (std::getenv("KESNCD_LONG_TESTS") == nullptr) GTEST_SKIP() << "KESNCD_LONG_TESTS is not set";
  const std::string block = Times(1 << 20, "1!\n");
  rusage before{}, after{};
  for (const Reader reader : kReaders) {
    const std::string header = kDump.substr(0, kDump.find("#0"));
    FaultyStream endless{header + "#0\n" + block, 1 << 16};
    endless.repeats = 2050;
    endless.from = header.size() + 3;
    getrusage(RUSAGE_SELF, &before);
    const Reading reading = ReadFaulty(reader, endless);
    getrusage(RUSAGE_SELF, &after);
    EXPECT_EQ(reading.changes, 2147483647) << reading.text;
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 8192) << "kilobytes";
  }
  // As many bits as the ranges of a run may have.
  const TempDir dir;
  KesNCD analyser;
  analyser.SetTopModule("top");
  std::string message;
  EXPECT_TRUE(analyser.SetVCDFile(
      dir.Write("d.vcd", "$scope module top $end\n$var wire 1 ! a[16777215:0] $end\n"), {},
      message));
  EXPECT_EQ(analyser.signalFreqs.size(), 16777216U);
}

}  // namespace
}  // namespace orsa::kesncd
