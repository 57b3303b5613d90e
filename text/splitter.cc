// The splitter's slots. The reported counts follow rules of their own (they double once, or take a
// length for a count), so they say when something visible happens but never how much memory there
// is: that is kept in the held* fields, which only grow.
#include "text/splitter.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace orsa::kesncd {

namespace {

// What Mem shows before the first line: 32 slots of 256 characters.
constexpr int kFirstSlots = 32;
constexpr int kFirstLength = Splitter::kLeastRoom;
// So much of a slot always counts as written: the fast scan of plain lines writes there too, into
// the first slots.
constexpr std::size_t kLeastWritten = kFirstLength + 1;
constexpr std::size_t kWrittenByOthers = 2;

/// Digits and letters are those of ASCII, whatever the locale.
enum class CharClass { Digit, Letter, Other };

CharClass ClassOf(char c) {
  if (c >= '0' && c <= '9') return CharClass::Digit;
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) return CharClass::Letter;
  return CharClass::Other;
}

/// The bytes at which a token ends: the delimiters and the end of the text.
class ByteSet {
 public:
  explicit ByteSet(const char* delims) {
    Add('\0');
    for (; *delims != '\0'; ++delims) Add(*delims);
  }
  bool Has(char c) const { return (bits_[Byte(c) / 64] >> Byte(c) % 64 & 1) != 0; }

 private:
  static unsigned Byte(char c) { return static_cast<unsigned char>(c); }
  void Add(char c) { bits_[Byte(c) / 64] |= std::uint64_t{1} << Byte(c) % 64; }

  std::array<std::uint64_t, 4> bits_{};
};

/// Length of the piece that starts at `text`, 0 at its end. A run of characters of one class:
/// "bus[3]" has "bus", "[", "3", "]".
std::size_t PieceLength(const char* text) {
  std::size_t length = 0;
  while (text[length] != '\0' && ClassOf(text[length]) == ClassOf(*text)) ++length;
  return length;
}

int CountPieces(const char* text) {
  int count = 0;
  for (; *text != '\0'; text += PieceLength(text)) ++count;
  return count;
}

/// Sizes are reported as int; a line that is longer than that counts as the longest there is.
int ToInt(std::size_t size) {
  return static_cast<int>(std::min<std::size_t>(size, std::numeric_limits<int>::max()));
}

int Doubled(int count) {
  return ToInt(2 * static_cast<std::size_t>(std::max(count, 0)));
}

/// Grows a buffer, keeping its bytes; throws with the buffer as it was. The new bytes are zeros, so
/// that a piece copied into a fresh slot ends where it ends.
void Grow(char*& buffer, std::size_t held, std::size_t wanted) {
  void* grown = std::realloc(buffer, wanted);
  if (grown == nullptr) throw std::bad_alloc();
  buffer = static_cast<char*>(grown);
  std::memset(buffer + held, 0, wanted - held);
}

/// Makes room for more elements, whose values are not set; throws with the array as it was. For
/// arrays of plain values only, since realloc moves them bytewise.
template <class T>
T* Resized(T* array, std::size_t count) {
  void* grown = std::realloc(array, count * sizeof(T));
  if (grown == nullptr) throw std::bad_alloc();
  return static_cast<T*>(grown);
}

}  // namespace

Splitter::Splitter()
    : slotCount_(kFirstSlots),
      slotLength_(kFirstLength),
      heldBytes_(kFirstLength + 1),
      stored_(kWrittenByOthers) {
  // The destructor does not run for an object whose constructor throws.
  try {
    Grow(workBuffer_, 0, kFirstLength + 1);
    workBytes_ = kFirstLength + 1;
    HoldSlots(kFirstSlots);
  } catch (...) {
    Release();
    throw;
  }
}

Splitter::~Splitter() {
  Release();
}

void Splitter::Release() {
  for (std::size_t i = 0; i < heldSlots_; ++i) std::free(slots_[i]);
  std::free(slots_);
  std::free(written_);
  std::free(workBuffer_);
  std::free(text_);
}

/// Makes sure that `count` slots exist; new ones are empty.
void Splitter::HoldSlots(std::size_t count) {
  // Held slots only grow. After a failure halfway, those made so far belong to heldSlots_ already
  // and are released with the rest.
  if (count <= heldSlots_) return;
  slots_ = Resized(slots_, count);
  written_ = Resized(written_, count);
  while (heldSlots_ < count) {
    slots_[heldSlots_] = nullptr;
    Grow(slots_[heldSlots_], 0, heldBytes_);
    written_[heldSlots_] = kLeastWritten;
    ++heldSlots_;
  }
}

/// Makes sure that every slot has `bytes` bytes; what they hold stays.
void Splitter::HoldBytes(std::size_t bytes) {
  if (bytes <= heldBytes_) return;
  // A slot that cannot grow leaves heldBytes_ too small for those before it, which is safe.
  for (std::size_t i = 0; i < heldSlots_; ++i) Grow(slots_[i], heldBytes_, bytes);
  heldBytes_ = bytes;
}

