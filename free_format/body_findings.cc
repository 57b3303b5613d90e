// What a dump's body shows of its troubles.
#include <algorithm>
#include <array>
#include <charconv>

#include "free_format/body_reader.h"
#include "free_format/dump_findings.h"
#include "free_format/dump_items.h"

namespace orsa::kesncd {

namespace {

constexpr double kUnknownShare = 0.01;  // of a signal's changes
// Of a value with its code on a line that the shortest line buffer of a reader holds.
constexpr std::size_t kLongestWhole = 960;

class BodyCheck {
 public:
  BodyCheck(DumpWords& words, SlotWatch& watch, const Declarations& declarations)
      : watch_(watch),
        declarations_(declarations),
        items_(words, declarations),
        counts_(declarations.codes.size()) {}

  void Run() {
    PlainLineTaker<BodyCheck> plain(items_, *this);
    WatchedLines lines{plain, watch_, facts_};
    while (items_.Next()) {
      CheckLine();
      GiveItem(items_, *this);
      items_.TakePlainLines(lines);
    }
    CheckItemBefore(items_.place().crowdedLine);
  }

  // What the body holds.
  void Scalar(std::uint32_t codeId, char value) {
    SetLast(ItemKind::Scalar);
    TakeChange(codeId, value > '1');
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    SetLast(ItemKind::Vector);
    if (value.size() > kLongestWhole) longValues_.Add(items_.Line(), "");
    TakeChange(codeId, false);
  }
  void Real(std::uint32_t codeId, std::string_view /*value*/) {
    SetLast(ItemKind::Vector);
    TakeChange(codeId, false);
  }
  void Command(Keyword command) {
    SetLast(ItemKind::Command);
    isDumping_ = command != Keyword::DumpOff;
  }
  void SectionEnd() { SetLast(ItemKind::SectionEnd); }
  void Stamp(std::uint64_t ticks) {
    SetLast(ItemKind::Stamp);
    readLast_ = watch_.StampFor(static_cast<double>(ticks));
    lastTick_ = ticks;
    if (facts_.stamps++ == 0) {
      facts_.firstTick = facts_.lastTick = ticks;
      readFirst_ = readLast_;
    }
    facts_.lastTick = std::max(facts_.lastTick, ticks);
    lastLine_ = items_.Line();
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
    findings.Add(FindingKind::Unknown, UnknownShares());
    findings.Add(FindingKind::Undeclared, items.undeclared);
    findings.Add(FindingKind::Strings, items.strings);
    findings.Add(FindingKind::Unended, items.unended);
    findings.Add(FindingKind::TornValue, items.torn);
    findings.Add(FindingKind::LateDeclarations, items.late);
    findings.Add(FindingKind::Strays, items.strays);
    findings.Add(FindingKind::Fractions, items.fractions);
    findings.Add(FindingKind::NoSpan, facts_.firstTick == facts_.lastTick, 0, "");
    const bool isMisread = readFirst_ != static_cast<double>(facts_.firstTick) ||
                           readLast_ != static_cast<double>(facts_.lastTick);
    findings.Add(FindingKind::MisreadSpan, isMisread && !sharedStamps_, lastLine_,
                 TickText(readFirst_) + " to " + TickText(readLast_));
  }

  const BodyFacts& facts() const { return facts_; }

 private:
  struct Counts {
    std::uint64_t counted = 0;
    std::uint64_t unknown = 0;
    bool isSet = false;
  };

  /// Plain lines, which the watch has to see as well. Until the first stamp, lines go one by one,
  /// so that findings can name them.
  struct WatchedLines {
    PlainLineTaker<BodyCheck>& plain;
    SlotWatch& watch;
    const BodyFacts& facts;

    bool Scalar(const char* line, const char* newline) {
      return facts.stamps > 0 && plain.Scalar(line, newline);
    }
    bool Other(const char* line, const char* blank, const char* newline) {
      if (facts.stamps == 0) return false;
      if (blank != nullptr) {
        watch.TakeValueLine({blank + 1, static_cast<std::size_t>(newline - blank) - 1});
      } else if (*line == '#') {
        watch.TakeStampLine({line + 1, static_cast<std::size_t>(newline - line) - 1});
      }
      return plain.Other(line, blank, newline);
    }
  };

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
    if (isChange && isDumping_ && !isUnknown && (!place.startsLine || !place.isWhole)) {
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

  void TakeChange(std::uint32_t codeId, bool isUnknown) {
    if (!isDumping_) return;
    Counts& counts = counts_[codeId];
    // The x that a signal starts from says nothing about its activity.
    if (!isUnknown || counts.isSet) ++(isUnknown ? counts.unknown : counts.counted);
    counts.isSet = true;
    ++(isUnknown ? facts_.unknown : facts_.changes);
    if (facts_.stamps == 0 && !isUnknown) before_.Add(items_.Line(), "");
  }

  Tally UnknownShares() const {
    Tally shares;
    for (const DumpVariable& variable : declarations_.variables) {
      const Counts& counts = counts_[variable.codeId];
      const auto unknown = static_cast<double>(counts.unknown);
      const double all = unknown + static_cast<double>(counts.counted);
      if (unknown <= kUnknownShare * all) continue;
      shares.Add(variable.line, shares ? "" : declarations_.ShortPathOf(variable));
    }
    return shares;
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

  SlotWatch& watch_;
  const Declarations& declarations_;
  DumpItems items_;
  std::vector<Counts> counts_;  // by code
  BodyFacts facts_;
  bool isBehindItem_ = false;
  ItemKind last_ = ItemKind::SectionEnd;
  std::uint64_t definitionsEnd_ = 0;  // its line, if the body begins there
  std::uint64_t lastTick_ = 0;
  std::uint64_t lastLine_ = 0;  // of a stamp
  double readFirst_ = 0;
  double readLast_ = 0;
  bool isDumping_ = true;
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
