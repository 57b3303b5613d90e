// A signal's handler may neither lock nor allocate: the names of files that it removes wait in an
// array.
#include "cli/process/interrupt.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <climits>
#include <csignal>
#include <mutex>

namespace orsa::kesncd::cli {

namespace {

constexpr int kSignalled = 128;         // added to a signal's number, as shells do
constexpr std::size_t kMostFiles = 16;  // that any command writes at a time

/// The handler reads these at any moment, also while Made or Gone is at work in the same thread: it
/// looks at `isTaken` first and at `path` only where that is true.
struct Slot {
  std::array<char, PATH_MAX> path{};
  std::atomic<bool> isTaken{false};  // true only while the path is complete
};
// Global, since a handler is given nothing but a number.
std::array<Slot, kMostFiles> slots;

/// Threads take turns by the mutex; the handler takes no part in that. A file for which no slot is
/// free is not removed by a signal; nothing else is lost.
class Files : public TemporaryFiles {
 public:
  void Made(const std::string& path) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    // The first free place.
    for (Slot& slot : slots) {
      // A longer path cannot be opened in the first place.
      if (slot.isTaken || path.size() >= slot.path.size()) continue;
      // The path before the mark: the handler must never see half a path.
      slot.path[path.copy(slot.path.data(), path.size())] = '\0';
      slot.isTaken = true;
      return;
    }
  }

  void Gone(const std::string& path) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    // A file that was committed or removed must not be unlinked later, when the name may be
    // another's.
    for (Slot& slot : slots) {
      if (slot.isTaken && path == slot.path.data()) slot.isTaken = false;
    }
  }

 private:
  std::mutex mutex_;
};

/// The handler. Only what a handler may call is in it: unlink and _exit.
void End(int signal) {
  for (const Slot& slot : slots) {
    if (slot.isTaken) (void)unlink(slot.path.data());
  }
  _exit(kSignalled + signal);
}

}  // namespace

void EndWhenInterrupted() {
  // A program started with nohup or in the background of a script has such signals ignored, and
  // they are to stay so.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (std::signal(signal, End) == SIG_IGN) (void)std::signal(signal, SIG_IGN);
  }
}

TemporaryFiles& FilesOfThisRun() {
  // On first use, which is never inside the handler.
  static Files files;
  return files;
}

}  // namespace orsa::kesncd::cli
