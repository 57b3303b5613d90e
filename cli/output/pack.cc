// Packing by zlib.
#include "cli/output/pack.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>

namespace orsa::kesncd::cli {

/// 64 KiB of packed bytes go to the sink at a time.
struct GzipSink::State {
  z_stream stream{};
  std::array<char, std::size_t{1} << 16> packed{};
};

GzipSink::GzipSink(ByteSink& to) : to_(to), state_(std::make_unique<State>()) {
  // zlib's way to ask for gzip rather than its own format: 16 is added to the window's bits. A
  // header that is not set holds no time, which is why the same result always has the same bytes.
  constexpr int kGzipWindow = 15 + 16;
  // zlib's default, 256 KiB of working memory.
  constexpr int kMemory = 8;
  if (deflateInit2(&state_->stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzipWindow, kMemory,
                   Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
}

GzipSink::~GzipSink() {
  (void)deflateEnd(&state_->stream);
}

void GzipSink::Write(std::string_view bytes) {
  constexpr std::size_t kMost = std::numeric_limits<uInt>::max();  // that zlib takes at once
  while (!bytes.empty()) {
    const std::size_t taken = std::min(bytes.size(), kMost);
    Pack(bytes.substr(0, taken), false);
    bytes.remove_prefix(taken);
  }
}

void GzipSink::Finish() {
  Pack({}, true);
}

void GzipSink::Pack(std::string_view bytes, bool isEnd) {
  z_stream& stream = state_->stream;
  // zlib's interface is older than const; it only reads.
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  do {
    stream.next_out = reinterpret_cast<Bytef*>(state_->packed.data());
    stream.avail_out = static_cast<uInt>(state_->packed.size());
    // Cannot fail here: the state is good, and there is always room for output.
    (void)deflate(&stream, isEnd ? Z_FINISH : Z_NO_FLUSH);
    // Often nothing: zlib gathers first.
    to_.Write({state_->packed.data(), state_->packed.size() - stream.avail_out});
  } while (stream.avail_out == 0);  // there may be more
}

}  // namespace orsa::kesncd::cli
