// Toggles of vectors and of signals that several modules share, and pauses.
//
// The plain case, a bit of its own in one module, is in the header, where it is inlined into the
// reading. Here is the rest: vectors in words of 64 bits, codes that several modules name, a second
// value in one step, pauses, and how counters of neighbouring stretches add up.
#include "activity/profile/toggle_counter.h"

#include <algorithm>
#include <bit>

namespace orsa::kesncd {

namespace {

/// Ones in the places of the bits [from, to) of a signal that lie in its word `index`. For bits 60
/// to 69 those are 0xF000000000000000 in word 0 and 0x3F in word 1; in other words none.
std::uint64_t Lanes(std::uint32_t from, std::uint32_t to, std::uint32_t index) {
  const std::uint64_t first = std::uint64_t{index} * kWordBits;
  const std::uint64_t low = std::clamp<std::uint64_t>(from, first, first + kWordBits) - first;
  const std::uint64_t high = std::clamp<std::uint64_t>(to, first, first + kWordBits) - first;
  // A shift by 64 is undefined, so a whole word is a case of its own.
  const auto below = [](std::uint64_t end) {
    return end == kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << end) - 1;
  };
  return below(high) & ~below(low);
}

/// Whether several modules have a code, and all of them the same bits of it.
bool IsShared(std::span<const ModuleShare> shares) {
  return shares.size() > 1 &&
         std::all_of(shares.begin(), shares.end(), [&](const ModuleShare& share) {
           return share.from == shares.front().from && share.to == shares.front().to;
         });
}

}  // namespace

/// Decides once for each code how it is counted. A code that no module wants has no memory but its
/// entry, which says that.
ToggleCounter::ToggleCounter(const CodeBits& codes, const ModuleShares& shares, std::size_t modules,
                             const ActivityWindow& window, std::shared_ptr<CodeLines> lines)
    : bits_(codes),
      shares_(shares),
      window_(window),
      codes_(codes.codes(), std::move(lines)),
      sums_(modules),
      sharedPlaces_(codes.codes(), kNotShared) {
  std::size_t widest = 1;
  std::size_t words = 0;
  for (std::uint32_t codeId = 0; codeId < codes.codes(); ++codeId) {
    const std::span<const ModuleShare> own = shares.Of(codeId);
    if (own.empty()) continue;
    if (IsShared(own)) {
      sharedPlaces_[codeId] = static_cast<std::uint32_t>(shared_.size());
      shared_.push_back({codeId});
    }
    Code& code = codes_[codeId];
    const std::uint32_t width = codes.Width(codeId);
    if (width > 1) {
      code.kind = Kind::Vector;
      code.place = static_cast<std::uint32_t>(words);
      words += (width + kWordBits - 1) / kWordBits;
      widest = std::max<std::size_t>(widest, width);
    } else if (own.size() == 1 && own.front().times == 1) {
      code.kind = Kind::Scalar;
      code.place = own.front().module;
    } else {
      code.kind = Kind::SharedScalar;
    }
  }
  words_.resize(words);
  value_.resize((widest + kWordBits - 1) / kWordBits);
}

/// Adds toggles in a word of a signal to the modules that have these bits; a `sign` of -1 takes
/// them back. A share may count a bit less than no time, where it takes off what two modules below
/// have of it: sums wrap around then, and are right again when modules are added up.
void ToggleCounter::CountShares(std::uint32_t codeId, std::uint32_t index, std::uint64_t toggles,
                                std::uint64_t sign) {
  const std::span<const ModuleShare> shares = shares_.Of(codeId);
  // One module needs no look at the places, which are memory of their own.
  const std::uint32_t place = shares.size() > 1 ? sharedPlaces_[codeId] : kNotShared;
  if (place != kNotShared) {
    Shared& shared = shared_[place];
    const std::uint64_t lanes = Lanes(shares.front().from, shares.front().to, index);
    shared.toggles += sign * static_cast<std::uint64_t>(std::popcount(toggles & lanes));
    if (!std::exchange(shared.isWaiting, true)) waitingShared_.push_back(place);
    return;
  }
  for (const ModuleShare& share : shares) {
    const int count = std::popcount(toggles & Lanes(share.from, share.to, index));
    const std::int64_t counted = std::int64_t{share.times} * count;
    sums_[share.module] += sign * static_cast<std::uint64_t>(counted);
  }
}

/// Moves toggles of shared codes into the sums of all modules that have them.
void ToggleCounter::ShareOut() {
  for (const std::uint32_t place : waitingShared_) {
    Shared& shared = shared_[place];
    shared.isWaiting = false;
    const std::uint64_t toggles = std::exchange(shared.toggles, 0);
    if (toggles == 0) continue;
    for (const ModuleShare& share : shares_.Of(shared.codeId)) {
      sums_[share.module] += static_cast<std::uint64_t>(std::int64_t{share.times}) * toggles;
    }
  }
  waitingShared_.clear();
}

