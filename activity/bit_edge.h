// What must be known of a bit to go on counting it: its value now and its last known one, and, for
// joining what was counted before, its first known one.
//
// An excursion is what lies between two known values (0 or 1): 0 x 1 is a toggle, 0 x 0 is none but
// counts as an excursion through x that came back ("glitch", IG in SAIF), 0 z 0 counts as nothing.
// To count by these rules a bit has to remember its last known value and whether x was given since.
// For a part whose beginning is not known the same is kept of its first known value: when the part
// before it is added, the excursion across the cut is counted there.
#ifndef KESNCD_ACTIVITY_BIT_EDGE_H_
#define KESNCD_ACTIVITY_BIT_EDGE_H_

#include <array>
#include <cstdint>

#include "activity/activity_result.h"

namespace orsa::kesncd {

/// The values of a bit as numbers. From kUnknown on they are x and z. The order matters: LevelOf
/// and TimeAt rely on the numbers.
enum Level : std::uint8_t { kLow = 0, kHigh = 1, kUnknown = 2, kFloating = 3 };

/// The level of '0', '1', 'x' or 'z'. By the characters' bits: '0' is 0x30, '1' 0x31, 'x' 0x78, 'z'
/// 0x7A. No other character may be given.
inline Level LevelOf(char value) {
  const unsigned c = static_cast<unsigned char>(value);
  return static_cast<Level>((c & 1) | (c >> 1 & 1) | (c >> 5 & 2));
}

/// The time that a bit spent at a level. `level` is a Level.
inline std::uint64_t& TimeAt(BitFigures& figures, unsigned level) {
  constexpr std::array<std::uint64_t BitFigures::*, 4> kTimes{&BitFigures::t0, &BitFigures::t1,
                                                              &BitFigures::tx, &BitFigures::tz};
  return figures.*kTimes[level];
}

/// Adds figures to others. Times of a part may be below 0 and have wrapped around until all parts
/// are added; see ActivityPart.
inline void AddFigures(BitFigures& to, const BitFigures& added) {
  to.t0 += added.t0;
  to.t1 += added.t1;
  to.tx += added.tx;
  to.tz += added.tz;
  to.tc += added.tc;
  to.ig += added.ig;
}

/// A bit's edge in one byte, because every bit of a dump has one. Take and Flip give the bit a
/// value; Append joins the edges of two neighbouring parts.
class BitEdge {
 public:
  /// Whether a change of level is a toggle, or the return from an excursion that touched x. At most
  /// one of the two.
  struct Counted {
    bool toggle = false;
    bool glitch = false;
  };

  constexpr BitEdge() = default;  // of a bit without a value: it is x, but was not given it

  /// Whether any value was given, also x.
  bool IsSeen() const { return bits_ != kUnseen; }
  /// A Level; kUnknown for a bit without a value.
  unsigned level() const { return bits_ & kLevel; }
  /// Whether it was ever 0 or 1.
  bool HasKnown() const { return (bits_ & kHasKnown) != 0; }
  /// The last known value; only where there is one.
  bool known() const { return (bits_ & kKnown) != 0; }
  /// Whether the bit was given x since its last known value, or ever if there is none.
  bool IsTouched() const { return (bits_ & kTouched) != 0; }
  /// The first known value, whether x was given before it, and whether its time lies in the window.
  bool FirstKnown() const { return (bits_ & kFirst) != 0; }
  bool IsTouchedBefore() const { return (bits_ & kTouchedBefore) != 0; }
  bool DoesFirstCount() const { return (bits_ & kFirstCounts) != 0; }

  /// Gives the bit a value; `counts` says whether the time lies in the window. `level` is what the
  /// bit becomes; the same level again is no change and counts nothing.
  Counted Take(unsigned level, bool counts) {
    if (level >= kUnknown) {
      // x and z only change the level, and x is remembered until the next known value.
      const auto kept = IsSeen() ? bits_ & ~kLevel : 0U;
      // The mark of an unseen bit is dropped with its first value.
      bits_ = static_cast<std::uint8_t>(kept | level | (level == kUnknown ? kTouched : 0U));
      return {};
    }
    const auto value = level | kHasKnown | (level != 0 ? kKnown : 0U);
    // The first known value: no toggle, but kept for the part before.
    if (!HasKnown()) {
      bits_ = static_cast<std::uint8_t>(value | (level != 0 ? kFirst : 0U) |
                                        (IsTouched() ? kTouchedBefore : 0U) |
                                        (counts ? kFirstCounts : 0U));
      return {};
    }
    // An excursion may have lain between.
    const bool isToggle = known() != (level != 0);
    const bool isGlitch = !isToggle && IsTouched();
    // What was first stays; the last known value is the new one, and nothing was touched since.
    bits_ = static_cast<std::uint8_t>((bits_ & kFirsts) | value);
    return {isToggle, isGlitch};
  }

