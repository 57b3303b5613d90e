#include "free_format/dump_findings.h"

#include <algorithm>

#include "free_format/declaration_reader.h"

namespace orsa::kesncd {

namespace {

constexpr std::string_view kPrepare = "kesncd prepare";

// In the order of the kinds.
constexpr FindingText kTexts[] = {
    {"packed: no reader but this program's unpacks it", "dump", "gunzip, unzstd or kesncd prepare"},
    {"no time scale: all frequencies are 0", "dump", "kesncd prepare --timescale TIME"},
    {"time scale not understood", "dump", "kesncd prepare --timescale TIME"},
    {"time scale not read: all frequencies are 0", "dump", kPrepare},
    {"time scale behind a scope: readers lose their place there", "sections", kPrepare},
    {"dump ends inside its declarations", "dump", "simulate again"},
    {"no $enddefinitions on a line of its own: no value is read", "dump", kPrepare},
    {"no time span: all frequencies are 0", "dump", "simulate longer"},
    {"signals not reachable from the tree's root", "signals", kPrepare},
    {"declarations not on a line of their own are not read", "signals", kPrepare},
    {"control bytes, which spoil their lines", "bytes", kPrepare},
    {"lines of comments that readers take for declarations", "lines", kPrepare},
    {"lines of comments that readers take for changes or commands", "lines", kPrepare},
    {"declarations with keywords in capitals are not read", "sections", kPrepare},
    {"dump commands in capitals or of port dumps are not obeyed", "commands", kPrepare},
    {"time stamps that share their lines are not read", "stamps", kPrepare},
    {"changes behind another word or apart from their codes are not counted", "changes", kPrepare},
    {"dump commands that share their lines are not obeyed", "commands", kPrepare},
    {"values of port dumps are not counted", "changes", kPrepare},
    {"readers misread the time span", "dump", kPrepare},
    {"time stamp cut off at the end of the dump", "stamps", "simulate again"},
    {"time stamps that are no whole number below 2^64", "stamps", "fix the dump"},
    {"time stamps go back: the span is not the simulation's", "stamps", "mend the dump"},
    {"signals with several names in a scope count several times in the tree", "signals", kPrepare},
    {"further names of a signal in a scope have no figures", "signals", kPrepare},
    {"signals stand in the wrong scope of the tree", "signals", kPrepare},
    {"scopes other than module, task and function", "scopes", kPrepare},
    {"scope lines that share their lines are not read", "scopes", kPrepare},
    {"scopes opened again under the same path", "scopes", kPrepare},
    {"signals declared behind a sub-scope are missing in flat runs", "signals", kPrepare},
    {"outermost module declares no signal: a flat run of it is empty", "scopes",
     "give --top a module that does"},
    {"changes to H or L are not counted", "changes", kPrepare},
    {"codes that the grammar reader takes for times or values", "signals", kPrepare},
    {"sections that the grammar reader does not know", "sections", kPrepare},
    {"values too long for a line of every reader", "changes", kPrepare},
    {"changes before the first time stamp, where the span begins", "changes",
     "none needed if they are initial values"},
    {"more than 1 % of the changes are to x or z, which do not count", "signals",
     "reset the design in the test bench"},
    {"changes of codes that no variable has", "changes", "simulate again"},
    {"changes to strings do not count", "changes", "none"},
    {"section without $end: what stands behind it is not read", "sections", "mend the dump"},
    {"value without a code at the end: the dump is cut off", "values", "simulate again"},
    {"declarations behind the definitions", "declarations", "mend the dump"},
    {"declarations without a code", "declarations", "mend the dump"},
    {"words that are not understood", "words", "mend the dump"},
    {"time stamps with fractions", "stamps", "simulate with a finer time scale"},
    {"escaped names keep their backslash", "signals", "ask for them as the dump writes them"},
    {"names with two indices, of which readers see one", "signals", "dump the elements one by one"},
    {"names with parentheses, where designs have brackets", "signals",
     "ask for them as the dump writes them"},
    {"different signals with one name in the flat map", "signals", "use kesncd find or tree"},
    {"ranges over 4096 bits", "signals", "leave memories out of the dump"},
};
static_assert(std::size(kTexts) == static_cast<std::size_t>(FindingKind::WideRanges) + 1);

}  // namespace

const FindingText& TextOf(FindingKind kind) {
  return kTexts[static_cast<std::size_t>(kind)];
}

bool IsMended(FindingKind kind) {
  return TextOf(kind).remedy == kPrepare;
}

void Findings::Add(FindingKind kind, bool isSo, std::uint64_t line, std::string_view example) {
  if (!isSo) return;
  Tally tally;
  tally.Add(line, example);
  Add(kind, tally);
}

std::vector<Finding> Findings::Sorted() && {
  std::sort(found_.begin(), found_.end(),
            [](const Finding& a, const Finding& b) { return a.kind < b.kind; });
  return std::move(found_);
}

DumpCheck CheckDump(ByteSource& in, const std::string& name, std::string_view packing,
                    std::size_t block) {
  DumpWords words(in, block, block / 4);
  SlotWatch watch;
  words.Show(watch);
  DumpCheck check{ReadDeclarations(words, name), {}, {}};
  Findings findings;
  findings.Add(FindingKind::Packed, !packing.empty(), 0, packing);
  FindInDeclarations(check.declarations, findings);
  FindInNames(check.declarations, findings);
  check.body = FindInBody(words, watch, check.declarations, findings);
  findings.Add(FindingKind::ControlBytes, words.Controls());
  check.findings = std::move(findings).Sorted();
  return check;
}

}  // namespace orsa::kesncd
