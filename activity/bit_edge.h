// What must be known of a bit to go on counting it: its value now and its last known one, and, for
// joining what was counted before, its first known one.
#ifndef KESNCD_ACTIVITY_BIT_EDGE_H_
#define KESNCD_ACTIVITY_BIT_EDGE_H_

#include <array>
#include <cstdint>

#include "activity/activity_result.h"

namespace orsa::kesncd {

/// The values of a bit as numbers. From kUnknown on they are x and z.
enum Level : std::uint8_t { kLow = 0, kHigh = 1, kUnknown = 2, kFloating = 3 };

/// The level of '0', '1', 'x' or 'z'.
inline Level LevelOf(char value) {
  const unsigned c = static_cast<unsigned char>(value);
  return static_cast<Level>((c & 1) | (c >> 1 & 1) | (c >> 5 & 2));
}

/// The time that a bit spent at a level.
inline std::uint64_t& TimeAt(BitFigures& figures, unsigned level) {
  constexpr std::array<std::uint64_t BitFigures::*, 4> kTimes{&BitFigures::t0, &BitFigures::t1,
                                                              &BitFigures::tx, &BitFigures::tz};
  return figures.*kTimes[level];
}

/// Adds figures to others; all but the sums of differences may be meaningless, so they wrap around.
inline void AddFigures(BitFigures& to, const BitFigures& added) {
  to.t0 += added.t0;
  to.t1 += added.t1;
  to.tx += added.tx;
  to.tz += added.tz;
  to.tc += added.tc;
  to.ig += added.ig;
}

/// A bit's edge in one byte, because every bit of a dump has one.
class BitEdge {
 public:
  /// Whether a change of level is a toggle, or the return from an excursion that touched x.
  struct Counted {
    bool toggle = false;
    bool glitch = false;
  };

  constexpr BitEdge() = default;  // of a bit without a value: it is x, but was not given it

  bool IsSeen() const { return bits_ != kUnseen; }
  unsigned level() const { return bits_ & kLevel; }
  bool HasKnown() const { return (bits_ & kHasKnown) != 0; }
  /// The last known value; only where there is one.
  bool known() const { return (bits_ & kKnown) != 0; }
  /// Whether the bit was given x since its last known value, or ever if there is none.
  bool IsTouched() const { return (bits_ & kTouched) != 0; }
  /// The first known value, whether x was given before it, and whether its time lies in the window.
  bool FirstKnown() const { return (bits_ & kFirst) != 0; }
  bool IsTouchedBefore() const { return (bits_ & kTouchedBefore) != 0; }
  bool DoesFirstCount() const { return (bits_ & kFirstCounts) != 0; }

  /// Gives the bit a value; `counts` says whether the time lies in the window.
  Counted Take(unsigned level, bool counts) {
    if (level >= kUnknown) {
      const auto kept = IsSeen() ? bits_ & ~kLevel : 0U;
      bits_ = static_cast<std::uint8_t>(kept | level | (level == kUnknown ? kTouched : 0U));
      return {};
    }
    const auto value = level | kHasKnown | (level != 0 ? kKnown : 0U);
    if (!HasKnown()) {
      bits_ = static_cast<std::uint8_t>(value | (level != 0 ? kFirst : 0U) |
                                        (IsTouched() ? kTouchedBefore : 0U) |
                                        (counts ? kFirstCounts : 0U));
      return {};
    }
    const bool isToggle = known() != (level != 0);
    const bool isGlitch = !isToggle && IsTouched();
    bits_ = static_cast<std::uint8_t>((bits_ & kFirsts) | value);
    return {isToggle, isGlitch};
  }

  /// The same for a bit that goes from 0 to 1 or from 1 to 0, which is a toggle, or stays.
  void Flip(bool toggles) { bits_ ^= toggles ? kHigh | kKnown : 0U; }

  /// What Take counted on the way from an earlier edge to this one by a single value.
  Counted CountedSince(BitEdge before) const {
    if (!before.HasKnown()) return {};
    const bool isToggle = known() != before.known();
    return {isToggle, !isToggle && before.IsTouched() && level() < kUnknown};
  }

  /// Goes on as a later edge, which was made without knowing this one, says. What happened between.
  Counted Append(BitEdge next) {
    if (!next.HasKnown()) {
      bits_ = static_cast<std::uint8_t>((bits_ & ~kLevel) | (next.bits_ & (kLevel | kTouched)));
      return {};
    }
    const bool isTouched = IsTouched() || next.IsTouchedBefore();
    const auto later = next.bits_ & (kLevel | kHasKnown | kKnown | kTouched);
    if (!HasKnown()) {
      bits_ = static_cast<std::uint8_t>(later | (next.bits_ & (kFirst | kFirstCounts)) |
                                        (isTouched ? kTouchedBefore : 0U));
      return {};
    }
    const bool isToggle = known() != next.FirstKnown();
    bits_ = static_cast<std::uint8_t>((bits_ & kFirsts) | later);
    return {isToggle && next.DoesFirstCount(), !isToggle && isTouched && next.DoesFirstCount()};
  }

  bool operator==(const BitEdge&) const = default;

  /// Made of what vectors keep in words of many bits.
  struct Parts {
    bool high, unknown, hasKnown, known, touched, first, touchedBefore, firstCounts;
  };
  static BitEdge Of(const Parts& parts) {
    BitEdge edge;
    edge.bits_ = static_cast<std::uint8_t>(
        (parts.high ? 1U : 0U) | (parts.unknown ? 2U : 0U) | (parts.hasKnown ? kHasKnown : 0U) |
        (parts.hasKnown && parts.known ? kKnown : 0U) | (parts.touched ? kTouched : 0U) |
        (parts.hasKnown && parts.first ? kFirst : 0U) |
        (parts.hasKnown && parts.touchedBefore ? kTouchedBefore : 0U) |
        (parts.hasKnown && parts.firstCounts ? kFirstCounts : 0U));
    return edge;
  }

  /// All of it as a number, and back: any number is an edge.
  std::uint8_t ToByte() const { return bits_; }
  static BitEdge FromByte(std::uint8_t bits) {
    BitEdge edge;
    edge.bits_ = bits;
    return edge;
  }

 private:
  static constexpr unsigned kLevel = 3, kHasKnown = 4, kKnown = 8, kTouched = 16, kFirst = 32,
                            kTouchedBefore = 64, kFirstCounts = 128;
  static constexpr unsigned kFirsts = kFirst | kTouchedBefore | kFirstCounts;
  // x that was never given: a known value of 1 without having one says it.
  static constexpr std::uint8_t kUnseen = kUnknown | kKnown;

  std::uint8_t bits_ = kUnseen;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_BIT_EDGE_H_
