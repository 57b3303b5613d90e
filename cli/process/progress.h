// How far the reading of a dump has come, shown while it goes on.
#ifndef KESNCD_CLI_PROCESS_PROGRESS_H_
#define KESNCD_CLI_PROCESS_PROGRESS_H_

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// "37 %, 812 MB/s, 3 s left"; without a total "1400 MB, 812 MB/s".
std::string ProgressText(std::uint64_t done, std::uint64_t total, double seconds);

/// A line on standard error that appears when half a second has gone and goes at the end.
class ProgressLine {
 public:
  /// A total of 0 is not known.
  ProgressLine(const std::string& name, std::uint64_t total);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  /// To be called as often as one likes.
  void Show(std::uint64_t done);

 private:
  using Clock = std::chrono::steady_clock;
  void Replace(const std::string& text);

  const std::string name_;
  const std::uint64_t total_;
  const Clock::time_point start_ = Clock::now();
  Clock::time_point next_;
  std::size_t columns_ = 0;  // of what stands there
};

/// Passes a source's bytes on and shows how many there were.
class ShownSource : public ByteSource {
 public:
  ShownSource(std::unique_ptr<ByteSource> source, const std::string& name, std::uint64_t total)
      : source_(std::move(source)), line_(name, total) {}

  std::size_t Read(char* to, std::size_t most) override;

 private:
  const std::unique_ptr<ByteSource> source_;
  ProgressLine line_;
  std::uint64_t done_ = 0;
};

/// Shows how much of a file the library has read, as long as the object lives.
class ReadingWatch {
 public:
  ReadingWatch(const std::string& name, std::uint64_t total);
  ~ReadingWatch();
  ReadingWatch(const ReadingWatch&) = delete;
  ReadingWatch& operator=(const ReadingWatch&) = delete;

 private:
  void Run();

  ProgressLine line_;
  bool isOver_ = false;
  std::mutex mutex_;
  std::condition_variable over_;
  std::thread thread_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_PROGRESS_H_
