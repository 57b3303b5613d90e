// Reads a dump's body and hands what it says to a taker: nearly all lines by the fast scan of plain
// lines, the rest item by item. Which of the two ways a line goes never changes what the taker
// gets.
#ifndef KESNCD_FREE_FORMAT_BODY_READER_H_
#define KESNCD_FREE_FORMAT_BODY_READER_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "free_format/dump_items.h"
#include "vcd/code_table.h"
#include "vcd/plain_lines.h"

namespace orsa::kesncd {

/// The number that a text of digits is. False for a text that is empty, holds another character or
/// may not fit. Stamps of up to 20 digits may fit; those of 20 are left to the plain path.
inline bool PlainNumber(const char* digits, std::size_t length, std::uint64_t& number) {
  constexpr std::size_t kFits = 19;  // nines are still below 2^64
  // Every text of 19 digits fits, so the loop needs no check for an overflow.
  if (length == 0 || length > kFits) return false;
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < length; ++i) {
    // What is no digit gives a number above 9, since below "0" it wraps around.
    const auto digit = static_cast<unsigned char>(digits[i] - '0');
    if (digit > 9) return false;
    value = 10 * value + digit;
  }
  number = value;
  return true;
}

/// Turns plain lines into what a taker gets. A line that is not surely what it looks like (a code
/// that no variable has, a value apart from its code, a weak value, a stamp that goes back) is
/// refused. Every refusal costs the plain path's time for that line, but never a figure.
template <class Taker>
class PlainLineTaker {
 public:
  PlainLineTaker(DumpItems& items, Taker& taker)
      : items_(items), codes_(items.codes()), longest_(items.LongestValue()), taker_(taker) {}

  /// Where there are more codes than a processor's cache holds, each change would wait for memory
  /// twice, for its code's number and for what the taker keeps of it. So all changes of some
  /// hundred bytes have theirs fetched at once. A taker that keeps nothing by code is not worth it:
  /// looking its codes up twice costs more than the waiting. Called by ScanPlainLines at most once
  /// for each 512 bytes.
  const char* LookAhead(const char* line, const char* chunk, const char* end) requires
      requires(Taker& taker) {
    taker.Fetch(std::uint32_t{});
  }
  {
    // With few codes all that they need is in the cache already.
    if (codes_.size() < CodeTable::kLarge) return end;
    const char* const stop = std::min(end, chunk + kAhead);
    CodeInLine* last = found_.data();
    // First all codes are found, then all their numbers are fetched, and only then is a number
    // asked for: by that time the first ones have arrived.
    for (; chunk < stop; chunk += 64) last = FindCodes(line, chunk, stop, last);
    for (const CodeInLine* code = found_.data(); code != last; ++code) {
      codes_.Fetch(code->code, code->length);
    }
    for (const CodeInLine* code = found_.data(); code != last; ++code) {
      // A longer code is looked up by its text, which waits for memory itself.
      if (code->length > DumpWords::kReadAhead) continue;
      const std::uint32_t codeId = codes_.Find({code->code, code->length});
      if (codeId != CodeTable::kNone) taker_.Fetch(codeId);
    }
    return stop;
  }

  // The line begins with 0 or 1.
  bool Scalar(const char* line, const char* newline) { return TakeScalar(line, newline, *line); }

  bool Other(const char* line, const char* blank, const char* newline) {
    if (blank != nullptr) return TakeVector(line, blank, newline);
    switch (*line) {
      case 'x':
      case 'X':
        return TakeScalar(line, newline, 'x');
      case 'z':
      case 'Z':
        return TakeScalar(line, newline, 'z');
      case '#':
        return TakeStamp(line + 1, newline);
      case '\n':
        return true;
      default:
        // Other values of one letter (H, L, U, ...) are weak or odd: the plain path names them.
        return false;
    }
  }

 private:
  // A number of bytes, a multiple of the scan's chunk of 64.
  static constexpr std::ptrdiff_t kAhead = 512;

