// The fast scan over the lines of a dump's body.
//
// Nearly all of a dump is short lines of printable characters with at most one blank: a scalar
// change, a vector or real change with its identifier code, a time stamp. The scan finds the ends
// and blanks of such lines 64 bytes at a time and hands each line to a taker. At the first line
// that is not of that shape, or that the taker does not want, it stops: the caller's plain path
// reads that line, and the scan goes on after it. Which of the two ways a line takes must not
// change what it counts, so a taker accepts only lines that it is sure of.
#ifndef KESNCD_VCD_PLAIN_LINES_H_
#define KESNCD_VCD_PLAIN_LINES_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace orsa::kesncd {

/// Bytes that may be read, though not looked at, after the end of what is scanned.
inline constexpr std::size_t kScanPadding = 64;

/// Marks the bytes that are not plain (above a blank, below 128) among the 64 at `bytes`, the first
/// one in the lowest bit; byte by byte.
inline std::uint64_t MarkOddBytesPlainly(const char* bytes) {
  std::uint64_t marks = 0;
  for (int i = 0; i < 64; ++i) {
    marks |= static_cast<std::uint64_t>(bytes[i] <= ' ' || (bytes[i] & 0x80) != 0) << i;
  }
  return marks;
}

/// The same, 16 bytes at a time where the processor can. Both ways must mark the same bytes; a test
/// compares them.
inline std::uint64_t MarkOddBytes(const char* bytes) {
#ifdef __SSE2__
  const __m128i below = _mm_set1_epi8(' ');
  std::uint64_t marks = 0;
  for (std::size_t at = 0; at < 64; at += sizeof(__m128i)) {
    const __m128i part = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at));
    // Signed comparisons: bytes from 128 on are negative, so not above a blank.
    const __m128i plain = _mm_cmpgt_epi8(part, below);
    const auto odd = static_cast<std::uint16_t>(~_mm_movemask_epi8(plain));
    marks |= static_cast<std::uint64_t>(odd) << at;
  }
  return marks;
#else
  return MarkOddBytesPlainly(bytes);
#endif
}

/// The lowest `count` bits; all of them from 64 on, where a shift would be undefined.
inline std::uint64_t LowBits(std::size_t count) {
  return count < 64 ? (std::uint64_t{1} << count) - 1 : ~std::uint64_t{0};
}

/// A change has three bytes at least; one may begin before its chunk. 64 bytes hold the ends of 21
/// such lines ("0!" and a newline) and of one that began before them.
inline constexpr std::size_t kMostCodesFound = 64 / 3 + 1;

/// Where a line's identifier code probably is.
struct CodeInLine {
  const char* code;
  std::uint32_t length;
};

/// The codes of the changes that end in the 64 bytes at `chunk`, as far as they lie before `end`.
/// They are guesses: of a line that is not plain it is any text of the line. `line` is where the
/// next line begins and moves on. Returns the end of what it wrote, kMostCodesFound at most. A
/// taker fetches the memory of these codes before it counts their changes: in a large dump each
/// change would wait for its own cell otherwise.
inline CodeInLine* FindCodes(const char*& line, const char* chunk, const char* end,
                             CodeInLine* codes) {
  // Bytes from `end` on are padding and mark nothing.
  std::uint64_t marks = MarkOddBytes(chunk) & LowBits(static_cast<std::size_t>(end - chunk));
  // Right for a scalar change; a blank later in the line moves it to the second word.
  const char* code = line + 1;
  for (; marks != 0; marks &= marks - 1) {
    const char* const odd = chunk + static_cast<unsigned>(std::countr_zero(marks));
    if (*odd == '\n') {
      *codes = {code, static_cast<std::uint32_t>(odd - code)};
      // Stamps name no code, and lines of one byte have none.
      codes += odd > code && *line != '#' ? 1 : 0;
      line = odd + 1;
      code = odd + 2;
    } else {
      code = odd + 1;
    }
  }
  return codes;
}

/// Hands one plain line to a taker of ScanPlainLines; false: refused.
template <class Taker>
bool TakePlainLine(Taker& taker, const char* line, const char* blank, const char* newline) {
  // One comparison for the most frequent of all lines.
  if (blank != nullptr || (*line | 1) != '1') [[unlikely]]  // 0 and 1 alike
    return taker.Other(line, blank, newline);
  // A taker that takes all of them needs no check on every change.
  if constexpr (std::is_void_v<decltype(taker.Scalar(line, newline))>) {
    taker.Scalar(line, newline);
    return true;
  } else {
    return taker.Scalar(line, newline);
  }
}

/// How far a taker looked ahead past `chunk`: to the end where it does not look.
template <class Taker>
const char* LookAheadOf(Taker& taker, const char* line, const char* chunk, const char* end) {
  if constexpr (requires { taker.LookAhead(line, chunk, end); }) {
    return taker.LookAhead(line, chunk, end);
  }
  return end;
}

/// Hands the plain lines from `begin` on to `taker` and returns the start of the first line that is
/// not plain, that may have `tooLong` characters or more, that has no newline before `end`, or that
/// the taker refuses. Up to kScanPadding bytes after `end` are read. The taker has two operations:
///
///   void Scalar(const char* line, const char* newline)    a line without a blank that begins with
///                                                         0 or 1; may return bool, false: refused
///   bool Other(const char* line, const char* blank, const char* newline)
///                                                         any other line, an empty one too;
///                                                         `blank` is its one blank or null; false:
///                                                         refused
///
/// and may have a third, which is called before the lines are taken that end in the next bytes:
///
///   const char* LookAhead(const char* line, const char* chunk, const char* end)
///                                                         returns how far it looked, past `chunk`;
///                                                         `line` is where the next line begins
template <class Taker>
const char* ScanPlainLines(const char* begin, const char* end, std::size_t tooLong, Taker& taker) {
  const char* line = begin;
  const char* blank = nullptr;  // the one blank of the line so far
  const char* ahead = begin;
  for (const char* chunk = begin; chunk < end; chunk += 64) {
    if (chunk >= ahead) [[unlikely]]
      ahead = LookAheadOf(taker, line, chunk, end);
    // Checked once for 64 bytes, so a line is left to the plain path a little earlier than it must
    // be.
    if (static_cast<std::size_t>(chunk + 64 - line) >= tooLong) return line;
    std::uint64_t marks = MarkOddBytes(chunk) & LowBits(static_cast<std::size_t>(end - chunk));
    for (; marks != 0; marks &= marks - 1) {
      const char* const odd = chunk + static_cast<unsigned>(std::countr_zero(marks));
      if (*odd == '\n') [[likely]] {
        if (!TakePlainLine(taker, line, blank, odd)) return line;
        line = odd + 1;
        blank = nullptr;
      } else if (*odd == ' ' && blank == nullptr) {
        blank = odd;
      } else {
        // A second blank, a tab, a carriage return, a NUL or a byte from 128 on: not plain.
        return line;
      }
    }
  }
  return line;
}

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_PLAIN_LINES_H_
