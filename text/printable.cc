// Which characters may be shown, and what stands for the others.
#include "text/printable.h"

#include <algorithm>

namespace orsa::kesncd {

namespace {

// UTF-8 has no characters of more bytes.
constexpr std::size_t kLongestCharacter = 4;

/// ASCII that can be shown as it is. Names in dumps are hardly ever anything else.
bool IsPlain(char c) {
  return c >= 0x20 && c < 0x7f;
}

/// Whether a byte goes on with a character that an earlier byte began: binary 10xxxxxx.
bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U;
}

/// The bytes of the character that starts with `first`; 0 for a byte that starts none.
std::size_t LengthAfter(unsigned char first) {
  // 0xc0 and 0xc1 would begin an overlong form of ASCII, 0x80 to 0xbf begin nothing.
  if (first < 0x80) return 1;
  if (first < 0xc2) return 0;
  if (first < 0xe0) return 2;
  if (first < 0xf0) return 3;
  return first < 0xf5 ? 4 : 0;
}

/// Adds a text with "?" for what must not be shown. `kept` holds control characters that may stay.
void AppendPrintable(std::string& out, std::string_view text, std::string_view kept) {
  while (!text.empty()) {
    const auto* const end = std::find_if_not(text.begin(), text.end(), IsPlain);
    const auto plain = static_cast<std::size_t>(end - text.begin());
    out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) return;
    // Runs of plain characters are copied at once above; here is a single other one.
    const Utf8Character character = FirstCharacter(text);
    const bool isShown = kept.find(text.front()) != std::string_view::npos ||
                         (character.isValid && !IsSteering(character.code));
    out += isShown ? text.substr(0, character.bytes) : "?";
    text.remove_prefix(character.bytes);
  }
}

/// The bytes that the first `count` characters of a printable text take.
std::size_t BytesOf(std::string_view text, std::size_t count) {
  std::size_t at = 0;
  while (count > 0 && at < text.size()) {
    at += FirstCharacter(text.substr(at)).bytes;
    --count;
  }
  return at;
}

}  // namespace

Utf8Character FirstCharacter(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = LengthAfter(first);
  // What is no UTF-8 is taken byte by byte, so that a wrong byte never hides the good ones after
  // it.
  const Utf8Character stray{first, 1, false};
  if (length == 0 || length > text.size()) return stray;
  if (length == 1) return {first, 1, true};
  char32_t code = first & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(text[i])) return stray;
    code = code << 6U | (static_cast<unsigned char>(text[i]) & 0x3fU);
  }
  // A second form of a shorter character could slip past a check for that character.
  const bool isOverlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool isSurrogate = code >= 0xd800 && code < 0xe000;
  if (isOverlong || isSurrogate || code > 0x10ffff) return stray;
  return {code, length, true};
}

/// Dumps come from others: a name with U+202E in it would show the rest of its line reversed.
bool IsSteering(char32_t code) {
  return code < 0x20 || (code >= 0x7f && code < 0xa0) ||       // control characters, C1 codes
         code == 0x61c || code == 0x200e || code == 0x200f ||  // direction marks
         (code >= 0x2028 && code <= 0x202e) ||                 // line ends, embeddings, overrides
         (code >= 0x2066 && code <= 0x2069);                   // isolates
}

std::string Printable(std::string_view text) {
  std::string out;
  AppendPrintable(out, text, "");
  return out;
}

std::string PrintableLines(std::string_view text) {
  std::string out;
  AppendPrintable(out, text, "\n");
  return out;
}

std::size_t CharacterCount(std::string_view text) {
  // Every character has one byte that is no continuation.
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !IsContinuation(c); }));
}

std::string Shortened(std::string_view text, std::size_t most) {
  constexpr std::string_view kGap = "...";
  // A text of so few bytes has no more characters than that; most names are not counted at all.
  const std::size_t count = text.size() <= most ? 0 : CharacterCount(text);
  if (count <= most) return std::string(text);
  // Both ends stay, since paths differ at their ends and their starts say which design it is.
  const std::size_t start = (most - kGap.size()) / 2;
  const std::size_t end = most - kGap.size() - start;
  std::string out(text.substr(0, BytesOf(text, start)));
  out += kGap;
  return out += text.substr(BytesOf(text, count - end));
}

void TerminalSink::Pass(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    // A carriage return belongs to a line's end; alone it would have a line written over.
    const std::size_t end = text.find("\r\n");
    AppendPrintable(shown, text.substr(0, end), "\n\t");
    if (end == std::string_view::npos) break;
    shown += "\r\n";
    text.remove_prefix(end + 2);
  }
  to_.Write(shown);
}

void TerminalSink::Write(std::string_view bytes) {
  // Writes may end anywhere, also inside a character or between "\r" and "\n". The last bytes are
  // looked at from the end: at most three of a character can be there without its last one.
  held_ += bytes;
  std::size_t whole = held_.size();
  for (std::size_t back = 1; back <= std::min(kLongestCharacter - 1, held_.size()); ++back) {
    const std::size_t start = held_.size() - back;
    if (IsContinuation(held_[start])) continue;
    const bool isCut = LengthAfter(static_cast<unsigned char>(held_[start])) > back;
    if (isCut || held_.substr(start) == "\r") whole = start;
    break;
  }
  Pass(std::string_view(held_).substr(0, whole));
  held_.erase(0, whole);
}

void TerminalSink::Finish() {
  Pass(held_);
  held_.clear();
}

}  // namespace orsa::kesncd
