// kesncd check: what the library's readers would get wrong in a dump.
#include <memory>

#include "cli/commands/commands.h"
#include "free_format/dump_findings.h"

namespace orsa::kesncd::cli {

namespace {

struct Options {
  InputOptions input;
  OutputOptions output;
};

constexpr char kHelp[] =
    "What the readers would get wrong in a dump, the most harmful first\n"
    "\n"
    "Examples:\n"
    "  kesncd check sim.vcd\n"
    "  kesncd check sim.vcd --format json -o findings.json\n"
    "\n"
    "The dump is read once. The exit status is 0 when nothing was found, 1 when something was.\n";

constexpr double kFemtosecondsPerNanosecond = 1e6;

/// The modules that a flat run can take, in the order of the dump.
std::vector<std::string> ModulesWithVariables(const Declarations& declarations) {
  std::vector<std::string> modules;
  for (std::uint32_t i = 1; i < declarations.scopes.size(); ++i) {
    const DumpScope& scope = declarations.scopes[i];
    if (scope.kind != "module" || scope.variables.empty()) continue;
    modules.push_back(declarations.PathOf(i));
  }
  return modules;
}

std::string Counted(std::uint64_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string NameOfTop(const Declarations& declarations) {
  const std::uint32_t top = OutermostWithVariables(declarations);
  return declarations.scopes[top].name;
}

std::vector<std::pair<std::string, Cell>> Facts(const std::string& dump,
                                                const Declarations& declarations,
                                                const BodyFacts& body) {
  const double ticks = static_cast<double>(body.lastTick) - static_cast<double>(body.firstTick);
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
          {"signals", static_cast<std::int64_t>(declarations.variables.size())},
          {"changes", static_cast<std::int64_t>(body.changes)},
          {"unknown_changes", static_cast<std::int64_t>(body.unknown)},
          {"top", NameOfTop(declarations)}};
}

std::vector<Cell> RowOf(const Finding& finding) {
  const FindingText& text = TextOf(finding.kind);
  const auto number = [](std::uint64_t value) { return static_cast<std::int64_t>(value); };
  return {std::string(text.finding),
          number(finding.tally.count),
          std::string(text.of),
          finding.tally.line > 0 ? Cell(number(finding.tally.line)) : Cell(),
          finding.tally.example.empty() ? Cell() : Cell(finding.tally.example),
          std::string(text.remedy)};
}

std::string LastLines(const Report& report, const Declarations& declarations,
                      const BodyFacts& body) {
  const std::string span =
      declarations.tick && body.lastTick > body.firstTick
          ? NumberText(static_cast<double>(body.lastTick - body.firstTick) *
                       static_cast<double>(*declarations.tick) / kFemtosecondsPerNanosecond) +
                " ns"
          : "no time";
  return Counted(report.rows.size(), "finding") + "; " +
         Counted(declarations.variables.size(), "signal") + " with " +
         Counted(body.changes, "change") + " in " + span + "; a good top module is " +
         NameOfTop(declarations) +
         "\nmodules with signals: " + ShortList(report.lists.front().second);
}

ExitStatus Run(const Options& options) {
  const std::string name = NameOf(options.input);
  UnpackedSource dump = OpenDump(options.input);
  const auto [declarations, body, findings] = CheckDump(*dump.bytes, name, dump.packing);
  dump.bytes.reset();
  Report report{Facts(name, declarations, body),
                "findings",
                {"finding", "count", "of", "line", "example", "remedy"},
                {},
                ""};
  for (const Finding& finding : findings) {
    report.rows.push_back(RowOf(finding));
  }
  report.lists.emplace_back("modules", ModulesWithVariables(declarations));
  report.lastLine = LastLines(report, declarations, body);
  WriteReport(report, options.output);
  return report.rows.empty() ? ExitStatus::Done : ExitStatus::Findings;
}

}  // namespace

void AddCheckCommand(CommandLine& line) {
  Command& command = line.Add("check", kHelp);
  const auto options = std::make_shared<Options>();
  AddDumpOptions(command, options->input);
  AddOutputOptions(command, options->output);
  command.run = [options] { return Run(*options); };
}

}  // namespace orsa::kesncd::cli
