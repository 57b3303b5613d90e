// The words of a dump, wherever its lines end: what free-format reading starts from.
//
// Every byte up to the space is a blank, so NULs and other control bytes part words and never get
// into one. Memory does not grow with the dump: a word is valid until the next one is taken, and of
// one that is longer than any value or code can be, only the beginning and the end are kept.
#ifndef KESNCD_FREE_FORMAT_DUMP_WORDS_H_
#define KESNCD_FREE_FORMAT_DUMP_WORDS_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "free_format/slot_watch.h"
#include "text/byte_stream.h"
#include "text/number.h"
#include "vcd/plain_lines.h"
#include "vcd/tally.h"

namespace orsa::kesncd {

/// Calling order: construct, FirstBytes if wanted, then Next and the properties of the word it
/// took. Between two words at the start of a line, TakePlainLines may take whole lines.
class DumpWords {
 public:
  /// Bytes that may be read, though not looked at, from the start of a word, however short it is.
  static constexpr std::size_t kReadAhead = 8;
  /// Bytes that are read from the source at a time: more than any line, yet few enough to stay in
  /// the processor's second cache.
  static constexpr std::size_t kBlock = std::size_t{1} << 18;
  /// How much of a word is kept unless SetLongest asks for more.
  static constexpr std::size_t kKept = std::size_t{1} << 16;

  /// Reads the first block, and passes over a byte order mark of UTF-8.
  explicit DumpWords(ByteSource& source, std::size_t block = kBlock, std::size_t kept = kKept);

  // Never reached, and small enough to be doubled without an overflow.
  static constexpr std::size_t kNoLimit = SIZE_MAX / 4;
  /// Keeps words to come of up to so many characters whole, and in any case as many as the
  /// constructor was told.
  void SetLongest(std::size_t characters);
  /// Characters of which a word is surely kept whole.
  std::size_t Longest() const { return longest_; }
  /// The dump's first bytes, until a word is taken. At most the first block.
  std::string_view FirstBytes() const;
  /// Shows every word to come to a watch too. Plain lines are not shown to it: whoever takes some
  /// tells the watch.
  void Show(SlotWatch& watch) { watch_ = &watch; }
  /// Takes the next word; false at the end of the dump. Word, Line and the others are then those of
  /// this word.
  bool Next();

  // A view into the block, valid until Next.
  std::string_view Word() const { return {word_, length_}; }
  /// The offset in the source of what comes after the word.
  std::uint64_t Offset() const { return read_ - static_cast<std::uint64_t>(end_ - at_); }
  /// Forgets what was read ahead from an offset on that lies after the word. Returns the offset at
  /// which the source has to go on.
  std::uint64_t ForgetFrom(std::uint64_t offset);
  /// The line of the word; the first one is 1.
  std::uint64_t Line() const { return line_; }
  /// Whether no other word stands before it on its line.
  bool StartsLine() const { return startsLine_; }
  /// Whether the word was too long to be kept whole.
  bool IsCut() const { return isCut_; }
  /// Whether nothing comes after the word, not even a blank.
  bool EndsDump() const { return endsDump_; }
  /// Control bytes so far that part words here, though in line-based reading they do not.
  const Tally& Controls() const { return controls_; }

  /// Hands the plain lines that come next, as far as the block holds them, to a taker as
  /// ScanPlainLines does. Takes nothing where the last word does not end its line.
  template <class Taker>
  void TakePlainLines(Taker& taker);

 private:
  // Of a word that is cut: enough to know what kind of word it is. "$enddefinitions" has 15.
  static constexpr std::size_t kBeginning = 16;

  static bool IsBlank(char c) { return static_cast<unsigned char>(c) <= ' '; }
  static std::size_t ShortLength(const char* word);
  // The other four are blanks in line-based reading as well.
  static bool IsControl(char c) {
    return IsBlank(c) && c != ' ' && c != '\n' && c != '\t' && c != '\r';
  }
  // Keeps count of lines and control bytes.
  void TakeBlank(char c);
  bool FinishLine();
  bool Refill(const char* keep);
  // For words that reach over the end of the block.
  void FinishWord();
  void DropMiddle(std::size_t most);
  void SetEnd(std::size_t held);

