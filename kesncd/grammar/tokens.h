// Tokens of a dump: words, and the keywords that the lexer tells from them.
#ifndef KESNCD_GRAMMAR_TOKENS_H_
#define KESNCD_GRAMMAR_TOKENS_H_

#include <string_view>

namespace orsa::kesncd {

/// What yylex returns; the error token exists inside the parser only. The numbers are the interface
/// of yylex: 257 for words, 260 to 269 for the keywords that are no section of text.
enum Token : int {
  kEndOfInput = 0,
  kErrorToken = 256,
  kWord,
  kComment,
  kDate,
  kDumpall,
  kDumpon,
  kDumpoff,
  kDumpvars,
  kEnd,
  kEnddefinitions,
  kScope,
  kTimescale,
  kUpscope,
  kVar,
  kVersion,
};

/// The lexer compares words with `text` in any letter case.
struct LexerKeyword {
  std::string_view text;
  Token token;
  bool skipped;  // swallowed together with all that stands before its "$end"
};

/// Every keyword but "$end", which the lexer looks for first. A word that is none of these is data.
inline constexpr LexerKeyword kKeywords[] = {
    {"$comment", kComment, true},
    {"$date", kDate, true},
    {"$dumpall", kDumpall, false},
    {"$dumpon", kDumpon, false},
    {"$dumpoff", kDumpoff, false},
    {"$dumpvars", kDumpvars, false},
    {"$enddefinitions", kEnddefinitions, true},
    {"$scope", kScope, false},
    {"$timescale", kTimescale, false},
    {"$upscope", kUpscope, false},
    {"$var", kVar, false},
    {"$version", kVersion, true},
};
inline constexpr std::string_view kEndKeyword = "$end";

}  // namespace orsa::kesncd

#endif  // KESNCD_GRAMMAR_TOKENS_H_
