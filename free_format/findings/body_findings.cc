// What a dump's body shows of its troubles.
#include <algorithm>
#include <array>
#include <charconv>

#include "free_format/body_reader.h"
#include "free_format/dump_items.h"
#include "free_format/findings/dump_findings.h"
#include "free_format/host_rule.h"
#include "vcd/value_alphabet.h"

namespace orsa::kesncd {

namespace {

// A larger share is worth knowing.
constexpr double kUnknownShare = 0.01;  // of a signal's changes
// Of a value with its code on a line that the shortest line buffer of a reader holds. The code and
// the newline need the rest of 1023 characters.
constexpr std::size_t kLongestWhole = 960;

/// Of what kinds the bits of a value are: an or of these. A value of several bits may be of all
/// three.
enum BitKinds : unsigned { kKnownBit = 1, kXBit = 2, kZBit = 4 };

/// Of a character of a vector, whatever its alphabet.
unsigned KindsOf(char bit) {
  switch (In(kBitValues, bit)) {
    case 'x':
      return kXBit;
    case 'z':
      return kZBit;
    default:
      return kKnownBit;
  }
}

/// Looked up in the table that KindsOfCharacters makes.
unsigned KindsOf(std::string_view value, const std::array<unsigned char, 256>& kinds) {
  unsigned all = 0;
  for (const char c : value) all |= kinds[static_cast<unsigned char>(c)];
  return all;
}

/// The kinds of all characters, so that long values are looked at quickly.
std::array<unsigned char, 256> KindsOfCharacters() {
  std::array<unsigned char, 256> kinds{};
  for (unsigned c = 0; c < kinds.size(); ++c) {
    kinds[c] = static_cast<unsigned char>(KindsOf(static_cast<char>(c)));
  }
  return kinds;
}

/// The body as the line readers and hosts take it. Calling order: Run, Report. A taker for
/// DumpItems that counts as a host would and keeps what a host would not see.
class BodyCheck {
 public:
  BodyCheck(DumpWords& words, SlotWatch& watch, const Declarations& declarations)
      : watch_(watch),
        declarations_(declarations),
        items_(words, declarations),
        counts_(declarations.codes.size()) {}

  void Run() {
    PlainLineTaker<BodyCheck> plain(items_, *this);
    // Plain lines stand alone on theirs, so they need no check of their places.
    WatchedLines lines{plain, watch_, facts_, plainLines_};
    while (items_.Next()) {
      // Where the item stands comes first: it is about the item before, too.
      CheckLine();
      GiveItem(items_, *this);
      items_.TakePlainLines(lines);
      // The words have counted the lines of the run by now.
      plainLines_ = 0;
    }
    // The last item may be followed by words that are no item.
    CheckItemBefore(items_.place().crowdedLine);
    // A last "$end" without a newline is complete all the same.
    endsOpen_ = items_.EndsOpen() && last_ != ItemKind::SectionEnd;
  }

  // What the body holds. The operations that ReadBody's takers have; GiveItem calls them.
  void Scalar(std::uint32_t codeId, char value) {
    SetLast(ItemKind::Scalar);
    TakeValue(codeId, static_cast<unsigned char>(value), KindsOf(value), value > '1');
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    SetLast(ItemKind::Vector);
    // With its code it might not fit on a reader's line.
    if (value.size() > kLongestWhole) longValues_.Add(Line(), "");
    const unsigned kinds = KindsOf(value, kinds_);
    if ((kinds & (kXBit | kZBit)) != 0 && dumping_.isOn() != 0) {
      unknownBits_.Add(Line(), value);
    }
    TakeValue(codeId, Fingerprint(value), kinds, false);
  }
  // A real has its code as a second word, as a vector has.
  void Real(std::uint32_t codeId, std::string_view value) {
    SetLast(ItemKind::Vector);
    TakeValue(codeId, Fingerprint(value), kKnownBit, false);
  }
  void Command(Keyword command) {
    SetLast(ItemKind::Command);
    // Only the stretches that begin are told; their ticks are counted.
    if (dumping_.Take(command) && dumping_.isOn() == 0) offStretches_.Add(Line(), "");
  }
  void SectionEnd() { SetLast(ItemKind::SectionEnd); }
  void Stamp(std::uint64_t ticks) {
    SetLast(ItemKind::Stamp);
    // Two figures for a stamp: what it says, and what a line reader makes of it.
    readLast_ = watch_.StampFor(static_cast<double>(ticks));
    lastTick_ = ticks;
    dumping_.Stamp(ticks);
    // In ticks as the dump has them, from the first stamp to the largest.
    if (facts_.stamps++ == 0) {
      facts_.firstTick = facts_.lastTick = ticks;
      readFirst_ = readLast_;
    }
    facts_.lastTick = std::max(facts_.lastTick, ticks);
    lastLine_ = Line();
  }

