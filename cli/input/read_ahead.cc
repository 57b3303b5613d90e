// Blocks on their way from the thread that reads to the one that counts.
#include "cli/input/read_ahead.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orsa::kesncd::cli {

ReadAheadSource::ReadAheadSource(std::unique_ptr<ByteSource> source) : source_(std::move(source)) {
  // All memory is taken here, so the thread never runs out of it by itself.
  for (Block& block : blocks_) block.bytes.resize(kBlockBytes);
  thread_ = std::thread([this] { Run(); });
}

ReadAheadSource::~ReadAheadSource() {
  // Under the mutex, so that the thread cannot miss the news between its look and its wait.
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    isUnwanted_ = true;
  }
  // Either side may be waiting.
  changed_.notify_all();
  // Before the members go, of which the thread makes use.
  thread_.join();
}

void ReadAheadSource::Run() {
  std::exception_ptr failure;
  try {
    // Blocks are numbered from 0; a block's place in the array is its number modulo kBlocks.
    for (std::size_t number = 0;; ++number) {
      {
        std::unique_lock<std::mutex> lock(mutex_);
        // Room for one more, or nobody wants it.
        changed_.wait(lock, [&] { return isUnwanted_ || number < emptied_ + kBlocks; });
        if (isUnwanted_) return;
      }
      // Filled without the mutex: the reader does not look at this block before filled_ says so.
      Block& block = blocks_[number % kBlocks];
      // Small pieces, which some packings give, would be handed over too often.
      block.held = ReadFully(*source_, block.bytes.data(), block.bytes.size());
      // The end of the source; a block that is filled in part goes out like any other.
      if (block.held == 0) break;
      const std::lock_guard<std::mutex> lock(mutex_);
      filled_ = number + 1;
      changed_.notify_all();
    }
  } catch (...) {
    // Thrown in the reader's thread, in place of the bytes that could not be had.
    failure = std::current_exception();
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  isOver_ = true;
  failure_ = std::move(failure);
  changed_.notify_all();
}

std::size_t ReadAheadSource::Read(char* to, std::size_t most) {
  {
    std::unique_lock<std::mutex> lock(mutex_);
    // What was filled goes first, also where a failure or the end comes after it.
    changed_.wait(lock, [this] { return isOver_ || emptied_ < filled_; });
    if (emptied_ == filled_) {
      // Kept, so that another call throws again.
      if (failure_ != nullptr) std::rethrow_exception(failure_);
      return 0;
    }
  }
  // Read without the mutex: the thread does not touch this block before emptied_ says so.
  const Block& block = blocks_[emptied_ % kBlocks];
  const std::size_t got = std::min(most, block.held - given_);
  std::memcpy(to, block.bytes.data() + given_, got);
  given_ += got;
  // Used up: the thread may fill it again.
  if (given_ == block.held) {
    given_ = 0;
    const std::lock_guard<std::mutex> lock(mutex_);
    ++emptied_;
    changed_.notify_all();
  }
  return got;
}

}  // namespace orsa::kesncd::cli
