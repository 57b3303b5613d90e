// kesncd check: what the library's readers would get wrong in a dump.
#include <memory>

#include "cli/commands/commands.h"
#include "free_format/dump_findings.h"
#include "text/number.h"

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

std::string Counted(std::uint64_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string NameOfTop(const Declarations& declarations) {
  const std::uint32_t top = OutermostWithVariables(declarations);
  return declarations.scopes[top].name;
}

Facts FactsOf(const std::string& dump, const Declarations& declarations, const BodyFacts& body) {
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
          {"signal_count", static_cast<std::int64_t>(declarations.variables.size())},
          {"changes", static_cast<std::int64_t>(body.changes)},
          {"unknown_changes", static_cast<std::int64_t>(body.unknown)},
          {"top", NameOfTop(declarations)}};
}

Row RowOf(const Finding& finding) {
  const FindingText& text = TextOf(finding.kind);
  const auto number = [](std::uint64_t value) { return static_cast<std::int64_t>(value); };
  return {std::string(text.finding),
          number(finding.tally.count),
          std::string(text.of),
          finding.tally.line > 0 ? Cell(number(finding.tally.line)) : Cell(),
          finding.tally.example.empty() ? Cell() : Cell(finding.tally.example),
          std::string(text.remedy)};
}

std::string LastLines(std::size_t findings, const std::vector<std::string>& modules,
                      const Declarations& declarations, const BodyFacts& body) {
  const std::string span =
      declarations.tick && body.lastTick > body.firstTick
          ? ShortestText(static_cast<double>(body.lastTick - body.firstTick) *
                         static_cast<double>(*declarations.tick) / kFemtosecondsPerNanosecond) +
                " ns"
          : "no time";
  return Counted(findings, "finding") + "; " + Counted(declarations.variables.size(), "signal") +
         " with " + Counted(body.changes, "change") + " in " + span + "; a good top module is " +
         NameOfTop(declarations) + "\nmodules with signals: " + ShortList(modules);
}

ExitStatus Run(const Options& options) {
  CheckOutputs({options.input.dump}, {options.output.path});
  const std::string name = NameOf(options.input);
  UnpackedSource dump = OpenDump(options.input);
  const auto [declarations, body, findings] = CheckDump(*dump.bytes, name, dump.packing);
  dump.bytes.reset();
  const std::vector<std::string> modules = ModulesWithVariables(declarations);
  ResultOutput result(
      options.output,
      {FactsOf(name, declarations, body),
       "findings",
       {{"finding", true}, "count", {"of", true}, "line", "example", {"remedy", true}},
       "-",
       {{"modules", modules}}});
  for (const Finding& finding : findings) result.Add(RowOf(finding));
  result.End({{}, {}, LastLines(findings.size(), modules, declarations, body)});
  return findings.empty() ? ExitStatus::Done : ExitStatus::Findings;
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
