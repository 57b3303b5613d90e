// kesncd look: the first look at a dump that a user knows nothing of yet, and what to ask next.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <unordered_set>

#include "cli/commands/commands.h"
#include "cli/input/reading_threads.h"
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

constexpr std::size_t kShownInLook = 4;  // signals and findings

/// What a dump's own words say, in one line however they were written.
std::string Origin(const Declarations& declarations) {
  std::string text = "value change dump";
  if (!declarations.version.empty()) text += " of " + declarations.version;
  if (!declarations.date.empty()) text += ", " + declarations.date;
  return text;
}

std::string Span(const HostRun& run) {
  if (!run.nsPerTick) {
    return DisplayText(run.spanTicks) + " ticks of unknown length: there is no time scale";
  }
  return DisplayText(run.spanTicks * *run.nsPerTick) + " ns, from tick " +
         DisplayText(run.firstTick) + " to " + DisplayText(run.lastTick) + " of " +
         DisplayText(*run.nsPerTick) + " ns";
}

/// The most active of the variables that `isWanted`, each signal once, by its outermost name, with
/// its frequency.
template <class IsWanted>
std::string MostActive(const Figures& figures, IsWanted isWanted) {
  std::vector<const DumpVariable*> active;
  std::unordered_set<std::uint32_t> seen;
  for (const DumpVariable& variable : figures.run.declarations.variables) {
    if (figures.run.ChangesOf(variable) < 2 || !isWanted(variable)) continue;
    if (seen.insert(variable.codeId).second) active.push_back(&variable);
  }
  const std::size_t shown = std::min(kShownInLook, active.size());
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

std::string Findings(const std::vector<Finding>& findings) {
  std::string text = findings.empty() ? "nothing to remark" : "";
  for (std::size_t i = 0; i < std::min(kShownInLook, findings.size()); ++i) {
    text += (i == 0 ? "" : "\n            ") + std::string(TextOf(findings[i].kind).finding);
  }
  if (findings.size() <= kShownInLook) return text;
  return text + "\n            and " + std::to_string(findings.size() - kShownInLook) + " more";
}

/// A word that a shell takes as it is.
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

std::string NextCommands(const InputOptions& input, const std::string& top) {
  const std::string dump = ShellWord(input.dump.starts_with("-") ? "./" + input.dump : input.dump);
  return "Next:\n  kesncd check " + dump + "\n  kesncd tree " + dump + "\n  kesncd flat " + dump +
         " --top " + ShellWord(top) + " -o activity.csv\n";
}

void RefuseStream(const InputOptions& input) {
  std::error_code ignored;
  if (input.dump != "-" && !std::filesystem::is_fifo(input.dump, ignored)) return;
  throw Failure(
      FailureKind::Unusable,
      NameOf(input) + ": can be read only once, and a look reads twice; try kesncd check");
}

ExitStatus RunLook(const InputOptions& input) {
  RefuseStream(input);
  const Figures figures = ReadFigures({input, {}});
  UnpackedSource dump = OpenDump(input);
  (void)UseThreads(input, dump);
  const DumpCheck check = CheckDump(*dump.bytes, figures.dump, dump.packing);
  dump.bytes.reset();
  const Declarations& declarations = figures.run.declarations;
  const std::vector<std::string> modules = ModulesWithVariables(declarations);
  const std::string top = declarations.PathOf(OutermostWithVariables(declarations));
  OutputFile out("");
  out.Write(figures.dump + ": " + Origin(declarations) + "\n  span      " + Span(figures.run) +
            "\n  signals   " + std::to_string(declarations.variables.size()) + " with " +
            std::to_string(check.body.changes) + " value changes\n  modules   " +
            ShortList(modules) + "\n  clocks    " +
            MostActive(figures,
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
  line.commandOfFiles = command.name();
  const auto options = std::make_shared<InputOptions>();
  AddDumpOptions(command, *options);
  command.run = [options] { return RunLook(*options); };
}

}  // namespace orsa::kesncd::cli
