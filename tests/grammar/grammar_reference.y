/* The rules of kesncd/grammar/grammar.h once more, for bison to make its parser from. A word's value
   is its number. */
%define api.prefix {reference}
%define api.token.prefix {TOKEN_}
%define api.value.type {int}
%code {
#include <vector>

int referencelex();
void referenceerror(const char* message);
void LogRule(int rule, const std::vector<int>& words = {});
}

%token WORD 257
%token DUMPALL 260 DUMPON 261 DUMPOFF 262 DUMPVARS 263 END 264
%token SCOPE 266 TIMESCALE 267 UPSCOPE 268 VAR 269

%%
file: declarations dumps { LogRule(1); };
declarations: %empty { LogRule(2); };
declarations: declarations declaration { LogRule(3); };
declaration: scope { LogRule(4); };
declaration: timescale { LogRule(5); };
declaration: upscope { LogRule(6); };
declaration: variable { LogRule(7); };
scope: SCOPE WORD WORD END { LogRule(8, {$2, $3}); };
timescale: TIMESCALE WORD END { LogRule(9, {$2}); };
timescale: TIMESCALE WORD WORD END { LogRule(10, {$2, $3}); };
upscope: UPSCOPE END { LogRule(11); };
variable: VAR WORD WORD WORD WORD END { LogRule(12, {$2, $3, $4, $5}); };
variable: VAR WORD WORD WORD WORD WORD END { LogRule(13, {$2, $3, $4, $5, $6}); };
dumps: %empty { LogRule(14); };
dumps: dumps item { LogRule(15); };
item: value { LogRule(16); };
item: command values END { LogRule(17); };
command: DUMPALL { LogRule(18); };
command: DUMPVARS { LogRule(19); };
command: DUMPON { LogRule(20); };
command: DUMPOFF { LogRule(21); };
values: %empty { LogRule(22); };
values: values value { LogRule(23); };
value: WORD { LogRule(24, {$1}); };
