// What is said about a prepared dump.
#include "free_format/prepare.h"

namespace orsa::kesncd {

namespace {

std::string AtLine(const Tally& tally) {
  return " (first at line " + std::to_string(tally.line) +
         (tally.example.empty() ? "" : ": " + tally.example) + ")";
}

struct Row {
  const Tally& tally;
  const char* text;  // before the count
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
  if (backward > 0) {
    remarks.push_back("time stamps that go back in time: " + std::to_string(backward));
  }
  const Row rows[] = {
      {items.unended, "section without $end, behind which nothing is read"},
      {items.torn, "value without a code at the end, where the dump is cut off"},
      {malformed, "declarations without a code, left out"},
      {items.late, "declarations behind the definitions, left out"},
      {unbalanced, "$upscope with no scope open"},
      {items.undeclared, "changes of codes that no variable has, left out"},
      {items.strings, "changes to strings, which do not count, left out"},
      {items.strays, "words that are not understood, left out"},
      {items.weak, "changes to H or L, which now count as 1 or 0"},
      {items.cut, "values cut to their lowest bits, which count all the same"},
      {items.fractions, "time stamps that lose their fractions"},
      {renamed, "names that were missing, too long or keywords, replaced"},
  };
  for (const Row& row : rows) {
    if (!row.tally) continue;
    remarks.push_back(std::string(row.text) + ": " + std::to_string(row.tally.count) +
                      AtLine(row.tally));
  }
  if (!addedRoot.empty()) {
    remarks.push_back("it has several top-level scopes, which now stand in " + addedRoot);
  }
  if (unknown > 0) {
    remarks.push_back(std::to_string(unknown) + " of " + std::to_string(changes) +
                      " changes are to x or z, which do not count");
  }
  return remarks;
}

}  // namespace orsa::kesncd
