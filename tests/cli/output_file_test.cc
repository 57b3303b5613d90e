// Results on their way to files: whole or as it was before, whatever lies in the place, whoever
// writes it and wherever a write fails.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <set>
#include <thread>

#include "cli/process/interrupt.h"
#include "tests/support/shell.h"
#include "tests/support/testing.h"
#include "text/failure.h"
#include "text/whole_file.h"

namespace orsa::kesncd {
namespace {

const std::string kDump = Dump("SCALE~TOP~CLK~UP~END~#0~1!~0!~#10~");

struct stat StatusOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  return status;
}

std::set<std::string> NamesIn(const TempDir& dir) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(dir.Path(""))) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

void WriteWhole(const std::string& path, const std::string& text,
                const WholeFileRules& rules = {}) {
  WholeFile file(path, rules);
  for (const char c : text) file.Write({&c, 1});
  file.Commit();
}

TEST(OutputFile, KeepsWhatAFileIs) {
  const TempDir dir;
  const std::string longName(255, 'n');
  for (const auto& [name, mode] : {std::pair(std::string("plain"), 0644U),
                                   {"secret", 0600U},
                                   {"shared", 02775U},
                                   {longName, 0640U}}) {
    chmod(dir.Write(name, "earlier, and longer").c_str(), mode);
    if (getuid() == 0) {
      EXPECT_EQ(chown(dir.Path(name).c_str(), 12345, 54321), 0);
    }
    chmod(dir.Path(name).c_str(), mode);
    const struct stat before = StatusOf(dir.Path(name));
    WriteWhole(dir.Path(name), "new");
    const struct stat after = StatusOf(dir.Path(name));
    EXPECT_EQ(ReadAll(dir.Path(name)), "new");
    EXPECT_NE(after.st_ino, before.st_ino) << "a new file in its place";
    EXPECT_EQ(after.st_mode, before.st_mode) << name;
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
  }
  const mode_t mask = umask(027);
  WriteWhole(dir.Path("fresh"), "new");
  umask(mask);
  EXPECT_EQ(StatusOf(dir.Path("fresh")).st_mode & 0777U, 0640U);
  EXPECT_EQ(NamesIn(dir), (std::set<std::string>{"plain", "secret", "shared", longName, "fresh"}));
}

TEST(OutputFile, FollowsLinks) {
  const TempDir dir;
  dir.Write("file", "earlier, and longer");
  std::filesystem::create_hard_link(dir.Path("file"), dir.Path("other"));
  std::filesystem::create_directory(dir.Path("sub"));
  std::filesystem::create_symlink("../file", dir.Path("sub/link"));
  std::filesystem::create_symlink("sub/link", dir.Path("chain"));
  std::filesystem::create_symlink("sub/none", dir.Path("dangling"));
  std::filesystem::create_symlink("loop", dir.Path("loop"));
  WriteWhole(dir.Path("chain"), "one");
  EXPECT_EQ(ReadAll(dir.Path("file")) + ReadAll(dir.Path("other")), "oneone");
  std::filesystem::remove(dir.Path("other"));
  WriteWhole(dir.Path("chain"), "two");
  EXPECT_EQ(ReadAll(dir.Path("file")), "two");
  WriteWhole(dir.Path("dangling"), "three");
  EXPECT_EQ(ReadAll(dir.Path("sub/none")), "three");
  for (const char* link : {"chain", "dangling", "sub/link", "loop"}) {
    EXPECT_TRUE(std::filesystem::is_symlink(dir.Path(link)));
  }
  for (const char* bad : {"loop", "", "sub", "no/such", "file/x"}) {
    EXPECT_THROW(WriteWhole(dir.Path(bad), "four"), Failure) << bad;
  }
}

/// The longest file that a write may make, as on a disk that is full from there on.
class FileLimit {
 public:
  explicit FileLimit(rlim_t bytes) {
    (void)std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    (void)std::signal(SIGXFSZ, SIG_DFL);
  }

 private:
  rlimit before_{};
};

