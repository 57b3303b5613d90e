// The grammar reader: its tokens, what its rules do, and what one parse leaves to the next.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <sstream>

#include "kesncd/grammar/parser.h"
#include "kesncd/grammar/table_builder.h"
#include "tests/support/allocations.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using namespace std::string_literals;

using Grammar = FreshState;

const std::string kTop = "$scope module top $end ";
const std::string kVars = "$var wire 1 ! a $end $var reg 8 \" d [1] $end ";
const std::string kHeader = "$timescale 1 ns $end " + kTop + kVars + "$upscope $end ";

/// The tokens of a text, read with a buffer and without one: "267 257:1ns 264", and the line that
/// the lexer has reached.
std::string Lex(const std::string& text, int errorFlag = 0) {
  std::string read[2];
  for (const int buffering : {_IOFBF, _IONBF}) {
    const TextStream stream(text);
    (void)std::setvbuf(stream, nullptr, buffering, BUFSIZ);
    ResetReaderState();
    yyin = stream;
    yyerrflag = errorFlag;
    std::string& tokens = read[buffering == _IOFBF ? 0 : 1];
    for (int token = yylex(); token != kEndOfInput; token = yylex()) {
      tokens += std::to_string(token) + (token == kWord ? ":"s + yylval.text : "") + " ";
    }
    EXPECT_EQ(yysptr, yysbuf) << text;
    tokens += "line " + std::to_string(yylineno);
  }
  EXPECT_EQ(read[0], read[1]);
  return read[0];
}

TEST_F(Grammar, Tokens) {
  EXPECT_EQ(yylex(), kEndOfInput) << "no stream";
  const std::string cut(1023, 'w');
  std::string words;
  std::string tokens;
  for (std::size_t i = 0; i < 2000; ++i) {  // words of all lengths that are taken as a block
    const std::string word(1 + i % 41 * i / 41 % 37, static_cast<char>('!' + i % 3 * 90));
    words += word + " \n\t\r"[i % 4];
    tokens += "257:" + word + " ";
  }
  const std::string rows[][2] = {
      {words, tokens + "line 501"},
      {"", "line 1"},
      {"$dumpall $dumpon $dumpoff $dumpvars $end $scope $timescale $upscope $var",
       "260 261 262 263 264 266 267 268 269 line 1"},
      {"$DumpVars $VAR $eND $foo $ends $ $en end",
       "263 269 264 257:$foo 257:$ends 257:$ 257:$en 257:end line 1"},
      {"$COMMENT $var $comment x $END $VAR", "269 line 1"},
      {"$date\n$end $version $scope $end $enddefinitions $end", "line 2"},
      {"$comment x", "line 1"},
      {"a\vb\fc\xff", "257:a\vb\fc\xff line 1"},
      {"a b\0c d"s, "257:a 257:b line 1"},
      {cut + " x " + cut + "yz x", "257:" + cut + " 257:x 257:" + cut + " 257:x line 1"},
      {"$comment " + std::string(100000, 'c') + "\n $end x", "257:x line 2"}};
  for (const auto& [text, expected] : rows) EXPECT_EQ(Lex(text), expected);
  // A parser that recovers: words are dropped until a keyword, which $end is not.
  EXPECT_EQ(Lex("a $end b $var c", 3), "264 269 257:c line 1");
}

TEST_F(Grammar, Splitters) {
  // The text, the delimiters or none for numbers and letters, the pieces.
  const char* const rows[][3] = {{"bus12#abc3\n", nullptr, "bus|12|abc|3|"},
                                 {"", nullptr, ""},
                                 {"1a2b3c4d5e6f7", nullptr, "1|a|2|b|3|c|4|d|5|e|6|f|7|"},
                                 {" ,a, b\n", " ,", "a|b|"},
                                 {"a \n", " ", "a||"},
                                 {"a b c d e f g h i j k l", " ", "a|b|c|d|e|f|g|h|i|j|k|l|"}};
  for (const auto& [text, delims, expected] : rows) {
    int count = -1;
    char** texts = delims == nullptr ? GetArrayOfNumbersAndLetters(text, &count)
                                     : GetArrayOfTokens(text, delims, &count);
    std::string pieces;
    for (int i = 0; i < count; ++i) {
      pieces += texts[i] + "|"s;
      std::free(texts[i]);
    }
    std::free(texts);
    EXPECT_EQ(pieces, expected) << text;
  }
}

