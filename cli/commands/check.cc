// kesncd check: what the library's readers would get wrong in a dump.
//
// A dump is read once, with a watch on everything that the strict readers of hosts take otherwise
// than it was meant: two stamps in a line, values that are too long, digits of an earlier stamp
// that show. The rules themselves are in free_format/findings; here findings become rows: what was
// found, how often, where first, how harmful it is, for whom, and what helps.
//
// Besides, it proposes what other commands want to know of an unknown dump: a good --top.
#include <algorithm>
#include <memory>

#include "cli/commands/commands.h"
#include "cli/input/dump_check.h"
#include "free_format/findings/dump_findings.h"
#include "names/scope_search.h"
#include "text/number.h"

namespace orsa::kesncd::cli {

namespace {

// What the options say.
struct CheckChoices {
  InputOptions input;
  OutputOptions output;
  bool allModules = false;
};

constexpr char kCheckHelp[] =
    "What makes figures of a dump wrong, or is worth knowing, the most harmful first\n"
    "\n"
    "Examples:\n"
    "  kesncd check sim.vcd\n"
    "  kesncd check sim.vcd --format json -o findings.json\n"
    "\n"
    "Each finding says whom it concerns: all runs, hosts (and --as-is) alone, or the grammar "
    "reader\n"
    "alone. The dump is read once. The exit status is 1 when a run of the program or of a host "
    "would\n"
    "give a wrong or incomplete figure, else 0.\n";

// Ticks are in femtoseconds, the finest unit of a time scale; the facts speak in nanoseconds.
constexpr double kFemtosecondsPerNanosecond = 1e6;

/// What --top of other commands takes for the scopes that declare variables, in the dump's order.
struct TopNames {
  std::vector<std::string> names;
  std::int64_t shortened = 0;  // paths of which only the end is given
};

/// The end of a scope's path, which --top takes too: whole names, and no more of them than fit. A
/// deep dump's paths together would else be out of all proportion to it.
std::string TopNameOf(const Declarations& declarations, std::uint32_t scope, bool& isShortened) {
  // In characters: some lines of a terminal. A million scopes, one in the other, would else have
  // paths of about a million names each.
  constexpr std::size_t kLongest = 250;
  if (scope == Declarations::kDump) return "/";
  // Names are added from the inside out until the next one would not fit. `top` is the scope around
  // those that do; kDump means that the path is whole.
  std::uint32_t top = declarations.scopes[scope].parent;
  std::size_t length = declarations.scopes[scope].name.size();
  while (top != Declarations::kDump) {
    length += declarations.scopes[top].name.size() + 1;
    if (length > kLongest) break;
    top = declarations.scopes[top].parent;
  }
  isShortened = top != Declarations::kDump;
  return declarations.PathBelow(top, scope);
}

/// Scopes without variables are left out: a run of one has no figures.
TopNames TopNamesOf(const Declarations& declarations) {
  TopNames tops;
  for (std::uint32_t i = 0; i < declarations.scopes.size(); ++i) {
    if (declarations.scopes[i].variables.empty()) continue;
    bool isShortened = false;
    tops.names.push_back(TopNameOf(declarations, i, isShortened));
    if (isShortened) ++tops.shortened;
  }
  return tops;
}

// "1 finding", "2 findings".
std::string Counted(std::uint64_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// What --top takes for the scope that runs propose: its name, where no other scope has it.
std::string NameOfTop(const Declarations& declarations) {
  const std::uint32_t top = OutermostWithVariables(declarations);
  if (top == Declarations::kDump) return "/";
  const std::string& name = declarations.scopes[top].name;
  // A name that several scopes end in would choose all of them, so it is given with its path then.
  if (FindScopes(declarations, name) == std::vector<std::uint32_t>{top}) return name;
  bool isShortened = false;
  return TopNameOf(declarations, top, isShortened);
}

// The exit status, the table's last line and the facts count alike.
std::int64_t FaultsIn(const std::vector<Finding>& findings) {
  return std::count_if(findings.begin(), findings.end(),
                       [](const Finding& finding) { return IsFault(finding.kind); });
}

/// What JSON and other formats say before the findings. Times are null where the dump has no time
/// scale.
Facts CheckFacts(const std::string& dump, const DumpCheck& check, const TopNames& tops) {
  const auto& [declarations, body, findings] = check;
  // In doubles, as the library's readers have them: of stamps beyond 2^53 the last digits are lost,
  // which is a finding of its own.
  const auto ticks = static_cast<double>(body.lastTick - body.firstTick);
  Cell tick;
  Cell span;
  if (declarations.tick) {
    const double nanoseconds = static_cast<double>(*declarations.tick) / kFemtosecondsPerNanosecond;
    tick = nanoseconds;
    span = ticks * nanoseconds;
  }
  return {{"dump", dump},
          {"timescale_ns", tick},
          {"start_tick", static_cast<double>(body.firstTick)},
          {"end_tick", static_cast<double>(body.lastTick)},
          {"span_ns", span},
          {"signal_count", static_cast<std::int64_t>(declarations.variables.size())},
          {"changes", static_cast<std::int64_t>(body.changes)},
          {"unknown_changes", static_cast<std::int64_t>(body.unknown)},
          {"top", NameOfTop(declarations)},
          {"faults", FaultsIn(findings)},
          {"shortened_modules", tops.shortened}};
}

/// Lines count from 1; 0 says that a finding has no line, and its cell is empty.
Row RowOf(const Finding& finding) {
  const FindingText& text = TextOf(finding.kind);
  const auto number = [](std::uint64_t value) { return static_cast<std::int64_t>(value); };
  return {std::string(text.finding),
          number(finding.tally.count),
          std::string(text.of),
          finding.tally.line > 0 ? Cell(number(finding.tally.line)) : Cell(),
          finding.tally.example.empty() ? Cell() : Cell(finding.tally.example),
          std::string(TextOf(text.severity)),
          std::string(TextOf(text.concerns)),
          std::string(TextOf(text.remedy))};
}

/// "2 findings; 1 worth knowing": only what makes figures wrong is called a finding there.
std::string CountText(const std::vector<Finding>& findings) {
  // Each finding is of one of three groups, so notes are what is left.
  const auto faults = static_cast<std::size_t>(FaultsIn(findings));
  const auto grammar = static_cast<std::size_t>(
      std::count_if(findings.begin(), findings.end(), [](const Finding& finding) {
        return TextOf(finding.kind).concerns == Concerns::GrammarReader;
      }));
  const std::size_t notes = findings.size() - faults - grammar;
  std::string text = Counted(faults, "finding");
  if (notes > 0) text += ", " + std::to_string(notes) + " worth knowing";
  if (grammar > 0) text += ", " + std::to_string(grammar) + " of the grammar reader alone";
  return text;
}

std::string ModulesText(const TopNames& tops, bool all) {
  // About as many as fit into a few lines of a terminal; in formats for programs all are listed.
  constexpr std::size_t kShown = 20;
  const std::size_t shown = all ? tops.names.size() : std::min(tops.names.size(), kShown);
  std::string text = "modules with signals:";
  for (std::size_t i = 0; i < shown; ++i) {
    // With --modules one a line, else in one line.
    text += (all ? "\n  " : i == 0 ? " " : ", ") + tops.names[i];
  }
  if (shown < tops.names.size()) {
    text += " and " + std::to_string(tops.names.size() - shown) + " more, which --modules lists";
  }
  if (tops.shortened > 0) {
    text += "\n" + std::to_string(tops.shortened) +
            " of their paths are so long that only the end is given, which --top takes too";
  }
  return text;
}

/// The lines after a table: what was found, how large the dump is, and what to do next.
std::string LastLines(const DumpCheck& check, const std::string& modules) {
  const auto& [declarations, body, findings] = check;
  const std::string span =
      // Without a time scale the ticks say nothing of time.
      declarations.tick && body.lastTick > body.firstTick
          ? ShortestText(static_cast<double>(body.lastTick - body.firstTick) *
                         static_cast<double>(*declarations.tick) / kFemtosecondsPerNanosecond) +
                " ns"
          : "no time";
  return CountText(findings) + "; " + Counted(declarations.variables.size(), "signal") + " with " +
         Counted(body.changes, "change") + " in " + span + "; a good top module is " +
         NameOfTop(declarations) + "\n" + modules;
}

/// What became of the file while it was read is a finding too, known only when the reading has
/// ended: a simulator may still write the dump.
void AddChange(FileChange change, std::vector<Finding>& findings) {
  if (change == FileChange::None) return;
  Tally tally;
  tally.Add(0, "");
  findings.push_back(
      {change == FileChange::Shrank ? FindingKind::Shrank : FindingKind::Grows, tally});
  SortFindings(findings);
}

/// The dump is read whole before anything is written: the facts at the head of the output need its
/// end.
ExitStatus RunCheck(const CheckChoices& options) {
  CheckOutputs({options.input.dump}, {options.output.path});
  const std::string name = NameOf(options.input);
  UnpackedSource dump = OpenDump(options.input);
  DumpCheck check = CheckDumpOf(options.input, dump);
  // Null where nobody looked.
  if (dump.change != nullptr) AddChange(*dump.change, check.findings);
  const TopNames tops = TopNamesOf(check.declarations);
  ResultOutput result(options.output, {CheckFacts(name, check, tops),
                                       "findings",
                                       {{"finding", true},
                                        "count",
                                        {"of", true},
                                        "line",
                                        "example",
                                        {"severity", true},
                                        {"concerns", true},
                                        {"remedy", true}},
                                       "-",
                                       {{"modules", tops.names}}});
  for (const Finding& finding : check.findings) result.Add(RowOf(finding));
  result.End({{}, {}, LastLines(check, ModulesText(tops, options.allModules))});
  // Notes and what only the grammar reader minds do not fail a check.
  return FaultsIn(check.findings) == 0 ? ExitStatus::Done : ExitStatus::Findings;
}

}  // namespace

void AddCheckCommand(CommandLine& line) {
  Command& command = line.Add("check", kCheckHelp);
  const auto options = std::make_shared<CheckChoices>();
  AddDumpOptions(command, options->input);
  AddJobsOption(command, options->input);
  // For tables only: other formats list all.
  command.AddFlag("--modules", options->allModules,
                  "list all modules that --top of other commands takes, not the first 20");
  AddOutputOptions(command, options->output);
  command.run = [options] { return RunCheck(*options); };
}

}  // namespace orsa::kesncd::cli
