// kesncd extract: the flat run's frequencies handed over to a design's nets.
#include <algorithm>
#include <memory>

#include "cli/commands/clock_comparison.h"
#include "cli/commands/commands.h"
#include "cli/output/result_file.h"
#include "host/standalone/standalone_host.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

namespace {

using orsa::kesncd::KesNCD;
namespace standalone = orsa::kesncd::standalone;

struct ExtractOptions {
  InputOptions input;
  std::string top;
  std::string nets;
  std::string timing;
  std::string unmatched;
  int mode = 0;
  OutputOptions output;
};

constexpr std::size_t kFrequency = 1;  // the column

constexpr char kHelp[] =
    "Frequencies for the nets of a design, from a dump and a timing report\n"
    "\n"
    "Examples:\n"
    "  kesncd extract sim.vcd --top soc --nets nets.txt\n"
    "  kesncd extract sim.vcd --top soc --nets nets.txt --timing soc.twr --mode 2\n"
    "\n"
    "FILE of --nets lists the design's nets, one a line, bits as data_0, data_1. The timing\n"
    "report gives the frequencies of nets that the dump does not hold; clocks that run at another\n"
    "frequency in the dump are named.\n";

Report NetReport(const KesNCD& analyser, const std::string& dump, const std::string& top) {
  Report report{RunFacts(dump, top), "nets", {"net", "freq_mhz", "source"}, {}, ""};
  std::int64_t ofDump = 0;
  std::int64_t ofReport = 0;
  for (const standalone::NetFrequency& net : standalone::LastExtraction().nets) {
    if (!net.isKnown) {
      report.rows.push_back({net.name, Cell(), Cell()});
      continue;
    }
    const bool inDump = analyser.signalFreqs.contains(net.name);
    ++(inDump ? ofDump : ofReport);
    report.rows.push_back({net.name, net.frequency, inDump ? "dump" : "timing report"});
  }
  report.facts.emplace_back("nets_of_dump", ofDump);
  report.facts.emplace_back("nets_of_timing_report", ofReport);
  report.lastLine = std::to_string(ofDump + ofReport) + " of " +
                    std::to_string(report.rows.size()) + " nets reached, " +
                    std::to_string(ofDump) + " from the dump and " + std::to_string(ofReport) +
                    " from the timing report";
  return report;
}

/// Lists the nets that nothing reached: of these nothing is known, while 0 MHz is a net at rest.
void TellUnmatched(const Report& report, const ExtractOptions& options) {
  std::string names;
  std::size_t count = 0;
  for (const auto& row : report.rows) {
    if (row[kFrequency].index() != 0) continue;
    names += std::get<std::string>(row.front()) + "\n";
    ++count;
  }
  if (!options.unmatched.empty()) {
    ResultFile file(options.unmatched);
    file.Write(names);
    file.Commit();
  }
  if (count == 0) return;
  Say(options.nets, std::to_string(count) + " of " + std::to_string(report.rows.size()) +
                        " nets have no frequency: nothing reached them" +
                        (options.unmatched.empty() ? "; --unmatched FILE lists them" : ""));
}

ExitStatus Run(const ExtractOptions& options) {
  KesNCD analyser;
  if (!options.timing.empty()) {
    CheckReadable(options.timing);
    analyser.SetTWRFileOn(true);
    analyser.SetTWRFile(options.timing, options.mode);
  }
  DumpInput input(options.input);
  const std::string top = options.top.empty() ? input.ProposedTop() : options.top;
  ReadFlat(analyser, input, AllNames(input), top);
  SayWhyZero(input);
  if (analyser.twrFileOn) {
    SayWrongClocks(input.name(), analyser.clockFreqs, analyser.signalFreqs);
  }
  analyser.ncdFile = options.nets;
  if (analyser.ExtractNCD() == 0) throw Failure(FailureKind::Unusable, standalone::DesignMessage());
  const Report report = NetReport(analyser, input.name(), top);
  TellUnmatched(report, options);
  WriteReport(report, options.output);
  const bool isReached = std::any_of(report.rows.begin(), report.rows.end(),
                                     [](const auto& row) { return row[kFrequency].index() != 0; });
  return isReached ? ExitStatus::Done : ExitStatus::NothingMatched;
}

}  // namespace

void AddExtractCommand(CommandLine& line) {
  Command& command = line.Add("extract", kHelp);
  const auto options = std::make_shared<ExtractOptions>();
  AddInputOptions(command, options->input);
  command.AddText("--top", "NAME", options->top, "module whose signals are taken");
  command.AddFile("--nets", "FILE", options->nets, "nets of the design").Required();
  command.AddFile("--timing", "REPORT", options->timing, "timing report");
  command.AddFile("--unmatched", "FILE", options->unmatched,
                  "list the nets that nothing reached in FILE");
  AddModeOption(command, options->mode);
  AddOutputOptions(command, options->output);
  command.run = [options] { return Run(*options); };
}

}  // namespace orsa::kesncd::cli
