// What the grammar's rules do to the exported state, with the traces that `debug` asks for.
#include "kesncd/grammar/actions.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "kesncd/grammar/token_value.h"
#include "line_readers/dump_rules.h"
#include "text/number.h"
#include "vcd/time_units.h"

namespace orsa::kesncd {

namespace {

/// A dump whose time scale makes no sense ends the whole process: its host relies on that status.
[[noreturn]] void FailOnTimescale() {
  constexpr int kStatus = 4;
  std::printf("ERROR: The timescale is not right\n");
  std::exit(kStatus);
}

/// False for a unit that is none. A number that does not scan is 0, and so is every frequency then.
bool ConvertTimescale(const char* number, const char* unit) {
  const CLocaleScope scope;
  timeScale = std::strtod(number, nullptr);
  return ConvertToNanoseconds(timeScale, unit, UnitCase::Ignored);
}

/// Numbers and letters of a word, released with the object. By the public splitter, whose strings
/// are its caller's to free.
struct Pieces {
  explicit Pieces(const char* word) : texts(GetArrayOfNumbersAndLetters(word, &count)) {}
  ~Pieces() {
    for (int i = 0; i < count; ++i) std::free(texts[i]);
    std::free(texts);
  }
  Pieces(const Pieces&) = delete;
  Pieces& operator=(const Pieces&) = delete;

