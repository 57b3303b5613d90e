// kesncd report: one HTML file that shows where and when a dump switches.
//
// The page comes from three sources: figures and windows from one reading of the dump (or from a
// database), findings from a check of it, and clocks and pins from files that belong to the design.
// It is a fixed text around one JSON value, so the order of the work is: gather all, which may
// fail, then write the file in one go.
#include <filesystem>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "activity/profile/profile_run.h"
#include "cli/commands/commands.h"
#include "cli/exact_figures/kept_profile.h"
#include "cli/exact_figures/profile_reading.h"
#include "cli/exact_figures/report_clocks.h"
#include "cli/input/database_input.h"
#include "cli/input/dump_check.h"
#include "cli/input/list_file.h"
#include "cli/input/netlist_input.h"
#include "cli/output/path_ending.h"
#include "cli/process/messages.h"
#include "cli/selection/scope_choice.h"
#include "cli/selection/signal_choice.h"
#include "export/netlist_pins.h"
#include "export/report_figures.h"
#include "free_format/findings/dump_findings.h"
#include "free_format/remarks.h"
#include "names/flat_map.h"
#include "report/report_page.h"
#include "text/failure.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd::cli {

namespace {

constexpr char kReportHelp[] =
    "A report to look at: one HTML file with modules, activity over time and signals\n"
    "\n"
    "Examples:\n"
    "  kesncd report sim.vcd -o report.html\n"
    "  kesncd report sim.vcd --sdc soc.sdc --netlist soc.json -o report.html\n"
    "  kesncd report sim.vcd --nets nets.txt --top tb/soc -o report.html\n"
    "  kesncd report sim.kact -o report.html\n"
    "\n"
    "The file needs no other and no network. A dump that is a file is read twice, once to check "
    "it\n"
    "as kesncd check does. Of a large design it shows what toggles most, sums the rest and says "
    "so.\n";

// A page draws each of them; more than a screen has pixels show nothing and only make the file
// large.
constexpr std::uint64_t kMostWindows = 2000;

// What the options say; paths are empty where they are not given.
struct ReportChoices {
  InputOptions input;
  TimeWindow window;
  WindowsAsked windows;
  std::string sdc;
  std::string timing;
  std::string netlist;
  std::string netlistTop;
  std::string nets;
  std::string top;  // of the nets; empty: the outermost scope with variables
  std::string output;
};

/// In the page's three words. What gives wrong figures only under some readers is a warning; what
/// leaves figures right is a note.
ReportFacts::Finding FindingOf(const Finding& finding) {
  const FindingText& text = TextOf(finding.kind);
  std::string severity = "note";
  if (text.severity == Severity::WrongFigures) {
    severity = text.concerns == Concerns::AllRuns ? "error" : "warning";
  }
  std::string what(text.finding);
  // Figures of the page are right where only hosts read the dump otherwise.
  if (text.concerns != Concerns::AllRuns)
    what.append(" (").append(TextOf(text.concerns)).append(")");
  return {severity, RemarkOn(what, finding.tally)};
}

/// What a check finds, and the end of the span, where the dump can be read more than once. Without
/// it `findings` stays empty, which the page tells from a dump without findings.
void CheckDumpFor(const ReportChoices& options, ReportFacts& facts,
                  std::optional<std::uint64_t>& last) {
  if (!CanReadTwice(options.input)) return;
  UnpackedSource dump = OpenDump(options.input);
  const DumpCheck check = CheckDumpOf(options.input, dump);
  facts.findings.emplace();
  // What only the grammar reader minds has no bearing on a page of exact figures.
  for (const Finding& finding : check.findings) {
    if (TextOf(finding.kind).concerns != Concerns::GrammarReader) {
      facts.findings->push_back(FindingOf(finding));
    }
  }
  // The check has seen all stamps, so the windows come out right at once.
  last = check.body.lastTick;
}

/// Without folders: a report is passed on, and where its dump was is nobody's business.
std::string FileName(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}

/// How many pins of the netlist's cells the dump reaches; nothing where no netlist is given. Throws
/// as NetlistPins does.
void AddReached(const ReportChoices& options, const ActivityResult& result, ReportFacts& facts) {
  if (options.netlist.empty()) return;
  const Netlist netlist = ReadNetlistOf(options.netlist);
  PinOptions pinOptions;
  pinOptions.top = options.netlistTop;
  // A pin is reached where the dump holds its net under any of the net's names.
  const NetlistPins pins(netlist, result, pinOptions);
  facts.reached.push_back({"pins", pins.reached(), pins.pins(), FileName(options.netlist)});
}

/// How many of the design's nets the dump has figures of, by the names that `kesncd extract` takes:
/// a bus bit by bit, as data_0 and data_1. `nets` are what the list holds, nothing without a list.
void AddNets(const ReportChoices& options, const std::vector<std::string>& nets,
             const Declarations& declarations, ReportFacts& facts) {
  if (options.nets.empty()) return;
  const std::string dump = NameOf(options.input);
  const std::uint32_t scope = ChosenScope(dump, declarations, options.top);
  if (options.top.empty()) {
    Remark(dump, "nets are looked for in " + declarations.ShortPathOf(scope) +
                     "; --top chooses another module");
  }
  const FlatMap map(declarations, scope, nets);
  // As extract does, for a corrupt range that stands for more names than can be walked.
  if (map.RangeNames() > kMostFlatNames) {
    throw Failure(FailureKind::Unusable, dump + ": its ranges stand for too many nets");
  }
  // A net that is listed twice is one.
  const std::unordered_set<std::string> asked(nets.begin(), nets.end());
  std::uint64_t reached = 0;
  map.Walk([&](const std::string& name, std::uint32_t id) {
    const DumpVariable& variable = declarations.variables[id];
    const bool hasBits = variable.width > 0 && TypeHasBits(declarations.types[variable.typeId]);
    if (hasBits && asked.contains(name)) ++reached;
  });
  facts.reached.push_back({"nets", reached, asked.size(), FileName(options.nets)});
}

/// `clocks` has to outlive the counting: which signals are clocks is known when the declarations
/// are read.
ProfileOptions ReportCounting(const ReportChoices& options, ReportClocks& clocks) {
  ProfileOptions counting = CountingOf(options.input, options.window, options.windows);
  counting.counting.watch = [&clocks,
                             dump = NameOf(options.input)](const Declarations& declarations) {
    return clocks.FindIn(declarations, dump);
  };
  // All modules: the page sums what it does not show.
  counting.depth = UINT32_MAX;
  return counting;
}

/// What a page is made of. Whether it comes from a dump or from a database, from here on the page
/// is the same.
struct Reported {
  ProfileRun<Profile> run;
  ReportFacts facts;
};

/// A dump that is a file is read twice, once to check it; a pipe once, without findings.
Reported ReadDump(const ReportChoices& options, ReportClocks& clocks) {
  Reported reported;
  ReportFacts& facts = reported.facts;
  facts.dump = options.input.dump == "-" ? NameOf(options.input) : FileName(options.input.dump);
  std::optional<std::uint64_t> last;
  CheckDumpFor(options, facts, last);
  const auto count = [](auto& dump, const ProfileOptions& how) {
    return CountActivityAndProfile(dump, how);
  };
  const ProfileOptions counting = ReportCounting(options, clocks);
  ProfileRun<Profile>& run = reported.run;
  run = ReadByWindows(options.input, counting, last, count);
  SayOfProfile(run, counting);
  // What is said on standard error belongs on the page too: whoever gets it has not seen the other.
  facts.notes = RemarksOn(run.base);
  if (run.figures.isFolded) facts.notes.push_back(FoldedText(run.figures, counting.parts));
  return reported;
}

/// The signals of these codes, each by its first name.
std::string NamesOf(std::unordered_set<std::uint32_t> codes, const Declarations& declarations) {
  std::vector<std::uint32_t> variables;
  for (std::uint32_t id = 0; id < declarations.variables.size() && !codes.empty(); ++id) {
    if (codes.erase(declarations.variables[id].codeId) != 0) variables.push_back(id);
  }
  return PathsOf(variables, declarations);
}

/// When the clocks toggled, as far as a database holds it: of signals that are called like clocks.
/// A clock that is missing ends the run: a page without it would look as if it stood still.
std::vector<ToggleSpan> SpansOf(const std::vector<std::uint32_t>& codes, const KeptProfile& kept,
                                const Declarations& declarations, const std::string& name) {
  std::unordered_map<std::uint32_t, ToggleSpan> held;  // by code
  for (const KeptProfile::Clock& clock : kept.clocks) held.emplace(clock.codeId, clock.span);
  std::vector<ToggleSpan> spans;
  std::unordered_set<std::uint32_t> missing;
  for (const std::uint32_t codeId : codes) {
    const auto clock = held.find(codeId);
    if (clock == held.end()) {
      missing.insert(codeId);
    } else {
      spans.push_back(clock->second);
    }
  }
  if (missing.empty()) return spans;
  throw Failure(FailureKind::Unusable,
                name +
                    ": holds when signals toggle that are called like clocks, and no others: a "
                    "report with clocks on " +
                    NamesOf(missing, declarations) + " needs the dump");
}

/// The same from a database, which holds all of it but the findings.
Reported ReadDatabase(const ReportChoices& options, ActivityDatabase& database,
                      ReportClocks& clocks) {
  const std::string name = NameOf(options.input);
  StoredRun stored = ReadWithProfile(database, name, options.windows);
  KeptProfile& kept = *stored.profile;
  // A database may hold any number: its windows were chosen for it, not for a page.
  if (kept.profile.windows() > kMostWindows) {
    throw Failure(FailureKind::Unusable, name + ": holds " +
                                             std::to_string(kept.profile.windows()) +
                                             " windows, more than the " +
                                             std::to_string(kMostWindows) + " that a page shows");
  }
  Reported reported;
  ProfileRun<Profile>& run = reported.run;
  run.base = std::move(stored.exact);
  run.base.watched =
      SpansOf(clocks.FindIn(run.base.declarations, name), kept, run.base.declarations, name);
  run.figures = std::move(kept.profile);
  // A page adds up modules itself, from sums by owner, as CountActivityAndProfile gives them.
  run.figures.toggles = std::move(run.figures.own);
  ReportFacts& facts = reported.facts;
  facts.dump = FileName(stored.facts.dump);
  facts.notes = RemarksOn(run.base);
  if (run.figures.isFolded) facts.notes.push_back(FoldedText(run.figures, kept.parts));
  for (const std::string& note : facts.notes) Remark(name, note);
  facts.notes.emplace_back(
      "made from a database, which does not hold what kesncd check finds in the dump");
  return reported;
}

/// The files of clocks are read first: a mistake in them shows before a long dump is read. A
/// netlist is looked up in the dump's names, so it comes after.
ExitStatus RunReport(const ReportChoices& options) {
  CheckOutputs({options.input.dump, options.netlist, options.nets, options.sdc, options.timing},
               {options.output});
  ReportClocks clocks(options.sdc, options.timing);
  const std::vector<std::string> nets =
      options.nets.empty() ? std::vector<std::string>() : ReadNames(options.nets);
  // A database with another window is refused, not shown.
  const auto database = OpenDatabase(options.input, options.window);
  Reported reported =
      database ? ReadDatabase(options, *database, clocks) : ReadDump(options, clocks);
  const ProfileRun<Profile>& run = reported.run;
  ReportFacts& facts = reported.facts;
  facts.program = "kesncd " KESNCD_VERSION;
  facts.clocks = clocks.Measured(run.base);
  // After the reading, as only that tells which signals there are.
  AddReached(options, run.base, facts);
  AddNets(options, nets, run.base.declarations, facts);
  const ReportPage page = GetReportPage();
  // The file appears under its name when Commit is called; a failure before leaves what was there.
  OutputFile out(options.output);
  // The page's own text, the same for every dump; it holds no data, and the data no markup.
  out.Write(page.before);
  out.Write(ReportJson(run.base, run.figures, facts));
  out.Write(page.after);
  out.Commit();
  return ExitStatus::Done;
}

/// Before anything is read. An option without effect would hide a mistake.
void CheckReportOptions(const ReportChoices& options) {
  CheckWindow(options.window);
  RefuseOtherEnding(options.output, {"html"});
  if (!options.netlistTop.empty() && options.netlist.empty()) {
    throw Failure(FailureKind::Unusable, "--netlist-top is for --netlist");
  }
  if (!options.top.empty() && options.nets.empty()) {
    throw Failure(FailureKind::Unusable, "--top is for --nets");
  }
}

}  // namespace

