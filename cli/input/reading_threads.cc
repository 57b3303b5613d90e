// The choice of threads for a dump.
#include "cli/input/reading_threads.h"

#include <sched.h>

#include <algorithm>
#include <memory>
#include <thread>

#include "cli/input/read_ahead.h"

namespace orsa::kesncd::cli {

unsigned UsableCores() {
  cpu_set_t cores;
  CPU_ZERO(&cores);
  // A machine with more cores than the set holds refuses. hardware_concurrency may then know the
  // number, or be 0.
  if (sched_getaffinity(0, sizeof cores, &cores) == 0)
    return static_cast<unsigned>(std::max(CPU_COUNT(&cores), 1));
  return std::max(std::thread::hardware_concurrency(), 1U);
}

unsigned UseThreads(const InputOptions& options, UnpackedSource& dump) {
  // Told by the user, a small file is cut too.
  const bool isAsked = options.jobs > 0;
  const unsigned jobs = isAsked ? static_cast<unsigned>(options.jobs) : UsableCores();
  if (jobs == 1) return 1;
  // A plain file: cut into parts, without another thread that reads ahead.
  if (dump.file != nullptr) return isAsked || dump.file->size() >= kWorthCutting ? jobs : 1;
  // Another program may let a pipe wait for any length of time, also when no more of it is wanted.
  if (!dump.packing.empty() && dump.isRegularFile) {
    dump.bytes = std::make_unique<ReadAheadSource>(std::move(dump.bytes));
  }
  return 1;
}

}  // namespace orsa::kesncd::cli
