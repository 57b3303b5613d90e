// The table of all findings: what each is about, how grave it is, and what helps.
#include "free_format/findings/dump_findings.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orsa::kesncd {

namespace {

// Short names for the table.
constexpr Severity kWrong = Severity::WrongFigures;
constexpr Severity kNote = Severity::WorthKnowing;
constexpr Concerns kAll = Concerns::AllRuns;
constexpr Concerns kHosts = Concerns::Hosts;
constexpr Concerns kGrammar = Concerns::GrammarReader;

// In the order of the kinds. Where a text alone may not be clear, an example of what is found
// stands above its row.
constexpr FindingText kTexts[] = {
    {"packed: no reader but this program's unpacks it", "dump", kWrong, kHosts, Remedy::Unpack},
    {"became shorter while it was read", "dump", kWrong, kAll, Remedy::SimulateAgain},
    {"changed while it was read: it may still grow", "dump", kWrong, kAll, Remedy::AwaitEnd},
    {"no time scale: all frequencies are 0 or unknown", "dump", kWrong, kAll,
     Remedy::GiveTimescale},
    {"time scale not understood", "dump", kWrong, kAll, Remedy::GiveTimescale},
    // "$timescale 1ns $end" on one line.
    {"time scale not read: all frequencies are 0", "dump", kWrong, kHosts, Remedy::Prepare},
    {"time scale after a scope: readers lose their place there", "sections", kWrong, kHosts,
     Remedy::Prepare},
    {"dump ends inside its declarations", "dump", kWrong, kAll, Remedy::SimulateAgain},
    // "$enddefinitions $end #0", or none before the first "#0".
    {"no $enddefinitions on a line of its own: no value is read", "dump", kWrong, kHosts,
     Remedy::Prepare},
    {"no time span: all frequencies are 0 or unknown", "dump", kWrong, kAll,
     Remedy::SimulateLonger},
    // Such as those of all top-level scopes but the first.
    {"signals not reachable from the tree's root", "signals", kWrong, kHosts, Remedy::Prepare},
    // "$var wire 1 ! a $end $var wire 1 # b $end"
    {"declarations not on a line of their own are not read", "signals", kWrong, kHosts,
     Remedy::Prepare},
    {"control bytes, which spoil their lines", "bytes", kWrong, kHosts, Remedy::Prepare},
    {"lines of comments that readers take for declarations", "lines", kWrong, kHosts,
     Remedy::Prepare},
    {"lines of comments that readers take for changes or commands", "lines", kWrong, kHosts,
     Remedy::Prepare},
    {"declarations with keywords in capitals are not read", "sections", kWrong, kHosts,
     Remedy::Prepare},
    {"dump commands in capitals or of port dumps are not obeyed", "commands", kWrong, kHosts,
     Remedy::Prepare},
    // "#10 1!"
    {"time stamps that share their lines are not read", "stamps", kWrong, kHosts, Remedy::Prepare},
    // "#10 1!" again, for the change; "1 !"
    {"changes after another word or apart from their codes are not counted", "changes", kWrong,
     kHosts, Remedy::Prepare},
    // "$dumpoff #20"
    {"dump commands that share their lines are not obeyed", "commands", kWrong, kHosts,
     Remedy::Prepare},
    // "$dumpoff" on a line before $enddefinitions
    {"dumping switched off in the declarations, which only line readers obey", "commands", kWrong,
     kHosts, Remedy::Prepare},
    // "pU 0 6 <1"
    {"values of port dumps are not counted", "changes", kWrong, kHosts, Remedy::Prepare},
    // "#1000" and then "#5", read as 5000; see text/splitter.h.
    {"readers misread the time span", "dump", kWrong, kHosts, Remedy::Prepare},
    // From 2^53 on.
    {"time stamps so large that the span between them is not exact", "dump", kWrong, kHosts,
     Remedy::CoarserTimescale},
    {"time stamp cut off at the end of the dump", "stamps", kWrong, kAll, Remedy::SimulateAgain},
    {"time stamps that are no whole number below 2^64", "stamps", kWrong, kAll, Remedy::FixDump},
    {"time stamps go back: the span is not the simulation's", "stamps", kWrong, kAll,
     Remedy::FixDump},
    {"dumping was off for a part of the span, where nothing counts", "stretches", kWrong, kAll,
     Remedy::KeepDumping},
    // Two declarations with the code "!" in one scope.
    {"signals with several names in a scope count several times in the tree", "signals", kWrong,
     kHosts, Remedy::Prepare},
    {"further names of a signal in a scope have no figures", "signals", kWrong, kHosts,
     Remedy::Prepare},
    {"signals stand in the wrong scope of the tree", "signals", kWrong, kHosts, Remedy::Prepare},
    {"scopes with signals that are no module, task or function", "scopes", kWrong, kHosts,
     Remedy::Prepare},
    {"scope lines that share their lines are not read", "scopes", kWrong, kHosts, Remedy::Prepare},
    {"scopes opened again under the same path", "scopes", kWrong, kHosts, Remedy::Prepare},
    {"signals declared after a sub-scope are missing in flat runs", "signals", kWrong, kHosts,
     Remedy::Prepare},
    {"outermost module declares no signal: a flat run of it is empty", "scopes", kNote, kAll,
     Remedy::ChooseTop},
    // "H!"
    {"changes to H or L are not counted", "changes", kWrong, kHosts, Remedy::Prepare},
    // "$var wire 8 # data $end"
    {"codes that the grammar reader takes for times or values", "signals", kWrong, kGrammar,
     Remedy::Prepare},
    // $attrbegin
    {"sections that the grammar reader does not know", "sections", kWrong, kGrammar,
     Remedy::Prepare},
    {"values too long for a line of every reader", "changes", kWrong, kHosts, Remedy::Prepare},
    {"changes before the first time stamp, where the span begins", "changes", kNote, kAll,
     Remedy::SeeWhetherInitial},
    {"more than 1 % of the changes are to x or z, which do not count", "signals", kNote, kAll,
     Remedy::ResetDesign},
    {"signals that are x from the first to the last stamp", "signals", kNote, kAll,
     Remedy::ResetDesign},
    {"signals that become x after they had a known value", "signals", kNote, kAll,
     Remedy::TraceDrivers},
    {"values of buses with x or z bits, which count like all others", "changes", kNote, kAll,
     Remedy::None},
    {"changes of codes that no variable has", "changes", kWrong, kAll, Remedy::SimulateAgain},
    {"changes to strings do not count", "changes", kNote, kAll, Remedy::None},
    {"section without $end: what comes after it is not read", "sections", kWrong, kAll,
     Remedy::FixDump},
    {"value without a code at the end: the dump is cut off", "values", kWrong, kAll,
     Remedy::SimulateAgain},
    {"last line has no end: its value or code may be cut off", "lines", kNote, kAll,
     Remedy::AwaitEnd},
    {"declarations after the definitions", "declarations", kWrong, kAll, Remedy::FixDump},
    {"declarations without a code", "declarations", kWrong, kAll, Remedy::FixDump},
    {"words that are not understood", "words", kWrong, kAll, Remedy::FixDump},
    {"time stamps with fractions, which are lost", "stamps", kWrong, kAll, Remedy::FinerTimescale},
    // "\cpu.pc[2]"
    {"escaped names keep their backslash", "signals", kNote, kAll, Remedy::AskAsWritten},
    // "mem[0][31:0]"
    {"names with two indices: a flat row mem_0 is the whole element mem[0][31:0]", "signals", kNote,
     kAll, Remedy::ReadAsElement},
    // "gen(3)"
    {"names with parentheses, where designs have brackets", "signals", kNote, kAll,
     Remedy::AskAsWritten},
    {"different signals with one name in the flat map, which the first one has", "signals", kWrong,
     kAll, Remedy::FindOrTree},
    {"ranges over 4096 bits, each a row of a flat run", "signals", kNote, kAll,
     Remedy::LeaveMemoriesOut},
    {"signals that the simulator left out of the dump, as it says", "signals", kNote, kAll,
     Remedy::UsePlainSignals},
};
static_assert(std::size(kTexts) == static_cast<std::size_t>(FindingKind::NotHandled) + 1);

// In the order of the remedies. What a user types or does, in a few words.
constexpr std::string_view kRemedies[] = {
    "none",
    "gunzip, unzstd or kesncd prepare",
    "kesncd prepare",
    "kesncd prepare --timescale TIME",
    "simulate again",
    "simulate longer",
    "wait for the simulation's end",
    "leave dumping on, or take a window",
    "fix the dump",
    "simulate with a finer time scale",
    "simulate with a coarser time scale",
    "give --top a module that does",
    "none needed if they are initial values",
    "reset the design in the test bench",
    "look for what drives them",
    "ask for them as the dump writes them",
    "find and tree have the dump's own names",
    "use kesncd find or tree",
    "leave memories out of the dump",
    "assign their elements to plain signals",
};
static_assert(std::size(kRemedies) == static_cast<std::size_t>(Remedy::UsePlainSignals) + 1);

/// Where a kind is listed: faults, notes, the grammar reader's. Only the first list makes a fault.
int ListOf(FindingKind kind) {
  const FindingText& text = TextOf(kind);
  if (text.concerns == Concerns::GrammarReader) return 2;
  return text.severity == Severity::WorthKnowing ? 1 : 0;
}

}  // namespace