/// Makes a code what it was before the step, where it had a value in it, or before its first value,
/// where observation began since the last one. The level before the step is what the last value of
/// the step is compared with, so the toggle of the value that it replaces is taken back.
void ToggleCounter::TakeOddScalar(std::uint32_t codeId, Code& code) {
  if (code.step < stretch_) {
    code.known = 0;
    return;
  }
  const bool toggled = code.before != 0 && code.known != code.before && counts_ != 0;
  code.known = code.before;
  if (!toggled) return;
  if (code.kind == Kind::Scalar) {
    --sums_[code.place];
  } else {
    CountShares(codeId, 0, 1, ~std::uint64_t{0});
  }
}

/// A vector's value, in words, the lowest bits first. As of a scalar: what an earlier value of the
/// same step counted is taken back first, then the bits that differ from their last known value
/// toggle.
void ToggleCounter::TakeVector(std::uint32_t codeId, Code& code, std::string_view value) {
  const std::uint32_t width = bits_.Width(codeId);
  ReadVectorValue(value, width, value_.data());
  const bool isFirst = code.step < stretch_;
  const bool isCorrection = code.step == step_;
  code.step = step_;
  bool wasUnknown = false;
  std::uint32_t left = width;
  for (std::uint32_t index = 0; index * std::uint64_t{kWordBits} < width; ++index) {
    Word& word = words_[code.place + index];
    // Nothing is known of the bits since observation began. `hadKnown` is empty too, so that a
    // correction in this step comes back to that.
    if (isFirst) {
      word = {};
    } else if (isCorrection) {
      const std::uint64_t toggled = word.hadKnown & (word.known ^ word.knew);
      if (toggled != 0 && counts_ != 0) CountShares(codeId, index, toggled, ~std::uint64_t{0});
      word.hasKnown = word.hadKnown;
      word.known = word.knew;
    } else {
      word.hadKnown = word.hasKnown;
      word.knew = word.known;
    }
    // Bits that the signal has, and of those the ones that are 0 or 1 now.
    const std::uint64_t all = Lanes(0, std::min<std::uint32_t>(left, kWordBits), 0);
    const std::uint64_t lanes = all & ~value_[index].unknown;
    wasUnknown = wasUnknown || word.hasKnown != all;
    // x and z neither toggle nor change what was known.
    const std::uint64_t toggles = word.hasKnown & lanes & (word.known ^ value_[index].high);
    word.hasKnown |= lanes;
    word.known = (word.known & ~lanes) | (value_[index].high & lanes);
    if (toggles != 0 && counts_ != 0) CountShares(codeId, index, toggles, 1);
    left -= std::min<std::uint32_t>(left, kWordBits);
  }
  // For openings: the step may give some bit its first known value. A correction is of a code that
  // is in the list already.
  if (wasUnknown && !isCorrection) NoteUnknown(codeId);
}

/// At the end of a step: which bits have their first known value from it. Not before, as a later
/// value of the step may take a known one back.
void ToggleCounter::NoteOpenings() {
  for (const std::uint32_t codeId : unknown_) {
    const Code& code = codes_[codeId];
    // A scalar without a known value after its step is still unknown, so it may come here again.
    if (code.kind != Kind::Vector) {
      if (code.known != 0) openings_.push_back({time_.lastStamp, 1, code.known & 1U, codeId, 0});
      continue;
    }
    const std::uint32_t width = bits_.Width(codeId);
    for (std::uint32_t index = 0; index * std::uint64_t{kWordBits} < width; ++index) {
      const Word& word = words_[code.place + index];
      const std::uint64_t learned = word.hasKnown & ~word.hadKnown;
      if (learned == 0) continue;
      openings_.push_back({time_.lastStamp, learned, word.known & learned, codeId, index});
    }
  }
  unknown_.clear();
}

/// The last step has no stamp after it that would have noted its openings.
const std::vector<Opening>& ToggleCounter::Openings() {
  TakeWaiting();
  NoteOpenings();
  return openings_;
}

/// What is known here is the state at this counter's end, before Follow. A code without a known
/// value in the open stretch of observation gets its first one by the opening, which is no toggle.
void ToggleCounter::Open(const Opening& opening) {
  if (!window_.Counts(opening.ticks)) return;
  const Code& code = codes_[opening.codeId];
  if (code.kind == Kind::Vector) {
    if (code.step < stretch_) return;
    const Word& word = words_[code.place + opening.word];
    const std::uint64_t toggles = word.hasKnown & opening.bits & (word.known ^ opening.values);
    if (toggles != 0) CountShares(opening.codeId, opening.word, toggles, 1);
    return;
  }
  const std::uint8_t known = KnownOf(code);
  if (known == 0 || (known & 1U) == opening.values) return;
  if (code.kind == Kind::Scalar) {
    ++sums_[code.place];
  } else {
    CountShares(opening.codeId, 0, 1, 1);
  }
}

