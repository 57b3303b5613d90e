// kesncd look: the first look at a dump that a user knows nothing of yet, and what to ask next.
//
// What the user sees:
//
//   sim.vcd: value change dump of Icarus Verilog, Mon Jan 5 10:00:00 2026
//     span      1000 ns, from tick 0 to 1000 of 1 ns
//     signals   212 with 51234 value changes
//     modules   tb, tb/soc, tb/soc/uart
//     clocks    tb/clk 50 MHz
//     active    tb/clk 50 MHz, tb/soc/cnt 25 MHz
//     check     nothing to remark
//   Next:
//     kesncd check sim.vcd
//     ...
//
// It is for eyes, not for scripts: the layout may change. It reads twice because figures and
// findings come from different readers, one that counts and one that looks for faults.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <unordered_set>

#include "cli/commands/commands.h"
#include "cli/input/dump_check.h"
#include "cli/selection/signal_choice.h"
#include "free_format/findings/dump_findings.h"
#include "text/failure.h"
#include "text/number.h"

namespace orsa::kesncd::cli {

namespace {

constexpr char kLookHelp[] =
    "A first look at a dump: what is in it and what to ask next\n"
    "\n"
    "Examples:\n"
    "  kesncd look sim.vcd\n"
    "  kesncd sim.vcd\n"
    "\n"
    "It shows the span, the modules, the signals that look like clocks by their names, the most\n"
    "active signals and the worst of what kesncd check finds. The file is read twice.\n";

// More would push the next commands off a small terminal.
constexpr std::size_t kShownInLook = 4;  // signals and findings

/// What $version and $date of the dump say, in one line; either may be missing.
std::string Origin(const Declarations& declarations) {
  std::string text = "value change dump";
  if (!declarations.version.empty()) text += " of " + declarations.version;
  if (!declarations.date.empty()) text += ", " + declarations.date;
  return text;
}

/// Times in ns and in ticks: the ticks are what the dump's "#" lines show.
std::string Span(const HostRun& run, const BodyFacts& body) {
  if (!run.nsPerTick) {
    return DisplayText(run.spanTicks) + " ticks of unknown length: there is no time scale";
  }
  return DisplayText(run.spanTicks * *run.nsPerTick) + " ns, from tick " +
         std::to_string(body.firstTick) + " to " + std::to_string(body.lastTick) + " of " +
         DisplayText(*run.nsPerTick) + " ns";
}

/// The most active of the variables that `isWanted`, each signal once, with its frequency. The name
/// is the first in the dump's order, mostly the outermost. A frequency needs two changes, so
/// signals with fewer are no candidates.
template <class IsWanted>
std::string MostActive(const Figures& figures, IsWanted isWanted) {
  std::vector<const DumpVariable*> active;
  std::unordered_set<std::uint32_t> seen;
  for (const DumpVariable& variable : figures.run.declarations.variables) {
    if (figures.run.ChangesOf(variable) < 2 || !isWanted(variable)) continue;
    if (seen.insert(variable.codeId).second) active.push_back(&variable);
  }
  const std::size_t shown = std::min(kShownInLook, active.size());
  // Only a few of perhaps millions are wanted in order. Equal ones stay in the dump's order, so
  // that the same dump always looks the same.
  std::partial_sort(active.begin(), active.begin() + static_cast<std::ptrdiff_t>(shown),
                    active.end(), [&figures](const DumpVariable* one, const DumpVariable* other) {
                      const auto changes = figures.run.ChangesOf(*one);
                      const auto others = figures.run.ChangesOf(*other);
                      return changes != others ? changes > others : one < other;
                    });
  std::string text;
  for (std::size_t i = 0; i < shown; ++i) {
    text += (i == 0 ? "" : ", ") + figures.run.declarations.ShortPathOf(*active[i]);
    const Cell frequency = figures.FrequencyOf(*active[i]);
    if (const double* const mhz = ValueIn(frequency)) text += " " + RoundedText(*mhz, 4) + " MHz";
  }
  return text.empty() ? "none" : text;
}

/// The gravest first, one below the other under the first one; kinds only, kesncd check has the
/// details.
std::string Findings(const std::vector<Finding>& findings) {
  std::string text = findings.empty() ? "nothing to remark" : "";
  for (std::size_t i = 0; i < std::min(kShownInLook, findings.size()); ++i) {
    const FindingText& finding = TextOf(findings[i].kind);
    text += (i == 0 ? "" : "\n            ") + std::string(finding.finding);
    // Figures above are right where only hosts read the dump otherwise.
    if (finding.concerns != Concerns::AllRuns) {
      text.append(" (").append(TextOf(finding.concerns)).append(")");
    }
  }
  if (findings.size() <= kShownInLook) return text;
  return text + "\n            and " + std::to_string(findings.size() - kShownInLook) + " more";
}

/// A word that a shell takes as it is. Anything else is put into single quotes, where a quote
/// itself is written '\'' : what is printed can be pasted as it is, also for a dump called
/// "it's.vcd".
std::string ShellWord(const std::string& word) {
  const auto isPlain = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("_-./+:,@").find(c) != std::string_view::npos;
  };
  if (!word.empty() && std::all_of(word.begin(), word.end(), isPlain)) return word;
  std::string quoted = "'";
  for (const char c : word) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
}

/// Commands to paste. A dump whose name begins with "-" would be taken for an option.
std::string NextCommands(const InputOptions& input, const std::string& top) {
  const std::string dump = ShellWord(input.dump.starts_with("-") ? "./" + input.dump : input.dump);
  return "Next:\n  kesncd check " + dump + "\n  kesncd tree " + dump + "\n  kesncd flat " + dump +
         " --top " + ShellWord(top) + " -o activity.csv\n";
}

/// Standard input and named pipes: the second reading would wait for ever, or see nothing.
void RefuseStream(const InputOptions& input) {
  std::error_code ignored;
  if (input.dump != "-" && !std::filesystem::is_fifo(input.dump, ignored)) return;
  throw Failure(
      FailureKind::Unusable,
      NameOf(input) + ": can be read only once, and a look reads twice; try kesncd check");
}

/// Figures first, which remark on what could not be read, then the findings of the same dump.
ExitStatus RunLook(const InputOptions& input) {
  RefuseStream(input);
  // No window: a first look is at all of it.
  const Figures figures = ReadFigures({input, {}});
  UnpackedSource dump = OpenDump(input);
  // Also ends the progress line, before the result is written on the same terminal.
  const DumpCheck check = CheckDumpOf(input, dump);
  const Declarations& declarations = figures.run.declarations;
  const std::vector<std::string> modules = ModulesWithVariables(declarations);
  const std::string top = declarations.PathOf(OutermostWithVariables(declarations));
  // Always to standard output: there is no -o, as nothing is meant to read this.
  OutputFile out("");
  out.Write(figures.dump + ": " + Origin(declarations) + "\n  span      " +
            Span(figures.run, check.body) + "\n  signals   " +
            std::to_string(declarations.variables.size()) + " with " +
            std::to_string(check.body.changes) + " value changes\n  modules   " +
            ShortList(modules) + "\n  clocks    " +
            MostActive(figures,
                       // By name and one bit wide: "clk_div[3:0]" is a counter, not a clock.
                       [&](const DumpVariable& variable) {
                         return variable.width == 1 && IsClockName(variable.name);
                       }) +
            "\n  active    " + MostActive(figures, [](const DumpVariable&) { return true; }) +
            "\n  check     " + Findings(check.findings) + "\n" + NextCommands(input, top));
  out.Commit();
  return ExitStatus::Done;
}

}  // namespace

void AddLookCommand(CommandLine& line) {
  Command& command = line.Add("look", kLookHelp);
  // "kesncd sim.vcd" means this command; see IsFileName for what counts as a file.
  line.commandOfFiles = command.name();
  const auto options = std::make_shared<InputOptions>();
  AddDumpOptions(command, *options);
  command.run = [options] { return RunLook(*options); };
}

}  // namespace orsa::kesncd::cli