  /// The same for a bit that goes from 0 to 1 or from 1 to 0, which is a toggle, or stays. Only for
  /// a bit that is 0 or 1 now and was seen before.
  void Flip(bool toggles) { bits_ ^= toggles ? kHigh | kKnown : 0U; }

  /// What Take counted when a single value made this edge of `before`, for a counter that takes the
  /// value back.
  Counted CountedSince(BitEdge before) const {
    if (!before.HasKnown()) return {};
    const bool isToggle = known() != before.known();
    return {isToggle, !isToggle && before.IsTouched() && level() < kUnknown};
  }

  /// Goes on with the edge of the next part, which was made without knowing this one and has seen a
  /// value. Gives what happened at its first known value, if that lies in the window.
  Counted Append(BitEdge next) {
    // No known value there: the level goes on, and x may have been given.
    if (!next.HasKnown()) {
      bits_ = static_cast<std::uint8_t>((bits_ & ~kLevel) | (next.bits_ & (kLevel | kTouched)));
      return {};
    }
    // x before the cut or after it.
    const bool isTouched = IsTouched() || next.IsTouchedBefore();
    const auto later = next.bits_ & (kLevel | kHasKnown | kKnown | kTouched);
    if (!HasKnown()) {
      // The first known value of both is that of `next`.
      bits_ = static_cast<std::uint8_t>(later | (next.bits_ & (kFirst | kFirstCounts)) |
                                        (isTouched ? kTouchedBefore : 0U));
      return {};
    }
    // Known on both sides: toggle or glitch, counted where the known value is.
    const bool isToggle = known() != next.FirstKnown();
    bits_ = static_cast<std::uint8_t>((bits_ & kFirsts) | later);
    return {isToggle && next.DoesFirstCount(), !isToggle && isTouched && next.DoesFirstCount()};
  }

  bool operator==(const BitEdge&) const = default;

  /// An edge in parts, of each of which a vector keeps 64 bits in a word; see vector_counter.h.
  /// `high` and `unknown` are the level as in ValueWord.
  struct Parts {
    bool high, unknown, hasKnown, known, touched, first, touchedBefore, firstCounts;
  };
  static BitEdge Of(const Parts& parts) {
    BitEdge edge;
    // Of a bit without a known value what would describe one is left 0, so that equal edges have
    // equal bytes.
    edge.bits_ = static_cast<std::uint8_t>(
        (parts.high ? 1U : 0U) | (parts.unknown ? 2U : 0U) | (parts.hasKnown ? kHasKnown : 0U) |
        (parts.hasKnown && parts.known ? kKnown : 0U) | (parts.touched ? kTouched : 0U) |
        (parts.hasKnown && parts.first ? kFirst : 0U) |
        (parts.hasKnown && parts.touchedBefore ? kTouchedBefore : 0U) |
        (parts.hasKnown && parts.firstCounts ? kFirstCounts : 0U));
    return edge;
  }

  /// The edge as a number and back, for databases of parts. Any number is an edge: one that no
  /// counting makes gives wrong figures, but does no other harm.
  std::uint8_t ToByte() const { return bits_; }
  static BitEdge FromByte(std::uint8_t bits) {
    BitEdge edge;
    edge.bits_ = bits;
    return edge;
  }

 private:
  // Bits 0 and 1 are the level; each other bit is one of the questions above.
  static constexpr unsigned kLevel = 3, kHasKnown = 4, kKnown = 8, kTouched = 16, kFirst = 32,
                            kTouchedBefore = 64, kFirstCounts = 128;
  // What Take keeps once there is a first known value.
  static constexpr unsigned kFirsts = kFirst | kTouchedBefore | kFirstCounts;
  // A bit without a value: x, marked by kKnown without kHasKnown, which no value leads to.
  static constexpr std::uint8_t kUnseen = kUnknown | kKnown;

  std::uint8_t bits_ = kUnseen;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_BIT_EDGE_H_
