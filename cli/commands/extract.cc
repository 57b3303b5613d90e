// kesncd extract: the flat run's frequencies handed over to a design's nets.
//
// A design tool asks for the frequency of each of its nets. Here the nets come from a file and the
// answers go to a table:
//
//   net     freq_mhz  source
//   clk          100  dump
//   clk_in        25  timing report
//   spare          -
//
// The hand-over itself is the library's, KesNCD::ExtractNCD with the host of host/standalone, so
// that a user sees exactly what a tool would be given. Only the reading of the dump differs:
// directly, or by the library itself under --as-is.
#include <memory>
#include <unordered_set>
#include <variant>

#include "cli/commands/commands.h"
#include "cli/exact_figures/clock_comparison.h"
#include "cli/host_figures/host_runs.h"
#include "cli/input/list_file.h"
#include "host/standalone/standalone_host.h"
#include "kesncd/kesncd.h"
#include "names/flat_map.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

using orsa::kesncd::KesNCD;
namespace standalone = orsa::kesncd::standalone;

struct ExtractOptions {
  // The dump, window and reading.
  FigureOptions figures;
  // Module whose signals are the nets; empty: the outermost with variables.
  std::string top;
  // File of net names, one a line.
  std::string nets;
  // Timing report; empty for none.
  std::string timing;
  // File for the names that nothing reached; empty for none.
  std::string unmatched;
  int mode = 0;
  OutputOptions output;
};

constexpr char kExtractHelp[] =
    "Frequencies for the nets of a design, from a dump and a timing report\n"
    "\n"
    "Examples:\n"
    "  kesncd extract sim.vcd --top soc --nets nets.txt\n"
    "  kesncd extract sim.vcd --top soc --nets nets.txt --timing soc.twr --mode 2\n"
    "\n"
    "FILE of --nets lists the design's nets, one a line, bits as data_0, data_1. The timing\n"
    "report gives the frequencies of nets that the dump does not hold; clocks that run at another\n"
    "frequency in the dump are named.\n";

/// How many nets were reached, and from where. A net may be in both the dump and the report; it
/// then counts for the dump, whose figure the extraction uses.
struct Reached {
  std::int64_t ofDump = 0;
  std::int64_t ofReport = 0;
  std::vector<std::string> unreached;  // the names that nothing reached
};

/// Rows in the order of the nets' file, unknown nets with empty cells. The analyser's own
/// frequencies tell where a net's figure came from: the extraction merges the two sources.
Reached WriteNets(const KesNCD& analyser, ResultOutput& result) {
  Reached reached;
  // Global by design: the standalone host keeps the last extraction of the process, as a design
  // tool's database would.
  for (const standalone::NetFrequency& net : standalone::LastExtraction().nets) {
    if (!net.isKnown) {
      result.Add({net.name, Cell(), Cell()});
      reached.unreached.push_back(net.name);
      continue;
    }
    const bool inDump = analyser.signalFreqs.contains(net.name);
    ++(inDump ? reached.ofDump : reached.ofReport);
    result.Add({net.name, net.frequency, inDump ? "dump" : "timing report"});
  }
  return reached;
}

/// Ends the result with the counts, which JSON has as facts and a table as its last line.
void EndNets(const Reached& reached, ResultOutput& result) {
  const std::int64_t all = reached.ofDump + reached.ofReport;
  result.End({{{"nets_of_dump", reached.ofDump}, {"nets_of_timing_report", reached.ofReport}},
              {},
              std::to_string(all) + " of " + std::to_string(result.rows()) + " nets reached, " +
                  std::to_string(reached.ofDump) + " from the dump and " +
                  std::to_string(reached.ofReport) + " from the timing report"});
}

/// Lists the nets that nothing reached: of these nothing is known, while 0 MHz is a net at rest.
void TellUnmatched(const std::vector<std::string>& names, std::size_t nets,
                   const ExtractOptions& options) {
  // Made even if it stays empty: a script that reads the list must not find an older one.
  if (!options.unmatched.empty()) {
    OutputFile file(options.unmatched);
    for (const std::string& name : names) file.Write(name + "\n");
    file.Commit();
  }
  if (names.empty()) return;
  Remark(options.nets, std::to_string(names.size()) + " of " + std::to_string(nets) +
                           " nets have no frequency: nothing reached them" +
                           (options.unmatched.empty() ? "; --unmatched FILE lists them" : ""));
}

