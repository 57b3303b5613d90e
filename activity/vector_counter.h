// Counts the bits of vectors, many at a time.
//
// A vector keeps its bits in words of 64. Where bits go between 0 and 1, which is nearly always,
// their times and toggles are first added up in small counters of few bytes, which are relative to
// a base time and go into the figures now and then; what happens with x and z goes there at once.
//
// A vector of up to 64 bits that are all 0 or 1 does not even count each change: it writes the
// values and their times down, its log, and counts a handful of them together.
#ifndef KESNCD_ACTIVITY_VECTOR_COUNTER_H_
#define KESNCD_ACTIVITY_VECTOR_COUNTER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "activity/activity_result.h"
#include "activity/bit_edge.h"
#include "activity/vector_value.h"
#include "text/large_array.h"
#include "vcd/plain_lines.h"

namespace orsa::kesncd {

/// The step of a dump that changes belong to.
struct CountedStep {
  std::uint64_t number = 1;  // 0 is the step of what never happened
  std::uint64_t ticks = 0;   // its time, clamped to the window
  bool counts = false;       // whether its toggles lie in the window
};

/// A vector is added before the first value; then, in each observed stretch, it takes a first value
/// by Begin and further ones by Change or Correct, and is ended by Close or Leave.
class VectorCounter {
 public:
  /// `isWide` may be true only where HasWideLanes; it makes no difference to what is counted.
  explicit VectorCounter(const CountedStep& step, bool isWide = HasWideLanes())
      : step_(step), isWide_(isWide) {}

  /// Adds a vector whose figures begin with those of bit `firstBit`; returns its number.
  std::uint32_t Add(std::uint64_t firstBit, std::uint32_t width);
  std::uint32_t Width(std::uint32_t vector) const { return vectors_[vector].width; }

  /// Fetches what Write looks at.
  void Fetch(std::uint32_t number) const {
    const auto* const lines = reinterpret_cast<const char*>(&vectors_[number]);
    __builtin_prefetch(lines, 1);
    __builtin_prefetch(lines + 64, 1);
  }

  /// The first value in a stretch. `figures` are those of all bits, here and below.
  void Begin(std::uint32_t number, const ValueWord* value, BitFigures* figures);
  /// Whether Write takes the vector's next value, if all of its bits are 0 or 1.
  bool IsOpen(std::uint32_t number) const { return vectors_[number].isOpen; }
  /// Does what Change does for a vector that is open: writes the value down. Of `value`, as many
  /// bits are taken as the vector has.
  bool Write(std::uint32_t number, std::uint64_t value, BitFigures* figures) {
    Vector& vector = vectors_[number];
    value &= LowBits(vector.width);
    if (value == vector.last) return false;
    if (vector.logged == kMostLogged || vector.logCounts != step_.counts ||
        step_.ticks - vector.base >= kMostTicks) [[unlikely]] {
      MakeRoom(vector, figures);
    }
    vector.ticks[vector.logged] = static_cast<std::uint32_t>(step_.ticks - vector.base);
    vector.values[vector.logged++] = vector.last = value;
    return true;
  }
  /// The first value in a step, if it differs from the one before; false where it does not.
  bool Change(std::uint32_t number, const ValueWord* value, BitFigures* figures);
  /// Another value in the step of the last one, which is as if it had not been.
  void Correct(std::uint32_t number, const ValueWord* value, BitFigures* figures);

  /// Adds a time to that of every bit's level: with the time of the stretch's end, the levels end.
  void AddToLevels(std::uint32_t number, std::uint64_t ticks, BitFigures* figures);
  /// Writes the edges of the vector's bits, after all that is counted went into the figures.
  void Leave(std::uint32_t number, BitFigures* figures, BitEdge* edges);
  /// The edges that the bits had before the step of the last value.
  std::vector<BitEdge> EdgesBefore(std::uint32_t number, BitFigures* figures);

 private:
  /// 64 bits; see BitEdge for what is kept of each.
  struct Word {
    ValueWord now;
    std::uint64_t hasKnown = 0, known = 0, touched = 0;
    std::uint64_t first = 0, touchedBefore = 0, firstCounts = 0;
    // What the first ones were before the step of the last value.
    ValueWord before;
    std::uint64_t hadKnown = 0, knew = 0, wasTouched = 0;
    std::uint64_t base = 0;  // levels when the small counters were last empty
  };
  /// The small counters of sixteen bits: falls less rises, relative to the base time, and toggles.
  struct alignas(16) Small {
    std::array<std::int32_t, 16> times{};
    std::array<std::uint8_t, 16> toggles{};
  };
  static constexpr std::size_t kMostLogged = 7;  // what three bits count
  /// Two cache lines, and Write needs no other memory. What is logged was not counted yet; the last
  /// value may still be corrected.
  struct alignas(64) Vector {
    std::array<std::uint64_t, kMostLogged> values{};
    std::uint64_t last = 0;                          // the value that the vector has
    std::array<std::uint32_t, kMostLogged> ticks{};  // of the values, relative to the base time
    std::uint8_t logged = 0;                         // values that are written down
    bool isOpen = false;                             // all bits are 0 or 1, 64 of them at most
    bool logCounts = false;  // whether the toggles of what is logged lie in the window
    bool isPending = false;  // the small counters are not all 0
    std::uint64_t base = 0;  // time
    std::uint64_t firstBit = 0;
    std::uint32_t width = 0;
    std::uint32_t firstWord = 0;
    std::uint32_t firstSmall = 0;
    std::uint16_t changes = 0;  // since the base time
    bool wasSeen = false;       // before the step of the last value
  };
  static_assert(sizeof(Vector) == 128);
  static constexpr std::uint16_t kMostChanges = 255;  // that a byte counts
  static constexpr std::uint64_t kMostTicks = std::uint64_t{1} << 31;

  std::span<Word> WordsOf(const Vector& vector);
  void MakeRoom(Vector& vector, BitFigures* figures);
  void CountLog(Vector& vector, BitFigures* figures);
  void CountValues(const Vector& vector, const Word& word);
  void OpenLog(Vector& vector) const;
  void Prepare(Vector& vector, BitFigures* figures);
  void Flush(Vector& vector, BitFigures* figures);
  void FlushWord(const Word& word, Small* small, std::uint32_t width, std::uint64_t base,
                 BitFigures* figures);
  void MoveLevels(Vector& vector, std::size_t index, const ValueWord& value, BitFigures* figures);
  void Toggle(Vector& vector, std::size_t word, std::uint64_t toggles, bool counts);
  void ToggleSmall(const Vector& vector, std::size_t word, std::uint64_t toggles,
                   std::uint64_t high, std::int32_t ticks, bool counts);
  void Learn(Word& word, const ValueWord& value, std::uint64_t lanes, BitFigures* figures) const;
  void Unlearn(Word& word, BitFigures* figures) const;

  const CountedStep& step_;
  const bool isWide_;
  LargeArray<Vector> vectors_;
  LargeArray<Word> words_;
  LargeArray<Small> smalls_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_VECTOR_COUNTER_H_
