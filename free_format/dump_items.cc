// Words into items: which word belongs to which change, and what simulators write beyond 0, 1, x,
// z.
#include "free_format/dump_items.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace orsa::kesncd {

namespace {

// What a line that means something to the library's readers begins with. Only such a line inside a
// comment can do harm to a count.
constexpr std::string_view kLineStarts = "01bBrR#$";

// "66" and "66": how strongly 0 and 1 are driven, 0 to 7 each.
constexpr int kStrengths = 2;  // words between a port's states and its code

}  // namespace

/// By a list of all members, which the assertion keeps complete.
void ItemTallies::Join(const ItemTallies& next, std::uint64_t linesBefore) {
  static constexpr Tally ItemTallies::*kAll[] = {
      &ItemTallies::weak,       &ItemTallies::ports,     &ItemTallies::strings,
      &ItemTallies::undeclared, &ItemTallies::strays,    &ItemTallies::fractions,
      &ItemTallies::backward,   &ItemTallies::badStamps, &ItemTallies::cutStamp,
      &ItemTallies::late,       &ItemTallies::keywords,  &ItemTallies::quoted,
      &ItemTallies::unended,    &ItemTallies::torn};
  static_assert(sizeof(ItemTallies) == std::size(kAll) * sizeof(Tally));
  for (Tally ItemTallies::*const tally : kAll) (this->*tally).Join(next.*tally, linesBefore);
}

DumpItems::DumpItems(DumpWords& words, const Declarations& declarations)
    : DumpItems(words, declarations, nullptr, declarations.hasWord) {}

DumpItems::DumpItems(DumpWords& words, const Declarations& declarations, StretchSource& stretch,
                     bool beginsBody)
    : DumpItems(words, declarations, &stretch, beginsBody && declarations.hasWord) {}

DumpItems::DumpItems(DumpWords& words, const Declarations& declarations, StretchSource* stretch,
                     bool repeats)
    : words_(words),
      codes_(declarations.codes),
      stretch_(stretch),
      repeat_(repeats),
      widest_(std::max<std::size_t>(declarations.widest, 1)) {
  // A longer value loses its left part anyway, and a longer code is none of the dump's.
  words_.SetLongest(std::max<std::size_t>(declarations.widest, declarations.longestCode) + 1);
}

/// A word that ended the declarations, or showed that a code is missing, is taken once more.
bool DumpItems::Advance() {
  if (!repeat_) return words_.Next();
  repeat_ = false;
  return true;
}

/// The same inside an item, which may go on after the end of a stretch. The stretch is left inside
/// the item; who adds stretches up then knows that the next one was begun at a wrong place.
bool DumpItems::AdvanceInItem() {
  while (!Advance()) {
    if (stretch_ == nullptr) return false;
    isOverEnd_ = true;
    if (!stretch_->Pass()) return false;
  }
  return true;
}

/// The same where a value still lacks its code: a dump that ends there was cut off.
bool DumpItems::AdvanceInValue() {
  if (AdvanceInItem()) return true;
  tallies_.torn.Add(place_.line, "");
  return false;
}

/// Words that are no item are passed over; where they share a line with one is kept for findings.
bool DumpItems::Next() {
  while (!isOverEnd_ && Advance()) {
    // Of the item's first word; its code may stand on another line.
    place_ = {words_.Line(), words_.StartsLine(), true, crowdedLine_};
    if (TakeWord(words_.Word())) {
      crowdedLine_ = 0;
      isAfterItem_ = true;
      return true;
    }
    // Only the first word after an item: it is the one that hides it.
    if (isAfterItem_ && !place_.startsLine) crowdedLine_ = place_.line;
    isAfterItem_ = false;
  }
  // Words after the last item may crowd its line, too.
  place_.crowdedLine = crowdedLine_;
  return false;
}

void DumpItems::GoOn() {
  // Where an item went over the end, AdvanceInItem has passed it already.
  if (!isOverEnd_) (void)stretch_->Pass();
  isOverEnd_ = false;
}

