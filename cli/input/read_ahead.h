// Unpacks a dump while what was unpacked before is counted.
//
// Unpacking takes about as long as counting, so two threads may halve the time of a packed dump.
// (Plain files are cut into parts instead, which several threads count.)
#ifndef KESNCD_CLI_INPUT_READ_AHEAD_H_
#define KESNCD_CLI_INPUT_READ_AHEAD_H_

#include <array>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// Reads a source in a thread of its own, a few blocks ahead. What the source throws is thrown
/// where its bytes would have come. Owns the source, which nobody else may use from construction
/// on. Read is for one thread at a time. A destructor that comes early makes the thread stop at its
/// next block.
class ReadAheadSource : public ByteSource {
 public:
  /// Starts the thread.
  explicit ReadAheadSource(std::unique_ptr<ByteSource> source);
  /// Waits for the block that is being read.
  ~ReadAheadSource() override;

  std::size_t Read(char* to, std::size_t most) override;

 private:
  // 256 KiB a block and 2 MiB in all: with less the threads would wait for one another more often.
  static constexpr std::size_t kBlockBytes = std::size_t{1} << 18;
  static constexpr std::size_t kBlocks = 8;
  // How many of the bytes are good; a block is never handed over empty.
  struct Block {
    std::vector<char> bytes;
    std::size_t held = 0;
  };

  /// The thread's work.
  void Run();

  const std::unique_ptr<ByteSource> source_;
  std::array<Block, kBlocks> blocks_;
  // Only of the thread that reads.
  std::size_t given_ = 0;  // of the block that is handed out
  // Under the mutex: blocks by number, which stand in the array one after the other.
  std::mutex mutex_;
  std::condition_variable changed_;
  // How many blocks were filled, ever.
  std::size_t filled_ = 0;
  // How many of them were used up; filled_ - emptied_ are waiting, kBlocks at most.
  std::size_t emptied_ = 0;
  // The destructor wants the thread to end.
  bool isUnwanted_ = false;
  // The thread fills no more, at the end or after a failure.
  bool isOver_ = false;
  // Thrown to the reader after the last block that was filled.
  std::exception_ptr failure_;
  // Last of all members: it starts in the constructor and uses the others.
  std::thread thread_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_READ_AHEAD_H_