/// The direct way: counts the dump, lists the module's signals under design-style names and puts
/// those that are nets into `analyser.signalFreqs`, where ExtractNCD looks for them. `facts` become
/// the result's.
void ExtractDirectly(const ExtractOptions& options, const std::vector<std::string>& nets,
                     KesNCD& analyser, Facts& facts) {
  const Figures figures = ReadFigures(options.figures);
  const Declarations& declarations = figures.run.declarations;
  const std::uint32_t scope = ChosenScope(figures, options.top);
  SayProposedTop(figures, options.top, scope);
  const FlatMap map(declarations, scope, nets);
  // A hostile range such as [2147483647:0] stands for more names than memory holds. The message is
  // the one that a host gets for the same dump.
  if (map.RangeNames() > kMostFlatNames) {
    throw Failure(FailureKind::Unusable, figures.dump + ": ERROR: Too many bus bits.");
  }
  // A module may have millions of bits and a design few nets: only those asked for are kept.
  const std::unordered_set<std::string> asked(nets.begin(), nets.end());
  map.Walk([&](const std::string& name, std::uint32_t variable) {
    if (!asked.contains(name)) return;
    // Unknown stays absent, so that the net counts as unreached and not as one at rest.
    const Cell frequency = figures.FrequencyOf(declarations.variables[variable]);
    if (const double* const known = std::get_if<double>(&frequency)) {
      analyser.signalFreqs.emplace(name, *known);
    }
  });
  // After the reading, before the result: a wrong clock period explains every odd row below it.
  SayWrongClocks(figures.dump, analyser.clockFreqs,
                 ClocksInDump(figures, scope, analyser.clockFreqs));
  facts = RunFacts(figures, declarations.PathOf(scope));
}

/// The same by the library's own flat run on the untouched dump, as a host does it.
void ReadAsHost(const ExtractOptions& options, KesNCD& analyser, Facts& facts) {
  DumpInput input(options.figures.input);
  // The library wants a name, not a path; see DumpInput::ProposedTop.
  const std::string top = options.top.empty() ? input.ProposedTop() : options.top;
  ReadFlat(analyser, input, AllNames(input), top);
  SayWhyZero(input);
  // With no time scale or no span all frequencies are 0, and every clock would be "wrong";
  // SayWhyZero has told why.
  if (orsa::kesncd::timeScale != 0 && orsa::kesncd::endCycle != orsa::kesncd::startCycle) {
    SayWrongClocks(input.name(), analyser.clockFreqs, analyser.signalFreqs);
  }
  facts = HostFacts(input, top);
}

/// Puts the report's clocks into `analyser.clockFreqs`, which ExtractNCD uses for names that the
/// dump did not give.
void ReadReport(const ExtractOptions& options, KesNCD& analyser) {
  if (options.timing.empty()) return;
  const TextByPath report(ReadText(options.timing));
  analyser.SetTWRFileOn(true);
  analyser.SetTWRFile(report.path(), options.mode);
}

/// The order matters: the report and the nets are small and checked before the dump is read, and
/// the analyser must hold all frequencies before it extracts.
ExitStatus RunExtract(const ExtractOptions& options) {
  CheckOutputs({options.figures.input.dump, options.nets, options.timing},
               {options.output.path, options.unmatched});
  KesNCD analyser;
  // First, since a direct reading compares the dump's clocks with the report's.
  ReadReport(options, analyser);
  const std::vector<std::string> nets = ReadNames(options.nets);
  // The list is handed over again without comments and blanks: the standalone host reads a plain
  // file of names and knows neither "#" nor packed files.
  std::string list;
  for (const std::string& net : nets) list += net + "\n";
  Facts facts;
  if (options.figures.input.asIs) {
    ReadAsHost(options, analyser, facts);
  } else {
    ExtractDirectly(options, nets, analyser, facts);
  }
  const TextByPath netsByPath(list);
  // The library opens its design by a path; this one leads to memory.
  analyser.ncdFile = netsByPath.path();
  if (analyser.ExtractNCD() == 0) throw Failure(FailureKind::Unusable, standalone::DesignMessage());
  ResultOutput result(options.output, {facts, "nets", {"net", "freq_mhz", "source"}});
  const Reached reached = WriteNets(analyser, result);
  TellUnmatched(reached.unreached, result.rows(), options);
  EndNets(reached, result);
  // A list that nothing reached at all is most likely of another design.
  return reached.unreached.size() < result.rows() ? ExitStatus::Done : ExitStatus::NothingMatched;
}

}  // namespace

void AddExtractCommand(CommandLine& line) {
  Command& command = line.Add("extract", kExtractHelp);
  const auto options = std::make_shared<ExtractOptions>();
  AddFigureOptions(command, options->figures);
  command.AddText("--top", "NAME", options->top,
                  "module whose signals are taken, a name or a path");
  command.AddFile("--nets", "FILE", options->nets, "nets of the design").Required();
  command.AddFile("--timing", "REPORT", options->timing, "timing report");
  command.AddFile("--unmatched", "FILE", options->unmatched,
                  "list the nets that nothing reached in FILE");
  AddModeOption(command, options->mode);
  AddOutputOptions(command, options->output);
  command.check = [options] { CheckFigureOptions(options->figures); };
  command.run = [options] { return RunExtract(*options); };
}

}  // namespace orsa::kesncd::cli