  // All tallies become findings; empty ones are dropped by Add.
  void Report(Findings& findings) {
    const ItemTallies& items = items_.tallies();
    findings.Add(FindingKind::OpenDefinitions, declarations_.ended && definitionsEnd_ > 0,
                 definitionsEnd_, "");
    findings.Add(FindingKind::StampsNotAlone, sharedStamps_);
    findings.Add(FindingKind::ChangesInLine, changesInLine_);
    findings.Add(FindingKind::CommandsNotAlone, sharedCommands_);
    findings.Add(FindingKind::QuotedItems, items.quoted);
    findings.Add(FindingKind::PortCommands, items.keywords);
    findings.Add(FindingKind::Ports, items.ports);
    findings.Add(FindingKind::Backward, items.backward);
    findings.Add(FindingKind::CutStamp, items.cutStamp);
    findings.Add(FindingKind::BadStamps, items.badStamps);
    findings.Add(FindingKind::Weak, items.weak);
    findings.Add(FindingKind::LongValues, longValues_);
    findings.Add(FindingKind::BeforeFirstStamp, before_);
    findings.Add(FindingKind::Undeclared, items.undeclared);
    findings.Add(FindingKind::Strings, items.strings);
    findings.Add(FindingKind::Unended, items.unended);
    findings.Add(FindingKind::TornValue, items.torn);
    findings.Add(FindingKind::LateDeclarations, items.late);
    findings.Add(FindingKind::Strays, items.strays);
    findings.Add(FindingKind::Fractions, items.fractions);
    findings.Add(FindingKind::OpenEnd, endsOpen_ && !items.cutStamp && !items.torn, Line(), "");
    ReportValues(findings);
    // Also where there is no stamp at all.
    findings.Add(FindingKind::NoSpan, facts_.firstTick == facts_.lastTick, 0, "");
    // Host readers keep stamps as doubles, from slots that may show a longer stamp's tail.
    const bool isMisread = readFirst_ != static_cast<double>(facts_.firstTick) ||
                           readLast_ != static_cast<double>(facts_.lastTick);
    // Beyond 2^53 the difference of two doubles need not be that of the ticks.
    const double hostSpan =
        static_cast<double>(facts_.lastTick) - static_cast<double>(facts_.firstTick);
    findings.Add(FindingKind::HugeStamps,
                 hostSpan != static_cast<double>(facts_.lastTick - facts_.firstTick), lastLine_,
                 StampText(facts_.lastTick));
    // Stamps that share their lines are a finding of their own, and the cause then.
    findings.Add(FindingKind::MisreadSpan, isMisread && !sharedStamps_, lastLine_,
                 TickText(readFirst_) + " to " + TickText(readLast_));
  }

  const BodyFacts& facts() const { return facts_; }

 private:
  struct Counts {
    // Values of vectors and reals, and scalars that became 0 or 1.
    std::uint64_t counted = 0;
    // Scalars that became x or z, but for a first value.
    std::uint64_t unknown = 0;
    std::uint32_t last = 0;  // 0: no value yet
    bool isSet = false;
    bool wasKnown = false;  // it had a value without x
    bool turnsX = false;    // and one with x later
    // Every value so far is x in all of its bits.
    bool isOnlyX = true;
  };

