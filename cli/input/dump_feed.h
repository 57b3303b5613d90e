// Gives the library, which opens a path, bytes that stand in no file.
//
// Why a pipe and no temporary file: an unpacked dump may be a hundred gigabytes, the library only
// ever reads forward, and a pipe's path (/proc/self/fd/7) is one beside which nothing can be made:
// the library would leave an activity file beside the path of a dump.
#ifndef KESNCD_CLI_INPUT_DUMP_FEED_H_
#define KESNCD_CLI_INPUT_DUMP_FEED_H_

#include <exception>
#include <functional>
#include <string>
#include <thread>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// A pipe with a thread of its own that fills it. Calling order: construct, let the library open
/// path() once and read, Finish. Without Finish the destructor ends the thread and what it threw is
/// forgotten.
class DumpFeed {
 public:
  /// Starts `write` at once. What it writes goes to the pipe; it runs in the new thread, so it must
  /// not use what others use meanwhile.
  explicit DumpFeed(std::function<void(ByteSink&)> write);
  /// Lets go of what was not read. Waits for the thread, which a closed pipe ends.
  ~DumpFeed();
  DumpFeed(const DumpFeed&) = delete;
  DumpFeed& operator=(const DumpFeed&) = delete;

  /// May be opened as long as the object lives, and before Finish.
  const std::string& path() const { return path_; }
  /// Waits for the thread, and throws what `write` threw. To be called when the library has closed
  /// its end. That it did not read all is no error.
  void Finish();

 private:
  /// The thread's work; nothing may leave it but by failure_.
  void Run(const std::function<void(ByteSink&)>& write, int writeEnd) noexcept;
  void Join();

  // Keeps the pipe open until somebody else has opened the path; -1 when it is closed.
  int readEnd_ = -1;
  std::string path_;
  // Set by the thread, read after it was joined.
  std::exception_ptr failure_;
  std::thread thread_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_DUMP_FEED_H_
