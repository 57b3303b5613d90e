// Unpacking xz and bzip2. Files put one after the other are one, as with gzip.
#include "cli/input/tight_packing.h"

#include <bzlib.h>
#include <lzma.h>

#include <algorithm>
#include <new>

#include "cli/input/packed_source.h"

namespace orsa::kesncd::cli {

namespace {

/// Memory is that of the dictionary that the file asks for, 64 MiB for xz -9.
class XzSource : public PackedSource {
 public:
  XzSource(std::unique_ptr<ByteSource> packed, const std::string& name)
      : PackedSource(std::move(packed), name) {
    // LZMA_CONCATENATED: several files in one are read as one.
    constexpr std::uint64_t kMostMemory = std::uint64_t{1} << 31;  // a dictionary may ask for more
    if (lzma_stream_decoder(&state_, kMostMemory, LZMA_CONCATENATED) != LZMA_OK) {
      throw std::bad_alloc();
    }
  }
  ~XzSource() override { lzma_end(&state_); }

  std::size_t Read(char* to, std::size_t most) override {
    state_.next_out = reinterpret_cast<std::uint8_t*>(to);
    state_.avail_out = most;
    // As soon as anything came out the caller gets it; liblzma may give none for a while.
    while (!isOver_ && state_.avail_out == most) {
      if (state_.avail_in == 0 && !isInputOver_) Refill();
      // LZMA_FINISH says that there is no more input, which liblzma must know to tell the end.
      Take(lzma_code(&state_, isInputOver_ ? LZMA_FINISH : LZMA_RUN));
    }
    return most - state_.avail_out;
  }

 private:
  // An empty block is the end of the packed bytes.
  void Refill() {
    const std::string_view block = NextBlock();
    isInputOver_ = block.empty();
    state_.next_in = reinterpret_cast<const std::uint8_t*>(block.data());
    state_.avail_in = block.size();
  }

  /// What an outcome of liblzma means here; those that are none return.
  void Take(lzma_ret outcome) {
    if (outcome == LZMA_STREAM_END) {
      // The end of the last stream: with LZMA_CONCATENATED only when the input is over too.
      isOver_ = true;
    } else if (outcome == LZMA_MEMLIMIT_ERROR) {
      Fail("unpacking it takes more than 2 GiB of memory");
    } else if (outcome == LZMA_MEM_ERROR) {
      throw std::bad_alloc();
    } else if (outcome == LZMA_BUF_ERROR && isInputOver_) {
      // No progress was possible and there is no more input: something is missing.
      FailCut();
    } else if (outcome != LZMA_OK && outcome != LZMA_BUF_ERROR) {
      // LZMA_BUF_ERROR otherwise is only the wish for more input or room.
      FailCorrupt();
    }
  }

  lzma_stream state_ = LZMA_STREAM_INIT;
  bool isInputOver_ = false;
  bool isOver_ = false;
};

/// Memory is 4 MB at most, by the format.
class Bzip2Source : public PackedSource {
 public:
  Bzip2Source(std::unique_ptr<ByteSource> packed, const std::string& name)
      : PackedSource(std::move(packed), name) {
    Begin();
  }
  ~Bzip2Source() override { (void)BZ2_bzDecompressEnd(&state_); }

  std::size_t Read(char* to, std::size_t most) override {
    // bzip2 counts room in 32 bits.
    const auto room = static_cast<unsigned>(std::min<std::size_t>(most, kBlock));
    state_.next_out = to;
    state_.avail_out = room;
    while (state_.avail_out == room) {
      if (state_.avail_in == 0 && !Refill()) break;
      // Only when there are bytes of another stream: at the end there is none to begin.
      if (isBetween_) BeginNext();
      Take(BZ2_bzDecompress(&state_));
    }
    return room - state_.avail_out;
  }

 private:
  void Begin() {
    // 0 and 0: no messages, the usual memory.
    if (BZ2_bzDecompressInit(&state_, 0, 0) != BZ_OK) throw std::bad_alloc();
  }

  /// A stream of bzip2 is not used twice; what was read and not unpacked goes to the next one.
  void BeginNext() {
    const bz_stream rest = state_;
    (void)BZ2_bzDecompressEnd(&state_);
    state_ = {};
    Begin();
    state_.next_in = rest.next_in;
    state_.avail_in = rest.avail_in;
    state_.next_out = rest.next_out;
    state_.avail_out = rest.avail_out;
    isBetween_ = false;
  }

  /// False at the end of the packed bytes, which must be one between two streams.
  bool Refill() {
    const std::string_view block = NextBlock();
    if (block.empty() && !isBetween_) FailCut();
    // bzip2's interface is older than const; it only reads.
    state_.next_in = const_cast<char*>(block.data());
    state_.avail_in = static_cast<unsigned>(block.size());
    return !block.empty();
  }

  void Take(int outcome) {
    // What is left of the block may belong to the next stream.
    if (outcome == BZ_STREAM_END) {
      isBetween_ = true;
    } else if (outcome == BZ_MEM_ERROR) {
      throw std::bad_alloc();
    } else if (outcome != BZ_OK) {
      FailCorrupt();
    }
  }

  bz_stream state_{};
  bool isBetween_ = false;  // a stream ended, and another may follow
};

}  // namespace

std::unique_ptr<ByteSource> MakeXzSource(std::unique_ptr<ByteSource> packed,
                                         const std::string& name) {
  return std::make_unique<XzSource>(std::move(packed), name);
}

std::unique_ptr<ByteSource> MakeBzip2Source(std::unique_ptr<ByteSource> packed,
                                            const std::string& name) {
  return std::make_unique<Bzip2Source>(std::move(packed), name);
}

}  // namespace orsa::kesncd::cli
