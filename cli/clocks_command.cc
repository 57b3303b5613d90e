// kesncd clocks: the clock frequencies of a timing report.
#include <fstream>
#include <memory>

#include "cli/commands.h"
#include "kesncd/kesncd.h"

namespace kesncd_cli {

namespace {

struct ClocksOptions {
  std::string report;
  int mode = 0;
  bool earlierReader = false;
  OutputOptions output;
};

constexpr char kHelp[] =
    "Clock frequencies of a timing report\n"
    "\n"
    "Examples:\n"
    "  kesncd clocks soc.twr             the lower of constraint and achieved frequency\n"
    "  kesncd clocks soc.twr --mode 2    the achieved frequency\n";

ExitStatus Run(const ClocksOptions& options) {
  CheckReadable(options.report);
  orsa::kesncd::KesNCD analyser;
  analyser.twrFile = options.report;
  if (options.earlierReader) {
    analyser.ReadTWR(options.mode);
  } else {
    analyser.ReadTWR2(options.mode);
  }
  Report report{{{"report", options.report}, {"mode", std::int64_t{options.mode}}},
                "clocks",
                {"clock", "freq_mhz"},
                {},
                ""};
  for (const auto& [name, frequency] : analyser.clockFreqs) {
    report.rows.push_back({name, frequency});
  }
  WriteReport(report, options.output);
  if (!report.rows.empty()) return ExitStatus::Done;
  Say(options.report, "no clock frequencies; is it a timing report with a preference table?");
  return ExitStatus::NothingMatched;
}

}  // namespace

void AddModeOption(CLI::App& command, int& mode) {
  command
      .add_option("--mode", mode,
                  "0: the lower of constraint and achieved frequency, 1: the constraint, "
                  "2: the achieved frequency")
      ->check(CLI::Range(0, 2))
      ->type_name("N");
}

void AddClocksCommand(CLI::App& app, Action& chosen) {
  CLI::App* command = app.add_subcommand("clocks", kHelp);
  const auto options = std::make_shared<ClocksOptions>();
  command->add_option("REPORT", options->report, "timing report")->required();
  AddModeOption(*command, options->mode);
  command->add_flag("--earlier-reader", options->earlierReader,
                    "close a row at its \";\", as older versions did");
  AddOutputOptions(*command, options->output);
  command->callback([options, &chosen] { chosen = [options] { return Run(*options); }; });
}

}  // namespace kesncd_cli
