// fst2vcd runs as a process of its own, without a shell, and writes to a pipe.
#include "cli/input/fst_source.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "free_format/findings/dump_format.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

constexpr int kNotFound = 127;  // the status of a process that could not become fst2vcd

class FstSource : public ByteSource {
 public:
  FstSource(const FileSource& file, std::string name);
  ~FstSource() override;
  FstSource(const FstSource&) = delete;
  FstSource& operator=(const FstSource&) = delete;

  std::size_t Read(char* to, std::size_t most) override;

 private:
  [[noreturn]] static void Run(int file, int output);
  int Wait();
  [[noreturn]] void FailSystem(const std::string& what) const {
    throw Failure(FailureKind::Unusable, name_ + ": " + what + ": " + std::strerror(errno));
  }

  const std::string name_;
  int input_ = -1;  // the pipe's end
  pid_t process_ = -1;
  bool isOver_ = false;
};

FstSource::FstSource(const FileSource& file, std::string name) : name_(std::move(name)) {
  const int own = open(file.SecondPath().c_str(), O_RDONLY | O_CLOEXEC);
  if (own < 0) FailSystem("cannot be opened again");
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    (void)close(own);
    FailSystem("no pipe to fst2vcd");
  }
  input_ = ends[0];
  process_ = fork();
  if (process_ == 0) Run(own, ends[1]);
  (void)close(own);
  (void)close(ends[1]);
  if (process_ < 0) {
    (void)close(input_);
    FailSystem("fst2vcd cannot be run");
  }
}

/// In the new process. Between fork and exec nothing is allocated: another thread may hold a lock.
/// The file is its standard input, under whose path fst2vcd opens it: a name of the user's is never
/// taken for an option, and nothing is made in the dump's folder.
void FstSource::Run(int file, int output) {
  (void)std::signal(SIGPIPE, SIG_DFL);  // it is to end when nobody reads on
  if (dup2(file, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0) {
    (void)execlp("fst2vcd", "fst2vcd", "-f", "/dev/stdin", static_cast<char*>(nullptr));
  }
  _exit(kNotFound);
}

int FstSource::Wait() {
  int status = 0;
  while (process_ > 0 && waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
  return status;
}

FstSource::~FstSource() {
  (void)close(input_);
  if (process_ > 0) (void)kill(process_, SIGTERM);
  (void)Wait();
}

std::size_t FstSource::Read(char* to, std::size_t most) {
  if (isOver_) return 0;
  ssize_t got = 0;
  do {
    got = read(input_, to, most);
  } while (got < 0 && errno == EINTR);
  if (got < 0) FailSystem("cannot be read from fst2vcd");
  if (got > 0) return static_cast<std::size_t>(got);
  isOver_ = true;
  const int status = Wait();
  if (WIFEXITED(status) && WEXITSTATUS(status) == kNotFound) {
    throw Failure(FailureKind::Unusable,
                  name_ +
                      ": is FST, no VCD file: it is read by fst2vcd, which is not installed "
                      "(Debian: gtkwave)");
  }
  if (status != 0) throw Failure(FailureKind::Unusable, name_ + ": fst2vcd could not read it");
  return 0;
}

}  // namespace

bool IsFst(std::string_view firstBytes) {
  return ForeignFormatOf(firstBytes).name == "FST";
}

std::unique_ptr<ByteSource> MakeFstSource(const FileSource& file, const std::string& name) {
  if (file.size() == 0) {
    throw Failure(FailureKind::Unusable,
                  name + ": is FST, no VCD file: fst2vcd reads it from a file, not from a pipe");
  }
  return std::make_unique<FstSource>(file, name);
}

}  // namespace orsa::kesncd::cli
