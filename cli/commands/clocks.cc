// kesncd clocks: the clock frequencies of a timing report.
#include <map>
#include <memory>

#include "cli/commands/commands.h"
#include "cli/exact_figures/clock_comparison.h"
#include "cli/input/timing_report.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

namespace {

struct ClocksOptions {
  InputOptions input;  // the dump to compare with, if any
  std::string report;
  int mode = 0;
  bool earlierReader = false;
  OutputOptions output;
};

constexpr char kClocksHelp[] =
    "Clock frequencies of a timing report\n"
    "\n"
    "Examples:\n"
    "  kesncd clocks soc.twr             the lower of constraint and achieved frequency\n"
    "  kesncd clocks soc.twr --mode 2    the achieved frequency\n"
    "  kesncd clocks soc.twr --dump sim.vcd    beside what ran in the simulation\n"
    "\n"
    "With a dump, clocks that run at a frequency more than 10 % off the report's are named.\n";

void ReadClocks(orsa::kesncd::KesNCD& analyser, const ClocksOptions& options) {
  PassTimingReport(options.report, [&](const std::string& path) {
    analyser.twrFile = path;
    if (options.earlierReader) {
      analyser.ReadTWR(options.mode);
    } else {
      analyser.ReadTWR2(options.mode);
    }
  });
}

/// Reads the dump and gives the frequency of each clock that it holds.
std::map<std::string, double> ClocksOfDump(const ClocksOptions& options,
                                           const std::map<std::string, double>& clocks) {
  const Figures figures = ReadFigures({options.input, {}});
  std::map<std::string, double> found = ClocksInDump(figures, Declarations::kDump, clocks);
  SayWrongClocks(figures.dump, clocks, found);
  return found;
}

ExitStatus RunClocks(const ClocksOptions& options) {
  CheckOutputs({options.report, options.input.dump}, {options.output.path});
  orsa::kesncd::KesNCD analyser;
  ReadClocks(analyser, options);
  const bool compares = !options.input.dump.empty();
  ResultHead head{{{"report", options.report}, {"mode", std::int64_t{options.mode}}},
                  "clocks",
                  {"clock", "freq_mhz"}};
  std::map<std::string, double> found;
  if (compares) {
    head.columns.emplace_back("dump_freq_mhz");
    found = ClocksOfDump(options, analyser.clockFreqs);
  }
  ResultOutput result(options.output, head);
  for (const auto& [name, frequency] : analyser.clockFreqs) {
    Row row{name, frequency};
    const auto place = found.find(name);
    if (compares) row.push_back(place == found.end() ? Cell() : Cell(place->second));
    result.Add(row);
  }
  result.End();
  if (result.rows() > 0) return ExitStatus::Done;
  Say(options.report, "no clock frequencies; is it a timing report with a preference table?");
  return ExitStatus::NothingMatched;
}

}  // namespace

void AddModeOption(Command& command, int& mode) {
  command
      .AddCount("--mode", "N", {0, 2}, mode,
                "0: the lower of constraint and achieved frequency, 1: the constraint, "
                "2: the achieved frequency")
      .Initially("0");
}

void AddClocksCommand(CommandLine& line) {
  Command& command = line.Add("clocks", kClocksHelp);
  const auto options = std::make_shared<ClocksOptions>();
  command.AddFileOperand("REPORT", options->report, "timing report").Required();
  command.AddFile("--dump", "DUMP", options->input.dump, "compare with the clocks of a dump");
  AddReadingFlags(command, options->input);
  AddModeOption(command, options->mode);
  command.AddFlag("--earlier-reader", options->earlierReader,
                  "close a row at its \";\", as older versions did");
  AddOutputOptions(command, options->output);
  command.run = [options] { return RunClocks(*options); };
}

}  // namespace orsa::kesncd::cli
