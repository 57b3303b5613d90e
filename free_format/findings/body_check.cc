// The reading of a body for its findings.
#include "free_format/findings/body_check.h"

#include <algorithm>
#include <utility>

#include "free_format/body_reader.h"
#include "vcd/value_alphabet.h"

namespace orsa::kesncd {

namespace {

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

}  // namespace

/// Plain lines, which the watch has to see as well. Until the first stamp, lines go one by one, so
/// that findings can name them. Both operations return whether the line was taken; see
/// PlainLineTaker.
struct BodyCheck::WatchedLines {
  PlainLineTaker<BodyCheck>& plain;
  BodyAccount& account;
  std::uint64_t& taken;

  const char* LookAhead(const char* line, const char* chunk, const char* end) {
    return plain.LookAhead(line, chunk, end);
  }
  bool Scalar(const char* line, const char* newline) {
    const bool isTaken = account.facts.stamps > 0 && plain.Scalar(line, newline);
    taken += isTaken ? 1 : 0;
    return isTaken;
  }
  bool Other(const char* line, const char* blank, const char* newline) {
    if (account.facts.stamps == 0) return false;
    // The watch first: whether or not the line is taken here, line readers put its code into their
    // slot.
    if (blank != nullptr) {
      account.slots.TakeValueLine({blank + 1, static_cast<std::size_t>(newline - blank) - 1});
    } else if (*line == '#') {
      account.slots.TakeStampLine({line + 1, static_cast<std::size_t>(newline - line) - 1});
    }
    const bool isTaken = plain.Other(line, blank, newline);
    taken += isTaken ? 1 : 0;
    return isTaken;
  }
};

BodyCheck::BodyCheck(std::uint32_t codes, const SlotWatch& slots) : kinds_(KindsOfCharacters()) {
  account_.codes.resize(codes);
  account_.slots = slots;
}

/// Plain lines stand alone on theirs, so they need no check of their places.
void BodyCheck::ReadItems(DumpItems& items) {
  items_ = &items;
  items.Show(account_.slots);
  PlainLineTaker<BodyCheck> plain(items, *this);
  WatchedLines lines{plain, account_, plainLines_};
  while (items.Next()) {
    // Where the item stands comes first: it is about the item before, too.
    CheckLine();
    GiveItem(items, *this);
    items.TakePlainLines(lines);
    // The words have counted the lines of the run by now.
    plainLines_ = 0;
  }
  items_ = nullptr;
  // Words that are no item may follow the last one; a further stretch may follow, too, so that the
  // check waits for TakeAccount.
  crowdedLine_ = items.place().crowdedLine;
  account_.lines = items.Line() - 1;
  account_.controls = items.Controls();
  // A last "$end" without a newline is complete all the same.
  account_.endsOpen = items.EndsOpen() && last_ != ItemKind::SectionEnd;
}

BodyAccount BodyCheck::TakeAccount() {
  CheckItemBefore(crowdedLine_);
  return std::move(account_);
}

/// A value: its fingerprint, the kinds of its bits, and whether it is a scalar's x or z. With few
/// branches: which value a signal gets next cannot be predicted.
inline void BodyCheck::TakeValue(std::uint32_t codeId, std::uint32_t value, unsigned kinds,
                                 bool isUnknown) {
  CodeAccount& code = account_.codes[codeId];
  // Values are compared also while dumping is off, so that what follows $dumpon is known to repeat.
  const bool isOn = account_.dumping.isOn() != 0;
  const bool repeats = code.last == value;
  // The account of the stretch before decides whether this one repeats its last value.
  if (code.last == 0) [[unlikely]] {
    code.first = value;
    if (isOn && !isUnknown) code.flags |= CodeAccount::kFirstCounts;
  }
  code.last = value;
  if (!isOn) return;
  // The x that a signal starts from says nothing about its activity. Numbers in place of branches
  // from here on.
  const std::uint64_t isCounted = isUnknown ? 0 : 1;
  code.counted += isCounted;
  // A first x or z is kept apart: only the stretch before knows whether it is the very first.
  if (code.Is(CodeAccount::kIsSet)) [[likely]]
    code.unknown += 1 - isCounted;
  else if (isUnknown)
    code.flags |= CodeAccount::kStartsUnknown;
  // Only x is unknown here: a bus that is z has a value.
  const std::uint32_t ofX = CodeAccount::kHasX | (code.flags & CodeAccount::kWasKnown) << 1;
  static_assert(CodeAccount::kTurnsX == CodeAccount::kWasKnown << 1);
  // A value with x sets kHasX, and kTurnsX after one without; every other one sets kWasKnown.
  code.flags |= CodeAccount::kIsSet | ((kinds & kXBit) != 0 ? ofX : CodeAccount::kWasKnown) |
                (kinds != kXBit ? CodeAccount::kHasOtherThanX : 0U);
  account_.repeated += repeats ? isCounted : 0;
  account_.facts.changes += isCounted;
  account_.facts.unknown += 1 - isCounted;
  // Before the first stamp lines go one by one, so the line is exact.
  if (account_.facts.stamps == 0 && !isUnknown) account_.beforeFirstStamp.Add(Line(), "");
}

void BodyCheck::Scalar(std::uint32_t codeId, char value) {
  SetLast(ItemKind::Scalar);
  TakeValue(codeId, static_cast<unsigned char>(value), KindsOf(value), value > '1');
}

void BodyCheck::Vector(std::uint32_t codeId, std::string_view value) {
  SetLast(ItemKind::Vector);
  if (value.size() > kLongestWhole) account_.longValues.Add(Line(), "");
  const unsigned kinds = KindsOf(value, kinds_);
  if ((kinds & (kXBit | kZBit)) != 0 && account_.dumping.isOn() != 0) {
    account_.unknownBits.Add(Line(), value);
  }
  TakeValue(codeId, Fingerprint(value), kinds, false);
}

void BodyCheck::Real(std::uint32_t codeId, std::string_view value) {
  SetLast(ItemKind::Real);
  TakeValue(codeId, Fingerprint(value), kKnownBit, false);
}

void BodyCheck::Command(Keyword command) {
  SetLast(ItemKind::Command);
  DumpingTime& dumping = account_.dumping;
  // Only the stretches that begin are told; their ticks are counted.
  if (dumping.Take(command) && dumping.isOn() == 0) account_.offStretches.Add(Line(), "");
}

void BodyCheck::Stamp(std::uint64_t ticks) {
  SetLast(ItemKind::Stamp);
  // What a line reader makes of the stamp, beside what it says.
  account_.slots.NoteStamp(account_.lastStamp);
  lastTick_ = ticks;
  account_.dumping.Stamp(ticks);
  BodyFacts& facts = account_.facts;
  if (facts.stamps++ == 0) {
    facts.firstTick = facts.lastTick = ticks;
    account_.firstStamp = account_.lastStamp;
  }
  facts.lastTick = std::max(facts.lastTick, ticks);
  account_.lastStampLine = Line();
}

/// What stands before on the same line hides an item from the line readers, and the item hides a
/// stamp or a command that stands there.
void BodyCheck::CheckLine() {
  const ItemPlace& place = items_->place();
  // The item before is crowded by this one, or by words between the two.
  CheckItemBefore(place.startsLine ? place.crowdedLine : place.line);
  const ItemKind kind = items_->kind();
  const bool isUnknown = kind == ItemKind::Scalar && items_->value() > '1';
  const bool isChange =
      kind == ItemKind::Scalar || kind == ItemKind::Vector || kind == ItemKind::Real;
  // For a change it matters that it starts its line with its code in it; only counted ones are of
  // interest.
  if (isChange && account_.dumping.isOn() != 0 && !isUnknown &&
      (!place.startsLine || !place.isWhole)) {
    account_.changesInLine.Add(place.line, "");
  }
}

/// `line` is that of the item before if it shares it with what follows, else 0. What follows a
/// stamp or a command on its line makes line readers miss it.
void BodyCheck::CheckItemBefore(std::uint64_t line) {
  if (line == 0) return;
  // Nothing of the body came before: it is the definitions' last line that goes on.
  if (!isAfterItem_) account_.definitionsEnd = line;
  if (last_ == ItemKind::Stamp) account_.sharedStamps.Add(line, StampText(lastTick_));
  if (last_ == ItemKind::Command) account_.sharedCommands.Add(line, "");
}

}  // namespace orsa::kesncd
