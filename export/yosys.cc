// Yosys runs as a process of its own without a shell, so a file's name is only that; its JSON comes
// through a pipe.
#include "export/yosys.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "text/failure.h"
#include "text/file.h"

namespace orsa::kesncd {

namespace {

constexpr int kNotFound = 127;  // the status of a process that could not become yosys
constexpr std::string_view kBlanks = " \t\r\n";

bool IsEmpty(std::FILE* file) {
  const int c = std::fgetc(file);
  if (c != EOF) (void)std::ungetc(c, file);
  return c == EOF;
}

bool IsJson(std::FILE* file) {
  int c = std::fgetc(file);
  while (c != EOF && kBlanks.find(static_cast<char>(c)) != std::string_view::npos) {
    c = std::fgetc(file);
  }
  std::rewind(file);
  return c == '{';
}

/// A process that writes to a pipe. It is waited for in any case, or it would stay as a zombie.
class YosysProcess {
 public:
  explicit YosysProcess(const std::string& path);
  ~YosysProcess() { (void)Wait(); }
  YosysProcess(const YosysProcess&) = delete;
  YosysProcess& operator=(const YosysProcess&) = delete;

  std::FILE* output() const { return output_.get(); }
  /// Closes the pipe, which ends a process that still writes, and returns its wait status.
  int Wait();

 private:
  [[noreturn]] static void Run(const std::string& path, int output);

  File output_;
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
  output_.reset(fdopen(ends[0], "r"));
  if (output_ == nullptr) (void)close(ends[0]);
  if (process_ < 0 || output_ == nullptr) {
    throw Failure(FailureKind::Unusable,
                  std::string("yosys cannot be run: ") + std::strerror(error));
  }
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
  output_.reset();
  while (process_ > 0 && waitpid(process_, &status_, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
  return status_;
}

Netlist ReadVerilog(const std::string& path) {
  // A path that begins with a dash would be an option.
  YosysProcess yosys(path.starts_with('-') ? "./" + path : path);
  const bool hasOutput = !IsEmpty(yosys.output());
  if (hasOutput) {
    Netlist netlist = ReadNetlist(yosys.output(), path);
    if (yosys.Wait() == 0) return netlist;
  }
  const int status = yosys.Wait();
  if (WIFEXITED(status) && WEXITSTATUS(status) == kNotFound) {
    throw Failure(
        FailureKind::Unusable,
        path + ": a Verilog netlist is read by yosys, which is not installed (Debian: yosys)");
  }
  throw Failure(FailureKind::Unusable, path + ": yosys could not read it as Verilog");
}

}  // namespace

Netlist ReadNetlistFile(const std::string& path) {
  const File file = OpenForReading(path);
  if (file == nullptr) {
    throw Failure(FailureKind::Unusable, path + ": " + std::strerror(errno));
  }
  if (IsJson(file.get())) return ReadNetlist(file.get(), path);
  return ReadVerilog(path);
}

}  // namespace orsa::kesncd
