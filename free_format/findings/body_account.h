// What the findings about a dump's body rest on: figures of each code, times, and tallies of what
// the library's readers would get wrong. It is that of a stretch of the body, and adds to the
// account of the stretch before.
#ifndef KESNCD_FREE_FORMAT_FINDINGS_BODY_ACCOUNT_H_
#define KESNCD_FREE_FORMAT_FINDINGS_BODY_ACCOUNT_H_

#include <cstdint>
#include <string>
#include <vector>

#include "free_format/host_rule.h"
#include "free_format/slot_watch.h"
#include "vcd/tally.h"

namespace orsa::kesncd {

/// A stamp as dumps write it: "#100".
std::string StampText(std::uint64_t ticks);

/// Figures of a body.
struct BodyFacts {
  // Changes to 0 or 1 and values of vectors and reals, while dumping is on.
  std::uint64_t changes = 0;  // counted ones
  // Changes of scalars, while dumping is on.
  std::uint64_t unknown = 0;  // to x or z
  std::uint64_t stamps = 0;
  // Ticks as the dump has them: the first stamp and the largest one.
  std::uint64_t firstTick = 0;
  std::uint64_t lastTick = 0;
};

/// The figures of a code. A value is kept as the fingerprint of its text, since only whether two
/// are the same is asked; 0 stands for none.
struct CodeAccount {
  // What is known of the code's values; each flag but the first two stays once it is set.
  enum Flag : unsigned {
    kFirstCounts = 1,     // the first value
    kStartsUnknown = 2,   // the first value with dumping on is a scalar's x or z
    kIsSet = 4,           // it has a value, with dumping on
    kWasKnown = 8,        // one without x
    kTurnsX = 16,         // one with x after one without
    kHasX = 32,           // one with x
    kHasOtherThanX = 64,  // one that is not x in all bits
  };

  // Known scalars, vectors and reals, while dumping is on.
  std::uint64_t counted = 0;
  std::uint64_t unknown = 0;  // to x or z, but for those that it starts from
  // The first and the last value of the stretch; also those that were given while dumping was off.
  std::uint32_t first = 0;
  std::uint32_t last = 0;
  std::uint32_t flags = 0;

  bool Is(Flag flag) const { return (flags & flag) != 0; }
  void Join(const CodeAccount& next);
};

/// The account of a stretch. One that does not begin the body begins with a stamp, and is looked
/// through as if dumping were on there.
struct BodyAccount {
  std::vector<CodeAccount> codes;  // by number
  BodyFacts facts;
  std::uint64_t lines = 0;           // newlines, those of the declarations with the first stretch
  std::uint64_t definitionsEnd = 0;  // its line, if the body begins there; else 0
  // The line of the last stamp.
  std::uint64_t lastStampLine = 0;
  std::uint64_t repeated = 0;  // counted values that repeat the one before
  bool endsOpen = false;       // the last line has no end, and holds something but a section's end
  // What the line readers' slots hold at the end.
  SlotWatch slots;
  // The first and the last stamp as line readers have them.
  SlotWatch::Stamp firstStamp;
  SlotWatch::Stamp lastStamp;
  // For how long dumping was off.
  DumpingTime dumping;
  // Control bytes that spoil their lines.
  Tally controls;
  // "$dumpoff", where each time without dumping begins.
  Tally offStretches;
  // "b01xz !"
  Tally unknownBits;
  // "#10 1!": the stamp, and commands that share their lines with what follows.
  Tally sharedStamps;
  Tally sharedCommands;
  // "#10 1!": the change.
  Tally changesInLine;
  // Changes before the first stamp.
  Tally beforeFirstStamp;
  // Values that do not fit on a line of every reader.
  Tally longValues;

  /// Whether the account of a stretch that comes next adds to this one. Dumping must be on at the
  /// end of this stretch, and time must go on: the next one was read as if both were so.
  bool CanPrecede(const BodyAccount& next) const;
  /// Adds that of the stretch that comes next. An account without codes is that of the
  /// declarations. To be called for one stretch after the other, in the order of the dump.
  void Join(BodyAccount&& next);

 private:
  void JoinCodes(std::vector<CodeAccount>&& next);
};

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_FINDINGS_BODY_ACCOUNT_H_