/// The same as Follow does for scalars, by bits: what the next stretch knows of a bit replaces what
/// was known, other bits keep theirs. `wasSeen` and `isSeen` say whether this and the next
/// counter's words mean anything.
void ToggleCounter::FollowVector(std::uint32_t codeId, ToggleCounter& next, bool wasSeen,
                                 bool isSeen) {
  const std::uint32_t width = bits_.Width(codeId);
  for (std::uint32_t index = 0; index * std::uint64_t{kWordBits} < width; ++index) {
    const std::size_t place = codes_[codeId].place + index;
    Word word = isSeen ? next.words_[place] : Word();
    Word& own = words_[place];
    if (wasSeen) {
      word.known |= own.known & own.hasKnown & ~word.hasKnown;
      word.hasKnown |= own.hasKnown;
    }
    own = word;
  }
}

/// All codes are walked through, once for each stretch of a file. Their step becomes the open one,
/// which says that they belong to the stretch of observation that is open now; a code without a
/// known value is not told from one without any value, as neither can toggle.
void ToggleCounter::Follow(ToggleCounter& next) {
  const bool goesOn = next.time_.pauses == 0;  // else what was known is forgotten
  for (std::uint32_t codeId = 0; codeId < codes_.size(); ++codeId) {
    Code& code = codes_[codeId];
    const Code& later = next.codes_[codeId];
    const bool wasSeen = goesOn && code.step >= stretch_;
    if (code.kind == Kind::Vector) {
      FollowVector(codeId, next, wasSeen, later.step >= next.stretch_);
    } else {
      const std::uint8_t known = next.KnownOf(later);
      code.known = known != 0 || !wasSeen ? known : code.known;
    }
    code.step = step_;
  }
  time_.lastStamp = next.time_.lastStamp;
  time_.backward += next.time_.backward;
  time_.pauses += next.time_.pauses;
  time_.unobserved += next.time_.unobserved;
  time_.isObserving = next.time_.isObserving;
  time_.pausedAt = next.time_.pausedAt;
}

TogglePart ToggleCounter::TakePart() {
  TogglePart part{time_, Openings(), {}};
  for (std::uint32_t codeId = 0; codeId < codes_.size(); ++codeId) {
    const Code& code = codes_[codeId];
    if (code.kind != Kind::Vector) {
      const std::uint8_t known = KnownOf(code);
      if (known != 0) part.levels.push_back({0, 1, known & 1U, codeId, 0});
      continue;
    }
    if (code.step < stretch_) continue;
    const std::uint32_t width = bits_.Width(codeId);
    for (std::uint32_t index = 0; index * std::uint64_t{kWordBits} < width; ++index) {
      const Word& word = words_[code.place + index];
      if (word.hasKnown == 0) continue;
      part.levels.push_back({0, word.hasKnown, word.known & word.hasKnown, codeId, index});
    }
  }
  return part;
}

bool ToggleCounter::IsOfCodes(const Opening& word) const {
  return word.codeId < codes_.size() &&
         word.word * std::uint64_t{kWordBits} < bits_.Width(word.codeId);
}

/// Openings have to grow within the part's stamps, since their windows do.
bool ToggleCounter::Restore(const TogglePart& part) {
  std::uint64_t ticks = part.time.firstStamp;
  for (const Opening& opening : part.openings) {
    if (!IsOfCodes(opening) || opening.ticks < ticks || opening.ticks > part.time.lastStamp) {
      return false;
    }
    ticks = opening.ticks;
  }
  for (const Opening& level : part.levels) {
    if (!IsOfCodes(level)) return false;
    Code& code = codes_[level.codeId];
    code.step = step_;
    if (code.kind == Kind::Vector) {
      words_[code.place + level.word] = {level.bits, level.values & level.bits, 0, 0};
    } else {
      code.known = static_cast<std::uint8_t>(kKnown | (level.values & 1U));
    }
  }
  time_ = part.time;
  openings_ = part.openings;
  return true;
}

/// Before the first stamp nothing lasts, but what was known is forgotten. $dumpon while observing
/// and $dumpoff while not switch nothing.
void ToggleCounter::Command(Keyword command) {
  TakeWaiting();
  const std::uint64_t now = window_.Clamp(time_.lastStamp);
  if (command == Keyword::DumpOff && time_.isObserving) {
    NoteOpenings();
    keepsOpenings_ = false;
    time_.isObserving = false;
    time_.pausedAt = now;
    ++time_.pauses;
    ++step_;
  } else if (command == Keyword::DumpOn && !time_.isObserving) {
    time_.isObserving = true;
    if (time_.hasStamps) time_.unobserved += now - time_.pausedAt;
    stretch_ = ++step_;
  }
}

}  // namespace orsa::kesncd
