// The words of a dump, wherever its lines end: what free-format reading starts from.
//
// Every byte up to the space is a blank, so NULs and other control bytes part words and never get
// into one. Memory does not grow with the dump: a word is valid until the next one is taken, and
// one longer than any value is read to its end but kept cut.
#ifndef KESNCD_FREE_FORMAT_DUMP_WORDS_H_
#define KESNCD_FREE_FORMAT_DUMP_WORDS_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "free_format/slot_watch.h"
#include "text/byte_stream.h"
#include "vcd/tally.h"

namespace orsa::kesncd {

class DumpWords {
 public:
  /// Bytes that may be read, though not looked at, from the start of a word, however short it is.
  static constexpr std::size_t kReadAhead = 8;

  /// Reads the first block, and passes over a byte order mark of UTF-8.
  explicit DumpWords(ByteSource& source);

  /// The dump's first bytes, until a word is taken.
  std::string_view FirstBytes() const;
  /// Shows every word to come to a watch too.
  void Show(SlotWatch& watch) { watch_ = &watch; }
  /// Takes the next word; false at the end of the dump.
  bool Next();

  std::string_view Word() const { return {word_, length_}; }
  /// Of the word; the first line is 1.
  std::uint64_t Line() const { return line_; }
  /// Whether no other word stands before it on its line.
  bool StartsLine() const { return line_ != previousLine_; }
  /// Control bytes so far that part words here, though in line-based reading they do not.
  const Tally& Controls() const { return controls_; }

 private:
  static bool IsBlank(char c) { return static_cast<unsigned char>(c) <= ' '; }
  static std::size_t ShortLength(const char* word);
  static bool IsControl(char c) {
    return IsBlank(c) && c != ' ' && c != '\n' && c != '\t' && c != '\r';
  }
  void TakeBlank(char c);
  bool Refill(const char* keep);
  void FinishWord();
  void SetEnd(std::size_t held);

  ByteSource& source_;
  std::vector<char> block_;
  const char* at_ = nullptr;   // behind the last word
  const char* end_ = nullptr;  // a blank and a letter stand here, so that scans stop
  const char* word_ = nullptr;
  std::size_t length_ = 0;
  std::uint64_t line_ = 1;
  std::uint64_t previousLine_ = 0;
  Tally controls_;
  SlotWatch* watch_ = nullptr;
};

/// How many of the eight bytes at `word` stand before the first blank. Nearly all words are that
/// short, and a loop over their few characters would be guessed wrong at the end of each.
inline std::size_t DumpWords::ShortLength(const char* word) {
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, word, sizeof bytes);
  if constexpr (std::endian::native == std::endian::big) bytes = __builtin_bswap64(bytes);
  // The lowest bit set is that of the first byte below '!'; a borrow only spoils those behind it.
  const std::uint64_t blanks = (bytes - kOnes * '!') & ~bytes & kOnes * 0x80;
  return static_cast<std::size_t>(std::countr_zero(blanks)) / 8;
}

inline void DumpWords::TakeBlank(char c) {
  line_ += static_cast<std::uint64_t>(c == '\n');
  if (IsControl(c)) controls_.Add(line_, "");
}

inline bool DumpWords::Next() {
  previousLine_ = word_ == nullptr ? 0 : line_;
  for (;;) {
    while (IsBlank(*at_)) TakeBlank(*at_++);
    if (at_ < end_) break;
    if (!Refill(end_)) return false;
  }
  word_ = at_;
  std::size_t step = kReadAhead;
  for (; step == kReadAhead; at_ += step) step = ShortLength(at_);
  length_ = static_cast<std::size_t>(at_ - word_);
  if (at_ == end_) FinishWord();
  if (watch_ != nullptr) watch_->Take(Word(), StartsLine());
  return true;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_DUMP_WORDS_H_