void AddReportCommand(CommandLine& line) {
  Command& command = line.Add("report", kReportHelp);
  const auto options = std::make_shared<ReportChoices>();
  AddDumpOptions(command, options->input);
  AddJobsOption(command, options->input);
  AddWindowOptions(command, options->window);
  command
      .AddCount("--windows", "N", {1, kMostWindows}, options->windows.parts,
                "so many parts of the span over time")
      .Initially(std::to_string(kUsualParts) + ", or what a database holds");
  command.AddFile("--sdc", "FILE", options->sdc,
                  "constraints: their clocks beside what ran in the dump");
  command.AddFile("--timing", "FILE", options->timing,
                  "timing report: its clocks beside what ran in the dump");
  command.AddFile("--netlist", "FILE", options->netlist,
                  "how many pins of this netlist's cells are reached: JSON of Yosys, or Verilog");
  command.AddText("--netlist-top", "NAME", options->netlistTop,
                  "the design's module, where the netlist does not say");
  command.AddFile("--nets", "FILE", options->nets,
                  "how many of a design's nets are reached: a list as of kesncd extract");
  command.AddText("--top", "NAME", options->top,
                  "the module whose signals the nets are, a name or a path");
  command.AddFile("-o,--output", "FILE", options->output,
                  "write the report to FILE, packed if it ends in .gz; - for standard output");
  command.check = [options] { CheckReportOptions(*options); };
  command.run = [options] { return RunReport(*options); };
}

}  // namespace orsa::kesncd::cli
