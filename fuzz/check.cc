// The findings about a dump: where there are none that touch the figures, the hierarchical reader
// gives for the dump as it stands what it gives for the prepared one.
#include <algorithm>
#include <sstream>

#include "free_format/findings/dump_findings.h"
#include "fuzz/target.h"
#include "tests/support/dump_figures.h"
#include "tests/support/input.h"
#include "tests/support/reader_state.h"
#include "tests/support/require.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"

using namespace orsa::kesncd;

namespace {

/// What the hierarchical reader's figures do not depend on.
bool IsHarmless(FindingKind kind) {
  static constexpr FindingKind kHarmless[] = {
      FindingKind::NoTimescale,  FindingKind::NoSpan,      FindingKind::DumpingOff,
      FindingKind::HugeStamps,   FindingKind::OpenEnd,     FindingKind::StaysUnknown,
      FindingKind::TurnsUnknown, FindingKind::UnknownBits, FindingKind::NotHandled,
      FindingKind::Backward,     FindingKind::EmptyTop,    FindingKind::BeforeFirstStamp,
      FindingKind::Unknown,      FindingKind::Undeclared,  FindingKind::Late,
      FindingKind::GrammarCodes, FindingKind::Escaped,     FindingKind::TwoIndices,
      FindingKind::Parentheses,  FindingKind::Collisions,  FindingKind::WideRanges};
  return std::find(std::begin(kHarmless), std::end(kHarmless), kind) != std::end(kHarmless);
}

std::string TextOf(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) {
    text += std::string(TextOf(finding.kind).finding) + " " + std::to_string(finding.tally.count) +
            " " + std::to_string(finding.tally.line) + " " + finding.tally.example + "\n";
  }
  return text;
}

/// What stays unmentioned, as no simulator writes it: names that are keywords or do not fit on a
/// line, and ranges in the place of a size outside port dumps.
bool HasOddLine(const std::string& dump) {
  constexpr std::size_t kLongest = 800;
  for (const std::string& line : support::Lines(dump)) {
    if (line.size() >= kLongest) return true;
    std::istringstream words(line);
    std::string keyword, type, size, code, name;
    words >> keyword >> type >> size >> code >> name;
    if (keyword == "$var" && (size[0] == '[' || name[0] == '$')) return true;
    if (keyword == "$scope" && size[0] == '$') return true;
  }
  return false;
}

struct Result {
  bool refused = false;
  bool isGood = false;
  std::string text;
};

Result Check(const std::string& dump, std::size_t chunk) {
  orsa::kesncd::TextSource source(dump, chunk);
  try {
    const DumpCheck check = CheckDump(source, "", "", support::kSmallBlock);
    const auto& found = check.findings;
    const bool isGood = std::all_of(found.begin(), found.end(),
                                    [](const Finding& f) { return IsHarmless(f.kind); });
    for (const Finding& finding : found) {
      support::Require(finding.tally.count > 0, "a finding is about something");
    }
    return {false, isGood, TextOf(found) + std::to_string(check.body.changes)};
  } catch (const Failure& failure) {
    return {true, false, failure.what()};
  }
}

}  // namespace

void CheckInput(std::string_view bytes) {
  const std::string dump(bytes);
  const Result result = Check(dump, std::string::npos);
  support::Require(Check(dump, 3).text == result.text, "reads of any size do");
  if (!result.isGood || HasOddLine(dump)) return;
  const auto prepared = support::Prepare(dump);
  support::Require(prepared.has_value(), "what can be checked can be prepared");
  const support::Figures raw = support::TreeFigures(dump);
  const std::string rawState = support::StateText();
  const support::Figures tree = support::TreeFigures(*prepared);
  support::Require(raw == tree && rawState == support::StateText(), [&] {
    return result.text + "\nraw" + support::TextOf(raw) + "\n" + rawState + "\nprepared" +
           support::TextOf(tree) + "\n" + support::StateText() + "\n" + *prepared;
  });
}
