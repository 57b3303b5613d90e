// One unpacker a format, each fed in blocks, so that memory does not grow with the dump.
#include "cli/input/unpack.h"

#include <zlib.h>
#include <zstd.h>

#include <algorithm>

#include "cli/input/packed_source.h"
#include "cli/input/tight_packing.h"

namespace orsa::kesncd::cli {

namespace {

using namespace std::string_view_literals;

// The first bytes of each format ("magic numbers"); no VCD begins so.
constexpr std::string_view kGzip = "\x1F\x8B"sv;
constexpr std::string_view kZstd = "\x28\xB5\x2F\xFD"sv;
constexpr std::string_view kXz = "\xFD\x37zXZ"sv;
constexpr std::string_view kBzip2 = "BZh"sv;

/// Whether bytes begin a part of a zstd file that holds no data: programs put notes there, also in
/// front of the data. Their first bytes are 0x184D2A50 to 0x184D2A5F, least one first: sixteen
/// kinds.
bool IsSkippableZstd(std::string_view start) {
  return start.size() >= kZstd.size() && (start[0] & 0xF0) == 0x50 &&
         start.substr(1, 3) == "\x2A\x4D\x18"sv;
}

/// zlib's inflate for gzip files. Memory is a window of 32 KiB and a block.
class GzipSource : public PackedSource {
 public:
  GzipSource(std::unique_ptr<ByteSource> packed, const std::string& name)
      : PackedSource(std::move(packed), name) {
    // zlib's way to ask for gzip alone: the largest window, and 16.
    constexpr int kGzipWindow = 15 + 16;
    if (inflateInit2(&state_, kGzipWindow) != Z_OK) throw std::bad_alloc();
  }
  ~GzipSource() override { (void)inflateEnd(&state_); }

  std::size_t Read(char* to, std::size_t most) override {
    // zlib counts room in 32 bits.
    const auto room = static_cast<uInt>(std::min<std::size_t>(most, kBlock));
    state_.next_out = reinterpret_cast<Bytef*>(to);
    state_.avail_out = room;
    // inflate may take input for a while before it gives any output.
    while (state_.avail_out == room) {
      if (state_.avail_in == 0 && !Refill()) break;
      Inflate();
    }
    return room - state_.avail_out;
  }

 private:
  /// False at the end, which is one only after a complete member.
  bool Refill() {
    // A block that is empty is the end of the packed bytes.
    const std::string_view block = NextBlock();
    if (block.empty() && !isBetween_) FailCut();
    state_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(block.data()));
    state_.avail_in = static_cast<uInt>(block.size());
    return !block.empty();
  }

  /// Unpacks what fits. Files put after one another are one, and zeros after a file fill the last
  /// block of a tape.
  void Inflate() {
    // Between members only: inside of one, zeros are data.
    while (isBetween_ && state_.avail_in > 0 && *state_.next_in == 0) {
      ++state_.next_in;
      --state_.avail_in;
    }
    if (state_.avail_in == 0) return;
    isBetween_ = false;
    const int outcome = inflate(&state_, Z_NO_FLUSH);
    // The next member, if there is one, begins like a new file.
    if (outcome == Z_STREAM_END) {
      isBetween_ = true;
      (void)inflateReset(&state_);
    } else if (outcome != Z_OK && outcome != Z_BUF_ERROR) {
      // Z_BUF_ERROR is only the wish for more input.
      FailCorrupt();
    }
  }

  z_stream state_{};
  // At the start it is false: an empty file is no gzip file, and does not get here.
  bool isBetween_ = false;  // members
};

/// Libzstd's streaming reader. Memory is the window that the file asks for, a few MiB usually.
class ZstdSource : public PackedSource {
 public:
  ZstdSource(std::unique_ptr<ByteSource> packed, const std::string& name)
      : PackedSource(std::move(packed), name), state_(ZSTD_createDCtx()) {
    if (state_ == nullptr) throw std::bad_alloc();
    // 2 GiB, the most that libzstd takes; without this it would refuse more than 128 MiB.
    constexpr int kLongestWindow = 31;  // what `zstd --long=31` packs is read too
    (void)ZSTD_DCtx_setParameter(state_.get(), ZSTD_d_windowLogMax, kLongestWindow);
  }

  std::size_t Read(char* to, std::size_t most) override {
    ZSTD_outBuffer out{to, most, 0};
    // A call may give nothing, as at the start of a frame.
    while (out.pos == 0) {
      if (in_.pos == in_.size && !Refill()) break;
      // 0 when a frame is complete, else a hint of how much comes; an error is told apart by
      // ZSTD_isError.
      wanted_ = ZSTD_decompressStream(state_.get(), &out, &in_);
      if (ZSTD_isError(wanted_) != 0) FailCorrupt();
    }
    return out.pos;
  }

 private:
  // For unique_ptr.
  struct Free {
    void operator()(ZSTD_DCtx* state) const { (void)ZSTD_freeDCtx(state); }
  };

  /// False at the end, which must be one between two frames.
  bool Refill() {
    const std::string_view block = NextBlock();
    if (block.empty() && wanted_ != 0) FailCut();
    in_ = {block.data(), block.size(), 0};
    return !block.empty();
  }

  std::unique_ptr<ZSTD_DCtx, Free> state_;
  // Into the block of the base class; used up where pos is size.
  ZSTD_inBuffer in_{};
  std::size_t wanted_ = 0;  // 0: between two frames
};

}  // namespace

UnpackedSource Unpack(std::unique_ptr<ByteSource> source, const std::string& name) {
  // Xz has the longest of the marks, 5 bytes.
  std::string start(kXz.size(), '\0');
  start.resize(ReadFully(*source, start.data(), start.size()));
  const std::string first = start;
  // The bytes are put back: each unpacker wants its own first bytes too.
  auto whole = std::make_unique<ResumedSource>(std::move(start), std::move(source));
  if (first.starts_with(kGzip)) {
    return {std::make_unique<GzipSource>(std::move(whole), name), "gzip", {}, {}};
  }
  if (first.starts_with(kZstd) || IsSkippableZstd(first)) {
    return {std::make_unique<ZstdSource>(std::move(whole), name), "zstd", {}, {}};
  }
  if (first.starts_with(kXz)) return {MakeXzSource(std::move(whole), name), "xz", {}, {}};
  if (first.starts_with(kBzip2)) return {MakeBzip2Source(std::move(whole), name), "bzip2", {}, {}};
  // Whatever it is, it is read as it is.
  return {std::move(whole), "", {}, {}};
}

}  // namespace orsa::kesncd::cli
