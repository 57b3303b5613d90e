// The arithmetic of vectors: levels by words, times and toggles in small counters.
//
// A change passes up to three stages, from the cheapest to the dearest. A log takes values as they
// are, without looking at bits (Write, in the header). Small counters take the bits that toggled,
// sixteen at once: a time of 32 bits and a toggle count of 8 bits each. The figures, with 64 bits
// for each, are touched when a small counter might overflow, when x or z come into play, and at the
// end.
//
// Times are sums of differences as everywhere (see activity_part.h): a fall at 30 adds 30 to the
// time at 1, a rise at 10 takes 10 off.
#include "activity/vector_counter.h"

#include <algorithm>
#include <bit>

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace orsa::kesncd {

namespace {

// As many bytes as an SSE register has, so that one register holds the toggle counts of a group.
constexpr std::size_t kLanes = 16;  // bits of a group of small counters
constexpr int kFew = 3;             // bits up to which one by one is faster than all at once

/// Calls `visit(bit)` for every bit of a mask.
template <class Visit>
void ForEachBit(std::uint64_t mask, Visit visit) {
  for (; mask != 0; mask &= mask - 1) visit(static_cast<std::size_t>(std::countr_zero(mask)));
}

// The Level of a bit, from the two masks of its word.
unsigned LevelIn(const ValueWord& word, std::size_t bit) {
  return static_cast<unsigned>((word.high >> bit & 1) | (word.unknown >> bit & 1) << 1);
}

bool IsSet(std::uint64_t mask, std::size_t bit) {
  return (mask >> bit & 1) != 0;
}

// At most kFew: each round removes the lowest bit that is set.
bool HasFewBits(std::uint64_t mask) {
  for (int i = 0; i < kFew; ++i) mask &= mask - 1;
  return mask == 0;
}

/// The bits of `mask` from `kept`, the others from `given`.
std::uint64_t Mix(std::uint64_t mask, std::uint64_t given, std::uint64_t kept) {
  return (given & mask) | (kept & ~mask);
}

#ifdef __SSE2__
/// A byte of ones for each of the sixteen bits that is set. Bit 0 becomes byte 0. Each byte of the
/// result looks at one bit of a byte of `bits`, so the two bytes are first spread over eight places
/// each.
__m128i BytesOf(std::uint64_t bits) {
  const __m128i places = _mm_set_epi8(-128, 64, 32, 16, 8, 4, 2, 1, -128, 64, 32, 16, 8, 4, 2, 1);
  __m128i bytes = _mm_cvtsi32_si128(static_cast<int>(bits & 0xFFFF));
  bytes = _mm_unpacklo_epi8(bytes, bytes);   // each of the two bytes twice,
  bytes = _mm_shufflelo_epi16(bytes, 0x50);  // four times,
  bytes = _mm_unpacklo_epi32(bytes, bytes);  // eight times
  return _mm_cmpeq_epi8(_mm_and_si128(bytes, places), places);
}

/// Adds `ticks` to the times of four lanes where a toggle fell, takes it off where it rose. A lane
/// has all bits set or none: (t ^ r) - r is -t where r has all bits set, else t.
void AddTimes(std::int32_t* times, __m128i toggled, __m128i rose, __m128i ticks) {
  auto* const at = reinterpret_cast<__m128i*>(times);
  const __m128i change = _mm_sub_epi32(_mm_xor_si128(_mm_and_si128(ticks, toggled), rose), rose);
  _mm_store_si128(at, _mm_add_epi32(_mm_load_si128(at), change));
}

/// The toggles of sixteen lanes at once: those in `toggled`, which end at the levels of `high`.
/// `count` is false for toggles outside of the window, which end levels but are not counted.
void ToggleLanes(std::int32_t* times, std::uint8_t* counts, std::uint64_t toggled,
                 std::uint64_t high, std::int32_t ticks, bool count) {
  const __m128i t8 = BytesOf(toggled);
  const __m128i r8 = BytesOf(toggled & high);
  if (count) {
    auto* const at = reinterpret_cast<__m128i*>(counts);
    // A byte of ones is -1, so taking it off adds one.
    _mm_store_si128(at, _mm_sub_epi8(_mm_load_si128(at), t8));
  }
  const __m128i all = _mm_set1_epi32(ticks);
  // A byte of ones twice is two of them, twice again four: as wide as a time.
  const __m128i t16[2] = {_mm_unpacklo_epi8(t8, t8), _mm_unpackhi_epi8(t8, t8)};
  const __m128i r16[2] = {_mm_unpacklo_epi8(r8, r8), _mm_unpackhi_epi8(r8, r8)};
  for (std::size_t half = 0; half < 2; ++half) {
    AddTimes(times + 8 * half, _mm_unpacklo_epi16(t16[half], t16[half]),
             _mm_unpacklo_epi16(r16[half], r16[half]), all);
    AddTimes(times + 8 * half + 4, _mm_unpackhi_epi16(t16[half], t16[half]),
             _mm_unpackhi_epi16(r16[half], r16[half]), all);
  }
}

/// Sums and carries of three numbers of one bit each, for 64 of them at once. A full adder whose
/// wires are 64 bits wide.
struct BitSums {
  std::uint64_t ones;
  std::uint64_t twos;
};
BitSums Sum(std::uint64_t a, std::uint64_t b, std::uint64_t c) {
  const std::uint64_t differs = a ^ b;
  return {differs ^ c, (a & b) | (differs & c)};
}

/// How often each of 64 bits is set in seven words, as numbers of three bits. Four full adders, in
/// place of looking at 7 times 64 bits. Seven words are just what three bits can count.
struct BitCounts {
  std::uint64_t ones, twos, fours;

  explicit BitCounts(const std::array<std::uint64_t, 7>& words) {
    const BitSums first = Sum(words[0], words[1], words[2]);
    const BitSums second = Sum(words[3], words[4], words[5]);
    const BitSums third = Sum(first.ones, second.ones, words[6]);
    const BitSums carries = Sum(first.twos, second.twos, third.twos);
    ones = third.ones;
    twos = carries.ones;
    fours = carries.twos;
  }
};

/// Adds the counts of sixteen lanes. A lane has room for 7 more: CountLog sees to that.
void AddCounts(std::uint8_t* counts, const BitCounts& added, std::size_t from) {
  auto* const at = reinterpret_cast<__m128i*>(counts);
  const __m128i ones = _mm_and_si128(BytesOf(added.ones >> from), _mm_set1_epi8(1));
  const __m128i twos = _mm_and_si128(BytesOf(added.twos >> from), _mm_set1_epi8(2));
  const __m128i fours = _mm_and_si128(BytesOf(added.fours >> from), _mm_set1_epi8(4));
  const __m128i sum = _mm_add_epi8(_mm_add_epi8(ones, twos), fours);
  _mm_store_si128(at, _mm_add_epi8(_mm_load_si128(at), sum));
}

#ifdef __x86_64__
/// AddWeights with all sixteen lanes in one register; a value is the mask of lanes to add to.
template <std::size_t kValues>
__attribute__((target("avx512f"))) void AddWideWeights(
    std::int32_t* times, const std::array<std::uint64_t, kValues>& values,
    const std::array<std::int32_t, kValues>& weights, std::size_t from) {
  __m512i sums = _mm512_loadu_si512(times);
  for (std::size_t k = 0; k < kValues; ++k) {
    const auto set = static_cast<__mmask16>(values[k] >> from);
    sums = _mm512_mask_add_epi32(sums, set, sums, _mm512_set1_epi32(weights[k]));
  }
  _mm512_storeu_si512(times, sums);
}
#endif

/// Adds to the times of sixteen lanes, for each of some values, its weight where a lane is set. No
/// multiplication is needed, as a bit is 0 or 1: its mask takes the weight or leaves it.
template <std::size_t kValues>
void AddWeights(std::int32_t* times, const std::array<std::uint64_t, kValues>& values,
                const std::array<std::int32_t, kValues>& weights, std::size_t from,
                [[maybe_unused]] bool isWide) {
#ifdef __x86_64__
  if (isWide) return AddWideWeights(times, values, weights, from);
#endif
  auto* const at = reinterpret_cast<__m128i*>(times);
  __m128i sums[4];
  for (std::size_t i = 0; i < 4; ++i) sums[i] = _mm_load_si128(at + i);
  for (std::size_t k = 0; k < kValues; ++k) {
    const __m128i set = BytesOf(values[k] >> from);
    const __m128i weight = _mm_set1_epi32(weights[k]);
    // As wide as a time, like in ToggleLanes.
    const __m128i low = _mm_unpacklo_epi8(set, set);
    const __m128i high = _mm_unpackhi_epi8(set, set);
    sums[0] = _mm_add_epi32(sums[0], _mm_and_si128(_mm_unpacklo_epi16(low, low), weight));
    sums[1] = _mm_add_epi32(sums[1], _mm_and_si128(_mm_unpackhi_epi16(low, low), weight));
    sums[2] = _mm_add_epi32(sums[2], _mm_and_si128(_mm_unpacklo_epi16(high, high), weight));
    sums[3] = _mm_add_epi32(sums[3], _mm_and_si128(_mm_unpackhi_epi16(high, high), weight));
  }
  for (std::size_t i = 0; i < 4; ++i) _mm_store_si128(at + i, sums[i]);
}
#endif

// The same for a single lane, where few bits toggle or the processor has no SSE2.
void ToggleLane(std::int32_t& time, std::uint8_t& count, bool isHigh, std::int32_t ticks,
                bool counts) {
  time += isHigh ? -ticks : ticks;
  count = static_cast<std::uint8_t>(count + (counts ? 1 : 0));
}

}  // namespace

/// All vectors have small counters, narrow ones too: what is written down is counted in these.
std::uint32_t VectorCounter::Add(std::uint64_t firstBit, std::uint32_t width) {
  Vector vector;
  vector.firstBit = firstBit;
  vector.width = width;
  vector.firstWord = static_cast<std::uint32_t>(words_.size());
  words_.resize(words_.size() + (width + kWordBits - 1) / kWordBits);
  vector.firstSmall = static_cast<std::uint32_t>(smalls_.size());
  smalls_.resize(smalls_.size() + (width + kLanes - 1) / kLanes);
  vectors_.push_back(vector);
  return static_cast<std::uint32_t>(vectors_.size() - 1);
}

std::span<VectorCounter::Word> VectorCounter::WordsOf(const Vector& vector) {
  return {words_.data() + vector.firstWord, (vector.width + kWordBits - 1) / kWordBits};
}

/// Lets values of this step be written down. The log is empty then, all of its values will lie on
/// the same side of the window's bounds, and the time since the base time fits into 31 bits.
void VectorCounter::MakeRoom(Vector& vector, BitFigures* figures) {
  CountLog(vector, figures);
  vector.logCounts = step_.counts;
  if (step_.ticks - vector.base < kMostTicks) return;
  Flush(vector, figures);
  vector.base = step_.ticks;
}

/// Counts the values that are written down, as Change would have done one after the other.
void VectorCounter::CountLog(Vector& vector, BitFigures* figures) {
  if (vector.logged == 0) return;
  // Each value may toggle a bit once, and a toggle count is a byte.
  if (vector.changes + vector.logged > kMostChanges) Flush(vector, figures);
  Word& word = words_[vector.firstWord];
  if (!vector.isPending) word.base = word.now.high;
  vector.isPending = true;
  vector.changes = static_cast<std::uint16_t>(vector.changes + vector.logged);
  // Only the last value can be corrected by a further one in its step, so only what was before it
  // has to be right: all bits were 0 or 1 there.
  const std::size_t last = vector.logged - 1U;
  word.before.high = last > 0 ? vector.values[last - 1] : word.now.high;
  word.before.unknown = 0;
  CountValues(vector, word);
  word.now.high = word.known = vector.values[last];
  word.hadKnown = word.hasKnown;
  word.knew = word.before.high;
  word.wasTouched = word.touched;
  vector.wasSeen = true;
  vector.logged = 0;
}

/// Moves the values of the log into the small counters; the word's level is still that before the
/// first of them.
void VectorCounter::CountValues(const Vector& vector, const Word& word) {
#ifdef __SSE2__
  // A full log is counted all at once.
  if (vector.logged == kMostLogged) {
    constexpr std::size_t kValues = kMostLogged + 1;
    std::array<std::uint64_t, kValues> values;
    std::array<std::uint64_t, kMostLogged> toggles;
    // A fall adds its time and a rise takes it off: so each value has the time of the change that
    // ends it, less that of the one that began it.
    std::array<std::int32_t, kValues> weights;
    values[0] = word.now.high;
    std::uint64_t toggled = 0;
    std::uint32_t before = 0;
    for (std::size_t i = 0; i < kMostLogged; ++i) {
      values[i + 1] = vector.values[i];
      toggles[i] = values[i] ^ values[i + 1];
      toggled |= toggles[i];
      weights[i] = static_cast<std::int32_t>(vector.ticks[i] - before);
      before = vector.ticks[i];
    }
    weights[kMostLogged] = static_cast<std::int32_t>(-before);
    const BitCounts counts(toggles);
    Small* small = smalls_.data() + vector.firstSmall;
    for (std::size_t from = 0; from < vector.width; from += kLanes, ++small) {
      // The weights of bits that stay add up to 0: the upper half of an address costs nothing.
      if ((toggled >> from & 0xFFFF) == 0) continue;
      AddWeights(small->times.data(), values, weights, from, isWide_);
      if (vector.logCounts) AddCounts(small->toggles.data(), counts, from);
    }
    return;
  }
#endif
  // A log that was ended early: value by value.
  std::uint64_t high = word.now.high;
  for (std::size_t i = 0; i < vector.logged; ++i) {
    const std::uint64_t toggles = high ^ vector.values[i];
    high = vector.values[i];
    ToggleSmall(vector, 0, toggles, high, static_cast<std::int32_t>(vector.ticks[i]),
                vector.logCounts);
  }
}

/// Writes further values down if all bits are 0 or 1. A bit that is has had a known value, which is
/// its last one, and nothing has touched it since: so nothing but its level changes.
void VectorCounter::OpenLog(Vector& vector) const {
  // What is written down are single words.
  if (vector.width > kWordBits) return;
  const Word& word = words_[vector.firstWord];
  vector.isOpen = word.now.unknown == 0;
  vector.last = word.now.high;
}

/// Makes room in the small counters for one more change. Counters that hold nothing are given a new
/// base time here: it costs nothing then.
void VectorCounter::Prepare(Vector& vector, BitFigures* figures) {
  if (vector.changes == kMostChanges || step_.ticks - vector.base >= kMostTicks) {
    Flush(vector, figures);
  }
  if (!vector.isPending) {
    vector.changes = 0;
    vector.base = step_.ticks;
    for (Word& word : WordsOf(vector)) word.base = word.now.high;
  }
  ++vector.changes;
}

/// Moves what the small counters hold into the figures. Called before anything reads the figures,
/// and before the small counters could overflow.
void VectorCounter::Flush(Vector& vector, BitFigures* figures) {
  if (!vector.isPending) return;
  vector.isPending = false;
  vector.changes = 0;
  Small* small = smalls_.data() + vector.firstSmall;
  std::uint32_t left = vector.width;
  BitFigures* bits = figures + vector.firstBit;
  for (const Word& word : WordsOf(vector)) {
    const std::uint32_t width = std::min<std::uint32_t>(left, kWordBits);
    FlushWord(word, small, width, vector.base, bits);
    small += kWordBits / kLanes;
    bits += width;
    left -= width;
  }
}

/// Of one word. `figures` are those of its bits; the groups of small counters are empty after it.
void VectorCounter::FlushWord(const Word& word, Small* small, std::uint32_t width,
                              std::uint64_t base, BitFigures* figures) {
  for (std::uint32_t bit = 0; bit < width; ++bit) {
    Small& group = small[bit / kLanes];
    // Times in the group are relative to the base time: each fall lacks it, each rise has it too
    // much. Falls less rises are the level then less the level now: 0, 1 or -1, which wraps around
    // as times do.
    const auto falls = (word.base >> bit & 1) - (word.now.high >> bit & 1);
    const auto time = static_cast<std::uint64_t>(std::int64_t{group.times[bit % kLanes]});
    const std::uint64_t high = time + falls * base;
    // What a fall adds to the time at 1 it takes off that at 0, and a rise the other way round.
    figures[bit].t1 += high;
    figures[bit].t0 -= high;
    figures[bit].tc += group.toggles[bit % kLanes];
    if (bit % kLanes == kLanes - 1 || bit == width - 1) group = {};
  }
}

/// Lets bits go from 0 to 1 and from 1 to 0; their levels are the new ones already. `toggles` has a
/// bit set for each of them.
void VectorCounter::Toggle(Vector& vector, std::size_t word, std::uint64_t toggles, bool counts) {
  const std::uint64_t high = words_[vector.firstWord + word].now.high;
  vector.isPending = true;
  ToggleSmall(vector, word, toggles, high, static_cast<std::int32_t>(step_.ticks - vector.base),
              counts);
}

/// The same in the small counters, at a time relative to the base time. `ticks` is below 2^31,
/// which Prepare and Change see to.
void VectorCounter::ToggleSmall(const Vector& vector, std::size_t word, std::uint64_t toggles,
                                std::uint64_t high, std::int32_t ticks, bool counts) {
  Small* const small = smalls_.data() + vector.firstSmall + word * (kWordBits / kLanes);
#ifdef __SSE2__
  if (!HasFewBits(toggles)) {
    for (std::size_t at = 0; toggles >> at != 0; at += kLanes) {
      Small& group = small[at / kLanes];
      ToggleLanes(group.times.data(), group.toggles.data(), toggles >> at, high >> at, ticks,
                  counts);
      // A shift by 64 would be undefined.
      if (at + kLanes == kWordBits) break;
    }
    return;
  }
#endif
  ForEachBit(toggles, [&](std::size_t bit) {
    Small& group = small[bit / kLanes];
    ToggleLane(group.times[bit % kLanes], group.toggles[bit % kLanes], IsSet(high, bit), ticks,
               counts);
  });
}

/// Ends the times of the old levels and begins those of the new ones. For words with x or z, before
/// or now, and for corrections. Toggles between 0 and 1 still take the short way; they are counted
/// by Learn, so here they only move times.
void VectorCounter::MoveLevels(Vector& vector, std::size_t index, const ValueWord& value,
                               BitFigures* figures) {
  Word& word = words_[vector.firstWord + index];
  const std::uint64_t unknown = word.now.unknown | value.unknown;
  const std::uint64_t toggles = (word.now.high ^ value.high) & ~unknown;
  if (toggles != 0) {
    word.now.high ^= toggles;
    Toggle(vector, index, toggles, false);
  }
  // What is left enters or leaves x or z. Times at these have no small counters.
  const std::uint64_t others = (word.now.high ^ value.high) | (word.now.unknown ^ value.unknown);
  if (others == 0) return;
  BitFigures* const bits = figures + vector.firstBit + index * kWordBits;
  // The small counters are relative to the word's levels. Those of other words go on: a vector of
  // thousands of words would else be flushed for each of them.
  if (vector.isPending) {
    const auto width = static_cast<std::uint32_t>(
        std::min<std::size_t>(vector.width - index * kWordBits, kWordBits));
    FlushWord(word, smalls_.data() + vector.firstSmall + index * (kWordBits / kLanes), width,
              vector.base, bits);
  }
  ForEachBit(others, [&](std::size_t bit) {
    TimeAt(bits[bit], LevelIn(word.now, bit)) += step_.ticks;
    TimeAt(bits[bit], LevelIn(value, bit)) -= step_.ticks;
  });
  word.now = value;
  word.base = value.high;
}

/// Counts toggles and glitches, and notes known values; `figures` are those of the word's bits.
/// `lanes` has the bits that the vector has in the word. Toggles and glitches follow BitEdge::Take,
/// with a mask in place of each of its questions.
void VectorCounter::Learn(Word& word, const ValueWord& value, std::uint64_t lanes,
                          BitFigures* figures) const {
  const std::uint64_t arrived = ~value.unknown & lanes;
  // For the part before: whether these were toggles depends on what it ends with.
  const std::uint64_t fresh = arrived & ~word.hasKnown;
  word.first = Mix(fresh, value.high, word.first);
  word.touchedBefore = Mix(fresh, word.touched, word.touchedBefore);
  word.firstCounts = Mix(fresh, step_.counts ? fresh : 0, word.firstCounts);
  if (step_.counts) {
    const std::uint64_t returned = arrived & word.hasKnown;
    const std::uint64_t differs = word.known ^ value.high;
    ForEachBit(returned & differs, [&](std::size_t bit) { ++figures[bit].tc; });
    ForEachBit(returned & ~differs & word.touched, [&](std::size_t bit) { ++figures[bit].ig; });
  }
  word.known = Mix(arrived, value.high, word.known);
  word.hasKnown |= arrived;
  // x is unknown and not high, z is unknown and high.
  word.touched = (word.touched & ~arrived) | (value.unknown & ~value.high);
}

/// Takes back what Learn did in this step. What is kept of the first known value needs no way back:
/// it means something only for bits of `hasKnown`, and is set anew when one gets there again.
void VectorCounter::Unlearn(Word& word, BitFigures* figures) const {
  if (step_.counts) {
    const std::uint64_t differs = word.known ^ word.knew;
    const std::uint64_t back = word.hadKnown & ~differs & word.wasTouched & ~word.now.unknown;
    ForEachBit(word.hadKnown & differs, [&](std::size_t bit) { --figures[bit].tc; });
    ForEachBit(back, [&](std::size_t bit) { --figures[bit].ig; });
  }
  word.hasKnown = word.hadKnown;
  word.known = word.knew;
  word.touched = word.wasTouched;
}

/// What the vector was in an earlier stretch is gone: all words are made anew.
void VectorCounter::Begin(std::uint32_t number, const ValueWord* value, BitFigures* figures) {
  Vector& vector = vectors_[number];
  vector.wasSeen = false;
  BitFigures* bits = figures + vector.firstBit;
  std::uint32_t left = vector.width;
  for (Word& word : WordsOf(vector)) {
    const std::uint32_t width = std::min<std::uint32_t>(left, kWordBits);
    word = {};
    word.now = *value++;
    word.base = word.now.high;
    for (std::uint32_t bit = 0; bit < width; ++bit) {
      TimeAt(bits[bit], LevelIn(word.now, bit)) -= step_.ticks;
    }
    Learn(word, word.now, LowBits(width), bits);
    bits += width;
    left -= width;
  }
  vector.base = step_.ticks;
  OpenLog(vector);
}

/// The way of all values that are not written down.
bool VectorCounter::Change(std::uint32_t number, const ValueWord* value, BitFigures* figures) {
  Vector& vector = vectors_[number];
  CountLog(vector, figures);
  const std::span<Word> words = WordsOf(vector);
  const bool isSame =
      std::equal(words.begin(), words.end(), value,
                 [](const Word& word, const ValueWord& v) { return word.now == v; });
  // Not a change: what `before` says stays that of the last one, and so does the step of its code.
  if (isSame) return false;
  vector.wasSeen = true;
  Prepare(vector, figures);
  std::size_t left = vector.width;
  for (std::size_t index = 0; index < words.size(); ++index, left -= kWordBits) {
    Word& word = words[index];
    // For Correct, all that the new value may change.
    word.before = word.now;
    word.hadKnown = word.hasKnown;
    word.knew = word.known;
    word.wasTouched = word.touched;
    if ((word.now.unknown | value[index].unknown) == 0) [[likely]] {
      // Known bits that toggle: the last known values are the ones that they leave.
      const std::uint64_t toggles = word.now.high ^ value[index].high;
      word.known = word.now.high = value[index].high;
      if (toggles != 0) Toggle(vector, index, toggles, step_.counts);
    } else {
      MoveLevels(vector, index, value[index], figures);
      Learn(word, value[index], LowBits(left), figures + vector.firstBit + index * kWordBits);
    }
  }
  OpenLog(vector);
  return true;
}

/// `before` and its like stay as they are: they are those of the step's begin, whichever value of
/// the step is the last.
void VectorCounter::Correct(std::uint32_t number, const ValueWord* value, BitFigures* figures) {
  Vector& vector = vectors_[number];
  if (vector.logged > 0 && value->unknown == 0) {  // the last value written down is this step's
    vector.values[vector.logged - 1U] = vector.last = value->high;
    return;
  }
  CountLog(vector, figures);
  const std::span<Word> words = WordsOf(vector);
  Prepare(vector, figures);
  std::size_t left = vector.width;
  for (std::size_t index = 0; index < words.size(); ++index, left -= kWordBits) {
    BitFigures* const bits = figures + vector.firstBit + index * kWordBits;
    // Times need not be taken back: the value to be replaced held for no ticks.
    Unlearn(words[index], bits);
    MoveLevels(vector, index, value[index], figures);
    Learn(words[index], value[index], LowBits(left), bits);
  }
  OpenLog(vector);
}

/// With everything else in the figures first: the small counters are relative to a base time of
/// their own, which a shift of all times must not meet.
void VectorCounter::AddToLevels(std::uint32_t number, std::uint64_t ticks, BitFigures* figures) {
  Vector& vector = vectors_[number];
  CountLog(vector, figures);
  Flush(vector, figures);
  const std::span<Word> words = WordsOf(vector);
  for (std::uint32_t bit = 0; bit < vector.width; ++bit) {
    const ValueWord& now = words[bit / kWordBits].now;
    TimeAt(figures[vector.firstBit + bit], LevelIn(now, bit % kWordBits)) += ticks;
  }
}

/// Levels stay open: whoever joins the pieces, or ends the dump, closes them.
void VectorCounter::Leave(std::uint32_t number, BitFigures* figures, BitEdge* edges) {
  Vector& vector = vectors_[number];
  CountLog(vector, figures);
  Flush(vector, figures);
  const std::span<Word> words = WordsOf(vector);
  for (std::uint32_t at = 0; at < vector.width; ++at) {
    const Word& word = words[at / kWordBits];
    const std::size_t bit = at % kWordBits;
    edges[at] = BitEdge::Of({IsSet(word.now.high, bit), IsSet(word.now.unknown, bit),
                             IsSet(word.hasKnown, bit), IsSet(word.known, bit),
                             IsSet(word.touched, bit), IsSet(word.first, bit),
                             IsSet(word.touchedBefore, bit), IsSet(word.firstCounts, bit)});
  }
}

/// Unseen edges where the last value was the first one in its stretch.
std::vector<BitEdge> VectorCounter::EdgesBefore(std::uint32_t number, BitFigures* figures) {
  Vector& vector = vectors_[number];
  CountLog(vector, figures);
  std::vector<BitEdge> edges(vector.width);
  if (!vector.wasSeen) return edges;
  for (std::uint32_t at = 0; at < vector.width; ++at) {
    const Word& word = words_[vector.firstWord + at / kWordBits];
    const std::size_t bit = at % kWordBits;
    edges[at] = BitEdge::Of({IsSet(word.before.high, bit), IsSet(word.before.unknown, bit),
                             IsSet(word.hadKnown, bit), IsSet(word.knew, bit),
                             IsSet(word.wasTouched, bit), IsSet(word.first, bit),
                             IsSet(word.touchedBefore, bit), IsSet(word.firstCounts, bit)});
  }
  return edges;
}

}  // namespace orsa::kesncd