  ByteSource& source_;
  // Bytes that are asked for in one reading.
  const std::size_t readAtOnce_;
  // Characters that are kept whatever SetLongest says.
  const std::size_t leastKept_;
  std::size_t longest_;  // characters of a word that are kept
  // Its size changes only for long words that are kept.
  std::vector<char> block_;
  std::uint64_t read_ = 0;     // bytes of the source
  const char* at_ = nullptr;   // after the last word
  const char* end_ = nullptr;  // a blank and a letter stand here, so that scans stop
  // The last word is a view into the block.
  const char* word_ = nullptr;
  std::size_t length_ = 0;
  std::uint64_t line_ = 1;
  // Stays true over a run of plain lines, which ends after a newline.
  bool isAtStart_ = true;  // of a line: no word of it was taken
  bool startsLine_ = false;
  bool isCut_ = false;
  bool endsDump_ = false;
  Tally controls_;
  // Null where nobody watches.
  SlotWatch* watch_ = nullptr;
};

/// How many of the eight bytes at `word` stand before the first blank. Nearly all words are that
/// short, and a loop over their few characters would be predicted wrong at the end of each.
inline std::size_t DumpWords::ShortLength(const char* word) {
  constexpr std::uint64_t kOnes = 0x0101010101010101U;
  const auto bytes = LoadBytes<std::uint64_t>(word);
  // The difference has the highest bit set for a byte below '!', which borrows. The borrow may
  // spoil the bits of the bytes after it, but the lowest bit set is that of the first such byte.
  const std::uint64_t blanks = (bytes - kOnes * '!') & ~bytes & kOnes * 0x80;
  return static_cast<std::size_t>(std::countr_zero(blanks)) / 8;
}

inline void DumpWords::TakeBlank(char c) {
  if (c == '\n') {
    ++line_;
    isAtStart_ = true;
  } else if (IsControl(c)) {
    controls_.Add(line_, "");
  }
}

inline bool DumpWords::Next() {
  // Lines are counted here, between words, and in TakePlainLines.
  for (;;) {
    while (IsBlank(*at_)) TakeBlank(*at_++);
    if (at_ < end_) break;  // else the letter after the end stopped the loop
    if (!Refill(end_)) return false;
  }
  startsLine_ = isAtStart_;
  isAtStart_ = false;
  isCut_ = false;
  word_ = at_;
  // Eight bytes at a time, until a step ends early.
  std::size_t step = kReadAhead;
  for (; step == kReadAhead; at_ += step) step = ShortLength(at_);
  length_ = static_cast<std::size_t>(at_ - word_);
  if (at_ >= end_) {
    // The word met the end of the block: the blank there is not the dump's.
    FinishWord();
  } else if (length_ > longest_ + kBeginning) [[unlikely]] {
    DropMiddle(longest_);  // whether the word met the end of a block makes no difference
  }
  // The watch sees words as line readers would, each with its place on the line.
  if (watch_ != nullptr) watch_->Take(Word(), StartsLine());
  return true;
}

/// Takes the blanks after the last word; whether they end its line. At the end of the block it
/// cannot tell; Next reads on then.
inline bool DumpWords::FinishLine() {
  while (!isAtStart_ && at_ < end_ && IsBlank(*at_)) TakeBlank(*at_++);
  return isAtStart_ && at_ < end_;
}

/// Passes plain lines on and counts them: the words do not see those lines one by one, but their
/// number is needed for messages.
template <class Taker>
struct CountedLines {
  Taker& taker;
  std::uint64_t lines = 0;

  const char* LookAhead(const char* line, const char* chunk, const char* end) requires requires {
    taker.LookAhead(line, chunk, end);
  }
  { return taker.LookAhead(line, chunk, end); }

  bool Scalar(const char* line, const char* newline) {
    if (!taker.Scalar(line, newline)) return false;
    ++lines;
    return true;
  }
  bool Other(const char* line, const char* blank, const char* newline) {
    if (!taker.Other(line, blank, newline)) return false;
    ++lines;
    return true;
  }
};

/// No line is too long: a block is what limits them.
template <class Taker>
void DumpWords::TakePlainLines(Taker& taker) {
  if (!FinishLine()) return;
  CountedLines<Taker> counted{taker};
  at_ = ScanPlainLines(at_, end_, SIZE_MAX, counted);
  line_ += counted.lines;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_DUMP_WORDS_H_
