// What is said about a prepared dump.
#include "cli/prepare.h"

namespace kesncd_cli {

namespace {

std::string AtLine(const Tally& tally) {
  return " (first at line " + std::to_string(tally.line) +
         (tally.example.empty() ? "" : ": " + tally.example) + ")";
}

struct Row {
  const Tally& tally;
  const char* text;  // behind the count
};

}  // namespace

std::vector<std::string> PrepareReport::Remarks() const {
  std::vector<std::string> remarks;
  if (isTorn) remarks.emplace_back("it ends inside its declarations and holds no change");
  if (!tick && timescale.empty()) {
    remarks.emplace_back("it has no time scale, so all frequencies are 0; --timescale gives one");
  } else if (!tick) {
    remarks.push_back("its time scale \"" + timescale.substr(0, 40) +
                      "\" is not understood, so all frequencies are 0; --timescale gives one");
  }
  if (tickNotNeeded) remarks.emplace_back("it has a time scale of its own, which stands");
  if (stamps == 0) {
    remarks.emplace_back("it has no time stamp, so all frequencies are 0");
  } else if (firstTick == lastTick) {
    remarks.emplace_back("it spans no time, so all frequencies are 0");
  }
  if (backward > 0) remarks.push_back(std::to_string(backward) + " time stamps go back in time");
  const Row rows[] = {
      {items.unended, " section has no $end: what stands behind it is not read"},
      {items.torn, " value at the end has no code: the dump is cut off"},
      {malformed, " declarations without a code are left out"},
      {items.late, " declarations stand behind the definitions and are left out"},
      {unbalanced, " $upscope close no scope"},
      {items.undeclared, " changes are of codes that no variable has and are left out"},
      {items.strings, " changes to strings, which do not count, are left out"},
      {items.strays, " words are not understood and are left out"},
      {items.weak, " changes to H or L now count as 1 or 0"},
      {items.cut, " values are cut to their lowest bits; they count all the same"},
      {items.fractions, " time stamps lose their fractions"},
  };
  for (const Row& row : rows) {
    if (row.tally)
      remarks.push_back(std::to_string(row.tally.count) + row.text + AtLine(row.tally));
  }
  if (unknown > 0) {
    remarks.push_back(std::to_string(unknown) + " of " + std::to_string(changes) +
                      " changes are to x or z, which do not count");
  }
  return remarks;
}

}  // namespace kesncd_cli
