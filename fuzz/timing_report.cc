// Both readers of the timing report in every mode. The modes pick from the same rows, so what one
// gives follows from what the others give.
#include <cmath>

#include "fuzz/target.h"
#include "kesncd/kesncd.h"
#include "tests/support/reader_state.h"
#include "tests/support/require.h"
#include "tests/support/streams.h"

namespace {

using Clocks = std::map<std::string, double>;
using Read = bool (orsa::kesncd::KesNCD::*)(int mode);

const Clocks kBefore{{"before", -3.0}};

Clocks ReadReport(const std::string& path, Read read, int mode) {
  orsa::kesncd::KesNCD analyser;
  analyser.twrFile = path;
  analyser.clockFreqs = kBefore;
  const bool found = (analyser.*read)(mode);
  support::Require(found == (analyser.clockFreqs != kBefore), "the map changes when a row is kept");
  return analyser.clockFreqs;
}

void CheckLower(const Clocks& lower, const Clocks& constraints, const Clocks& achieved) {
  support::Require(lower.size() == constraints.size() && lower.size() == achieved.size(),
                   "every mode keeps the same rows");
  for (const auto& [name, frequency] : lower) {
    const double constraint = constraints.at(name);
    const double reached = achieved.at(name);
    const double expected = reached < constraint ? reached : constraint;
    support::Require(support::Same(frequency, expected), "the lower frequency of '" + name + "'");
  }
}

bool AnyNan(const Clocks& clocks) {
  for (const auto& [name, frequency] : clocks) {
    if (std::isnan(frequency)) return true;
  }
  return false;
}

}  // namespace

void CheckInput(std::string_view bytes) {
  using orsa::kesncd::KesNCD;
  const support::MemoryFile report(bytes);
  const std::string path = report.Path();
  const Clocks lower = ReadReport(path, &KesNCD::ReadTWR, 0);
  const Clocks constraints = ReadReport(path, &KesNCD::ReadTWR, 1);
  const Clocks achieved = ReadReport(path, &KesNCD::ReadTWR, 2);
  CheckLower(lower, constraints, achieved);
  support::Require(AnyNan(achieved) || ReadReport(path, &KesNCD::ReadTWR, -1) == achieved,
                   "another mode is the achieved one");
  const Clocks joined = ReadReport(path, &KesNCD::ReadTWR2, 0);
  support::Require(ReadReport(path, &KesNCD::ReadTWR2, 3) == kBefore, "another mode keeps nothing");
  // A value that is no number passes one mode's test and not another's.
  if (AnyNan(joined) || AnyNan(ReadReport(path, &KesNCD::ReadTWR2, 2))) return;
  CheckLower(joined, ReadReport(path, &KesNCD::ReadTWR2, 1),
             ReadReport(path, &KesNCD::ReadTWR2, 2));
}
