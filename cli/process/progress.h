// How far the reading of a dump has come, shown while it goes on.
//
// What the user sees, on a terminal only, renewed in place and gone before anything else is
// written:
//
//   sim.vcd: 37 %, 812 MB/s, 3 s left
//
// A count that takes less than half a second shows nothing. Three ways lead to it: bytes that pass
// through a source (ShownSource), parts of a file that several threads read (PlainFile in
// dump_input.cc), and files that the library opens by itself (ReadingWatch).
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

/// "37 %, 812 MB/s, 3 s left"; without a total "1400 MB, 812 MB/s". Bytes and seconds; `total` is
/// the size of the file, packed or not, of which `done` were read.
std::string ProgressText(std::uint64_t done, std::uint64_t total, double seconds);

/// A line on standard error that appears when half a second has gone and goes at the end. Construct
/// at the start of the reading, Show as it goes on, destroy before other output. Not for several
/// threads at once: who has them takes turns.
class ProgressLine {
 public:
  /// A total of 0 is not known. `name` is what the line begins with; of a long one its end is
  /// shown.
  ProgressLine(const std::string& name, std::uint64_t total);
  /// Takes the line off the terminal if it was shown.
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  /// To be called as often as one likes. `done` is the number of bytes so far. Does nothing but
  /// look at the clock until it is time.
  void Show(std::uint64_t done);

 private:
  using Clock = std::chrono::steady_clock;
  /// Writes a text over the one that is there; an empty one takes the line away.
  void Replace(const std::string& text);

  const std::string name_;
  const std::uint64_t total_;
  const Clock::time_point start_ = Clock::now();
  // When the line may change next.
  Clock::time_point next_;
  std::size_t columns_ = 0;  // characters that the terminal shows
};

/// Passes a source's bytes on and shows how many there were. Owns the source. The bytes are counted
/// as they come from it: of a packed dump the packed ones, as long as it is put around the packed
/// source.
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

/// Shows how much of a file the library has read, as long as the object lives. The library reads by
/// stdio and tells nobody how far it is; the kernel does. From construction on a thread looks every
/// 200 ms; the destructor ends and joins it.
class ReadingWatch {
 public:
  ReadingWatch(const std::string& name, std::uint64_t total);
  ~ReadingWatch();
  ReadingWatch(const ReadingWatch&) = delete;
  ReadingWatch& operator=(const ReadingWatch&) = delete;

 private:
  /// The thread's work.
  void Run();

  ProgressLine line_;
  // Under mutex_: the reading came to its end.
  bool isOver_ = false;
  std::mutex mutex_;
  std::condition_variable over_;
  // Last of all members: it starts in the constructor and uses the others.
  std::thread thread_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_PROGRESS_H_
