#include "free_format/dump_items.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace orsa::kesncd {

namespace {

using Alphabet = std::array<char, 256>;

/// What the characters `from` become; every other one becomes `rest`.
constexpr Alphabet MakeAlphabet(char rest, std::string_view from, std::string_view to) {
  Alphabet alphabet{};
  for (char& c : alphabet) c = rest;
  for (std::size_t i = 0; i < from.size(); ++i) {
    alphabet[static_cast<unsigned char>(from[i])] = to[i];
  }
  return alphabet;
}

constexpr Alphabet MakeIdentity() {
  Alphabet alphabet{};
  for (std::size_t i = 0; i < alphabet.size(); ++i) alphabet[i] = static_cast<char>(i);
  return alphabet;
}

// The nine values of VHDL besides the four of Verilog: weak ones count as what they pull to.
constexpr Alphabet kScalars = MakeAlphabet('\0', "01xXzZHhLlUuWw-", "01xxzz1100xxxxx");
constexpr Alphabet kBits = MakeAlphabet('x', "01zZHhLl", "01zz1100");
// States of ports: driven from outside, from inside, or from both.
constexpr Alphabet kPortStates = MakeAlphabet('x', "DdLl0UuHh1ZTF", "0000011111zzz");
constexpr Alphabet kAsTheyAre = MakeIdentity();

char In(const Alphabet& alphabet, char c) {
  return alphabet[static_cast<unsigned char>(c)];
}

/// Writes what a value's characters become. Every alphabet leaves 0 and 1 as they are, and most of
/// what is dumped is nothing else: that is copied eight at a time.
void Translate(std::string_view value, char* to, const Alphabet& alphabet) {
  constexpr std::uint64_t kZeros = 0x3030303030303030U;
  constexpr std::uint64_t kOneBits = 0x0101010101010101U;
  std::size_t i = 0;
  for (; i + sizeof kZeros <= value.size(); i += sizeof kZeros) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, value.data() + i, sizeof bytes);
    if (((bytes ^ kZeros) & ~kOneBits) == 0) {
      std::memcpy(to + i, &bytes, sizeof bytes);
    } else {
      for (std::size_t at = i; at < i + sizeof bytes; ++at) to[at] = In(alphabet, value[at]);
    }
  }
  for (; i < value.size(); ++i) to[i] = In(alphabet, value[i]);
}

// What a line that means something to the library's readers begins with.
constexpr std::string_view kLineStarts = "01bBrR#$";

constexpr int kStrengths = 2;  // words between a port's states and its code

}  // namespace

DumpItems::DumpItems(DumpWords& words, const Declarations& declarations)
    : words_(words), codes_(declarations.codes), repeat_(declarations.hasWord) {}

bool DumpItems::Advance() {
  if (!repeat_) return words_.Next();
  repeat_ = false;
  return true;
}

/// The same where a value is not complete yet.
bool DumpItems::AdvanceInValue() {
  if (Advance()) return true;
  tallies_.torn.Add(place_.line, "");
  return false;
}

bool DumpItems::Next() {
  std::uint64_t crowdedLine = 0;
  bool isFirst = true;
  while (Advance()) {
    place_ = {words_.Line(), words_.StartsLine(), true, crowdedLine};
    if (TakeWord(words_.Word())) return true;
    if (isFirst && !place_.startsLine) crowdedLine = place_.line;
    isFirst = false;
  }
  place_.crowdedLine = crowdedLine;
  return false;
}

