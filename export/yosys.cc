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

constexpr int kNotFound = 127;  // the status of a process that could not become yosys

/// A process that writes to a pipe. It is waited for in any case, or it would stay as a zombie.
class YosysProcess : public ByteSource {
 public:
  explicit YosysProcess(const std::string& path);
  ~YosysProcess() override { (void)Wait(); }

  std::size_t Read(char* to, std::size_t most) override;
  bool HasWritten() const { return hasWritten_; }
  /// Closes the pipe, which ends a process that still writes, and returns its wait status.
  int Wait();

 private:
  [[noreturn]] static void Run(const std::string& path, int output);

  int output_ = -1;
  bool hasWritten_ = false;
  pid_t process_ = -1;
  int status_ = 0;
};

YosysProcess::YosysProcess(const std::string& path) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw Failure(FailureKind::Unusable, std::string("no pipe to yosys: ") + std::strerror(errno));
  }
  process_ = fork();
  if (process_ == 0) Run(path, ends[1]);
  const int error = errno;
  (void)close(ends[1]);
  output_ = ends[0];
  if (process_ >= 0) return;
  (void)close(output_);
  throw Failure(FailureKind::Unusable, std::string("yosys cannot be run: ") + std::strerror(error));
}

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
  const int nothing = open("/dev/null", O_RDONLY);
  if (dup2(nothing, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0) {
    (void)execlp("yosys", "yosys", "-q", "-f", "verilog", "-b", "json", "-o", "/dev/stdout", "-p",
                 "hierarchy -auto-top", path.c_str(), static_cast<char*>(nullptr));
  }
  _exit(kNotFound);
}

int YosysProcess::Wait() {
  if (output_ >= 0) (void)close(output_);
  output_ = -1;
  while (process_ > 0 && waitpid(process_, &status_, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
  return status_;
}

}  // namespace

Netlist ReadVerilog(const std::string& path, const std::string& name) {
  // A path that begins with a dash would be an option.
  YosysProcess yosys(path.starts_with('-') ? "./" + path : path);
  std::optional<Netlist> netlist;
  try {
    netlist = ReadNetlist(yosys, name);
  } catch (const Failure&) {
    if (yosys.HasWritten()) throw;
  }
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
