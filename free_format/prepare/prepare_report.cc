// What is said about a prepared dump.
#include "free_format/prepare/prepare.h"
#include "free_format/remarks.h"

namespace orsa::kesncd {

namespace {

/// A remark with a count.
struct Row {
  const Tally& tally;
  const char* text;  // before the count
};

}  // namespace

/// Time first: without it no figure means anything.
std::vector<std::string> PrepareReport::Remarks() const {
  std::vector<std::string> remarks;
  if (!tick && timescale.empty()) {
    remarks.emplace_back("it has no time scale, so all frequencies are 0; --timescale gives one");
    // Cut, as a hostile dump may have a long one.
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
  if (isEndCut)
    remarks.emplace_back("the window ends after the dump: it is cut back to the dump's end");
  // What could not be read is missing in the prepared dump, too.
  remarks.insert(remarks.end(), unread.begin(), unread.end());
  const Row rows[] = {
      {weak, "changes to H or L, which now count as 1 or 0"},
      {cut, "values cut to their lowest bits, which count all the same"},
      {unnamed, "names that were missing, replaced"},
      {renamed, "names that were too long or keywords, replaced"},
      {leftOut, "further names of signals with very many names in one scope, left out"},
  };
  for (const Row& row : rows) {
    if (row.tally) remarks.push_back(RemarkOn(row.text, row.tally));
  }
  if (!addedRoot.empty()) {
    remarks.push_back("it has several top-level scopes, which now stand in " + addedRoot);
  }
  // Scalars only; a bus with such bits counts.
  if (unknown > 0) {
    remarks.push_back(std::to_string(unknown) + " of " + std::to_string(changes) +
                      " changes are to x or z, which do not count");
  }
  return remarks;
}

}  // namespace orsa::kesncd
