// Counts the bits of vectors, many at a time.
//
// A vector keeps its bits in words of 64. Where bits go between 0 and 1, which is nearly always,
// their times and toggles are first added up in small counters of few bytes, which are relative to
// a base time and go into the figures now and then; what happens with x and z goes there at once.
//
// A vector of up to 64 bits that are all 0 or 1 does not even count each change: it writes the
// values and their times down, and counts a handful of them together.
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
  explicit VectorCounter(const CountedStep& step) : step_(step) {}

  /// Adds a vector whose figures begin with those of bit `firstBit`; returns its number.
  std::uint32_t Add(std::uint64_t firstBit, std::uint32_t width);
  std::uint32_t Width(std::uint32_t vector) const { return vectors_[vector].width; }

  /// The first value in a stretch. `figures` are those of all bits, here and below.
  void Begin(std::uint32_t number, const ValueWord* value, BitFigures* figures);
  /// The first value in a step, if it differs from the one before; false where it does not.
  bool Change(std::uint32_t number, const ValueWord* value, BitFigures* figures) {
    Vector& vector = vectors_[number];
    if (vector.log == kNone || !logs_[vector.log].isOpen || value->unknown != 0) [[unlikely]]
      return ChangeWords(vector, value, figures);
    Log& log = logs_[vector.log];
    if (value->high == log.last) return false;
    if (log.size == Log::kMost || log.counts != step_.counts ||
        step_.ticks - vector.base >= kMostTicks) [[unlikely]] {
      MakeRoom(vector, log, figures);
    }
    log.ticks[log.size] = static_cast<std::uint32_t>(step_.ticks - vector.base);
    log.values[log.size++] = log.last = value->high;
    return true;
  }
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
  /// Values that were not counted yet. The last one may still be corrected.
  struct alignas(64) Log {
    static constexpr std::size_t kMost = 7;  // what three bits count

    std::array<std::uint64_t, kMost> values{};
    std::uint64_t last = 0;                    // the value that the vector has
    std::array<std::uint32_t, kMost> ticks{};  // relative to the base time
    std::uint8_t size = 0;
    bool isOpen = false;  // all bits are 0 or 1
    bool counts = false;  // whether the toggles lie in the window
  };
  struct Vector {
    std::uint64_t firstBit = 0;
    std::uint64_t base = 0;  // time
    std::uint32_t width = 0;
    std::uint32_t firstWord = 0;
    std::uint32_t firstSmall = kNone;
    std::uint32_t log = kNone;
    std::uint16_t changes = 0;  // since the base time
    bool isPending = false;     // the small counters are not all 0
    bool wasSeen = false;       // before the step of the last value
  };
  static constexpr std::uint32_t kNone = UINT32_MAX;
  static constexpr std::uint32_t kLeastSmall = 12;    // bits for which small counters pay
  static constexpr std::uint16_t kMostChanges = 255;  // that a byte counts
  static constexpr std::uint64_t kMostTicks = std::uint64_t{1} << 31;

  std::span<Word> WordsOf(const Vector& vector);
  Log* LogOf(const Vector& vector) { return vector.log == kNone ? nullptr : &logs_[vector.log]; }
  bool ChangeWords(Vector& vector, const ValueWord* value, BitFigures* figures);
  void MakeRoom(Vector& vector, Log& log, BitFigures* figures);
  void CountLog(Vector& vector, BitFigures* figures);
  void CountValues(Vector& vector, const Log& log, Word& word);
  void OpenLog(const Vector& vector);
  void Prepare(Vector& vector, BitFigures* figures);
  void Flush(Vector& vector, BitFigures* figures);
  void FlushWord(const Word& word, Small* small, std::uint32_t width, std::uint64_t base,
                 BitFigures* figures);
  void MoveLevels(Vector& vector, std::size_t index, const ValueWord& value, BitFigures* figures);
  void Toggle(Vector& vector, std::size_t word, std::uint64_t toggles, bool counts,
              BitFigures* figures);
  void ToggleSmall(const Vector& vector, std::size_t word, std::uint64_t toggles,
                   std::uint64_t high, std::int32_t ticks, bool counts);
  void Learn(Word& word, const ValueWord& value, std::uint64_t lanes, BitFigures* figures) const;
  void Unlearn(Word& word, BitFigures* figures) const;

  const CountedStep& step_;
  std::vector<Vector> vectors_;
  std::vector<Word> words_;
  std::vector<Small> smalls_;
  std::vector<Log> logs_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_VECTOR_COUNTER_H_