TEST(OutputFile, AFailureAtAnyByteLeavesTheOldFile) {
  const TempDir dir;
  const std::string text = "the new text";
  dir.Write("file", "old");
  dir.Write("twice", "old");
  std::filesystem::create_hard_link(dir.Path("twice"), dir.Path("again"));
  for (rlim_t bytes = 0; bytes < text.size(); ++bytes) {
    for (const char* name : {"file", "twice", "fresh"}) {
      const FileLimit limit(bytes);
      try {
        WriteWhole(dir.Path(name), text);
        ADD_FAILURE() << name << bytes;
      } catch (const Failure& failure) {
        EXPECT_EQ(failure.kind(), FailureKind::OutputFailed);
        EXPECT_EQ(std::string(failure.what()).find("corrupt"), std::string::npos);
      }
    }
    EXPECT_EQ(ReadAll(dir.Path("file")) + ReadAll(dir.Path("again")), "oldold");
  }
  {
    WholeFile left(dir.Path("file"));
    left.Write("not committed");
  }
  EXPECT_EQ(ReadAll(dir.Path("file")), "old");
  EXPECT_EQ(NamesIn(dir), (std::set<std::string>{"file", "twice", "again"}));
}

TEST(OutputFile, WritesInPlaceWhereTheFolderTakesNoFile) {
  if (getuid() != 0 || std::system("setpriv --version >/dev/null 2>&1") != 0) {
    GTEST_SKIP() << "another user is needed";
  }
  const TempDir dir;
  dir.Write("d.vcd", kDump);
  for (const char* name : {"open", "foreign", "kept", "mine"})
    chmod(dir.Write(name, "old").c_str(), 0666);
  chmod(dir.Path("kept").c_str(), 0444);
  EXPECT_EQ(chown(dir.Path("mine").c_str(), 65534, 65534), 0);
  const std::string as =
      "setpriv --reuid 65534 --regid 65534 --clear-groups kesncd top d.vcd && "
      "setpriv --reuid 65534 --regid 65534 --clear-groups kesncd prepare d.vcd -o ";
  for (const mode_t folder : {0755U, 01777U, 0777U}) {
    chmod(dir.Path("").c_str(), folder);
    for (const char* name : {"open", "foreign", "mine"}) {
      dir.Write(name, "old");
      const struct stat before = StatusOf(dir.Path(name));
      const Outcome run = Shell(dir.Path("."), as + name + " 2>&1");
      EXPECT_EQ(run.status, 0) << run.out << name;
      EXPECT_EQ(ReadAll(dir.Path(name)).substr(0, 10), "$timescale") << name;
      EXPECT_EQ(StatusOf(dir.Path(name)).st_uid, before.st_uid) << name;
      EXPECT_EQ(StatusOf(dir.Path(name)).st_mode, before.st_mode) << name;
    }
    EXPECT_EQ(Shell(dir.Path("."), as + "kept 2>&1").status, 3) << "it is read-only";
    if (folder == 0755U) {
      EXPECT_EQ(Shell(dir.Path("."), as + "fresh 2>&1").status, 3);
    }
  }
  EXPECT_EQ(NamesIn(dir), (std::set<std::string>{"d.vcd", "open", "foreign", "kept", "mine"}));
}

TEST(OutputFile, SparesAFullDiskOnlyByRule) {
  const TempDir dir;
  const std::string at = dir.Path("disk");
  std::filesystem::create_directory(at);
  if (std::system(("mount -t tmpfs -o size=64k none " + at + " 2>/dev/null").c_str()) != 0) {
    GTEST_SKIP() << "nothing can be mounted here";
  }
  const std::string old(40000, 'o');
  const std::string text(40000, 'n');
  dir.Write("disk/file", old);
  EXPECT_THROW(WriteWhole(at + "/file", text), Failure);
  EXPECT_EQ(ReadAll(at + "/file"), old);
  WholeFileRules rules;
  rules.inPlaceIfFull = true;
  WriteWhole(at + "/file", text, rules);
  EXPECT_EQ(ReadAll(at + "/file"), text);
  EXPECT_THROW(WriteWhole(at + "/file", old + old, rules), Failure);
  EXPECT_EQ(ReadAll(at + "/file"), text) << "there is no room, which is known before";
  // A file that is mounted over another cannot be renamed over.
  dir.Write("bound", "old");
  dir.Write("source", "source");
  const std::string bind = "mount --bind " + dir.Path("source") + " " + dir.Path("bound");
  if (std::system((bind + " 2>/dev/null").c_str()) == 0) {
    WriteWhole(dir.Path("bound"), "new");
    EXPECT_EQ(ReadAll(dir.Path("source")), "new");
    EXPECT_EQ(std::system(("umount " + dir.Path("bound")).c_str()), 0);
  }
  EXPECT_EQ(std::system(("umount " + at).c_str()), 0);
  EXPECT_EQ(NamesIn(dir), (std::set<std::string>{"bound", "disk", "source"}));
}

