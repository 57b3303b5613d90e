// The table-driven parser against the one that bison makes from the same rules: both must accept
// the same files, reduce in the same order, and read their look-aheads at the same points.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "kesncd/grammar/parser.h"
#include "kesncd/grammar/table_builder.h"
#include "tests/support/testing.h"

using namespace orsa::kesncd;

int referenceparse();
extern int referencelval;

namespace {

// For each reduction its rule, the line that the lexer has reached and the numbers of its words;
// for an error -1 and the line.
std::vector<int> parserLog;

}  // namespace

void LogRule(int rule, const std::vector<int>& words = {}) {
  parserLog.insert(parserLog.end(), {rule, yylineno});
  parserLog.insert(parserLog.end(), words.begin(), words.end());
}

int referencelex() {
  const int token = yylex();
  referencelval = std::atoi(yylval.text);
  return token;
}

void referenceerror(const char* /*message*/) {
  LogRule(-1);
}

namespace {

constexpr ParseTables kTables = BuildTables(kGrammar);
const char* const kAlphabet[] = {"w ",    "$dumpall ", "$dumpvars ",  "$dumpon ",  "$dumpoff ",
                                 "$end ", "$scope ",   "$timescale ", "$upscope ", "$var "};

struct Logger {
  static void Reduce(const Reduction& reduction, const YYSTYPE* values) {
    const RightSide& right = kGrammar[reduction.rule].right;
    std::vector<int> words;
    for (std::size_t i = 0; i < right.size(); ++i) {
      if (right[i] == kWord) words.push_back(std::atoi(values[i].text));
    }
    LogRule(reduction.rule, words);
  }
};

/// Lets the lexer find the tokens among its characters read ahead, each on a line of its own, words
/// numbered through.
void Supply(const std::string& tokens) {
  std::string text;
  int number = 0;
  for (const char c : tokens) {
    text += c == 'w' ? std::to_string(++number) : std::string(1, c == ' ' ? '\n' : c);
  }
  ASSERT_LT(text.size(), sizeof yysbuf);
  yysptr = std::copy(text.rbegin(), text.rend(), yysbuf);
  yylineno = 1;
  yyerrflag = 0;
  parserLog.clear();
}

/// Runs both parsers; whether the tokens can begin a file.
bool Compare(const std::string& tokens) {
  Supply(tokens);
  const bool accepted = referenceparse() == 0;
  const std::vector<int> expected = parserLog;
  Supply(tokens);
  Logger logger;
  EXPECT_EQ(Parser(kTables, logger).Parse(), accepted);
  if (yynerrs > 0) LogRule(-1);
  const bool agrees = parserLog == expected;
  EXPECT_TRUE(agrees) << tokens;
  return agrees && yychar == kEndOfInput;
}

/// Compares every continuation of `tokens` by up to `length`, wrong ones up to their wrong token.
int CompareAll(const std::string& tokens, int length) {
  int compared = 1;
  if (!Compare(tokens) || length == 0) return compared;
  for (const char* token : kAlphabet) compared += CompareAll(tokens + token, length - 1);
  return compared;
}

using GrammarReference = FreshState;

// No rule nests, so the stack of a long file is that of a short one: no more is to be compared.
TEST_F(GrammarReference, AgreesOnEveryShortFile) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(CompareAll("", 8), 60231);
  testing::internal::GetCapturedStderr();
}

}  // namespace