/// Takes an item that begins with the word; false where that is nothing that counts. The first
/// letter decides, as it does for every reader.
bool DumpItems::TakeWord(std::string_view word) {
  // 0, 1, x and z in either case and the values of VHDL; '\0' for all others.
  const char value = In(kScalarValues, word.front());
  if (value != '\0') return TakeScalar(word, value);
  switch (word.front()) {
    case 'b':
    case 'B':
      return TakeVector(word);
    case '#':
      return TakeStamp(word);
    case 'r':
    case 'R':
      return TakeReal(word);
    case 'p':
    case 'P':
      return TakePort(word);
    case 's':
    case 'S':
      return TakeString();
    case '$':
      return TakeKeyword(word);
    default:
      tallies_.strays.Add(place_.line, word);
      return false;
  }
}

/// "1!" or "1 !"; the second form some writers use.
bool DumpItems::TakeScalar(std::string_view word, char value) {
  kind_ = ItemKind::Scalar;
  value_ = value;
  // H and L, which line readers pass over.
  const bool isWeak = (value == '0' || value == '1') && value != word.front();
  // The code is a word of its own.
  const bool isApart = word.size() == 1;
  const bool found = isApart ? TakeCode() : FindCode(word.substr(1));
  // The line readers find no code right after the value.
  if (isApart) place_.isWhole = false;
  if (found && isWeak) tallies_.weak.Add(place_.line, words_.Word());
  return found;
}

/// Keeps a value, whose word goes when the one of its code is taken. Its room stays from value to
/// value.
void DumpItems::HoldText(std::string_view value, const Alphabet& alphabet) {
  text_.resize(value.size());
  Translate(value, text_.data(), alphabet);
}

/// A "b" alone says nothing of any bit: x.
bool DumpItems::TakeVector(std::string_view word) {
  kind_ = ItemKind::Vector;
  HoldText(word.size() > 1 ? word.substr(1) : "x", kBitValues);
  return TakeCode();
}

bool DumpItems::TakeReal(std::string_view word) {
  kind_ = ItemKind::Real;
  // Any number will do: that a value was given is what counts.
  text_ = word.size() > 1 ? word.substr(1) : "0";
  return TakeCode();
}

/// "pDU 66 66 <0": a state and two strengths for each bit, then the code. "p DU 66 66 <0" is taken
/// too.
bool DumpItems::TakePort(std::string_view word) {
  if (word.size() == 1) {
    if (!AdvanceInValue()) return false;
    word = words_.Word();
  } else {
    word.remove_prefix(1);
  }
  // One state is a scalar's, whatever the port's width.
  kind_ = word.size() == 1 ? ItemKind::Scalar : ItemKind::Vector;
  value_ = In(kPortStates, word.front());
  // Both are kept; which is used depends on the kind.
  HoldText(word, kPortStates);
  for (int i = 0; i < kStrengths; ++i) {
    if (!AdvanceInValue()) return false;
    // Strengths are digits only, one for each bit at most; codes of port dumps begin with "<". Of a
    // longer word the middle may be gone, so nobody could say whether it is digits only.
    const std::string_view next = words_.Word();
    const bool isDigits = next.find_first_not_of("01234567") == std::string_view::npos;
    if (isDigits && next.size() <= widest_) continue;
    repeat_ = true;  // no strength: the code already
    break;
  }
  if (!TakeCode()) return false;
  // Only those that counted are tallied.
  tallies_.ports.Add(place_.line, words_.Word());
  return true;
}

/// "sIDLE !": a string, as simulators show the names of states. It does not toggle, so no reader
/// counts it.
bool DumpItems::TakeString() {
  if (TakeCode()) tallies_.strings.Add(place_.line, words_.Word());
  return false;
}