  /// Plain lines, which the watch has to see as well. Until the first stamp, lines go one by one,
  /// so that findings can name them. Both operations return whether the line was taken; see
  /// PlainLineTaker.
  struct WatchedLines {
    PlainLineTaker<BodyCheck>& plain;
    SlotWatch& watch;
    const BodyFacts& facts;
    std::uint64_t& taken;

    bool Scalar(const char* line, const char* newline) {
      const bool isTaken = facts.stamps > 0 && plain.Scalar(line, newline);
      taken += isTaken ? 1 : 0;
      return isTaken;
    }
    bool Other(const char* line, const char* blank, const char* newline) {
      if (facts.stamps == 0) return false;
      // The watch first: whether or not the line is taken here, line readers put its code into
      // their slot.
      if (blank != nullptr) {
        watch.TakeValueLine({blank + 1, static_cast<std::size_t>(newline - blank) - 1});
      } else if (*line == '#') {
        watch.TakeStampLine({line + 1, static_cast<std::size_t>(newline - line) - 1});
      }
      const bool isTaken = plain.Other(line, blank, newline);
      taken += isTaken ? 1 : 0;
      return isTaken;
    }
  };

  /// The line that is read: the words count plain ones only when a run of them is over.
  std::uint64_t Line() const { return items_.Line() + plainLines_; }

  // From the first item on, the body has begun.
  void SetLast(ItemKind kind) {
    last_ = kind;
    isBehindItem_ = true;
  }

  /// What stands before on the same line hides an item from the line readers, and the item hides a
  /// stamp or a command that stands there.
  void CheckLine() {
    const ItemPlace& place = items_.place();
    // The item before is crowded by this one, or by words between the two.
    CheckItemBefore(place.startsLine ? place.crowdedLine : place.line);
    const ItemKind kind = items_.kind();
    // For a change it matters that it starts its line with its code in it; only counted ones are of
    // interest.
    const bool isUnknown = kind == ItemKind::Scalar && items_.value() > '1';
    const bool isChange =
        kind == ItemKind::Scalar || kind == ItemKind::Vector || kind == ItemKind::Real;
    if (isChange && dumping_.isOn() != 0 && !isUnknown && (!place.startsLine || !place.isWhole)) {
      changesInLine_.Add(place.line, "");
    }
  }

  /// `line` is that of the item before if it shares it with what follows, else 0. What follows a
  /// stamp or a command on its line makes line readers miss it.
  void CheckItemBefore(std::uint64_t line) {
    if (line == 0) return;
    // Nothing of the body came before: it is the definitions' last line that goes on.
    if (!isBehindItem_) definitionsEnd_ = line;
    if (last_ == ItemKind::Stamp) sharedStamps_.Add(line, StampText(lastTick_));
    if (last_ == ItemKind::Command) sharedCommands_.Add(line, "");
  }

  /// A value: its fingerprint, the kinds of its bits, and whether it is a scalar's x or z. Counts
  /// as a host's reader does, and looks at more than that does.
  void TakeValue(std::uint32_t codeId, std::uint32_t value, unsigned kinds, bool isUnknown) {
    Counts& counts = counts_[codeId];
    // Compared also while dumping is off, so that what follows $dumpon is known to repeat.
    const bool repeats = counts.last == value;
    counts.last = value;
    if (dumping_.isOn() == 0) return;
    // The x that a signal starts from says nothing about its activity.
    if (!isUnknown || counts.isSet) ++(isUnknown ? counts.unknown : counts.counted);
    counts.isSet = true;
    repeated_ += repeats && !isUnknown ? 1 : 0;
    // Only x is unknown here: a bus that is z has a value.
    if ((kinds & kXBit) == 0) {
      counts.wasKnown = true;
    } else if (counts.wasKnown) {
      counts.turnsX = true;
    }
    counts.isOnlyX = counts.isOnlyX && kinds == kXBit;
    ++(isUnknown ? facts_.unknown : facts_.changes);
    if (facts_.stamps == 0 && !isUnknown) before_.Add(Line(), "");
  }