const FindingText& TextOf(FindingKind kind) {
  return kTexts[static_cast<std::size_t>(kind)];
}

std::string_view TextOf(Severity severity) {
  return severity == Severity::WrongFigures ? "wrong figures" : "worth knowing";
}

std::string_view TextOf(Concerns concerns) {
  switch (concerns) {
    case Concerns::AllRuns:
      return "all runs";
    case Concerns::Hosts:
      return "hosts";
    case Concerns::GrammarReader:
      break;
  }
  return "grammar reader";
}

std::string_view TextOf(Remedy remedy) {
  return kRemedies[static_cast<std::size_t>(remedy)];
}

bool IsFault(FindingKind kind) {
  return ListOf(kind) == 0;
}

void SortFindings(std::vector<Finding>& findings) {
  // The kinds themselves are in the order of harm.
  std::sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
    return std::pair(ListOf(a.kind), a.kind) < std::pair(ListOf(b.kind), b.kind);
  });
}

void Findings::Add(FindingKind kind, bool isSo, std::uint64_t line, std::string_view example) {
  // A condition instead of a tally: the finding counts once.
  if (!isSo) return;
  Tally tally;
  tally.Add(line, example);
  Add(kind, tally);
}

std::vector<Finding> Findings::Sorted() && {
  SortFindings(found_);
  return std::move(found_);
}

}  // namespace orsa::kesncd
