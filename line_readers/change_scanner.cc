// Which lines of the body are plain, and what they count.
#include "line_readers/change_scanner.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "text/number.h"

namespace orsa::kesncd {

namespace {

// Slots hold at least this many characters from the start, and count as written as far as that:
// what is put there past the splitter must not reach further.
constexpr std::size_t kLongestText = Splitter::kLeastRoom - 1;

// The slot of the digits of a stamp such as "#1200", and of the code of a line such as "b01 !".
constexpr int kSecond = 1;

static_assert(LineSource::kPadding >= kScanPadding, "blocks are scanned to their last byte");
static_assert(LineSource::kPadding >= CodeCounts::kReadAhead, "and codes are read ahead");

/// Masks of the first bytes of four in memory, none to all.
constexpr std::uint32_t kFirstBytes[] = {
    0, std::bit_cast<std::uint32_t>(std::array<unsigned char, 4>{0xFF, 0, 0, 0}),
    std::bit_cast<std::uint32_t>(std::array<unsigned char, 4>{0xFF, 0xFF, 0, 0}),
    std::bit_cast<std::uint32_t>(std::array<unsigned char, 4>{0xFF, 0xFF, 0xFF, 0}), 0xFFFFFFFF};

/// Whether the first `length` bytes at `text` are digits; eight are read at a time.
bool AllDigits(const char* text, std::size_t length) {
  for (std::size_t at = 0; at < length; at += sizeof(std::uint64_t)) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text + at, sizeof bytes);
    const std::uint64_t wanted = LowBits(8 * (length - at));
    constexpr std::uint64_t kHighHalves = 0xF0F0F0F0F0F0F0F0U;
    constexpr std::uint64_t kThrees = 0x3030303030303030U;
    // Digits are 0x30 to 0x39: adding 6 leaves the high half as it is.
    const std::uint64_t wrong = ((bytes ^ kThrees) | ((bytes + 0x0606060606060606U) ^ kThrees));
    if ((wrong & kHighHalves & wanted) != 0) return false;
  }
  return true;
}

}  // namespace

/// Nothing is read here: the splitters' slots may still move before the body begins.
ChangeScanner::ChangeScanner(CodeCounts& counts, ReadingState& state, Splitter& stampSplitter,
                             const Splitter* wordSplitter, std::size_t longestLine)
    : counts_(counts),
      state_(state),
      stampSplitter_(stampSplitter),
      wordSplitter_(wordSplitter),
      longestLine_(longestLine) {}

/// A lone "1" counts for the empty code, as on the plain path.
inline void ChangeScanner::LineTaker::Scalar(const char* line, const char* newline) {
  counts.CountPlain(line + 1, static_cast<std::size_t>(newline - line - 1));
}

inline bool ChangeScanner::LineTaker::Other(const char* line, const char* blank,
                                            const char* newline) {
  return scanner.TakeOtherLine(line, blank, newline);
}

/// Takes one line of plain characters, but for a blank if any, that is no scalar change to 0 or 1;
/// false when it is not plain. "b0110 !", "r0.5 !", "#1200", "x!" and the empty line are plain;
/// changes to x and z count nothing.
inline bool ChangeScanner::TakeOtherLine(const char* line, const char* blank, const char* end) {
  if (blank != nullptr) return TakeChangeWithCode(line, blank, end);
  const char first = *line;
  if (first == '#') return TakeStampLine(line, end);
  return first == 'x' || first == 'X' || first == 'z' || first == 'Z' || first == '\n';
}

inline bool ChangeScanner::TakeChangeWithCode(const char* line, const char* blank,
                                              const char* end) {
  const char first = *line;
  // Other lines of two words are rare ("1 !", "$upscope $end").
  if (first != 'b' && first != 'B' && first != 'r' && first != 'R') return false;
  const char* const code = blank + 1;
  const auto length = static_cast<std::size_t>(end - code);
  // A longer code might not fit into its slot, which only the splitter can lengthen.
  if (length == 0 || length > kLongestText) return false;
  // The code lands in the slot from which stamps may be read.
  if (codeSlot_ != nullptr) StoreCode(code, length);
  counts_.CountPlain(code, length);
  return true;
}

/// A short code is blended into the slot, so that its length costs no branch.
inline void ChangeScanner::StoreCode(const char* code, std::size_t length) {
  std::uint32_t held = 0;
  std::uint32_t bytes = 0;
  // Longer codes are copied with their NUL.
  if (length >= sizeof held) {
    std::memcpy(codeSlot_, code, length);
    codeSlot_[length] = '\0';
    return;
  }
  std::memcpy(&held, codeSlot_, sizeof held);
  std::memcpy(&bytes, code, sizeof bytes);
  // With a NUL after it; what the slot holds after that stays.
  held = (held & ~kFirstBytes[length + 1]) | (bytes & kFirstBytes[length]);
  std::memcpy(codeSlot_, &held, sizeof held);
}

/// Takes a stamp that only moves the end of the span. Its digits go to their slot; they are
/// converted when no later stamp of the block has replaced them. Not inlined: stamps are few beside
/// changes, and the loop over those stays small.
[[gnu::noinline]] bool ChangeScanner::TakeStampLine(const char* line, const char* end) {
  const char* const digits = line + 1;
  const auto length = static_cast<std::size_t>(end - digits);
  // The first stamp opens the span: the plain path takes it, as any text that is no plain number.
  if (!spanOpen_ || length == 0 || length > kLongestText || !AllDigits(digits, length)) {
    return false;
  }
  char* const slot = stampSplitter_.slots()[kSecond];
  if (slot[length] != '\0') return false;  // a longer text's tail would show after the digits
  std::memcpy(slot, digits, length);
  stamp_ = {digits, length};
  return true;
}

void ChangeScanner::ConvertStamp() {
  if (stamp_.empty()) return;
  // With its terminator: what stands after the digits in the block is the rest of the dump.
  std::array<char, kLongestText + 1> text{};
  std::copy(stamp_.begin(), stamp_.end(), text.begin());
  ScanDouble(text.data(), state_.lastTick);
  stamp_ = {};
}

void ChangeScanner::TakeLines(LineSource& source) {
  if (state_.recording != 1) return;  // simulators write next to nothing while a dump is off
  // Looked up anew in each call: a line of the plain path may have changed any of it.
  spanOpen_ = state_.firstTick >= 0 && state_.lastTick >= 0;
  std::size_t tooLong = longestLine_;  // lines of this many characters are not plain
  codeSlot_ = nullptr;
  if (wordSplitter_ != nullptr) {
    // A line longer than any before it changes the splitter that stamps are read from.
    tooLong = std::min(tooLong, static_cast<std::size_t>(wordSplitter_->slotLength()));
    codeSlot_ = wordSplitter_->slots()[kSecond];
  }
  const std::string_view block = source.Block();
  LineTaker taker{*this, counts_};
  // Up to LineSource::kPadding bytes after the block's end may be read.
  const char* const stop =
      ScanPlainLines(block.data(), block.data() + block.size(), tooLong, taker);
  ConvertStamp();
  const auto taken = static_cast<std::size_t>(stop - block.data());
  source.Skip(taken);
  unsettled_ += taken;  // at least two bytes a change, so this is soon enough
  if (unsettled_ < CodeCounts::kMostBetween) return;
  counts_.Settle();
  unsettled_ = 0;
}

}  // namespace orsa::kesncd