/// Takes an item that begins with the word; false where that is nothing that counts.
bool DumpItems::TakeWord(std::string_view word) {
  const char value = In(kScalars, word.front());
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

bool DumpItems::TakeScalar(std::string_view word, char value) {
  kind_ = ItemKind::Scalar;
  value_ = value;
  const bool isWeak = (value == '0' || value == '1') && value != word.front();
  const bool isApart = word.size() == 1;
  const bool found = isApart ? TakeCode() : FindCode(word.substr(1));
  if (isApart) place_.isWhole = false;
  if (found && isWeak) tallies_.weak.Add(place_.line, words_.Word());
  return found;
}

/// Keeps a value for writing. Its end is kept: of a number, those are the low bits.
void DumpItems::HoldText(char letter, std::string_view value, const Alphabet& alphabet) {
  isCut_ = value.size() > kLongestValue;
  if (isCut_) value.remove_prefix(value.size() - kLongestValue);
  text_[0] = letter;
  Translate(value, text_.data() + 1, alphabet);
  length_ = value.size() + 1;
}

bool DumpItems::TakeVector(std::string_view word) {
  kind_ = ItemKind::Vector;
  HoldText('b', word.size() > 1 ? word.substr(1) : "x", kBits);
  return TakeCodeOfText();
}

bool DumpItems::TakeReal(std::string_view word) {
  kind_ = ItemKind::Vector;
  HoldText('r', word.size() > 1 ? word.substr(1) : "0", kAsTheyAre);
  return TakeCodeOfText();
}

/// "pDU 66 66 <0": a state and two strengths for each bit, then the code.
bool DumpItems::TakePort(std::string_view word) {
  if (word.size() == 1) {
    if (!AdvanceInValue()) return false;
    word = words_.Word();
  } else {
    word.remove_prefix(1);
  }
  kind_ = word.size() == 1 ? ItemKind::Scalar : ItemKind::Vector;
  value_ = In(kPortStates, word.front());
  HoldText('b', word, kPortStates);
  for (int i = 0; i < kStrengths; ++i) {
    if (!AdvanceInValue()) return false;
    if (words_.Word().find_first_not_of("01234567") == std::string_view::npos) continue;
    repeat_ = true;  // no strength: the code already
    break;
  }
  if (!TakeCodeOfText()) return false;
  tallies_.ports.Add(place_.line, words_.Word());
  return true;
}

/// A string is no value that toggles: no reader counts it.
bool DumpItems::TakeString() {
  if (TakeCode()) tallies_.strings.Add(place_.line, words_.Word());
  return false;
}

bool DumpItems::TakeStamp(std::string_view word) {
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data() + 1, end, ticks_);
  const bool isWhole = stop == end;
  const bool isFraction = stop < end && *stop == '.' &&
                          std::all_of(stop + 1, end, [](char c) { return c >= '0' && c <= '9'; });
  if (error != std::errc() || (!isWhole && !isFraction)) {
    tallies_.strays.Add(place_.line, word);
    return false;
  }
  if (isFraction) tallies_.fractions.Add(place_.line, word);
  kind_ = ItemKind::Stamp;
  return true;
}

bool DumpItems::TakeKeyword(std::string_view word) {
  command_ = KeywordOf(word);
  switch (command_) {
    case Keyword::DumpVars:
    case Keyword::DumpAll:
    case Keyword::DumpOn:
    case Keyword::DumpOff:
      if (!IsPlainKeyword(word)) tallies_.keywords.Add(place_.line, word);
      kind_ = ItemKind::Command;
      return true;
    case Keyword::End:
      kind_ = ItemKind::SectionEnd;
      return true;
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
  while (words_.Next()) {
    const Keyword next = KeywordOf(words_.Word());
    if (next == Keyword::End) return;
    const bool isStamp = words_.Word().front() == '#' && words_.StartsLine();
    if (keyword != Keyword::Comment && (isStamp || StartsSection(next))) {
      repeat_ = true;
      break;
    }
    if (words_.StartsLine() && kLineStarts.find(words_.Word().front()) != std::string_view::npos) {
      tallies_.quoted.Add(words_.Line(), words_.Word());
    }
  }
  tallies_.unended.Add(line, "");
}

/// Takes the code that stands as a word of its own.
bool DumpItems::TakeCode() {
  if (!AdvanceInValue()) return false;
  if (words_.Line() != place_.line) place_.isWhole = false;
  if (FindCode(words_.Word())) return true;
  // Where the code is missing, what follows is something else.
  repeat_ = words_.StartsLine() || words_.Word().front() == '#' ||
            KeywordOf(words_.Word()) != Keyword::None;
  return false;
}

/// The same behind a value that may have been cut.
bool DumpItems::TakeCodeOfText() {
  if (!TakeCode()) return false;
  if (isCut_) tallies_.cut.Add(place_.line, words_.Word());
  return true;
}

bool DumpItems::FindCode(std::string_view code) {
  code_ = codes_.Find(code);
  if (code_ != CodeTable::kNone) return true;
  tallies_.undeclared.Add(place_.line, code);
  return false;
}

}  // namespace orsa::kesncd
