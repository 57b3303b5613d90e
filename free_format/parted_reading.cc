// Threads for the stretches of a dump.
#include "free_format/parted_reading.h"

#include <unistd.h>

#include <algorithm>
#include <thread>

namespace orsa::kesncd {

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

std::vector<std::uint64_t> EndsFrom(const std::vector<StretchRange>& stretches, std::size_t first) {
  std::vector<std::uint64_t> ends;
  ends.reserve(stretches.size());
  for (std::size_t i = first; i < stretches.size(); ++i) ends.push_back(stretches[i].end);
  return ends;
}

std::vector<StretchRange> FileDump::Cut(std::uint32_t parts) {
  std::vector<StretchRange> stretches = BodyCuts(file(), words_.Offset(), parts).Stretches();
  EndAt(EndsFrom(stretches, 0));
  return stretches;
}

void FileDump::EndAt(const std::vector<std::uint64_t>& ends) {
  source_.GoTo(words_.ForgetFrom(ends.front()), ends);
}

void RunTogether(const std::vector<std::function<void()>>& jobs, std::atomic<bool>& isUnwanted) {
  std::mutex mutex;
  std::exception_ptr failure;
  const auto run = [&](const std::function<void()>& job) {
    try {
      job();
    } catch (const StretchSource::Unwanted&) {
    } catch (...) {
      isUnwanted = true;
      const std::lock_guard<std::mutex> lock(mutex);
      if (failure == nullptr) failure = std::current_exception();
    }
  };
  std::vector<std::thread> threads;
  threads.reserve(jobs.size());
  std::size_t started = 1;
  try {
    for (; started < jobs.size(); ++started) threads.emplace_back(run, std::cref(jobs[started]));
  } catch (const std::exception&) {  // no thread or no memory for one
  }
  run(jobs.front());
  for (; started < jobs.size(); ++started) run(jobs[started]);
  for (std::thread& thread : threads) thread.join();
  if (failure != nullptr) std::rethrow_exception(failure);
}

}  // namespace orsa::kesncd
