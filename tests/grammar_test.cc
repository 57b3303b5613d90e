// The grammar reader: its tokens, what its rules do, and what one parse leaves to the next.
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <new>
#include <sstream>

#include "kesncd/grammar/parser.h"
#include "kesncd/grammar/table_builder.h"
#include "tests/support.h"

namespace {

long allocations = 0;

}  // namespace

// Kept out of line, so that the compiler sees no mismatch.
[[gnu::noinline]] void* operator new(std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept {
  ++allocations;
  return std::malloc(bytes > 0 ? bytes : 1);
}
[[gnu::noinline]] void* operator new(std::size_t bytes) {
  void* memory = operator new(bytes, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*bytes*/) noexcept {
  std::free(memory);
}

namespace orsa::kesncd {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;
using namespace std::string_literals;

using Grammar = FreshState;

const std::string kTop = "$scope module top $end ";
const std::string kVars = "$var wire 1 ! clk $end $var reg 8 \" d [7:0] $end ";
const std::string kHeader = "$timescale 1 ns $end " + kTop + kVars + "$upscope $end ";

/// The tokens of a text: "267 257:1ns 264", and the line that the lexer has reached.
std::string Lex(const std::string& text) {
  const TextStream stream(text);
  yyin = stream;
  std::string tokens;
  for (int token = yylex(); token != kEndOfInput; token = yylex()) {
    tokens += std::to_string(token) + (token == kWord ? ":"s + yylval.text : "") + " ";
  }
  return tokens + "line " + std::to_string(yylineno);
}

TEST_F(Grammar, Tokens) {
  const std::string cut(1023, 'w');
  const struct {
    const char* why;
    std::string text, tokens;
  } rows[] = {
      {"an empty file", "", "line 1"},
      {"words and a keyword", "$timescale 1ns $end", "267 257:1ns 264 line 1"},
      {"each keyword", "$dumpall $dumpon $dumpoff $dumpvars $end $scope $timescale $upscope $var",
       "260 261 262 263 264 266 267 268 269 line 1"},
      {"any case", "$DumpVars $VAR $eND", "263 269 264 line 1"},
      {"a comment", "$comment anything at all $end $var", "269 line 1"},
      {"a comment holds keywords", "$COMMENT $var $comment x $END $VAR", "269 line 1"},
      {"swallowed", "$date\n$end $version $scope $end $enddefinitions $end", "line 2"},
      {"an open comment", "$comment x", "line 1"},
      {"no keywords", "$foo $ends $ $en end", "257:$foo 257:$ends 257:$ 257:$en 257:end line 1"},
      {"a change, a stamp", "1!\r\n#100", "257:1! 257:#100 line 2"},
      {"a newline behind a word counts when it is skipped", "a\nb", "257:a 257:b line 2"},
      {"only four characters are blanks", "a\vb\fc\xff", "257:a\vb\fc\xff line 1"},
      {"NUL ends the input", "a b\0c d"s, "257:a 257:b line 1"},
      {"a word of 1023 characters", cut + " x", "257:" + cut + " 257:x line 1"},
      {"a longer one is cut", cut + "yz x", "257:" + cut + " 257:x line 1"},
      {"however long", "$comment " + std::string(100000, 'c') + "\n $end x", "257:x line 2"},
  };
  for (const auto& row : rows) {
    ResetReaderState();
    EXPECT_EQ(Lex(row.text), row.tokens) << row.why;
    EXPECT_EQ(yysptr, yysbuf) << row.why;
  }
  ResetReaderState();
  EXPECT_EQ(yylex(), kEndOfInput) << "no stream";
  yyerrflag = 3;  // a parser that recovers: words are dropped until a keyword, which $end is not
  EXPECT_EQ(Lex("a $end b $var c"), "264 269 257:c line 1");
}

TEST_F(Grammar, Splitters) {
  const struct {
    const char *text, *delims, *pieces;  // no delimiters: numbers and letters
  } rows[] = {
      {"", nullptr, ""},
      {"#100", nullptr, "100|"},
      {"bus12abc3", nullptr, "bus|12|abc|3|"},
      {"1.5ns", nullptr, "15|ns|"},
      {"-10 ps\n", nullptr, "10|ps|"},
      {"1a2b3c4d5e6f7", nullptr, "1|a|2|b|3|c|4|d|5|e|6|f|7|"},
      {"", " ", ""},
      {" ,a, b\n", " ,", "a|b|"},
      {"a \n", " ", "a||"},
      {"a b c d e f g h i j k l", " ", "a|b|c|d|e|f|g|h|i|j|k|l|"},
  };
  for (const auto& row : rows) {
    int count = -1;
    char** texts = row.delims == nullptr ? GetArrayOfNumbersAndLetters(row.text, &count)
                                         : GetArrayOfTokens(row.text, row.delims, &count);
    std::string pieces;
    for (int i = 0; i < count; ++i) {
      pieces += texts[i] + "|"s;
      std::free(texts[i]);
    }
    std::free(texts);
    EXPECT_EQ(pieces, row.pieces) << row.text;
  }
}

/// Reads a dump; "result, scale, start-end, counts".
std::string Read(const std::string& dump) {
  KesNCD analyser;
  analyser.SetTopModule("top");
  const TextStream stream(dump);
  std::ostringstream text;
  text << ParseVcdFile(stream) << ", " << timeScale << ", " << startCycle << "-" << endCycle;
  text << ", " << TopModCounts();
  return text.str();
}

TEST_F(Grammar, Rules) {
  const std::string longCode(1000, 'c');
  const struct {
    const char* why;
    std::string dump, result;
  } rows[] = {
      {"nothing", "", "0, 0, -1--1, "},
      {"a dump", kHeader + "#5 $dumpvars 0! b0 \" $end #7 1! #9", "0, 1, 5-9, clk=2 d[7:0]=1"},
      {"units in any case", "$timescale 1NS $end", "0, 1, -1--1, "},
      {"a point is no separator", "$timescale 1.5ns $end", "0, 15, -1--1, "},
      {"but a number", "$timescale 1.5 us $end", "0, 1500, -1--1, "},
      {"no number is 0", "$timescale x S $end", "0, 0, -1--1, "},
      {"any kind of scope", "$scope task top $end " + kVars, "0, 0, -1--1, clk=0 d[7:0]=0"},
      {"a sub-module ends the top module",
       kTop + "$var a 1 ! x $end $scope module u $end $upscope $end " + kVars, "0, 0, -1--1, x=0"},
      {"a second top module adds", kHeader + kHeader + "1!",
       "0, 1, -1--1, clk=1 d[7:0]=0 clk=0 d[7:0]=0"},
      {"the top module inside itself ends it", kTop + kTop + kVars, "0, 0, -1--1, "},
      {"x and z do not count", kHeader + "x! z! X! Z! -! 0!", "0, 1, -1--1, clk=1 d[7:0]=0"},
      {"values take the next word", kHeader + "bxz ! r1.5 \" B1 ! R2 \"",
       "0, 1, -1--1, clk=2 d[7:0]=2"},
      {"codes are judged by their first character", kHeader + "b1 #12 b1 b0 !",
       "0, 1, 12-12, clk=1 d[7:0]=0"},
      {"a vector before a real", kHeader + "b1 r1 ! \"", "0, 1, -1--1, clk=1 d[7:0]=1"},
      {"recording",
       kHeader + "1! $dumpoff 1! $end 1! $dumpon 1! $end 1! $dumpoff $end b1 ! "
                 "$dumpall $end 1!",
       "0, 1, -1--1, clk=4 d[7:0]=0"},
      {"stamps as scanf reads them", kHeader + "#1e1 #0x20 #12.5end",
       "0, 1, 10-12.5, clk=0 d[7:0]=0"},
      {"no number repeats the stamp before", kHeader + "#3 #4 #", "0, 1, 3-4, clk=0 d[7:0]=0"},
      {"a span with a negative end", kHeader + "#-3 #4 #-5 #6", "0, 1, 4--5, clk=0 d[7:0]=0"},
      {"long codes",
       kTop + "$var wire 1 " + longCode + " a $end $var wire 1 \xc3\xa9 b $end 1" + longCode +
           " b1 " + longCode + " 0\xc3\xa9",
       "0, 0, -1--1, a=2 b=1"},
      {"counts of a parse that is given up", kHeader + "1! $scope", "2, 1, -1--1, clk=1 d[7:0]=0"},
  };
  for (const auto& row : rows) {
    ResetReaderState();
    CaptureStderr();
    EXPECT_EQ(Read(row.dump), row.result) << row.why;
    EXPECT_EQ(GetCapturedStderr().empty(), row.result[0] == '0') << row.why;
  }
}

TEST_F(Grammar, Traces) {
  debug = 1;
  CaptureStdout();
  Read("$timescale 10ps $end $timescale 1.5 us $end $var wire 1 % out $end " + kTop + kVars +
       "$upscope $end #12 $dumpall $end $dumpvars b01 ! $end $dumpon r2 \" $end $dumpoff 1! $end "
       "X! z! q! #1e99");
  EXPECT_EQ(GetCapturedStdout(),
            "0 = 10\n1 = ps\n$timescale1 10ps $end=0.010000\n"
            "$timescale2 1.5 us $end=1500.000000\n$var4 wire 1 % out $end\n"
            "topModName = top\n$var4 wire 1 ! clk $end\n$var5 reg 8 \" d [7:0] $end\n"
            "End Top Mod\n#12\nstart to dumpall\nend of dumpall/vars/on/off\n"
            "start to dumpvars\nb'01  for symbol '!'\nend of dumpall/vars/on/off\n"
            "start to dumpon\nr'2  for symbol'\"' \nend of dumpall/vars/on/off\n"
            "start to dumpoff\n0/1 change for symbol '!'\nend of dumpall/vars/on/off\n"
            "x change for symbol '!'\nz change for symbol '!'\nUnexpected ID: q!\n#" +
                std::to_string(INT_MAX) + "\n");
}

TEST_F(Grammar, OneParseShapesTheNext) {
  const struct {
    const char* why;
    std::string first, second, result, errors;
  } rows[] = {
      {"lines go on", "#1\n\n", "1!\n$end", "2, 1, 1-1, clk=1 d[7:0]=0",
       "ERROR: syntax error at \"$end\" (line 4).\n"},
      {"a blank read ahead", "$end\n#1", "1!", "0, 1, -1--1, clk=1 d[7:0]=0",
       "ERROR: syntax error at \"$end\" (line 1).\n"},
      {"the end read ahead", "$end", "1!", "0, 1, -1--1, clk=0 d[7:0]=0",
       "ERROR: syntax error at \"$end\" (line 1).\n"},
      {"a cut section", "$dumpoff b1", "! $dumpon", "2, 1, -1--1, clk=0 d[7:0]=0",
       "ERROR: syntax error at \"b1\" (line 1).\nERROR: syntax error at \"$dumpon\" (line 1).\n"},
      {"a value without its code", "b1", "! 0!", "0, 1, -1--1, clk=2 d[7:0]=0", ""},
      {"a stamp", "#8", "#x", "0, 1, 8-8, clk=0 d[7:0]=0", ""},
      {"an open top module", kTop, "$var wire 1 % late $end 1%",
       "0, 1, -1--1, clk=0 d[7:0]=0 late=1", ""},
  };
  for (const auto& row : rows) {
    ResetReaderState();
    Read(kHeader);
    CaptureStderr();
    Read(row.first);
    EXPECT_EQ(Read(row.second), row.result) << row.why;
    EXPECT_EQ(GetCapturedStderr(), row.errors) << row.why;
  }
}

TEST_F(Grammar, LeavesTheStreamBehindItsLastCharacter) {
  const TextStream stream("$var\n$var wire");
  CaptureStderr();
  EXPECT_EQ(ParseVcdFile(stream), 2);
  GetCapturedStderr();
  EXPECT_EQ(std::ftell(stream), 10);
  EXPECT_EQ(std::string(yysbuf, yysptr), " ");
}

TEST_F(Grammar, EndsTheProcessOnABadTimescale) {
  for (const char* scale : {"1 sec", "ns", "1ns1", "ns1", "1e3ns"}) {
    const TextStream stream(kTop + kVars + "$timescale " + scale + " $end 1!");
    EXPECT_EXIT((dup2(STDERR_FILENO, STDOUT_FILENO), ParseVcdFile(stream)),
                testing::ExitedWithCode(4), "^ERROR: The timescale is not right\n$")
        << scale;
  }
}

TEST_F(Grammar, TakesNoMemoryForAChange) {
  std::string dump = kHeader;
  for (int stamp = 0; dump.size() < 1000000; ++stamp) {
    dump += "#" + std::to_string(stamp) + "\n0!\n1!\nb0101 \"\n";
  }
  const TextStream shortStream(kHeader + "1!");
  const TextStream longStream(dump);
  const long before = allocations;
  ASSERT_EQ(ParseVcdFile(shortStream), 0);
  const long between = allocations;
  ASSERT_EQ(ParseVcdFile(longStream), 0);
  EXPECT_LE(allocations - between, between - before);
}

struct NoActions {
  static void Reduce(const Reduction& /*reduction*/, const YYSTYPE* /*values*/) {}
};

// No rule of a dump uses the error token, and none nests, so the driver's ways through both are
// shown with a grammar of its own: declarations that may be broken, and scopes in scopes.
TEST_F(Grammar, ParserRecoversAndBoundsItsStack) {
  constexpr Rule kNested[] = {
      {kStart, {kFile}},
      {kFile, {}},
      {kFile, {kFile, kDumpItem}},
      {kDumpItem, {kVar, kWord, kEnd}},
      {kDumpItem, {kVar, kErrorToken, kEnd}},
      {kDumpItem, {kScope, kDumpItem, kEnd}},
  };
  constexpr ParseTables kTables = BuildTables(kNested);
  static_assert(kTables.conflicts == 0);
  constexpr Rule kAmbiguous[] = {
      {kStart, {kFile}}, {kFile, {}}, {kFile, {kWord}}, {kFile, {kFile, kWord}}};
  static_assert(BuildTables(kAmbiguous).conflicts > 0);
  std::string scopes;
  for (int i = 0; i < 148; ++i) scopes += "$scope ";
  const struct {
    std::string text;
    bool accepted;
    int errors;
    const char* message;
  } rows[] = {
      {"$var a $end", true, 0, ""},
      {"$var $end $var a $end", true, 1, "syntax error at \"$end\""},
      {"$var $upscope a b $end $var c $end", true, 1, "syntax error at \"$upscope\""},
      {"$var $end $end", false, 1, "syntax error at \"$end\""},
      {"$var $upscope a b", false, 1, "syntax error at \"$upscope\""},
      {"$var $upscope $var $end", true, 2, "syntax error at \"$var\""},
      {"$var $end $scope $var $end $end", true, 2, "syntax error at \"$end\""},
      {scopes, false, 1, "syntax error"},
      {scopes + "$scope ", false, 0, "yacc stack overflow"},
  };
  for (const auto& row : rows) {
    ResetReaderState();
    const TextStream stream(row.text);
    yyin = stream;
    NoActions actions;
    CaptureStderr();
    EXPECT_EQ(Parser(kTables, actions).Parse(), row.accepted) << row.text;
    EXPECT_EQ(yynerrs, row.errors) << row.text;
    EXPECT_NE(GetCapturedStderr().find(row.message), std::string::npos) << row.text;
  }
}

}  // namespace
}  // namespace orsa::kesncd
