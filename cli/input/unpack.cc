// One unpacker a format, each fed in blocks, so that memory does not grow with the dump.
#include "cli/input/unpack.h"

#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <array>

#include "cli/input/packed_source.h"
#include "cli/input/tight_packing.h"

namespace orsa::kesncd::cli {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kGzip = "\x1F\x8B"sv;
constexpr std::string_view kZstd = "\x28\xB5\x2F\xFD"sv;
constexpr std::string_view kXz = "\xFD\x37zXZ"sv;
constexpr std::string_view kBzip2 = "BZh"sv;

/// Whether bytes begin a part of a zstd file that holds no data: programs put notes there, also in
/// front of the data.
bool IsSkippableZstd(std::string_view start) {
  return start.size() >= kZstd.size() && (start[0] & 0xF0) == 0x50 &&
         start.substr(1, 3) == "\x2A\x4D\x18"sv;
}

class GzipSource : public PackedSource {
 public:
  GzipSource(std::unique_ptr<ByteSource> packed, const std::string& name)
      : PackedSource(std::move(packed), name) {
    constexpr int kGzipWindow = 15 + 16;
    if (inflateInit2(&state_, kGzipWindow) != Z_OK) throw std::bad_alloc();
  }
  ~GzipSource() override { (void)inflateEnd(&state_); }

  std::size_t Read(char* to, std::size_t most) override {
    const auto room = static_cast<uInt>(std::min<std::size_t>(most, kBlock));
    state_.next_out = reinterpret_cast<Bytef*>(to);
    state_.avail_out = room;
    while (state_.avail_out == room) {
      if (state_.avail_in == 0 && !Refill()) break;
      Inflate();
    }
    return room - state_.avail_out;
  }

 private:
  /// False at the end, which is one only after a complete member.
  bool Refill() {
    const std::string_view block = NextBlock();
    if (block.empty() && !isBetween_) FailCut();
    state_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(block.data()));
    state_.avail_in = static_cast<uInt>(block.size());
    return !block.empty();
  }

  /// Unpacks what fits. Files put after one another are one, and zeros after a file fill the last
  /// block of a tape.
  void Inflate() {
    while (isBetween_ && state_.avail_in > 0 && *state_.next_in == 0) {
      ++state_.next_in;
      --state_.avail_in;
    }
    if (state_.avail_in == 0) return;
    isBetween_ = false;
    const int outcome = inflate(&state_, Z_NO_FLUSH);
    if (outcome == Z_STREAM_END) {
      isBetween_ = true;
      (void)inflateReset(&state_);
    } else if (outcome != Z_OK && outcome != Z_BUF_ERROR) {
      FailDamaged();
    }
  }

  z_stream state_{};
  bool isBetween_ = false;  // members
};

class ZstdSource : public PackedSource {
 public:
  ZstdSource(std::unique_ptr<ByteSource> packed, const std::string& name)
      : PackedSource(std::move(packed), name), state_(ZSTD_createDCtx()) {
    if (state_ == nullptr) throw std::bad_alloc();
    constexpr int kLongestWindow = 31;  // what `zstd --long=31` packs is read too
    (void)ZSTD_DCtx_setParameter(state_.get(), ZSTD_d_windowLogMax, kLongestWindow);
  }

  std::size_t Read(char* to, std::size_t most) override {
    ZSTD_outBuffer out{to, most, 0};
    while (out.pos == 0) {
      if (in_.pos == in_.size && !Refill()) break;
      wanted_ = ZSTD_decompressStream(state_.get(), &out, &in_);
      if (ZSTD_isError(wanted_) != 0) FailDamaged();
    }
    return out.pos;
  }

 private:
  struct Free {
    void operator()(ZSTD_DCtx* state) const { (void)ZSTD_freeDCtx(state); }
  };

  bool Refill() {
    const std::string_view block = NextBlock();
    if (block.empty() && wanted_ != 0) FailCut();
    in_ = {block.data(), block.size(), 0};
    return !block.empty();
  }

  std::unique_ptr<ZSTD_DCtx, Free> state_;
  ZSTD_inBuffer in_{};
  std::size_t wanted_ = 0;  // 0: between two frames
};

}  // namespace

UnpackedSource Unpack(std::unique_ptr<ByteSource> source, const std::string& name) {
  std::string start(kXz.size(), '\0');
  start.resize(ReadFully(*source, start.data(), start.size()));
  const std::string first = start;
  auto whole = std::make_unique<ResumedSource>(std::move(start), std::move(source));
  if (first.starts_with(kGzip)) {
    return {std::make_unique<GzipSource>(std::move(whole), name), "gzip", {}, {}};
  }
  if (first.starts_with(kZstd) || IsSkippableZstd(first)) {
    return {std::make_unique<ZstdSource>(std::move(whole), name), "zstd", {}, {}};
  }
  if (first.starts_with(kXz)) return {MakeXzSource(std::move(whole), name), "xz", {}, {}};
  if (first.starts_with(kBzip2)) return {MakeBzip2Source(std::move(whole), name), "bzip2", {}, {}};
  return {std::move(whole), "", {}, {}};
}

}  // namespace orsa::kesncd::cli
