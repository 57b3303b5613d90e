// Words that reach over the end of a block, and what becomes of very long ones.
#include "free_format/dump_words.h"

#include <algorithm>
#include <cstring>

namespace orsa::kesncd {

namespace {

// More than any magic number needs, and enough of a text to see what it is.
constexpr std::size_t kFirstBytes = 4096;  // to know a format by
// Some editors put it in front.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
// After the last byte: a blank and a letter, and what scans and look-ups may read.
constexpr std::size_t kAfter = 2 + kScanPadding;
static_assert(kScanPadding >= DumpWords::kReadAhead);

}  // namespace

/// The first block is needed at once: its bytes say what the file is.
DumpWords::DumpWords(ByteSource& source, std::size_t block, std::size_t kept)
    : source_(source),
      readAtOnce_(block),
      leastKept_(kept),
      longest_(kept),
      block_(block + kAfter) {
  SetEnd(0);
  // A pipe may give few bytes at a time.
  while (FirstBytes().size() < std::min(kFirstBytes, readAtOnce_) && Refill(block_.data())) {
  }
  if (FirstBytes().substr(0, kByteOrderMark.size()) == kByteOrderMark) at_ += kByteOrderMark.size();
}

/// Applies to words that are taken from now on.
void DumpWords::SetLongest(std::size_t characters) {
  longest_ = std::max(leastKept_, characters);
}

std::string_view DumpWords::FirstBytes() const {
  return {block_.data(), static_cast<std::size_t>(end_ - block_.data())};
}

/// What lies in the block from there on is dropped; the source will give it again, or other bytes.
std::uint64_t DumpWords::ForgetFrom(std::uint64_t offset) {
  if (offset >= read_) return read_;
  const char* const at = at_;
  // SetEnd also sets the place, which stays here.
  SetEnd(static_cast<std::size_t>(end_ - block_.data()) - (read_ - offset));
  at_ = at;
  read_ = offset;
  return offset;
}

/// The blank ends a word at the end of the block, the letter ends a run of blanks: neither loop
/// needs a check for the end.
void DumpWords::SetEnd(std::size_t held) {
  at_ = block_.data();
  end_ = at_ + held;
  block_[held] = ' ';
  block_[held + 1] = '!';
}

/// Reads more after what is kept, which moves to the front; false at the end of the dump. `keep` is
/// what must stay: the start of an unfinished word, or the end of the block for none.
bool DumpWords::Refill(const char* keep) {
  const auto kept = static_cast<std::size_t>(end_ - keep);
  if (keep != block_.data()) std::memmove(block_.data(), keep, kept);
  const std::size_t free = block_.size() - kAfter - kept;
  // A long word gets a block that can hold as much again, so that it is moved but few times.
  if (free < kept || free == 0) block_.resize(2 * kept + readAtOnce_ + kAfter);
  const std::size_t got = source_.Read(block_.data() + kept, block_.size() - kAfter - kept);
  SetEnd(kept + got);
  read_ += got;
  return got > 0;
}

/// Goes on with a word that reaches the end of the block. Its start is kept at the front of the
/// block, and more is read after it, until a blank comes.
void DumpWords::FinishWord() {
  at_ = end_;
  length_ = static_cast<std::size_t>(at_ - word_);
  while (at_ == end_) {
    DropMiddle(2 * longest_);  // seldom, since it moves what is kept
    const std::size_t kept = length_;
    if (!Refill(word_)) {
      // Refill has moved the word to the front also where nothing was left to read.
      word_ = block_.data();
      at_ = end_;
      // What follows is nothing, not even a blank.
      endsDump_ = true;
      break;
    }
    word_ = block_.data();
    // The bytes before were looked at already.
    at_ = word_ + kept;
    while (!IsBlank(*at_)) ++at_;
    length_ = static_cast<std::size_t>(at_ - word_);
  }
  DropMiddle(longest_);
}

/// Keeps the beginning and the end of a word that is too long: of a value, the end is its low bits.
/// "b" and the first digits stay in front, so the word is still of its kind.
void DumpWords::DropMiddle(std::size_t most) {
  if (length_ <= most + kBeginning) return;
  // What moves lies within the word, so what comes after it stays where it is. Of the block, since
  // word_ itself is for reading.
  char* const word = block_.data() + (word_ - block_.data());
  // What is dropped lies between the beginning and the last `longest_` characters.
  char* const front = word + length_ - longest_ - kBeginning;
  std::memmove(front, word, kBeginning);
  word_ = front;
  length_ = longest_ + kBeginning;
  isCut_ = true;
}

}  // namespace orsa::kesncd
