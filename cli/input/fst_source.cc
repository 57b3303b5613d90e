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

// The status of a process that could not become fst2vcd; a shell's own for a command that is not
// there.
constexpr int kNotFound = 127;

/// The process lives from construction to the end of its output, or to the destructor.
class FstSource : public ByteSource {
 public:
  FstSource(const FileSource& file, std::string name);
  ~FstSource() override;
  FstSource(const FstSource&) = delete;
  FstSource& operator=(const FstSource&) = delete;

  std::size_t Read(char* to, std::size_t most) override;

 private:
  // What the child becomes.
  [[noreturn]] static void Run(int file, int output);
  /// The status that the process ended with; does nothing the second time.
  int Wait();
  // With the system's reason, which is in errno.
  [[noreturn]] void FailSystem(const std::string& what) const {
    throw Failure(FailureKind::Unusable, name_ + ": " + what + ": " + std::strerror(errno));
  }

  const std::string name_;
  int input_ = -1;  // the pipe's end, where VCD comes from
  pid_t process_ = -1;
  bool isOver_ = false;
};

FstSource::FstSource(const FileSource& file, std::string name) : name_(std::move(name)) {
  // A descriptor of its own: the given one may be read by others, and both would share its place.
  const int own = open(file.SecondPath().c_str(), O_RDONLY | O_CLOEXEC);
  if (own < 0) FailSystem("cannot be opened again");
  std::array<int, 2> ends{};
  // Closed in the child by exec, except for what dup2 makes of them.
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    (void)close(own);
    FailSystem("no pipe to fst2vcd");
  }
  input_ = ends[0];
  process_ = fork();
  // The child never returns from Run.
  if (process_ == 0) Run(own, ends[1]);
  // Only the child may hold these, or the end of its output would never show.
  (void)close(own);
  (void)close(ends[1]);
  if (process_ < 0) {
    (void)close(input_);
    FailSystem("fst2vcd cannot be run");
  }
}

/// In the new process. Between fork and exec nothing is allocated: another thread may hold a lock.
/// The file is its standard input, under whose path fst2vcd opens it: a name of the user's is never
/// taken for an option, and nothing is made in the dump's folder. dup2 makes descriptors without
/// O_CLOEXEC, so these two survive exec.
void FstSource::Run(int file, int output) {
  // The program ignores SIGPIPE, which a child inherits.
  (void)std::signal(SIGPIPE, SIG_DFL);  // it is to end when nobody reads on
  if (dup2(file, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0) {
    (void)execlp("fst2vcd", "fst2vcd", "-f", "/dev/stdin", static_cast<char*>(nullptr));
  }
  // Neither exit handlers nor buffers of the program's.
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
  // Order: closing the pipe ends a writer that waits, the signal one that computes.
  (void)close(input_);
  if (process_ > 0) (void)kill(process_, SIGTERM);
  (void)Wait();
}

std::size_t FstSource::Read(char* to, std::size_t most) {
  if (isOver_) return 0;
  ssize_t got = 0;
  do {
    // A signal that does not end the program.
    got = read(input_, to, most);
  } while (got < 0 && errno == EINTR);
  if (got < 0) FailSystem("cannot be read from fst2vcd");
  if (got > 0) return static_cast<std::size_t>(got);
  // The end of the output: only now the status is known.
  isOver_ = true;
  const int status = Wait();
  if (WIFEXITED(status) && WEXITSTATUS(status) == kNotFound) {
    throw Failure(FailureKind::Unusable,
                  name_ +
                      ": is FST, no VCD file: it is read by fst2vcd, which is not installed "
                      "(Debian: gtkwave)");
  }
  // A corrupt FST file, most often; fst2vcd has written why to standard error.
  if (status != 0) throw Failure(FailureKind::Unusable, name_ + ": fst2vcd could not read it");
  return 0;
}

}  // namespace

bool IsFst(std::string_view firstBytes) {
  // By the same table as the check of dumps, so that both know the same formats.
  return ForeignFormatOf(firstBytes).name == "FST";
}

std::unique_ptr<ByteSource> MakeFstSource(const FileSource& file, const std::string& name) {
  // A pipe has no size, and an empty file is no FST.
  if (file.size() == 0) {
    throw Failure(FailureKind::Unusable,
                  name + ": is FST, no VCD file: fst2vcd reads it from a file, not from a pipe");
  }
  return std::make_unique<FstSource>(file, name);
}

}  // namespace orsa::kesncd::cli
