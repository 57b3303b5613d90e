// The lexer: words between blanks, keywords, and sections that are swallowed whole.
//
// Characters come one at a time, so the stream stands right after the character that ended the
// last word. That one character is pushed back and waits in yysbuf, for the next parse if need be.
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "kesncd/grammar/token_value.h"
#include "kesncd/grammar/tokens.h"
#include "kesncd/kesncd.h"
#include "text/stream.h"

namespace orsa::kesncd {

namespace {

// The beginning of a longer word is kept, its rest dropped.
constexpr std::size_t kLongestWord = sizeof yytext - 1;

/// Other control characters are parts of words here, unlike in free format.
bool IsBlank(int c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}
/// 0 ends a word, too: the end of the input, or a NUL in the dump.
bool EndsWord(int c) {
  return c <= ' ' && (IsBlank(c) || c == 0);
}

/// The next character without counting its line; 0, which no word holds, at the end of the input.
/// What was given back comes before what the stream has next.
int ReadUncounted() {
  if (yysptr > yysbuf) return static_cast<unsigned char>(*--yysptr);
  const int c = yyin == nullptr ? EOF : ReadCharacter(yyin);
  return c == EOF ? 0 : c;
}

/// Counts a line. More lines than an int holds wrap around, by way of unsigned: an int must not
/// overflow.
void CountLine() {
  yylineno = static_cast<int>(static_cast<unsigned>(yylineno) + 1);
}

/// Room for more than one is never needed: a character is given back only after it was read.
void GiveBack(int c) {
  *yysptr++ = static_cast<char>(c);
}

/// Skips the blanks that the stream has read ahead, without a call for each: a dump has one between
/// any two words.
void SkipBlanksAhead() {
  const std::string_view ahead = ReadAhead(yyin);
  std::size_t blanks = 0;
  // Lines are counted when their newline is skipped.
  for (; blanks < ahead.size() && IsBlank(ahead[blanks]); ++blanks) {
    if (ahead[blanks] == '\n') CountLine();
  }
  TakeAhead(yyin, blanks);
}

/// Skips blanks. What comes next is then ahead in the stream, or was given back; at the end of the
/// input it is the 0 of ReadUncounted.
void SkipBlanks() {
  for (;;) {
    // Where something was given back, the stream's own bytes come only after it.
    if (yysptr == yysbuf) {
      SkipBlanksAhead();
      if (!ReadAhead(yyin).empty()) return;
    }
    const int c = ReadUncounted();
    if (!IsBlank(c)) return GiveBack(c);
    if (c == '\n') CountLine();
  }
}

/// Takes the start of a word from what the stream has read ahead, in blocks, to yytext; returns its
/// length. It ends before a byte that may end the word, and before the last bytes that are read. A
/// word that goes on after them is completed character by character.
std::size_t TakeBlocks() {
  // A character that was given back comes before those of the stream.
  if (yysptr > yysbuf) return 0;
  const std::string_view ahead = ReadAhead(yyin).substr(0, kLongestWord);
  std::size_t length = 0;
  if (ahead.empty() || EndsWord(ahead[0])) return 0;  // yytext keeps the last word
  while (ahead.size() - length >= sizeof(ValueBlock)) {
    const std::size_t taken = ValueBlock::CopyWord(yytext + length, ahead.data() + length);
    length += taken;
    // A shorter step met a byte that may end the word.
    if (taken < sizeof(ValueBlock)) break;
  }
  TakeAhead(yyin, length);
  return length;
}

/// Reads a word into yytext and returns its length, 0 at the end of the input. Of a longer word
/// than fits the beginning is kept. The character after the word is given back; if it is a
/// newline, its line is counted when it is skipped. Four parts: blanks, what is ahead in blocks,
/// the rest by characters, the terminator.
std::size_t ReadWord() {
  SkipBlanks();
  std::size_t length = TakeBlocks();
  ValueBlock block;
  // The last block may be unfinished; its characters go on from there.
  if (length % sizeof block != 0) block.MoveFrom(yytext + length / sizeof block * sizeof block);
  int c = ReadUncounted();
  for (; !EndsWord(c); c = ReadUncounted()) {
    // Too long: read on to the word's end.
    if (length == kLongestWord) continue;
    block.Append(c, length++);
    if (length % sizeof block == 0) block.MoveTo(yytext + length - sizeof block);
  }
  yytchar = c;
  if (length == 0) return 0;
  // The block's free bytes are zeros.
  block.MoveTo(yytext + length / sizeof block * sizeof block);  // with the terminator
  // The blank stays for the next call, so that the line is right in an error's message.
  GiveBack(c);
  return length;
}

/// Keywords are ASCII in any locale.
char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// `keyword` is in small letters.
bool IsKeyword(std::string_view word, std::string_view keyword) {
  if (word.size() != keyword.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (LowerCase(word[i]) != keyword[i]) return false;
  }
  return true;
}

/// Null for any other word. Nearly all words fail at their first character.
const LexerKeyword* FindKeyword(std::string_view word) {
  if (word.front() != '$') return nullptr;
  for (const LexerKeyword& keyword : kKeywords) {
    if (IsKeyword(word, keyword.text)) return &keyword;
  }
  return nullptr;
}

}  // namespace

/// The text of a token is in yytext, a word's also in yylval.
int yylex() {
  // Inside $comment, $date, $version or $enddefinitions.
  bool skipping = false;
  while (const std::size_t length = ReadWord()) {
    const std::string_view word(yytext, length);
    const bool isEnd = IsKeyword(word, kEndKeyword);
    // Up to the $end, whatever stands before it: the rest of the line as well.
    if (skipping) {
      skipping = !isEnd;
      continue;
    }
    if (isEnd) return kEnd;
    if (const LexerKeyword* keyword = FindKeyword(word)) {
      // A keyword ends the search for a place to go on after an error.
      yyerrflag = 0;
      if (!keyword->skipped) return keyword->token;
      skipping = true;
    } else if (yyerrflag == 0) {  // a parser that recovers from an error wants keywords only
      CopyValue(yylval.text, yytext);
      return kWord;
    }
  }
  return kEndOfInput;
}

int yyerror(const char* message) {
  return std::fprintf(stderr, "ERROR: %s at \"%s\" (line %d).\n", message, yytext, yylineno);
}

}  // namespace orsa::kesncd
