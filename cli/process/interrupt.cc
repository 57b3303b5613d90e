#include "cli/process/interrupt.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <climits>
#include <csignal>

namespace orsa::kesncd::cli {

namespace {

constexpr int kSignalled = 128;  // added to a signal's number, as shells do

std::array<char, PATH_MAX> partialFile;
std::atomic<bool> isWriting{false};

void End(int signal) {
  if (isWriting) (void)unlink(partialFile.data());
  _exit(kSignalled + signal);
}

}  // namespace

void EndWhenInterrupted() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (std::signal(signal, End) == SIG_IGN) (void)std::signal(signal, SIG_IGN);
  }
}

void RemoveWhenInterrupted(const std::string& path) {
  isWriting = false;
  // A longer path cannot be opened in the first place.
  if (path.empty() || path.size() >= partialFile.size()) return;
  partialFile[path.copy(partialFile.data(), path.size())] = '\0';
  isWriting = true;
}

}  // namespace orsa::kesncd::cli
