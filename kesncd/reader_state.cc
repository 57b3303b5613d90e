// The exported reader state with its values at load. A run resets only what kesncd.h says.
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

// The line readers and the activity model.
Vmod topMod;  // NOLINT(cert-err58-cpp): constructing it allocates nothing
char* topModName = nullptr;
int isTopModNameEverMatched = 0;
double timeScale = 0.0;
int debug = 0;
int recording = 1;
double startCycle = -1.0;
double endCycle = -1.0;
int onlyOnce = 1;
int currentLevel = -1;

// The grammar reader. Kept between words, and between two dumps where one ends inside a value.
int isReadingTopMod = 0;
double cur_time = 0.0;
int isReal = 0;
int isBinary = 0;
char vcdstr[1024] = {};

// Its lexer. yysbuf holds what was pushed back.
std::FILE* yyin = nullptr;
char yytext[1024] = {};
char yysbuf[1024] = {};
char* yysptr = yysbuf;
int yytchar = 0;
int yylineno = 1;

// Its parser. The stacks have room for 150 entries; a dump needs about ten.
int yy_yys[150] = {};
YYSTYPE yy_yyv[150] = {};
int* yys = yy_yys;
YYSTYPE* yyv = yy_yyv;
int* yyps = yy_yys;
YYSTYPE* yypv = yy_yyv;
int yystate = 0;
int yychar = -1;
int yyerrflag = 0;
int yynerrs = 0;
int yytmp = 0;
YYSTYPE yyval = {};
YYSTYPE yylval = {};
int yydebug = 0;

namespace {

// Shared with the host's other modules, which look at the environment when they are loaded and
// start from these limits; nothing here reads them.
[[maybe_unused]] const bool dumpAdvice = std::getenv("TW_DUMP_ADVICE") != nullptr;
[[maybe_unused]] const int lowerAdviceLimit = std::numeric_limits<int>::max();
[[maybe_unused]] const int upperAdviceLimit = std::numeric_limits<int>::max();

}  // namespace

}  // namespace orsa::kesncd