/// Takes the whole number of a stamp such as "#1200"; a fraction as in "#12.5" is dropped. A stamp
/// that ends the dump may have lost digits, and a span that ends there would be wrong by powers of
/// ten.
bool DumpItems::TakeStamp(std::string_view word) {
  const char* const end = word.data() + word.size();
  // Twenty digits that are too many for 64 bits are an error, not a wrong number.
  const auto [stop, error] = std::from_chars(word.data() + 1, end, ticks_);
  const bool isWhole = stop == end;
  const bool isFraction = stop < end && *stop == '.' &&
                          std::all_of(stop + 1, end, [](char c) { return c >= '0' && c <= '9'; });
  // A blank after it would say that it is whole.
  if (words_.EndsDump()) {
    tallies_.cutStamp.Add(place_.line, word);
    return false;
  }
  // A stamp that lost its middle is longer than any number.
  if (error != std::errc() || (!isWhole && !isFraction) || words_.IsCut()) {
    tallies_.badStamps.Add(place_.line, word);
    return false;
  }
  if (isFraction) tallies_.fractions.Add(place_.line, word);
  // Still an item: takers decide what going back means to them.
  if (!NoteStamp(ticks_)) tallies_.backward.Add(place_.line, word);
  kind_ = ItemKind::Stamp;
  return true;
}

/// Sections that say nothing about values are passed over here.
bool DumpItems::TakeKeyword(std::string_view word) {
  command_ = KeywordOf(word);
  switch (command_) {
    case Keyword::DumpVars:
    case Keyword::DumpAll:
    case Keyword::DumpOn:
    case Keyword::DumpOff:
      // A command in capitals, or one of a port dump.
      if (!IsPlainKeyword(word)) tallies_.keywords.Add(place_.line, word);
      kind_ = ItemKind::Command;
      return true;
    // The $end of a command, or of a section that SkipSection did not take.
    case Keyword::End:
      kind_ = ItemKind::SectionEnd;
      return true;
    // Its words follow as items of their own.
    case Keyword::Close:  // its stamp is the dump's last
    case Keyword::EndDefinitions:
      return false;
    case Keyword::Comment:
    case Keyword::Text:
    case Keyword::Section:
      SkipSection(command_);
      return false;
    case Keyword::Timescale:
    case Keyword::Scope:
    case Keyword::Upscope:
    case Keyword::Var:
      // A second header, as of joined dumps: its declarations come too late for the counts.
      tallies_.late.Add(place_.line, word);
      SkipSection(command_);
      return false;
    case Keyword::None:
      tallies_.strays.Add(place_.line, word);
      return false;
  }
  return false;
}

/// Passes over a section. Only a comment may hold anything at all; a stamp is the end of others.
void DumpItems::SkipSection(Keyword keyword) {
  const std::uint64_t line = words_.Line();
  while (AdvanceInItem()) {
    const Keyword next = KeywordOf(words_.Word());
    if (next == Keyword::End) return;
    // A word with "#" in front at the start of a line; what follows it need not be a number.
    const bool isStamp = words_.Word().front() == '#' && words_.StartsLine();
    if (keyword != Keyword::Comment && (isStamp || StartsSection(next))) {
      repeat_ = true;
      break;
    }
    // Line readers know no open sections.
    if (words_.StartsLine() && kLineStarts.find(words_.Word().front()) != std::string_view::npos) {
      tallies_.quoted.Add(words_.Line(), words_.Word());
    }
  }
  tallies_.unended.Add(line, "");
}

/// Takes the code that stands as a word of its own after "b0110", "r0.5", "p..." or a lone "1".
bool DumpItems::TakeCode() {
  if (!AdvanceInValue()) return false;
  // The line readers look for it on the value's own line only.
  if (words_.Line() != place_.line) place_.isWhole = false;
  if (FindCode(words_.Word())) return true;
  // Where the code is missing, what follows is something else. The word itself is then no code but
  // the start of the next item, to be taken again.
  repeat_ = words_.StartsLine() || words_.Word().front() == '#' ||
            KeywordOf(words_.Word()) != Keyword::None;
  return false;
}

/// A code that is looked up in vain is reported with the line of its value.
bool DumpItems::FindCode(std::string_view code) {
  codeId_ = codes_.Find(code);
  if (codeId_ != CodeTable::kNone) return true;
  tallies_.undeclared.Add(place_.line, code);
  return false;
}

}  // namespace orsa::kesncd