  int count = 0;
  char** texts;
};

/// "10ps". A point is no separator: "1.5ns" is 15 ns. One piece or three are not understood either.
bool ConvertWord(const char* word) {
  const Pieces pieces(word);
  for (int i = 0; debug != 0 && i < pieces.count; ++i) std::printf("%d = %s\n", i, pieces.texts[i]);
  return pieces.count == 2 && ConvertTimescale(pieces.texts[0], pieces.texts[1]);
}

void TakeOneWordTimescale(const char* word) {
  if (!ConvertWord(word)) FailOnTimescale();
  // printf writes the number, so the locale must be set for it.
  const CLocaleScope scope;
  if (debug != 0) std::printf("$timescale1 %s $end=%f\n", word, timeScale);
}

void TakeTwoWordTimescale(const char* number, const char* unit) {
  if (!ConvertTimescale(number, unit)) FailOnTimescale();
  const CLocaleScope scope;
  if (debug != 0) std::printf("$timescale2 %s %s $end=%f\n", number, unit, timeScale);
}

/// A scope of any kind counts. One inside the top module ends the collection: what the top module
/// declares after its first sub-module is not taken. A further scope of the top module's name opens
/// the collection again, also below another one.
void EnterScope(const char* name) {
  const bool isTop = topModName != nullptr && std::strcmp(name, topModName) == 0;
  if (isTop && isReadingTopMod == 0) {
    if (debug != 0) std::printf("topModName = %s\n", topModName);
    topMod.SetName(name);
    isReadingTopMod = 1;
    isTopModNameEverMatched = 1;
  } else if (isReadingTopMod == 1) {
    isReadingTopMod = 0;
  }
}

/// The end of any scope ends the collection, as the top module is the innermost while it is on.
void LeaveScope() {
  if (isReadingTopMod != 1) return;
  if (debug != 0) std::printf("End Top Mod\n");
  isReadingTopMod = 0;
}

/// `words` are type, size, identifier code and name, and the range unless that is empty.
void Declare(const YYSTYPE* words, const char* range) {
  // Variables of other scopes are passed over.
  if (isReadingTopMod != 1) return;
  topMod.AddSignal(std::string(words[3].text) + range, words[0].text, words[2].text,
                   ScanInt(words[1].text));
}

/// As the dump has it; `count` tells the two rules apart.
void TraceDeclaration(const YYSTYPE* words, int count) {
  if (debug == 0) return;
  std::printf("$var%d", count);
  for (int i = 0; i < count; ++i) std::printf(" %s", words[i].text);
  std::printf(" $end\n");
}

/// On for three of the four commands.
void Record(bool on, const char* section) {
  recording = on ? 1 : 0;
  if (debug != 0) std::printf("start to %s\n", section);
}

/// The trace has always shown the time stamp's bytes as an integer. That number never meant
/// anything; this one is the stamp itself, without its fraction and limited to an int.
int TracedStamp(double ticks) {
  using Limits = std::numeric_limits<int>;
  // What is no number compares unequal to itself.
  if (ticks != ticks) return 0;
  return static_cast<int>(std::clamp<double>(ticks, Limits::min(), Limits::max()));
}

/// Stamps move the span whether or not changes are recorded.
void TakeStampText(const char* text) {
  ScanDouble(text, cur_time);  // a text that is no number repeats the stamp before
  TakeStamp(cur_time, startCycle, endCycle);
  if (debug != 0) std::printf("#%d\n", TracedStamp(cur_time));
}

}  // namespace

/// `values[0]` is the keyword, so words count from 1.
void DumpActions::Run(Action action, const YYSTYPE* values) {
  switch (action) {
    case Action::None:
    case Action::TakeValue:  // Reduce sees to them
      break;
    case Action::OneWordTimescale:
      TakeOneWordTimescale(values[1].text);
      break;
    case Action::TwoWordTimescale:
      TakeTwoWordTimescale(values[1].text, values[2].text);
      break;
    case Action::EnterScope:
      EnterScope(values[2].text);
      break;
    case Action::LeaveScope:
      LeaveScope();
      break;
    case Action::Declare:
      // The name is a word; a range, if there is one, is a word of its own.
      Declare(values + 1, "");
      TraceDeclaration(values + 1, 4);
      break;
    case Action::DeclareRange:
      Declare(values + 1, values[5].text);
      TraceDeclaration(values + 1, 5);
      break;
    case Action::StartDumpall:
      Record(true, "dumpall");
      break;
    case Action::StartDumpvars:
      Record(true, "dumpvars");
      break;
    case Action::StartDumpon:
      Record(true, "dumpon");
      break;
    case Action::StartDumpoff:
      Record(false, "dumpoff");
      break;
    case Action::EndDump:
      if (debug != 0) std::printf("end of dumpall/vars/on/off\n");
      break;
  }
}

/// Takes a word of a dump by its first character, which also decides for an identifier code: the
/// code "#" of a vector is a time stamp, the code "b" another vector. The word is kept in vcdstr,
/// where hosts have always found it.
void DumpActions::TakeValue(const char (&word)[sizeof vcdstr]) {
  CopyValue(vcdstr, word);
  switch (*vcdstr) {
    case '#':
      TakeStampText(vcdstr + 1);
      break;
    // The next word that begins no value is its code.
    case 'b':
    case 'B':
      isBinary = 1;
      if (debug != 0) std::printf("b'%s ", vcdstr + 1);
      break;
    case 'r':
    case 'R':
      isReal = 1;
      if (debug != 0) std::printf("r'%s ", vcdstr + 1);
      break;
    default:
      // A word after "b..." is its code; else it is a scalar with its code in it.
      if (isBinary != 0) {
        isBinary = 0;
        if (debug != 0) std::printf(" for symbol '%s'\n", vcdstr);
        CountChange(vcdstr);
      } else if (isReal != 0) {
        isReal = 0;
        if (debug != 0) std::printf(" for symbol'%s' \n", vcdstr);
        CountChange(vcdstr);
      } else {
        TakeScalar(vcdstr);
      }
  }
}

/// A scalar change counts when the new value is 0 or 1.
void DumpActions::TakeScalar(const char* word) {
  switch (*word) {
    case '0':
    case '1':
      if (debug != 0) std::printf("0/1 change for symbol '%s'\n", word + 1);
      CountChange(word + 1);
      break;
    case 'x':
    case 'X':
      if (debug != 0) std::printf("x change for symbol '%s'\n", word + 1);
      break;
    case 'z':
    case 'Z':
      if (debug != 0) std::printf("z change for symbol '%s'\n", word + 1);
      break;
    default:
      if (debug != 0) std::printf("Unexpected ID: %s\n", word);
  }
}

void DumpActions::CountChange(const char* code) {
  if (recording != 1) return;
  // At the first change that counts: the declarations are complete by then.
  if (!gathering_) {
    topMod.AddCodesTo(counts_);
    gathering_ = true;
  }
  // Counters that are not settled before so many changes would overflow.
  if (++unsettled_ == CodeCounts::kMostBetween) {
    counts_.Settle();
    unsettled_ = 0;
  }
  // Plain characters take the short way, all others the one that knows any byte.
  std::size_t length = 0;
  while (code[length] > ' ' && code[length] <= '~') ++length;
  if (code[length] == '\0') {
    counts_.CountPlain(code, length);
  } else {
    counts_.Count(code);
  }
}

void DumpActions::WriteCounts() {
  topMod.TakeChangesOf(counts_);
}

}  // namespace orsa::kesncd
