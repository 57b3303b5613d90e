// What a dump's body shows of its troubles.
#include <array>
#include <charconv>

#include "free_format/dump_findings.h"
#include "free_format/dump_items.h"

namespace orsa::kesncd {

namespace {

constexpr double kUnknownShare = 0.01;  // of a signal's changes

class BodyCheck {
 public:
  BodyCheck(DumpWords& words, const SlotWatch& watch, const Declarations& declarations)
      : watch_(watch),
        declarations_(declarations),
        items_(words, declarations),
        counts_(declarations.codes.size()) {}

  void Run() {
    while (items_.Next()) {
      CheckLine();
      TakeItem();
    }
    CheckItemBefore(items_.place().crowdedLine);
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
    findings.Add(FindingKind::Backward, backward_);
    findings.Add(FindingKind::Weak, items.weak);
    findings.Add(FindingKind::LongValues, items.cut);
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

  /// What stands before on the same line hides an item from the line readers, and the item hides a
  /// stamp or a command that stands there.
  void CheckLine() {
    const ItemPlace& place = items_.place();
    CheckItemBefore(place.startsLine ? place.crowdedLine : place.line);
    isBehindItem_ = true;
    last_ = items_.kind();
    const bool isChange = last_ == ItemKind::Scalar || last_ == ItemKind::Vector;
    const bool counts = isDumping_ && !(last_ == ItemKind::Scalar && items_.value() > '1');
    if (isChange && counts && (!place.startsLine || !place.isWhole)) {
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

  void TakeItem() {
    switch (items_.kind()) {
      case ItemKind::Stamp:
        TakeStamp();
        break;
      case ItemKind::Command:
        isDumping_ = items_.command() != Keyword::DumpOff;
        break;
      case ItemKind::SectionEnd:
        break;
      case ItemKind::Scalar:
        TakeChange(items_.value() > '1');
        break;
      case ItemKind::Vector:
        TakeChange(false);
        break;
    }
  }

  void TakeStamp() {
    const std::uint64_t ticks = items_.ticks();
    if (facts_.stamps > 0 && ticks < lastTick_) {
      backward_.Add(items_.place().line, StampText(ticks));
    }
    readLast_ = watch_.StampFor(static_cast<double>(ticks));
    if (facts_.stamps++ == 0) {
      facts_.firstTick = ticks;
      readFirst_ = readLast_;
    }
    facts_.lastTick = lastTick_ = ticks;
    lastLine_ = items_.place().line;
  }

  void TakeChange(bool isUnknown) {
    if (!isDumping_) return;
    Counts& counts = counts_[items_.code()];
    // The x that a signal starts from says nothing about its activity.
    if (!isUnknown || counts.isSet) ++(isUnknown ? counts.unknown : counts.counted);
    counts.isSet = true;
    ++(isUnknown ? facts_.unknown : facts_.changes);
    if (facts_.stamps == 0 && !isUnknown) before_.Add(items_.place().line, "");
  }

  Tally UnknownShares() const {
    Tally shares;
    for (const DumpVariable& variable : declarations_.variables) {
      const Counts& counts = counts_[variable.code];
      const auto unknown = static_cast<double>(counts.unknown);
      const double all = unknown + static_cast<double>(counts.counted);
      if (unknown <= kUnknownShare * all) continue;
      shares.Add(variable.line, shares ? "" : declarations_.PathOf(variable));
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

  const SlotWatch& watch_;
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
  Tally backward_;
  Tally before_;
};

}  // namespace

BodyFacts FindInBody(DumpWords& words, const SlotWatch& watch, const Declarations& declarations,
                     Findings& findings) {
  BodyCheck check(words, watch, declarations);
  check.Run();
  check.Report(findings);
  return check.facts();
}

}  // namespace orsa::kesncd
