// The grammar reader's entry points.
#include <cstdio>

#include "kesncd/grammar/actions.h"
#include "kesncd/grammar/grammar.h"
#include "kesncd/grammar/parser.h"
#include "kesncd/grammar/table_builder.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd {

namespace {

// Computed by the compiler: the library holds the finished tables.
constexpr ParseTables kTables = BuildTables(kGrammar);
static_assert(kTables.conflicts == 0, "the rules need more than one token of look-ahead");

}  // namespace

int yyparse() {
  // Made for each parse; what it counts goes to topMod at its end.
  DumpActions actions;
  try {
    const bool accepted = Parser(kTables, actions).Parse();
    // Whether or not the parse was given up.
    actions.WriteCounts();
    return accepted ? 0 : 1;
  } catch (...) {
    // Memory ran out half-way through a declaration or a value: the next dump starts afresh.
    isReadingTopMod = isReal = isBinary = 0;
    throw;
  }
}

/// The stream is read from where it stands; characters that an earlier parse gave back come first.
int ParseVcdFile(std::FILE* stream) {
  constexpr int kGivenUp = 2;
  yyin = stream;
  return yyparse() == 0 ? 0 : kGivenUp;
}

}  // namespace orsa::kesncd
