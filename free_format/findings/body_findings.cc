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

constexpr double kUnknownShare = 0.01;  // of a signal's changes
// Of a value with its code on a line that the shortest line buffer of a reader holds.
constexpr std::size_t kLongestWhole = 960;

/// Of what kinds the bits of a value are: an or of these.
enum BitKinds : unsigned { kKnownBit = 1, kXBit = 2, kZBit = 4 };

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

/// The body as the line readers and hosts take it. Calling order: Run, Report.
class BodyCheck {
 public:
  BodyCheck(DumpWords& words, SlotWatch& watch, const Declarations& declarations)
      : watch_(watch),
        declarations_(declarations),
        items_(words, declarations),
        counts_(declarations.codes.size()) {}

  void Run() {
    PlainLineTaker<BodyCheck> plain(items_, *this);
    WatchedLines lines{plain, watch_, facts_, plainLines_};
    while (items_.Next()) {
      CheckLine();
      GiveItem(items_, *this);
      items_.TakePlainLines(lines);
      plainLines_ = 0;
    }
    CheckItemBefore(items_.place().crowdedLine);
    endsOpen_ = items_.EndsOpen() && last_ != ItemKind::SectionEnd;
  }

  // What the body holds.
  void Scalar(std::uint32_t codeId, char value) {
    SetLast(ItemKind::Scalar);
    TakeValue(codeId, static_cast<unsigned char>(value), KindsOf(value), value > '1');
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    SetLast(ItemKind::Vector);
    if (value.size() > kLongestWhole) longValues_.Add(Line(), "");
    const unsigned kinds = KindsOf(value, kinds_);
    if ((kinds & (kXBit | kZBit)) != 0 && dumping_.isOn() != 0) {
      unknownBits_.Add(Line(), value);
    }
    TakeValue(codeId, Fingerprint(value), kinds, false);
  }
  void Real(std::uint32_t codeId, std::string_view value) {
    SetLast(ItemKind::Vector);
    TakeValue(codeId, Fingerprint(value), kKnownBit, false);
  }
  void Command(Keyword command) {
    SetLast(ItemKind::Command);
    if (dumping_.Take(command) && dumping_.isOn() == 0) offStretches_.Add(Line(), "");
  }
  void SectionEnd() { SetLast(ItemKind::SectionEnd); }
  void Stamp(std::uint64_t ticks) {
    SetLast(ItemKind::Stamp);
    readLast_ = watch_.StampFor(static_cast<double>(ticks));
    lastTick_ = ticks;
    dumping_.Stamp(ticks);
    if (facts_.stamps++ == 0) {
      facts_.firstTick = facts_.lastTick = ticks;
      readFirst_ = readLast_;
    }
    facts_.lastTick = std::max(facts_.lastTick, ticks);
    lastLine_ = Line();
  }

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
    findings.Add(FindingKind::NoSpan, facts_.firstTick == facts_.lastTick, 0, "");
    const bool isMisread = readFirst_ != static_cast<double>(facts_.firstTick) ||
                           readLast_ != static_cast<double>(facts_.lastTick);
    const double hostSpan =
        static_cast<double>(facts_.lastTick) - static_cast<double>(facts_.firstTick);
    findings.Add(FindingKind::HugeStamps,
                 hostSpan != static_cast<double>(facts_.lastTick - facts_.firstTick), lastLine_,
                 StampText(facts_.lastTick));
    findings.Add(FindingKind::MisreadSpan, isMisread && !sharedStamps_, lastLine_,
                 TickText(readFirst_) + " to " + TickText(readLast_));
  }

  const BodyFacts& facts() const { return facts_; }

 private:
  struct Counts {
    std::uint64_t counted = 0;
    std::uint64_t unknown = 0;
    std::uint32_t last = 0;  // 0: no value yet
    bool isSet = false;
    bool wasKnown = false;  // it had a value without x
    bool turnsX = false;    // and one with x later
    bool isOnlyX = true;
  };

  /// Plain lines, which the watch has to see as well. Until the first stamp, lines go one by one,
  /// so that findings can name them.
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

  void SetLast(ItemKind kind) {
    last_ = kind;
    isBehindItem_ = true;
  }

  /// What stands before on the same line hides an item from the line readers, and the item hides a
  /// stamp or a command that stands there.
  void CheckLine() {
    const ItemPlace& place = items_.place();
    CheckItemBefore(place.startsLine ? place.crowdedLine : place.line);
    const ItemKind kind = items_.kind();
    const bool isUnknown = kind == ItemKind::Scalar && items_.value() > '1';
    const bool isChange =
        kind == ItemKind::Scalar || kind == ItemKind::Vector || kind == ItemKind::Real;
    if (isChange && dumping_.isOn() != 0 && !isUnknown && (!place.startsLine || !place.isWhole)) {
      changesInLine_.Add(place.line, "");
    }
  }

  /// `line` is that of the item before if it shares it with what follows, else 0.
  void CheckItemBefore(std::uint64_t line) {
    if (line == 0) return;
    if (!isBehindItem_) definitionsEnd_ = line;
    if (last_ == ItemKind::Stamp) sharedStamps_.Add(line, StampText(lastTick_));
    if (last_ == ItemKind::Command) sharedCommands_.Add(line, "");
  }

  /// A value: its fingerprint, the kinds of its bits, and whether it is a scalar's x or z.
  void TakeValue(std::uint32_t codeId, std::uint32_t value, unsigned kinds, bool isUnknown) {
    Counts& counts = counts_[codeId];
    const bool repeats = counts.last == value;
    counts.last = value;
    if (dumping_.isOn() == 0) return;
    // The x that a signal starts from says nothing about its activity.
    if (!isUnknown || counts.isSet) ++(isUnknown ? counts.unknown : counts.counted);
    counts.isSet = true;
    repeated_ += repeats && !isUnknown ? 1 : 0;
    if ((kinds & kXBit) == 0) {
      counts.wasKnown = true;
    } else if (counts.wasKnown) {
      counts.turnsX = true;
    }
    counts.isOnlyX = counts.isOnlyX && kinds == kXBit;
    ++(isUnknown ? facts_.unknown : facts_.changes);
    if (facts_.stamps == 0 && !isUnknown) before_.Add(Line(), "");
  }

  /// The variables whose code's counts meet a condition.
  template <class Meets>
  Tally Signals(Meets meets) const {
    std::vector<bool> hasBits;
    for (const std::string& type : declarations_.types) hasBits.push_back(HasBits(type));
    Tally signals;
    for (const DumpVariable& variable : declarations_.variables) {
      if (!hasBits[variable.typeId] || !meets(counts_[variable.codeId])) continue;
      signals.Add(variable.line, signals ? "" : declarations_.ShortPathOf(variable));
    }
    return signals;
  }

  static bool HasBits(const std::string& type) {
    static constexpr std::string_view kOthers[] = {"real", "realtime", "string", "event",
                                                   "parameter"};
    return std::find(std::begin(kOthers), std::end(kOthers), type) == std::end(kOthers);
  }

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
    if (dumping_.OffTicks() == 0) return;
    Tally off = offStretches_;
    off.example = OffText(dumping_, facts_.lastTick - facts_.firstTick, repeated_);
    findings.Add(FindingKind::DumpingOff, off);
  }

  static std::string StampText(std::uint64_t ticks) {
    std::string text(1, '#');
    return text += std::to_string(ticks);
  }

  static std::string TickText(double ticks) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.begin(), text.end(), ticks, std::chars_format::general);
    return {text.data(), end.ptr};
  }

  const std::array<unsigned char, 256> kinds_ = KindsOfCharacters();
  SlotWatch& watch_;
  const Declarations& declarations_;
  DumpItems items_;
  std::vector<Counts> counts_;  // by code
  BodyFacts facts_;
  std::uint64_t plainLines_ = 0;  // since the words counted lines
  bool isBehindItem_ = false;
  bool endsOpen_ = false;
  ItemKind last_ = ItemKind::SectionEnd;
  std::uint64_t definitionsEnd_ = 0;  // its line, if the body begins there
  std::uint64_t lastTick_ = 0;
  std::uint64_t lastLine_ = 0;  // of a stamp
  double readFirst_ = 0;
  double readLast_ = 0;
  DumpingTime dumping_;
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