  /// The variables whose code's counts meet a condition. Aliases count one by one: each is a signal
  /// to its user.
  template <class Meets>
  Tally Signals(Meets meets) const {
    // By type, so that texts are compared once for each type only.
    std::vector<bool> hasBits;
    for (const std::string& type : declarations_.types) hasBits.push_back(HasBits(type));
    Tally signals;
    for (const DumpVariable& variable : declarations_.variables) {
      if (!hasBits[variable.typeId] || !meets(counts_[variable.codeId])) continue;
      signals.Add(variable.line, signals ? "" : declarations_.ShortPathOf(variable));
    }
    return signals;
  }

  // All but the types whose values are no bits.
  static bool HasBits(const std::string& type) {
    static constexpr std::string_view kOthers[] = {"real", "realtime", "string", "event",
                                                   "parameter"};
    return std::find(std::begin(kOthers), std::end(kOthers), type) == std::end(kOthers);
  }

  // More than one in a hundred; none for a signal without changes.
  static bool IsOftenUnknown(const Counts& counts) {
    const auto unknown = static_cast<double>(counts.unknown);
    return unknown > kUnknownShare * (unknown + static_cast<double>(counts.counted));
  }

  /// What values say of the simulation.
  void ReportValues(Findings& findings) const {
    findings.Add(FindingKind::Unknown, Signals(IsOftenUnknown));
    findings.Add(FindingKind::StaysUnknown, Signals([](const Counts& counts) {
                   return counts.isOnlyX;  // also where it is given no value
                 }));
    findings.Add(FindingKind::TurnsUnknown,
                 Signals([](const Counts& counts) { return counts.turnsX; }));
    findings.Add(FindingKind::UnknownBits, unknownBits_);
    // Without such a time there is nothing to tell.
    if (dumping_.OffTicks() == 0) return;
    Tally off = offStretches_;
    // In place of an example: how much of the span, and the repeats.
    off.example = OffText(dumping_, facts_.lastTick - facts_.firstTick, repeated_);
    findings.Add(FindingKind::DumpingOff, off);
  }

  static std::string StampText(std::uint64_t ticks) {
    std::string text(1, '#');
    return text += std::to_string(ticks);
  }

  // As a double's shortest text, since that is what the reader has.
  static std::string TickText(double ticks) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.begin(), text.end(), ticks, std::chars_format::general);
    return {text.data(), end.ptr};
  }

  const std::array<unsigned char, 256> kinds_ = KindsOfCharacters();
  // The watch belongs to the caller, as do the declarations.
  SlotWatch& watch_;
  const Declarations& declarations_;
  DumpItems items_;
  std::vector<Counts> counts_;  // by code
  BodyFacts facts_;
  std::uint64_t plainLines_ = 0;  // since the words counted lines
  // The body has begun: an item was taken.
  bool isBehindItem_ = false;
  // The dump ends on a line without a newline.
  bool endsOpen_ = false;
  ItemKind last_ = ItemKind::SectionEnd;
  std::uint64_t definitionsEnd_ = 0;  // its line, if the body begins there
  // The last stamp as the dump says it.
  std::uint64_t lastTick_ = 0;
  std::uint64_t lastLine_ = 0;  // of a stamp
  // The first and the last stamp as a line reader has them.
  double readFirst_ = 0;
  double readLast_ = 0;
  DumpingTime dumping_;
  // How many values repeat the one before.
  std::uint64_t repeated_ = 0;
  Tally offStretches_;
  Tally unknownBits_;
  Tally sharedStamps_;
  Tally sharedCommands_;
  Tally changesInLine_;
  Tally before_;
  Tally longValues_;
};

}  // namespace

BodyFacts FindInBody(DumpWords& words, SlotWatch& watch, const Declarations& declarations,
                     Findings& findings) {
  BodyCheck check(words, watch, declarations);
  check.Run();
  check.Report(findings);
  return check.facts();
}

}  // namespace orsa::kesncd