/// The captured errors, each "token line" where it says that a token does not fit.
std::string Errors() {
  const std::regex wrong("ERROR: syntax error at \"([^\"]*)\" \\(line ([0-9]+)\\)\\.\n");
  return std::regex_replace(GetCapturedStderr(), wrong, "$1 $2");
}

/// Reads dumps, parted by "/", one after the other: "result, scale, start-end, counts" after the
/// last of them, and the errors of all.
std::string Read(const std::string& dumps) {
  std::ostringstream text;
  CaptureStderr();
  for (const std::string& dump : Cut(dumps, "/")) {
    KesNCD analyser;
    analyser.SetTopModule("top");
    const TextStream stream(dump);
    text.str("");
    text << ParseVcdFile(stream) << ", " << timeScale << ", " << startCycle << "-" << endCycle;
    text << ", " << TopModCounts();
  }
  return text.str() + Errors();
}

// What stands after the header, and what is read: result, scale, span and counts of "a" and
// "d[1]". After a "/" another dump begins: a parse leaves its lines, what was read ahead, a
// section, a value, a stamp, a scope.
TEST_F(Grammar, Rules) {
  const std::string rows = R"(#5 $dumpvars 0! b0 " $end #7 1! #9 => 0, 1, 5-9, a=2 d[1]=1
$timescale 1pS $end => 0, 0.001, -1--1, a=0 d[1]=0
$timescale 1.5ns $end => 0, 15, -1--1, a=0 d[1]=0
$timescale 1.5 us $end => 0, 1500, -1--1, a=0 d[1]=0
$timescale x S $end => 0, 0, -1--1, a=0 d[1]=0
$scope task top $end $var w 1 ! b $end 1! => 0, 1, -1--1, a=1 d[1]=0 b=0
$scope module top $end $var a 1 % x $end $scope m u $end $upscope $end $var w 1 ! b $end 0% => 0, 1, -1--1, a=0 d[1]=0 x=1
$scope module top $end $scope module top $end $var w 1 ! b $end => 0, 1, -1--1, a=0 d[1]=0
x! z! X! Z! -! 0! => 0, 1, -1--1, a=1 d[1]=0
bxz ! r1.5 " B1 ! R2 " => 0, 1, -1--1, a=2 d[1]=2
b1 #12 b1 b0 ! => 0, 1, 12-12, a=1 d[1]=0
b1 r1 ! " => 0, 1, -1--1, a=1 d[1]=1
1! $dumpoff 1! $end 1! $dumpon 1! $end 1! $dumpoff $end b1 ! $dumpall $end 1! => 0, 1, -1--1, a=4 d[1]=0
#1e1 #0x20 #12.5end => 0, 1, 10-12.5, a=0 d[1]=0
#3 #4 # => 0, 1, 3-4, a=0 d[1]=0
#-3 #4 #-5 #6 => 0, 1, 4--5, a=0 d[1]=0
1! $scope => 2, 1, -1--1, a=1 d[1]=0$scope 1
/#1~~/1!~$end => 2, 1, 1-1, a=1 d[1]=0$end 4
/$end~#1/1! => 0, 1, -1--1, a=1 d[1]=0$end 1
/$end/1! => 0, 1, -1--1, a=0 d[1]=0$end 1
/$dumpoff b1/! $dumpon => 2, 1, -1--1, a=0 d[1]=0b1 1$dumpon 1
/b1/! 0! => 0, 1, -1--1, a=2 d[1]=0
/#8/#x => 0, 1, 8-8, a=0 d[1]=0
$scope module top $end /$var w 1 % late $end 1% => 0, 1, -1--1, a=0 d[1]=0 late=1)";
  for (const auto& row : Rows(rows)) {
    ResetReaderState();
    std::string dumps = row[0];
    std::replace(dumps.begin(), dumps.end(), '~', '\n');
    EXPECT_EQ(Read(kHeader + dumps), row[1]) << dumps;
    EXPECT_EQ(isTopModNameEverMatched, 1);
  }
  const std::string code(1000, 'c');
  ResetReaderState();
  EXPECT_EQ(Read(kTop + "$var w 1 " + code + " e $end $var w 1 \xc3\xa9 f $end 1" + code + " b1 " +
                 code + " 0\xc3\xa9"),
            "0, 0, -1--1, e=2 f=1");
}

