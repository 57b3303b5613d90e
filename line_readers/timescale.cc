// The number and the unit of a time scale.
#include "line_readers/timescale.h"

#include "text/number.h"
#include "text/splitter.h"
#include "vcd/time_units.h"

namespace orsa::kesncd {

namespace {

// Hosts see it as the time scale after a reading that gave up.
constexpr double kNotUnderstood = -1.0;

/// The number goes straight to its place: where it does not scan, the earlier time scale stays
/// there and is multiplied by the new unit. "ns" after 10 is 10 again, "us" 10000.
double Convert(const char* number, const char* unit, double& nsPerTick) {
  ScanDouble(number, nsPerTick);
  return ConvertToNanoseconds(nsPerTick, unit, UnitCase::Exact) ? nsPerTick : kNotUnderstood;
}

}  // namespace

double ReadTimescale(char** words, int count, double& nsPerTick) {
  if (count == 2) return Convert(words[0], words[1], nsPerTick);
  if (count != 1) return kNotUnderstood;
  // "10ps" is the pieces "10" and "ps". "1.5ns" is not understood: its second piece is ".". A
  // splitter of its own has empty slots, so that a missing unit is an empty text.
  Splitter splitter;
  int pieceCount = 0;
  char** pieces = splitter.CutPieces(words[0], &pieceCount);
  return Convert(pieces[0], pieces[1], nsPerTick);
}

}  // namespace orsa::kesncd
