// kesncd extract: the flat run's frequencies handed over to a design's nets.
#include <memory>

#include "cli/commands.h"
#include "cli/dump_header.h"
#include "host/standalone/standalone_host.h"
#include "kesncd/kesncd.h"

namespace kesncd_cli {

namespace {

using orsa::kesncd::KesNCD;
namespace standalone = orsa::kesncd::standalone;

struct ExtractOptions {
  std::string dump;
  std::string top;
  std::string nets;
  std::string timing;
  int mode = 0;
  OutputOptions output;
};

constexpr char kHelp[] =
    "Frequencies for the nets of a design, from a dump and a timing report\n"
    "\n"
    "Examples:\n"
    "  kesncd extract sim.vcd --top soc --nets nets.txt\n"
    "  kesncd extract sim.vcd --top soc --nets nets.txt --timing soc.twr --mode 2\n"
    "\n"
    "FILE of --nets lists the design's nets, one a line, bits as data_0, data_1. The timing\n"
    "report gives the frequencies of nets that the dump does not hold.\n";

Report NetReport(const KesNCD& analyser, const ExtractOptions& options) {
  Report report{RunFacts(options.dump, options.top), "nets", {"net", "freq_mhz", "source"}, {}, ""};
  std::int64_t ofDump = 0;
  std::int64_t ofReport = 0;
  for (const standalone::NetFrequency& net : standalone::LastExtraction().nets) {
    if (!net.isKnown) {
      report.rows.push_back({net.name, Cell(), Cell()});
      continue;
    }
    const bool inDump = analyser.signalFreqs.count(net.name) > 0;
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

ExitStatus Run(const ExtractOptions& options) {
  CheckInput(options.dump);
  KesNCD analyser;
  analyser.SetTopModule(options.top);
  if (!options.timing.empty()) {
    CheckReadable(options.timing);
    analyser.SetTWRFileOn(true);
    analyser.SetTWRFile(options.timing, options.mode);
  }
  std::string message;
  if (!analyser.SetVCDFile(options.dump, ReadDumpHeader(options.dump).names, message)) {
    throw RunFailure(options.dump, message);
  }
  SayWhyZero(options.dump);
  analyser.ncdFile = options.nets;
  if (analyser.ExtractNCD() == 0) throw Failure(ExitStatus::Unusable, standalone::DesignMessage());
  const Report report = NetReport(analyser, options);
  WriteReport(report, options.output);
  for (const auto& row : report.rows) {
    if (row[1].index() != 0) return ExitStatus::Done;
  }
  return ExitStatus::NothingMatched;
}

}  // namespace

void AddExtractCommand(CLI::App& app, Action& chosen) {
  CLI::App* command = app.add_subcommand("extract", kHelp);
  const auto options = std::make_shared<ExtractOptions>();
  command->add_option("DUMP", options->dump, "value change dump")->required();
  command->add_option("--top", options->top, "module whose signals are taken")
      ->required()
      ->type_name("NAME");
  command->add_option("--nets", options->nets, "nets of the design")->required()->type_name("FILE");
  command->add_option("--timing", options->timing, "timing report")->type_name("REPORT");
  AddModeOption(*command, options->mode);
  AddOutputOptions(*command, options->output);
  command->callback([options, &chosen] { chosen = [options] { return Run(*options); }; });
}

}  // namespace kesncd_cli