/// Writes to the start of a slot.
void Splitter::Store(std::size_t slot, const char* text, std::size_t bytes) {
  // `bytes` may or may not take in a terminator: words come with one, pieces without.
  std::memcpy(slots_[slot], text, bytes);
  written_[slot] = std::max(written_[slot], bytes);
  stored_ = std::max(stored_, slot + 1);
}

/// Clears a slot from a byte on. Only what was written is cleared: slots may be many and long, and
/// a dump can ask for this on every line.
void Splitter::ClearSlot(std::size_t slot, std::size_t from) {
  if (from < written_[slot]) std::memset(slots_[slot] + from, 0, written_[slot] - from);
  written_[slot] = std::max(from, kLeastWritten);
}

/// Clears what lies after the strings of the slots, as a move into fresh slots would. Slots that
/// have not changed since the last time are left out.
void Splitter::KeepStrings() {
  for (std::size_t i = 0; i < stored_; ++i) ClearSlot(i, std::strlen(slots_[i]));
  stored_ = kWrittenByOthers;
}

/// Doubles the reported count: the strings move into fresh slots, and those beyond are empty.
void Splitter::DoubleSlots() {
  // The reported count may exceed the slots that exist, after a long piece (see CutPieces).
  const std::size_t kept = std::min<std::size_t>(static_cast<std::size_t>(slotCount_), heldSlots_);
  HoldSlots(static_cast<std::size_t>(Doubled(slotCount_)));
  for (std::size_t i = kept; i < heldSlots_; ++i) *slots_[i] = '\0';
  stored_ = heldSlots_;
  KeepStrings();
  slotCount_ = Doubled(slotCount_);
}

/// Copies the line that is to be cut into the work buffer. The line may lie in a slot or in the
/// work buffer itself, so it is copied before anything moves.
void Splitter::HoldLine(const char* line, std::size_t length) {
  if (length < workBytes_) {
    std::memmove(workBuffer_, line, length + 1);
  } else {
    auto* grown = static_cast<char*>(std::malloc(length + 1));
    if (grown == nullptr) throw std::bad_alloc();
    std::memcpy(grown, line, length + 1);
    std::free(workBuffer_);
    workBuffer_ = grown;
    workBytes_ = length + 1;
  }
  // A line longer than any before raises the room of every slot: each of them might take all of it.
  if (length > static_cast<std::size_t>(slotLength_)) {
    HoldBytes(length + 1);
    slotLength_ = ToInt(length);
  }
}

char** Splitter::CutWords(const char* line, const char* delims, int* count) {
  *count = 0;
  const ByteSet ends(delims);  // made first: the line may be what they are written in
  HoldLine(line, std::strlen(line));
  char* token = workBuffer_;
  while (true) {
    // Runs of delimiters count as one, and those before the first word for nothing.
    while (*token != '\0' && ends.Has(*token)) ++token;
    if (*token == '\0') return slots_;
    char* end = token;
    while (!ends.Has(*end)) ++end;
    char* const next = *end == '\0' ? end : end + 1;
    *end = '\0';
    // Where a newline is no delimiter, it ends the line and is not part of the last word.
    if (end[-1] == '\n') *--end = '\0';
    const auto index = static_cast<std::size_t>(*count);
    if (index == heldSlots_) HoldSlots(2 * heldSlots_);
    Store(index, token, static_cast<std::size_t>(end - token) + 1);
    // Reaching the reported count, not passing it, doubles it: hosts see the count that way.
    if (++*count == slotCount_) DoubleSlots();
    token = next;
  }
}

/// Copies the text that is to be cut into pieces: it may lie in a slot that a piece overwrites.
void Splitter::HoldText(const char* text, std::size_t length) {
  if (length >= textBytes_) {
    Grow(text_, textBytes_, length + 1);
    textBytes_ = length + 1;
  }
  std::memmove(text_, text, length + 1);
}

char** Splitter::CutPieces(const char* text, int* count) {
  HoldText(text, std::strlen(text));
  // Counted first: emptying the slots halfway would lose pieces of this very text.
  const int pieces = CountPieces(text_);
  if (pieces > slotCount_) {
    // Once only, however many pieces there are, which is why the reported count may stay below
    // them.
    HoldSlots(static_cast<std::size_t>(std::max(pieces, Doubled(slotCount_))));
    for (std::size_t i = 0; i < heldSlots_; ++i) ClearSlot(i, 0);
    slotCount_ = Doubled(slotCount_);
  }
  // Reading all returned pieces is safe whatever count is reported.
  HoldSlots(static_cast<std::size_t>(pieces));
  const char* piece = text_;
  for (int i = 0; i < pieces; ++i) {
    const std::size_t length = PieceLength(piece);
    // The reported length stays; twice the piece's length goes to the reported count. So the next
    // such piece does the same again.
    if (length > static_cast<std::size_t>(slotLength_)) {
      HoldBytes(2 * length + 1);
      KeepStrings();
      slotCount_ = ToInt(2 * length);
    }
    Store(static_cast<std::size_t>(i), piece, length);  // no terminator: the slot's old tail stays
    piece += length;
  }
  *count = pieces;
  return slots_;
}

}  // namespace orsa::kesncd
