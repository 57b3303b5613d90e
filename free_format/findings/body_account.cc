// How the accounts of neighbouring stretches add up.
#include "free_format/findings/body_account.h"

#include <utility>

namespace orsa::kesncd {

std::string StampText(std::uint64_t ticks) {
  std::string text(1, '#');
  return text += std::to_string(ticks);
}

void CodeAccount::Join(const CodeAccount& next) {
  // The stretch gives the code no value.
  if (next.first == 0) return;
  // What a stretch took for the x that the signal starts from is none after other values.
  unknown += Is(kIsSet) && next.Is(kStartsUnknown) ? 1 : 0;
  // What is true of the first values of a stretch is not true of a later one.
  std::uint32_t added = next.flags;
  if (first != 0) added &= ~std::uint32_t{kFirstCounts};
  if (Is(kIsSet)) added &= ~std::uint32_t{kStartsUnknown};
  // A value without x here and one with x there make a change to x.
  if (Is(kWasKnown) && next.Is(kHasX)) added |= kTurnsX;
  flags |= added;
  if (first == 0) first = next.first;
  last = next.last;
  counted += next.counted;
  unknown += next.unknown;
}

/// An equal stamp would go on with the step that is open.
bool BodyAccount::CanPrecede(const BodyAccount& next) const {
  return dumping.isOn() != 0 && facts.stamps > 0 && next.facts.stamps > 0 &&
         facts.lastTick < next.facts.firstTick;
}

/// The declarations alone have no codes yet.
void BodyAccount::JoinCodes(std::vector<CodeAccount>&& next) {
  if (codes.empty()) {
    codes = std::move(next);
    return;
  }
  for (std::size_t i = 0; i < codes.size(); ++i) {
    // The first value of a stretch may repeat the last one before it.
    repeated += next[i].Is(CodeAccount::kFirstCounts) && next[i].first == codes[i].last ? 1 : 0;
    codes[i].Join(next[i]);
  }
}

/// The order matters: repeats are looked for before the codes' last values change, stamps completed
/// before the slots do, and lines are added to what comes last.
void BodyAccount::Join(BodyAccount&& next) {
  JoinCodes(std::move(next.codes));
  if (definitionsEnd == 0) definitionsEnd = next.definitionsEnd;
  // Their lines count from the stretch's first one.
  static constexpr Tally BodyAccount::*kTallies[] = {
      &BodyAccount::controls,         &BodyAccount::offStretches,   &BodyAccount::unknownBits,
      &BodyAccount::sharedStamps,     &BodyAccount::sharedCommands, &BodyAccount::changesInLine,
      &BodyAccount::beforeFirstStamp, &BodyAccount::longValues};
  for (Tally BodyAccount::*const tally : kTallies) (this->*tally).Join(next.*tally, lines);
  if (next.facts.stamps > 0) {
    if (facts.stamps == 0) {
      facts.firstTick = next.facts.firstTick;
      firstStamp = slots.Completed(next.firstStamp);
    }
    facts.lastTick = next.facts.lastTick;
    // The next stretch's digits may go on with what stood in the slots before it.
    lastStamp = slots.Completed(next.lastStamp);
    lastStampLine = next.lastStampLine + lines;
  }
  // From here on the slots are those at the end of the next stretch.
  slots.LayOver(next.slots);
  facts.stamps += next.facts.stamps;
  facts.changes += next.facts.changes;
  facts.unknown += next.facts.unknown;
  repeated += next.repeated;
  dumping.Join(next.dumping);
  endsOpen = next.endsOpen;
  lines += next.lines;
}

}  // namespace orsa::kesncd
