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

constexpr std::size_t kLongestWord = sizeof yytext - 1;

bool IsBlank(int c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}
bool EndsWord(int c) {
  return c <= ' ' && (IsBlank(c) || c == 0);
}

/// The next character without counting its line; 0, which no word holds, at the end of the input.
int ReadUncounted() {
  if (yysptr > yysbuf) return static_cast<unsigned char>(*--yysptr);
  const int c = yyin == nullptr ? EOF : ReadCharacter(yyin);
  return c == EOF ? 0 : c;
}

/// Counts a line. More lines than an int holds wrap around.
void CountLine() {
  yylineno = static_cast<int>(static_cast<unsigned>(yylineno) + 1);
}

void GiveBack(int c) {
  *yysptr++ = static_cast<char>(c);
}

/// Skips the blanks that the stream has read ahead.
void SkipBlanksAhead() {
  const std::string_view ahead = ReadAhead(yyin);
  std::size_t blanks = 0;
  for (; blanks < ahead.size() && IsBlank(ahead[blanks]); ++blanks) {
    if (ahead[blanks] == '\n') CountLine();
  }
  TakeAhead(yyin, blanks);
}

/// Skips blanks. What comes next is ahead in the stream, or was given back.
void SkipBlanks() {
  for (;;) {
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
/// length. It ends before a byte that may end the word, and before the last bytes that are read.
std::size_t TakeBlocks() {
  if (yysptr > yysbuf) return 0;
  const std::string_view ahead = ReadAhead(yyin).substr(0, kLongestWord);
  std::size_t length = 0;
  if (ahead.empty() || EndsWord(ahead[0])) return 0;  // yytext keeps the last word
  while (ahead.size() - length >= sizeof(ValueBlock)) {
    const std::size_t taken = ValueBlock::CopyWord(yytext + length, ahead.data() + length);
    length += taken;
    if (taken < sizeof(ValueBlock)) break;
  }
  TakeAhead(yyin, length);
  return length;
}

/// Reads a word into yytext and returns its length, 0 at the end of the input. Of a longer word
/// than fits the beginning is kept. The character after the word is given back; if it is a
/// newline, its line is counted when it is skipped.
std::size_t ReadWord() {
  SkipBlanks();
  std::size_t length = TakeBlocks();
  ValueBlock block;
  if (length % sizeof block != 0) block.MoveFrom(yytext + length / sizeof block * sizeof block);
  int c = ReadUncounted();
  for (; !EndsWord(c); c = ReadUncounted()) {
    if (length == kLongestWord) continue;
    block.Append(c, length++);
    if (length % sizeof block == 0) block.MoveTo(yytext + length - sizeof block);
  }
  yytchar = c;
  if (length == 0) return 0;
  block.MoveTo(yytext + length / sizeof block * sizeof block);  // with the terminator
  GiveBack(c);
  return length;
}

/// Keywords are ASCII in any locale.
char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsKeyword(std::string_view word, std::string_view keyword) {
  if (word.size() != keyword.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (LowerCase(word[i]) != keyword[i]) return false;
  }
  return true;
}

const Keyword* FindKeyword(std::string_view word) {
  if (word.front() != '$') return nullptr;
  for (const Keyword& keyword : kKeywords) {
    if (IsKeyword(word, keyword.text)) return &keyword;
  }
  return nullptr;
}

}  // namespace

int yylex() {
  bool skipping = false;
  while (const std::size_t length = ReadWord()) {
    const std::string_view word(yytext, length);
    const bool isEnd = IsKeyword(word, kEndKeyword);
    if (skipping) {
      skipping = !isEnd;
      continue;
    }
    if (isEnd) return kEnd;
    if (const Keyword* keyword = FindKeyword(word)) {
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
