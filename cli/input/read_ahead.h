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
  struct Block {
    std::vector<char> bytes;
    std::size_t held = 0;  // how many of them are good; never 0 when it is handed over
  };

  /// The thread's work.
  void Run();

  const std::unique_ptr<ByteSource> source_;
  std::array<Block, kBlocks> blocks_;
  // Bytes of the open block that were given; only for who calls Read.
  std::size_t given_ = 0;
  // Guards all that follows but the thread.
  std::mutex mutex_;
  std::condition_variable changed_;
  // Blocks that were filled and used up, ever; those between wait, kBlocks at most.
  std::size_t filled_ = 0;
  std::size_t emptied_ = 0;
  bool isUnwanted_ = false;  // the destructor wants the thread to end
  bool isOver_ = false;      // the thread fills no more, at the end or after a failure
  // Thrown to the reader after the last block that was filled.
  std::exception_ptr failure_;
  // Last of all members: it starts in the constructor and uses the others.
  std::thread thread_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_READ_AHEAD_H_
