// Threads for the stretches of a dump.
#include "free_format/parted_reading.h"

#include <thread>

namespace orsa::kesncd {

std::vector<StretchRange> FileDump::Cut(std::uint32_t parts) {
  std::vector<StretchRange> stretches = BodyCuts(file(), words_.Offset(), parts).Stretches();
  std::vector<std::uint64_t> ends;
  for (const StretchRange& stretch : stretches) ends.push_back(stretch.end);
  EndAt(ends);
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
