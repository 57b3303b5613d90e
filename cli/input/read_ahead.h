// Unpacks a dump while what was unpacked before is counted.
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
/// where its bytes would have come.
class ReadAheadSource : public ByteSource {
 public:
  explicit ReadAheadSource(std::unique_ptr<ByteSource> source);
  /// Waits for the block that is being read.
  ~ReadAheadSource() override;

  std::size_t Read(char* to, std::size_t most) override;

 private:
  static constexpr std::size_t kBlockBytes = std::size_t{1} << 18;
  static constexpr std::size_t kBlocks = 8;
  struct Block {
    std::vector<char> bytes;
    std::size_t held = 0;
  };

  void Run();

  const std::unique_ptr<ByteSource> source_;
  std::array<Block, kBlocks> blocks_;
  std::size_t given_ = 0;  // of the block that is handed out
  // Under the mutex: blocks by number, which stand in the array one after the other.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t filled_ = 0;
  std::size_t emptied_ = 0;
  bool isUnwanted_ = false;
  bool isOver_ = false;
  std::exception_ptr failure_;
  std::thread thread_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_READ_AHEAD_H_
