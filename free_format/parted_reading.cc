// Threads for the stretches of a dump.
#include "free_format/parted_reading.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <mutex>
#include <thread>

namespace orsa::kesncd {

/// The largest number where the system does not say, so that it sets no limit.
std::uint64_t MemoryBytes() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long page = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || page <= 0) return UINT64_MAX;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page);
}

unsigned ThreadsWithin(std::uint64_t bytesOfEach, unsigned jobs) {
  const std::uint64_t most = MemoryBytes() / 4 / std::max<std::uint64_t>(bytesOfEach, 1);
  return static_cast<unsigned>(std::max<std::uint64_t>(std::min<std::uint64_t>(most, jobs), 1));
}

/// A reader that has to go on needs the ends of all stretches after its own.
std::vector<std::uint64_t> EndsFrom(const std::vector<StretchRange>& stretches, std::size_t first) {
  std::vector<std::uint64_t> ends;
  ends.reserve(stretches.size());
  for (std::size_t i = first; i < stretches.size(); ++i) ends.push_back(stretches[i].end);
  return ends;
}

std::vector<StretchRange> FileDump::Cut(std::uint32_t parts) {
  // The words stand at the body's start now.
  std::vector<StretchRange> stretches = BodyCuts(file(), words_.Offset(), parts).Stretches();
  EndAt(EndsFrom(stretches, 0));
  return stretches;
}

void FileDump::EndAt(const std::vector<std::uint64_t>& ends) {
  // Bytes of the next stretch that were read with the declarations must not be taken twice.
  source_.GoTo(words_.ForgetFrom(ends.front()), ends);
}

void RunTogether(const std::vector<std::function<void()>>& jobs, std::atomic<bool>& isUnwanted) {
  // Guards `failure` alone; jobs share nothing else here.
  std::mutex mutex;
  std::exception_ptr failure;
  const auto run = [&](const std::function<void()>& job) {
    // No exception may leave a thread, or the program would end.
    try {
      job();
      // A job that others stopped has nothing to report.
    } catch (const StretchSource::Unwanted&) {
    } catch (...) {
      // The other stretches' bytes are of no use any more.
      isUnwanted = true;
      const std::lock_guard<std::mutex> lock(mutex);
      if (failure == nullptr) failure = std::current_exception();
    }
  };
  std::vector<std::thread> threads;
  threads.reserve(jobs.size());
  // The first job is this thread's own.
  std::size_t started = 1;
  try {
    for (; started < jobs.size(); ++started) threads.emplace_back(run, std::cref(jobs[started]));
  } catch (const std::exception&) {  // no thread or no memory for one
  }
  run(jobs.front());
  // What got no thread runs here: figures come out the same, only later.
  for (; started < jobs.size(); ++started) run(jobs[started]);
  for (std::thread& thread : threads) thread.join();
  // After the join: no thread uses the jobs any more.
  if (failure != nullptr) std::rethrow_exception(failure);
}

}  // namespace orsa::kesncd
