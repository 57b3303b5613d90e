// kesncd clocks: the clock frequencies of a timing report.
//
// A timing report lists each clock net with the frequency that its constraint asks for and the one
// that place and route achieved. Power at the wrong one of the two is wrong throughout, and so is
// power from a simulation whose test bench runs the clock at a third: --dump shows them beside each
// other.
#include <map>
#include <memory>

#include "cli/commands/commands.h"
#include "cli/exact_figures/clock_comparison.h"
#include "cli/input/list_file.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

namespace {

struct ClocksOptions {
  InputOptions input;  // the dump to compare with, if any
  // NET or PORT table with constraint and achieved frequency.
  std::string report;
  // See AddModeOption.
  int mode = 0;
  // ReadTWR instead of ReadTWR2, for comparing with results of older versions.
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

/// Fills `analyser.clockFreqs`, MHz by net or port. A report without such rows leaves it empty,
/// which the caller reports; a report that cannot be read throws Failure with Unusable.
void ReadClocks(orsa::kesncd::KesNCD& analyser, const ClocksOptions& options) {
  const TextByPath report(ReadText(options.report));
  analyser.twrFile = report.path();
  if (options.earlierReader) {
    analyser.ReadTWR(options.mode);
  } else {
    analyser.ReadTWR2(options.mode);
  }
}

/// Reads the dump and gives the frequency of each clock that it holds. Clocks without a name in the
/// dump, or without a known frequency, are left out; RunClocks shows them as unknown.
std::map<std::string, double> ClocksOfDump(const ClocksOptions& options,
                                           const std::map<std::string, double>& clocks) {
  // No window: a clock's frequency is that of the whole simulation.
  const Figures figures = ReadFigures({options.input, {}});
  std::map<std::string, double> found = ClocksInDump(figures, Declarations::kDump, clocks);
  SayWrongClocks(figures.dump, clocks, found);
  return found;
}

/// One row a clock, by name: "clk  100" or with a dump "clk  100  50". Returns NothingMatched for a
/// report without clocks, which most often is no timing report at all.
ExitStatus RunClocks(const ClocksOptions& options) {
  CheckOutputs({options.report, options.input.dump}, {options.output.path});
  orsa::kesncd::KesNCD analyser;
  ReadClocks(analyser, options);
  const bool compares = !options.input.dump.empty();
  // "report" and "mode" are facts of the JSON result only.
  ResultHead head{{{"report", options.report}, {"mode", std::int64_t{options.mode}}},
                  "clocks",
                  {"clock", "freq_mhz"}};
  std::map<std::string, double> found;
  if (compares) {
    // The column is there even if the dump holds none of the clocks, so that a script finds it.
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
  // An empty result was written all the same: readers of CSV get their heading.
  if (result.rows() > 0) return ExitStatus::Done;
  Say(options.report, "no clock frequencies; is it a timing report with a preference table?");
  return ExitStatus::NothingMatched;
}

}  // namespace

void AddModeOption(Command& command, int& mode) {
  command
      // The library's own numbering, which hosts pass to SetTWRFile too.
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
  // The earlier reader takes a row's values from the line of its ";" alone; the usual one joins all
  // lines of a row column by column, as a long net name is broken over lines anywhere.
  command.AddFlag("--earlier-reader", options->earlierReader,
                  "close a row at its \";\", as older versions did");
  AddOutputOptions(command, options->output);
  command.run = [options] { return RunClocks(*options); };
}

}  // namespace orsa::kesncd::cli
