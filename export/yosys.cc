// Yosys runs as a process of its own without a shell, so a file's name is only that; its JSON comes
// through a pipe.
#include "export/yosys.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "text/byte_stream.h"
#include "text/failure.h"

namespace orsa::kesncd {

namespace {

// The status of a process that could not become yosys; a shell's own for a command that is not
// there.
constexpr int kNotFound = 127;

/// A process that writes to a pipe. It is waited for in any case, or it would stay as a zombie.
/// Calling order: construct, Read to the end, Wait.
class YosysProcess : public ByteSource {
 public:
  /// Throws Failure with Unusable where there is no pipe or no process.
  explicit YosysProcess(const std::string& path);
  ~YosysProcess() override { (void)Wait(); }

  std::size_t Read(char* to, std::size_t most) override;
  /// Whether any byte came: without one, its exit status says more than what JSON lacks.
  bool HasWritten() const { return hasWritten_; }
  /// Closes the pipe, which ends a process that still writes, and returns its wait status.
  int Wait();

 private:
  /// What the child becomes.
  [[noreturn]] static void Run(const std::string& path, int output);

  // The pipe's reading end; -1 once it is closed.
  int output_ = -1;
  bool hasWritten_ = false;
  pid_t process_ = -1;
  int status_ = 0;
};

YosysProcess::YosysProcess(const std::string& path) {
  std::array<int, 2> ends{};
  // Not inherited, or the pipe would never end: the child only keeps the copy that dup2 makes.
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw Failure(FailureKind::Unusable, std::string("no pipe to yosys: ") + std::strerror(errno));
  }
  process_ = fork();
  if (process_ == 0) Run(path, ends[1]);
  // Close may change it.
  const int error = errno;
  (void)close(ends[1]);
  output_ = ends[0];
  if (process_ >= 0) return;
  (void)close(output_);
  throw Failure(FailureKind::Unusable, std::string("yosys cannot be run: ") + std::strerror(error));
}

/// 0 at the end, which a process that failed has at once.
std::size_t YosysProcess::Read(char* to, std::size_t most) {
  ssize_t got = 0;
  do {
    got = read(output_, to, most);
  } while (got < 0 && errno == EINTR);
  if (got < 0) {
    throw Failure(FailureKind::Unusable,
                  std::string("yosys: its output cannot be read: ") + std::strerror(errno));
  }
  hasWritten_ = hasWritten_ || got > 0;
  return static_cast<std::size_t>(got);
}

/// In the new process. Between fork and exec nothing is allocated: another thread may hold a lock.
void YosysProcess::Run(const std::string& path, int output) {
  // Yosys must not take the program's own input, which may be the dump.
  const int nothing = open("/dev/null", O_RDONLY);
  if (dup2(nothing, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0) {
    // Quiet, from Verilog to JSON; "hierarchy" marks the top module.
    (void)execlp("yosys", "yosys", "-q", "-f", "verilog", "-b", "json", "-o", "/dev/stdout", "-p",
                 // Options stand before the path, which never begins with a dash; see ReadVerilog.
                 "hierarchy -auto-top", path.c_str(), static_cast<char*>(nullptr));
  }
  // Neither exit handlers nor buffers of the program's.
  _exit(kNotFound);
}

int YosysProcess::Wait() {
  // First: a process that waits for room in the pipe ends by SIGPIPE.
  if (output_ >= 0) (void)close(output_);
  output_ = -1;
  while (process_ > 0 && waitpid(process_, &status_, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
  // The same status again where it is asked for twice.
  return status_;
}

}  // namespace

Netlist ReadVerilog(const std::string& path, const std::string& name) {
  // A path that begins with a dash would be an option.
  YosysProcess yosys(path.starts_with('-') ? "./" + path : path);
  std::optional<Netlist> netlist;
  // Where yosys wrote nothing there is no JSON, but its status tells why; what it did write is
  // wrong by itself.
  try {
    netlist = ReadNetlist(yosys, name);
  } catch (const Failure&) {
    if (yosys.HasWritten()) throw;
  }
  // Yosys may fail after it wrote a netlist, which then is not to be trusted.
  const int status = yosys.Wait();
  if (status == 0 && netlist) return *std::move(netlist);
  if (WIFEXITED(status) && WEXITSTATUS(status) == kNotFound) {
    throw Failure(
        FailureKind::Unusable,
        name + ": a Verilog netlist is read by yosys, which is not installed (Debian: yosys)");
  }
  throw Failure(FailureKind::Unusable, name + ": yosys could not read it as Verilog");
}

}  // namespace orsa::kesncd
