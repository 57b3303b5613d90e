// What a host's surroundings do to a run: streams that come with their error flag set, and places
// for the activity file that take no new file, no renaming, or nothing at all.
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "tests/support/line_readers.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

using Surroundings = FreshState;

const std::string kDump = Dump("SCALE~TOP~$var wire 1 ! c[0] $end~UP~END~#0~1!~0!~#10~1!~");
const std::string kWritten = "module | top\nsignal | c[0] | 100.000000\n";

TEST_F(Surroundings, AnErrorFlagOfBeforeIsNoneOfThisReading) {
  for (const Reader reader : kReaders) {
    const TextStream stream(kDump);
    const Reading expected = ReadDump(reader, TextStream(kDump));
    EXPECT_EQ(std::fputc('x', stream), EOF);  // it is open for reading only
    ASSERT_NE(std::ferror(stream), 0);
    const Reading reading = ReadDump(reader, stream);
    EXPECT_EQ(reading.text, expected.text);
    EXPECT_TRUE(reading.complete);
    EXPECT_NE(std::ferror(stream), 0) << "it stays the caller's to see";
  }
}

void RunOn(const std::string& dump) {
  std::string message;
  KesNCD analyser;
  analyser.SetTopModule("top");
  EXPECT_TRUE(analyser.SetVCDFile(dump, {}, message)) << message;
  EXPECT_EQ(analyser.signalFreqs.size(), 1U);
}

TEST_F(Surroundings, AnActivityFileThatCannotBeRenamedOverIsWrittenInPlace) {
  const TempDir dir;
  const std::string dump = dir.Write("d.vcd", kDump);
  const std::string place =
      dir.Write("d.vcd.txt", "an earlier and longer text than the new one\n\n");
  const std::string other = dir.Write("other", "x");
  if (mount(other.c_str(), place.c_str(), nullptr, MS_BIND, nullptr) != 0) {
    GTEST_SKIP() << "no files can be mounted here";
  }
  RunOn(dump);
  EXPECT_EQ(ReadAll(other), kWritten);
  EXPECT_EQ(umount(place.c_str()), 0);
}

TEST_F(Surroundings, ADiskWithRoomForOneFileOnlyTakesTheNewText) {
  const TempDir dir;
  const std::string disk = dir.Path("disk");
  std::filesystem::create_directory(disk);
  if (mount("none", disk.c_str(), "tmpfs", 0, "size=12k") != 0) {
    GTEST_SKIP() << "no disk can be mounted here";
  }
  const std::string dump = disk + "/d.vcd";
  std::ofstream(dump) << kDump;                                // one page
  std::ofstream(dump + ".txt") << std::string(2 * 4096, 'x');  // the other two
  RunOn(dump);
  EXPECT_EQ(ReadAll(dump + ".txt"), kWritten);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(disk), {}), 2) << "leftovers";
  EXPECT_EQ(umount(disk.c_str()), 0);
}

TEST_F(Surroundings, APipeInTheFilesPlaceDoesNotHoldTheRun) {
  const TempDir dir;
  const std::string dump = dir.Write("d.vcd", kDump);
  const std::string pipe = dump + ".txt";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  RunOn(dump);  // nobody reads
  const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_GE(reader, 0);
  RunOn(dump);
  std::string text(100, '\0');
  const ssize_t got = read(reader, text.data(), text.size());
  close(reader);
  EXPECT_EQ(text.substr(0, static_cast<std::size_t>(std::max<ssize_t>(got, 0))), kWritten);
}

TEST_F(Surroundings, SpansAndScalesThatAreNoNumbersGoByTheFormula) {
  // a time scale, a last stamp, and the frequency of three changes
  const char* const rows[][3] = {{"1 ns", "#nan", "nan"},        {"1 ns", "#inf", "0.000000"},
                                 {"nan ns", "#10", "nan"},       {"inf ns", "#10", "0.000000"},
                                 {"-2 ns", "#10", "-50.000000"}, {"1 ns", "#0", "0.000000"},
                                 {"1 ns", "#what", "0.000000"}};
  for (const auto& [scale, stamp, frequency] : rows) {
    ResetReaderState();
    const TempDir dir;
    std::string dump = kDump;
    dump.replace(dump.find("1ns"), 3, scale);
    dump.replace(dump.find("#10"), 3, stamp);
    RunOn(dir.Write("d.vcd", dump));
    std::string written = ReadAll(dir.Path("d.vcd.txt"));
    const std::string expected = std::string("module | top\nsignal | c[0] | ") + frequency + "\n";
    EXPECT_EQ(written, expected) << scale << " " << stamp;
  }
}

}  // namespace
}  // namespace orsa::kesncd