TEST_F(Grammar, Traces) {
  debug = 1;
  const std::string dump =
      "$timescale 10ps $end $timescale 1.5 us $end $var wire 1 % out $end " + kTop + kVars +
      "$upscope $end #12 $dumpall $end $dumpvars b01 ! $end $dumpon r2 \" $end $dumpoff 1! $end "
      "X! z! q! #1e99";
  EXPECT_EQ(Printed([&] { Read(dump); }),
            "0 = 10\n1 = ps\n$timescale1 10ps $end=0.010000\n"
            "$timescale2 1.5 us $end=1500.000000\n$var4 wire 1 % out $end\n"
            "topModName = top\n$var4 wire 1 ! a $end\n$var5 reg 8 \" d [1] $end\n"
            "End Top Mod\n#12\nstart to dumpall\nend of dumpall/vars/on/off\n"
            "start to dumpvars\nb'01  for symbol '!'\nend of dumpall/vars/on/off\n"
            "start to dumpon\nr'2  for symbol'\"' \nend of dumpall/vars/on/off\n"
            "start to dumpoff\n0/1 change for symbol '!'\nend of dumpall/vars/on/off\n"
            "x change for symbol '!'\nz change for symbol '!'\nUnexpected ID: q!\n#2147483647\n");
}

TEST_F(Grammar, LeavesTheStreamBehindItsLastCharacter) {
  const TextStream stream("1!\n$var wire");
  CaptureStderr();
  EXPECT_EQ(ParseVcdFile(stream), 2);
  EXPECT_EQ(Errors(), "$var 2");
  EXPECT_EQ(std::ftell(stream), 8);
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
  long made[3];
  for (const int i : {0, 1, 2}) {  // the first makes room in topMod, which stays
    ResetReaderState();
    KesNCD analyser;
    analyser.SetTopModule("top");
    const TextStream stream(kHeader + Times(i == 2 ? 1000 : 1, "0! b01 \" #7\n"));
    const long before = allocations.made;
    EXPECT_EQ(ParseVcdFile(stream), 0);
    made[i] = allocations.made - before;
  }
  EXPECT_EQ(made[2], made[1]);
  EXPECT_EQ(TopModCounts(), "a=1000 d[1]=1000");
}

struct NoActions {
  static void Reduce(const Reduction& /*reduction*/, const YYSTYPE* /*values*/) {}
};

// No rule of a dump uses the error token, and none nests, so the driver's ways through both are
// shown with a grammar of its own: declarations that may be broken, and scopes in scopes.
TEST_F(Grammar, ParserRecoversAndBoundsItsStack) {
  constexpr Rule kNested[] = {{kStart, {kFile}},
                              {kFile, {}},
                              {kFile, {kFile, kDumpItem}},
                              {kDumpItem, {kVar, kWord, kEnd}},
                              {kDumpItem, {kVar, kErrorToken, kEnd}},
                              {kDumpItem, {kScope, kDumpItem, kEnd}}};
  constexpr ParseTables kTables = BuildTables(kNested);
  static_assert(kTables.conflicts == 0);
  constexpr Rule kAmbiguous[] = {
      {kStart, {kFile}}, {kFile, {}}, {kFile, {kWord}}, {kFile, {kFile, kWord}}};
  static_assert(BuildTables(kAmbiguous).conflicts > 0);
  const std::string scopes = Times(148, "$scope ");
  // Whether it is accepted, the count of errors, the messages.
  const std::string rows =
      "$var a $end => 1 0 \n$var $end $var a $end => 1 1 $end 1\n"
      "$var $upscope a b $end $var c $end => 1 1 $upscope 1\n$var $end $end => 0 1 $end 1\n"
      "$var $upscope a b => 0 1 $upscope 1\n$var $upscope $var $end => 1 2 $upscope 1$var 1\n"
      "$var $end $scope $var $end $end => 1 2 $end 1$end 1\n" +
      scopes + "=> 0 1 $scope 1\n" + scopes +
      "$scope => 0 0 ERROR: yacc stack overflow at \"$scope\" (line 1).\n";
  for (const auto& row : Rows(rows.substr(0, rows.size() - 1))) {
    ResetReaderState();
    const TextStream stream(row[0] + " ");
    yyin = stream;
    NoActions actions;
    CaptureStderr();
    const bool accepted = Parser(kTables, actions).Parse();
    const std::string seen = std::to_string(accepted) + " " + std::to_string(yynerrs) + " ";
    EXPECT_EQ(Cut(seen + Errors(), "\n")[0], row[1]) << row[0];
  }
}

}  // namespace
}  // namespace orsa::kesncd
