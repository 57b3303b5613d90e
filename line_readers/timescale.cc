#include "line_readers/timescale.h"

#include <strings.h>

#include <cstring>

#include "kesncd/kesncd.h"
#include "text/number.h"

namespace orsa::kesncd {

namespace {

struct TimeUnit {
  const char* text;
  double nanoseconds;
};

constexpr TimeUnit kUnits[] = {
    {"s", 1e9}, {"ms", 1e6}, {"us", 1000}, {"ns", 1}, {"ps", 0.001}, {"fs", 1e-6},
};

constexpr double kNotUnderstood = -1.0;

double Convert(const char* number, const char* unit) {
  // A number that does not scan leaves the earlier time scale in place, to be multiplied again.
  ScanDouble(number, timeScale);
  const double factor = NanosecondsPer(unit, UnitCase::Exact);
  if (factor == 0.0) return kNotUnderstood;
  timeScale *= factor;
  return timeScale;
}

}  // namespace

double NanosecondsPer(const char* unit, UnitCase unitCase) {
  const auto compare = unitCase == UnitCase::Exact ? std::strcmp : strcasecmp;
  for (const TimeUnit& row : kUnits) {
    if (compare(unit, row.text) == 0) return row.nanoseconds;
  }
  return 0.0;
}

double ReadTimescale(char** tokens, int count) {
  if (count == 2) return Convert(tokens[0], tokens[1]);
  if (count != 1) return kNotUnderstood;
  // "10ps" is the pieces "10" and "ps". "1.5ns" is not understood: its second piece is ".".
  Mem splitter;
  int pieceCount = 0;
  char** pieces = splitter.GetArrayOfPieces(tokens[0], &pieceCount);
  return Convert(pieces[0], pieces[1]);
}

}  // namespace orsa::kesncd
