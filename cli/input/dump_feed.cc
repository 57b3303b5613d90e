// A pipe that the library opens by its path, and the thread that writes the dump into it.
#include "cli/input/dump_feed.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

// As large as the system gives every user; with less the two ends wait for one another more often.
// The default of Linux is 64 KiB, and /proc/sys/fs/pipe-max-size 1 MiB.
constexpr int kPipeBytes = 1 << 20;

/// Nobody reads the pipe any more: the library has what it wants. Thrown through the writer, which
/// need not know of pipes, and caught in Run.
struct Unwanted {};

/// Blocks while the pipe is full. SIGPIPE is ignored in this program, so a closed pipe shows as
/// EPIPE.
class PipeSink : public ByteSink {
 public:
  explicit PipeSink(int file) : file_(file) {}

  void Write(std::string_view bytes) override {
    // A pipe takes what there is room for.
    while (!bytes.empty()) {
      const ssize_t written = write(file_, bytes.data(), bytes.size());
      if (written >= 0) {
        bytes.remove_prefix(static_cast<std::size_t>(written));
      } else if (errno == EPIPE) {
        throw Unwanted();
      } else if (errno != EINTR) {  // which is a signal that does not end the program
        throw Failure(FailureKind::Unusable, std::string("a pipe: ") + std::strerror(errno));
      }
    }
  }

 private:
  const int file_;
};

}  // namespace

DumpFeed::DumpFeed(std::function<void(ByteSink&)> write) {
  // Not inherited: a child process, such as fst2vcd, would keep the pipe open for ever.
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw Failure(FailureKind::Unusable, std::string("a pipe: ") + std::strerror(errno));
  }
  // Only a matter of speed; with less the pipe works too.
  (void)fcntl(ends[1], F_SETPIPE_SZ, kPipeBytes);
  readEnd_ = ends[0];
  // Without /proc the library could not open it and would say that there is no such dump.
  path_ = "/proc/self/fd/" + std::to_string(readEnd_);
  if (access(path_.c_str(), R_OK) != 0) {
    (void)close(ends[0]);
    (void)close(ends[1]);
    throw Failure(FailureKind::Unusable, "/proc is not mounted, which passing a dump on needs");
  }
  // Last: from now on the object has to be joined. The thread owns the writing end.
  thread_ = std::thread([this, write = std::move(write), end = ends[1]] { Run(write, end); });
}

DumpFeed::~DumpFeed() {
  Join();
}

void DumpFeed::Run(const std::function<void(ByteSink&)>& write, int writeEnd) noexcept {
  try {
    PipeSink sink(writeEnd);
    write(sink);
  } catch (const Unwanted&) {
    // Nobody reads any more, which is as good as the end.
  } catch (...) {
    failure_ = std::current_exception();
  }
  // The reader sees the end of the dump when the last writing end is closed.
  (void)close(writeEnd);
}

/// Without a reading end a thread that still writes comes to its end.
void DumpFeed::Join() {
  // The order matters: with our own reading end open, the thread would wait in write for ever.
  if (readEnd_ >= 0) (void)close(readEnd_);
  readEnd_ = -1;
  if (thread_.joinable()) thread_.join();
}

void DumpFeed::Finish() {
  // Once: a second call finds nothing to throw.
  Join();
  if (failure_ != nullptr) std::rethrow_exception(std::exchange(failure_, nullptr));
}

}  // namespace orsa::kesncd::cli
