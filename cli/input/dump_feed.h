// Gives the library, which opens a path, bytes that stand in no file.
#ifndef KESNCD_CLI_INPUT_DUMP_FEED_H_
#define KESNCD_CLI_INPUT_DUMP_FEED_H_

#include <exception>
#include <functional>
#include <string>
#include <thread>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// A pipe with a thread of its own that fills it. The library opens `path`, reads as far as it
/// likes and then `Finish` is called. Nothing is stored on a disk, and no file can come to stand
/// beside the path.
class DumpFeed {
 public:
  /// Starts `write` at once.
  explicit DumpFeed(std::function<void(ByteSink&)> write);
  /// Lets go of what was not read.
  ~DumpFeed();
  DumpFeed(const DumpFeed&) = delete;
  DumpFeed& operator=(const DumpFeed&) = delete;

  const std::string& path() const { return path_; }
  /// Waits for the thread, and throws what `write` threw.
  void Finish();

 private:
  void Run(const std::function<void(ByteSink&)>& write, int writeEnd) noexcept;
  void Join();

  int readEnd_ = -1;
  std::string path_;
  std::exception_ptr failure_;
  std::thread thread_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_DUMP_FEED_H_
