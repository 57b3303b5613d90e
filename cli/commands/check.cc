// kesncd check: what the library's readers would get wrong in a dump.
#include <algorithm>
#include <memory>

#include "cli/commands/commands.h"
#include "cli/input/dump_check.h"
#include "free_format/findings/dump_findings.h"
#include "names/scope_search.h"
#include "text/number.h"

namespace orsa::kesncd::cli {

namespace {

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

constexpr double kFemtosecondsPerNanosecond = 1e6;

/// What --top of other commands takes for the scopes that declare variables, in the dump's order.
struct TopNames {
  std::vector<std::string> names;
  std::int64_t shortened = 0;  // paths of which only the end is given
};

/// The end of a scope's path, which --top takes too: whole names, and no more of them than fit. A
/// deep dump's paths together would else be out of all proportion to it.
std::string TopNameOf(const Declarations& declarations, std::uint32_t scope, bool& isShortened) {
  constexpr std::size_t kLongest = 250;
  if (scope == Declarations::kDump) return "/";
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

std::string Counted(std::uint64_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// What --top takes for the scope that runs propose: its name, where no other scope has it.
std::string NameOfTop(const Declarations& declarations) {
  const std::uint32_t top = OutermostWithVariables(declarations);
  if (top == Declarations::kDump) return "/";
  const std::string& name = declarations.scopes[top].name;
  if (FindScopes(declarations, name) == std::vector<std::uint32_t>{top}) return name;
  bool isShortened = false;
  return TopNameOf(declarations, top, isShortened);
}

std::int64_t FaultsIn(const std::vector<Finding>& findings) {
  return std::count_if(findings.begin(), findings.end(),
                       [](const Finding& finding) { return IsFault(finding.kind); });
}

Facts CheckFacts(const std::string& dump, const DumpCheck& check, const TopNames& tops) {
  const auto& [declarations, body, findings] = check;
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
  constexpr std::size_t kShown = 20;
  const std::size_t shown = all ? tops.names.size() : std::min(tops.names.size(), kShown);
  std::string text = "modules with signals:";
  for (std::size_t i = 0; i < shown; ++i) {
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

std::string LastLines(const DumpCheck& check, const std::string& modules) {
  const auto& [declarations, body, findings] = check;
  const std::string span =
      declarations.tick && body.lastTick > body.firstTick
          ? ShortestText(static_cast<double>(body.lastTick - body.firstTick) *
                         static_cast<double>(*declarations.tick) / kFemtosecondsPerNanosecond) +
                " ns"
          : "no time";
  return CountText(findings) + "; " + Counted(declarations.variables.size(), "signal") + " with " +
         Counted(body.changes, "change") + " in " + span + "; a good top module is " +
         NameOfTop(declarations) + "\n" + modules;
}

/// What became of the file while it was read is a finding too.
void AddChange(FileChange change, std::vector<Finding>& findings) {
  if (change == FileChange::None) return;
  Tally tally;
  tally.Add(0, "");
  findings.push_back(
      {change == FileChange::Shrank ? FindingKind::Shrank : FindingKind::Grows, tally});
  SortFindings(findings);
}

ExitStatus RunCheck(const CheckChoices& options) {
  CheckOutputs({options.input.dump}, {options.output.path});
  const std::string name = NameOf(options.input);
  UnpackedSource dump = OpenDump(options.input);
  DumpCheck check = CheckDumpOf(options.input, dump);
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
  return FaultsIn(check.findings) == 0 ? ExitStatus::Done : ExitStatus::Findings;
}

}  // namespace

void AddCheckCommand(CommandLine& line) {
  Command& command = line.Add("check", kCheckHelp);
  const auto options = std::make_shared<CheckChoices>();
  AddDumpOptions(command, options->input);
  AddJobsOption(command, options->input);
  command.AddFlag("--modules", options->allModules,
                  "list all modules that --top of other commands takes, not the first 20");
  AddOutputOptions(command, options->output);
  command.run = [options] { return RunCheck(*options); };
}

}  // namespace orsa::kesncd::cli
