#include "free_format/dump_words.h"

#include <algorithm>
#include <cstring>

namespace orsa::kesncd {

namespace {

#ifdef KESNCD_SMALL_BLOCKS
constexpr std::size_t kBlock = 4200;  // short dumps meet the ends of blocks
constexpr std::size_t kKept = 2000;
#else
constexpr std::size_t kBlock = std::size_t{1} << 18;
// Of a word that goes on past a block; what is beyond is dropped.
constexpr std::size_t kKept = std::size_t{1} << 16;
#endif
constexpr std::size_t kFirstBytes = 4096;  // to know a format by
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

DumpWords::DumpWords(ByteSource& source) : source_(source), block_(kBlock + 2 + kReadAhead) {
  SetEnd(0);
  while (FirstBytes().size() < kFirstBytes && Refill(block_.data())) {
  }
  if (FirstBytes().substr(0, kByteOrderMark.size()) == kByteOrderMark) at_ += kByteOrderMark.size();
}

std::string_view DumpWords::FirstBytes() const {
  return {block_.data(), static_cast<std::size_t>(end_ - block_.data())};
}

void DumpWords::SetEnd(std::size_t held) {
  at_ = block_.data();
  end_ = at_ + held;
  block_[held] = ' ';
  block_[held + 1] = '!';
}

/// Reads more behind what is kept, which moves to the front; false at the end of the dump.
bool DumpWords::Refill(const char* keep) {
  const auto kept = static_cast<std::size_t>(end_ - keep);
  std::memmove(block_.data(), keep, kept);
  const std::size_t got = source_.Read(block_.data() + kept, kBlock - kept);
  SetEnd(kept + got);
  return got > 0;
}

/// Goes on with a word that reaches the end of the block.
void DumpWords::FinishWord() {
  bool more = true;
  while (more && at_ == end_) {
    const std::size_t kept = std::min(length_, kKept);
    end_ = word_ + kept;
    more = Refill(word_);
    word_ = block_.data();
    at_ = word_ + kept;
    while (!IsBlank(*at_)) ++at_;
    length_ = static_cast<std::size_t>(at_ - word_);
  }
}

}  // namespace orsa::kesncd