  bool TakeScalar(const char* line, const char* newline, char value) {
    const auto length = static_cast<std::size_t>(newline - line - 1);
    // A line of one byte is a value apart from its code.
    const std::uint32_t codeId = length > 0 ? codes_.Find({line + 1, length}) : CodeTable::kNone;
    if (codeId == CodeTable::kNone) return false;
    taker_.Scalar(codeId, value);
    return true;
  }

  bool TakeVector(const char* line, const char* blank, const char* newline) {
    // "b0110 !" or "r0.5 !"
    const bool isVector = (*line | 0x20) == 'b';
    if (!isVector && (*line | 0x20) != 'r') return false;
    const std::string_view value(line + 1, static_cast<std::size_t>(blank - line) - 1);
    const std::string_view code(blank + 1, static_cast<std::size_t>(newline - blank) - 1);
    // A value that is too long has its middle dropped by the plain path, wherever it stands in a
    // block.
    if (value.empty() || code.empty() || value.size() > longest_) return false;
    const std::uint32_t codeId = codes_.Find(code);
    if (codeId == CodeTable::kNone) return false;
    if (isVector) {
      taker_.Vector(codeId, value);
    } else {
      taker_.Real(codeId, value);
    }
    return true;
  }

  bool TakeStamp(const char* digits, const char* newline) {
    std::uint64_t ticks = 0;
    if (!PlainNumber(digits, static_cast<std::size_t>(newline - digits), ticks)) return false;
    // One that goes back is reported by the plain path.
    if (!items_.NoteStamp(ticks)) return false;
    taker_.Stamp(ticks);
    return true;
  }

  DumpItems& items_;
  const CodeTable& codes_;
  const std::size_t longest_;  // characters of a value that the plain path surely keeps whole
  Taker& taker_;
  // Room for the codes that one LookAhead can find.
  std::array<CodeInLine, kAhead / 64 * kMostCodesFound> found_;
};

/// Hands one item to a taker, by the same calls as PlainLineTaker makes, so that a taker cannot
/// tell which way an item took.
template <class Taker>
void GiveItem(const DumpItems& items, Taker& taker) {
  switch (items.kind()) {
    case ItemKind::Stamp:
      taker.Stamp(items.ticks());
      break;
    case ItemKind::Command:
      taker.Command(items.command());
      break;
    case ItemKind::SectionEnd:
      taker.SectionEnd();
      break;
    case ItemKind::Scalar:
      taker.Scalar(items.codeId(), items.value());
      break;
    case ItemKind::Vector:
      taker.Vector(items.codeId(), items.text());
      break;
    case ItemKind::Real:
      taker.Real(items.codeId(), items.text());
      break;
  }
}

/// Reads to the end of the dump. The taker has the operations
///
///   void Scalar(std::uint32_t codeId, char value)               `value` is 0, 1, x or z
///   void Vector(std::uint32_t codeId, std::string_view value)   not empty; kBitValues says what
///                                                               its characters mean
///   void Real(std::uint32_t codeId, std::string_view value)
///   void Stamp(std::uint64_t ticks)
///   void Command(Keyword command)                               one of the four dump commands
///   void SectionEnd()
///   bool IsDone() const                                         true ends the reading
///
/// and may have
///
///   void Fetch(std::uint32_t codeId) const                      prefetches what it keeps of a code
///   void ReadItems(DumpItems& items)                            reads instead, where it wants more
///                                                               of items than the operations say
template <class Taker>
void ReadBody(DumpItems& items, Taker& taker) {
  if constexpr (requires { taker.ReadItems(items); }) {
    taker.ReadItems(items);
  } else {
    PlainLineTaker<Taker> plain(items, taker);
    // One item by the plain path, then as many plain lines as there are.
    while (!taker.IsDone() && items.Next()) {
      GiveItem(items, taker);
      items.TakePlainLines(plain);
    }
  }
}

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_BODY_READER_H_
