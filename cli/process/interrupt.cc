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

struct Slot {
  std::array<char, PATH_MAX> path{};
  std::atomic<bool> isTaken{false};  // true only while the path is complete
};
std::array<Slot, kMostFiles> slots;

class Files : public TemporaryFiles {
 public:
  void Made(const std::string& path) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (Slot& slot : slots) {
      // A longer path cannot be opened in the first place.
      if (slot.isTaken || path.size() >= slot.path.size()) continue;
      slot.path[path.copy(slot.path.data(), path.size())] = '\0';
      slot.isTaken = true;
      return;
    }
  }

  void Gone(const std::string& path) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (Slot& slot : slots) {
      if (slot.isTaken && path == slot.path.data()) slot.isTaken = false;
    }
  }

 private:
  std::mutex mutex_;
};

void End(int signal) {
  for (const Slot& slot : slots) {
    if (slot.isTaken) (void)unlink(slot.path.data());
  }
  _exit(kSignalled + signal);
}

}  // namespace

void EndWhenInterrupted() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (std::signal(signal, End) == SIG_IGN) (void)std::signal(signal, SIG_IGN);
  }
}

TemporaryFiles& FilesOfThisRun() {
  static Files files;
  return files;
}

}  // namespace orsa::kesncd::cli
