// kesncd report: one HTML file that shows where and when a dump switches.
#include <filesystem>
#include <memory>

#include "activity/profile/profile_run.h"
#include "cli/commands/commands.h"
#include "cli/exact_figures/profile_reading.h"
#include "cli/exact_figures/report_clocks.h"
#include "cli/input/dump_check.h"
#include "cli/input/netlist_input.h"
#include "cli/output/path_ending.h"
#include "export/netlist_pins.h"
#include "export/report_figures.h"
#include "free_format/findings/dump_findings.h"
#include "free_format/remarks.h"
#include "report/report_page.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

constexpr char kReportHelp[] =
    "A report to look at: one HTML file with modules, activity over time and signals\n"
    "\n"
    "Examples:\n"
    "  kesncd report sim.vcd -o report.html\n"
    "  kesncd report sim.vcd --sdc soc.sdc --netlist soc.json -o report.html\n"
    "\n"
    "The file needs no other and no network. A dump that is a file is read twice, once to check "
    "it\n"
    "as kesncd check does. Of a large design it shows what toggles most, sums the rest and says "
    "so.\n";

struct ReportChoices {
  InputOptions input;
  TimeWindow window;
  std::uint64_t parts = 200;
  std::string sdc;
  std::string timing;
  std::string netlist;
  std::string netlistTop;
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
  return {severity, RemarkOn(std::string(text.finding), finding.tally)};
}

/// What a check finds, and the end of the span, where the dump can be read more than once.
void CheckDumpFor(const ReportChoices& options, ReportFacts& facts,
                  std::optional<std::uint64_t>& last) {
  if (!CanReadTwice(options.input)) return;
  UnpackedSource dump = OpenDump(options.input);
  const DumpCheck check = CheckDumpOf(options.input, dump);
  facts.findings.emplace();
  for (const Finding& finding : check.findings) {
    if (TextOf(finding.kind).concerns != Concerns::GrammarReader) {
      facts.findings->push_back(FindingOf(finding));
    }
  }
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
  const NetlistPins pins(netlist, result, pinOptions);
  facts.reached.push_back({"pins", pins.reached(), pins.pins(), FileName(options.netlist)});
}

ProfileOptions ReportCounting(const ReportChoices& options, ReportClocks& clocks) {
  ProfileOptions counting;
  counting.counting.dump = NameOf(options.input);
  counting.counting.window = options.window;
  counting.counting.mostBits = MostBitsInMemory();
  counting.counting.watch = [&clocks,
                             dump = NameOf(options.input)](const Declarations& declarations) {
    return clocks.FindIn(declarations, dump);
  };
  counting.depth = UINT32_MAX;
  counting.parts = options.parts;
  return counting;
}

ExitStatus RunReport(const ReportChoices& options) {
  CheckOutputs({options.input.dump, options.netlist, options.sdc, options.timing},
               {options.output});
  ReportClocks clocks(options.sdc, options.timing);
  ReportFacts facts;
  facts.program = "kesncd " KESNCD_VERSION;
  facts.dump = options.input.dump == "-" ? NameOf(options.input) : FileName(options.input.dump);
  std::optional<std::uint64_t> last;
  CheckDumpFor(options, facts, last);
  const ProfileRun<Profile> run =
      ReadProfile(options.input, ReportCounting(options, clocks), last, CountActivityAndProfile);
  facts.notes = RemarksOn(run.base);
  if (run.figures.isFolded) facts.notes.push_back(FoldedText(run.figures, options.parts));
  facts.clocks = clocks.Measured(run.base);
  AddReached(options, run.base, facts);
  const ReportPage page = GetReportPage();
  OutputFile out(options.output);
  out.Write(page.before);
  out.Write(ReportJson(run.base, run.figures, facts));
  out.Write(page.after);
  out.Commit();
  return ExitStatus::Done;
}

void CheckReportOptions(const ReportChoices& options) {
  CheckWindow(options.window);
  RefuseOtherEnding(options.output, {"html"});
  if (!options.netlistTop.empty() && options.netlist.empty()) {
    throw Failure(FailureKind::Unusable, "--netlist-top is for --netlist");
  }
}

}  // namespace

void AddReportCommand(CommandLine& line) {
  Command& command = line.Add("report", kReportHelp);
  const auto options = std::make_shared<ReportChoices>();
  AddDumpOptions(command, options->input);
  AddWindowOptions(command, options->window);
  command
      .AddCount("--windows", "N", {1, 2000}, options->parts, "so many parts of the span over time")
      .Initially(std::to_string(options->parts));
  command.AddFile("--sdc", "FILE", options->sdc,
                  "constraints: their clocks beside what ran in the dump");
  command.AddFile("--timing", "FILE", options->timing,
                  "timing report: its clocks beside what ran in the dump");
  command.AddFile("--netlist", "FILE", options->netlist,
                  "how many pins of this netlist's cells are reached: JSON of Yosys, or Verilog");
  command.AddText("--netlist-top", "NAME", options->netlistTop,
                  "the design's module, where the netlist does not say");
  command.AddFile("-o,--output", "FILE", options->output,
                  "write the report to FILE, packed if it ends in .gz; - for standard output");
  command.check = [options] { CheckReportOptions(*options); };
  command.run = [options] { return RunReport(*options); };
}

}  // namespace orsa::kesncd::cli
