// Lines from the stream's own buffer or from blocks.
#include "text/line_source.h"

#include <algorithm>
#include <cstring>

#include "text/stream.h"

namespace orsa::kesncd {

LineSource::LineSource(std::FILE* stream, std::size_t bufferBytes, std::size_t blockBytes)
    : stream_(stream), blockBytes_(blockBytes), line_(bufferBytes) {}

LineSource::~LineSource() {
  const auto ahead = static_cast<long>(held_ - taken_);
  // A pipe cannot take anything back; its reader has then read ahead. Reading on from another place
  // than the last line taken would lose value changes to the caller.
  if (ahead > 0) (void)std::fseek(stream_, -ahead, SEEK_CUR);
}

void LineSource::ReadBlocks() {
  // The block is what tells the two ways of reading apart (see Next), so it exists from here on
  // only.
  if (block_.empty()) block_.resize(blockBytes_ + kPadding);
}

const char* LineSource::Next() {
  if (stream_ == nullptr) return nullptr;
  if (!block_.empty()) return NextOfBlock();
  return NextOfStream();
}

/// As fgets, but nothing is lost when a signal interrupts the reading.
const char* LineSource::NextOfStream() {
  const std::size_t longest = line_.size() - 1;
  std::size_t length = 0;
  // Whole runs are taken from what the stream has read ahead; only where it has nothing ready is it
  // asked for one character, which makes it read on.
  while (length < longest && (length == 0 || line_[length - 1] != '\n')) {
    // An empty view: the stream is at the end of its own buffer, or the C library shows none.
    const std::string_view ahead = ReadAhead(stream_).substr(0, longest - length);
    if (ahead.empty()) {
      const int c = ReadCharacter(stream_);
      if (c == EOF) {
        failed_ = HasFailed(stream_);
        break;
      }
      line_[length++] = static_cast<char>(c);
      continue;
    }
    const std::size_t newline = ahead.find('\n');
    const std::size_t taken = newline == std::string_view::npos ? ahead.size() : newline + 1;
    std::memcpy(line_.data() + length, ahead.data(), taken);
    TakeAhead(stream_, taken);
    length += taken;
  }
  // What was read before an error or the end is a line without a newline.
  if (length == 0) return nullptr;
  line_[length] = '\0';
  return line_.data();
}

/// Cuts a line from the block as fgets would from the stream.
const char* LineSource::NextOfBlock() {
  const std::size_t longest = line_.size() - 1;
  std::size_t length = 0;
  // As long as the block may end inside the line, more is read; a line that is as long as lines may
  // be is complete without a newline.
  do {
    const std::string_view text = Block().substr(0, longest);
    const std::size_t newline = text.find('\n');
    length = newline == std::string_view::npos ? text.size() : newline + 1;
    if (newline != std::string_view::npos || length == longest) break;
  } while (Refill());
  if (length == 0) return nullptr;
  // A line needs a terminator, and the block has no room for one between its lines.
  std::memcpy(line_.data(), block_.data() + taken_, length);
  line_[length] = '\0';
  taken_ += length;
  return line_.data();
}

/// Moves what is left of the block to its front and reads on after it; false at the end. A line
/// that the end of the block cuts is whole then, so a block must be larger than a line.
bool LineSource::Refill() {
  std::copy(block_.begin() + static_cast<std::ptrdiff_t>(taken_),
            block_.begin() + static_cast<std::ptrdiff_t>(held_), block_.begin());
  held_ -= taken_;
  taken_ = 0;
  const std::size_t wanted = blockBytes_ - held_;
  std::size_t got = 0;
  bool interrupted = false;
  // A signal's interruption that came back with bytes is no matter: they are used, and the next
  // call reads on. Without any, the read is repeated, or it would look like the end of the dump.
  do {
    got = std::fread(block_.data() + held_, 1, wanted, stream_);
    interrupted = got < wanted && WasInterrupted(stream_);
  } while (interrupted && got == 0);
  if (got < wanted && !interrupted && HasFailed(stream_)) failed_ = true;
  held_ += got;
  return got > 0;
}

}  // namespace orsa::kesncd