TEST(OutputFile, WritesStreamsAndRefusesInputs) {
  const TempDir dir;
  dir.Write("d.vcd", kDump);
  dir.Write("names", "clk\n");
  ExpectRuns(dir, R"(kesncd flat d.vcd -q -o - => 0 => signal +freq_mhz\nclk +50\n
kesncd flat d.vcd -q -o /dev/stdout > o; kesncd flat d.vcd -q -o /dev/fd/3 3>&1 >>o; cat o => 0
     => signal +freq_mhz\nclk +50\nsignal +freq_mhz\nclk +50\n
echo first > o; kesncd flat d.vcd -q -o /dev/stdout >> o; cat o; rm o => 0 => first\nsignal +freq_mhz\nclk +50\n
mkfifo p; kesncd flat d.vcd -q -o p & cat p; test -p p && rm p => 0 => signal +freq_mhz\nclk +50\n
kesncd flat d.vcd -q -o /dev/null && test -c /dev/null && test -L /dev/stdout => 0
kesncd flat d.vcd -o /dev/full => 3 =>  => (.|\n)*kesncd: /dev/full: cannot write: No space .*\n
ln -s d.vcd l; ln d.vcd h; mkdir s; ln -s ../none s/n; ln -s none n => 0
kesncd flat d.vcd -o d.vcd => 2 =>  => kesncd: d.vcd: is an input too\n
kesncd tree d.vcd -o l => 2 =>  => kesncd: l: is an input too\n
kesncd check d.vcd -o h => 2 =>  => kesncd: h: is an input too\n
kesncd prepare l -o d.vcd => 2 =>  => kesncd: d.vcd: is an input too\n
kesncd prepare - -o d.vcd < h => 2 =>  => kesncd: d.vcd: is an input too\n
kesncd prepare d.vcd >> d.vcd => 2 =>  => kesncd: standard output: is an input too\n
kesncd find d.vcd --names-from names -o names => 2 =>  => kesncd: names: is an input too\n
kesncd extract d.vcd --nets names --unmatched names => 2 =>  => kesncd: names: is an input too\n
kesncd extract d.vcd --nets names --unmatched n -o s/n => 2 =>  => kesncd: n: is named for two outputs\n
kesncd flat d.vcd --activity=n -o ./none => 2 =>  => kesncd: n: is named for two outputs\n
kesncd flat d.vcd -q --activity=- -o - => 0 => module \| top\n.*\nsignal +freq_mhz\nclk +50\n
ls => 0 => d.vcd\nerrors\nh\nl\nn\nnames\ns\n)");
  EXPECT_EQ(ReadAll(dir.Path("d.vcd")), kDump);
  WholeFileRules rules;
  rules.onlyRegular = true;
  mkfifo(dir.Path("p").c_str(), 0600);
  EXPECT_THROW(WriteWhole(dir.Path("p"), "x", rules), Failure) << "must not wait for a reader";
}

TEST(OutputFile, RunsAtOnceAndSignalsLeaveWholeFiles) {
  const TempDir dir;
  const std::string path = dir.Write("file", "old");
  std::vector<std::thread> runs;
  for (const char c : {'a', 'b', 'c'}) {
    runs.emplace_back([&path, c] {
      for (int i = 0; i < 50; ++i) WriteWhole(path, std::string(1000, c));
    });
  }
  for (std::thread& run : runs) run.join();
  const std::string text = ReadAll(path);
  EXPECT_EQ(text, std::string(1000, text[0]));
  // Each signal finds several files that are being written.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    EXPECT_EXIT(
        {
          std::signal(signal, SIG_DFL);  // nohup has it ignored
          cli::EndWhenInterrupted();
          WholeFileRules rules;
          rules.watch = &cli::FilesOfThisRun();
          const WholeFile one(dir.Path("file"), rules);
          const WholeFile other(dir.Path("other"), rules);
          WriteWhole(dir.Path("third"), "whole", rules);
          (void)raise(signal);
        },
        testing::ExitedWithCode(128 + signal), "");
  }
  EXPECT_EQ(NamesIn(dir), (std::set<std::string>{"file", "third"}));
  EXPECT_EQ(ReadAll(path), text);
}

}  // namespace
}  // namespace orsa::kesncd
