// Blocks on their way from the thread that reads to the one that counts.
#include "cli/input/read_ahead.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orsa::kesncd::cli {

ReadAheadSource::ReadAheadSource(std::unique_ptr<ByteSource> source) : source_(std::move(source)) {
  for (Block& block : blocks_) block.bytes.resize(kBlockBytes);
  thread_ = std::thread([this] { Run(); });
}

ReadAheadSource::~ReadAheadSource() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    isUnwanted_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void ReadAheadSource::Run() {
  std::exception_ptr failure;
  try {
    for (std::size_t number = 0;; ++number) {
      {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return isUnwanted_ || number < emptied_ + kBlocks; });
        if (isUnwanted_) return;
      }
      Block& block = blocks_[number % kBlocks];
      // Small pieces, which some packings give, would be handed over too often.
      block.held = ReadFully(*source_, block.bytes.data(), block.bytes.size());
      if (block.held == 0) break;
      const std::lock_guard<std::mutex> lock(mutex_);
      filled_ = number + 1;
      changed_.notify_all();
    }
  } catch (...) {
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
    changed_.wait(lock, [this] { return isOver_ || emptied_ < filled_; });
    if (emptied_ == filled_) {
      if (failure_ != nullptr) std::rethrow_exception(failure_);
      return 0;
    }
  }
  const Block& block = blocks_[emptied_ % kBlocks];
  const std::size_t got = std::min(most, block.held - given_);
  std::memcpy(to, block.bytes.data() + given_, got);
  given_ += got;
  if (given_ == block.held) {
    given_ = 0;
    const std::lock_guard<std::mutex> lock(mutex_);
    ++emptied_;
    changed_.notify_all();
  }
  return got;
}

}  // namespace orsa::kesncd::cli
