// The program's commands. Each adds itself to the command line, which runs what was asked for; what
// several of them take is added by the functions below.
#ifndef KESNCD_CLI_COMMANDS_COMMANDS_H_
#define KESNCD_CLI_COMMANDS_COMMANDS_H_

#include "cli/host_figures/figures.h"
#include "cli/input/dump_input.h"
#include "cli/options/option_list.h"
#include "cli/output/output.h"
#include "cli/process/exit_status.h"
#include "cli/process/messages.h"

namespace orsa::kesncd::cli {

void AddActivityCommand(CommandLine& line);
void AddProfileCommand(CommandLine& line);
void AddMergeCommand(CommandLine& line);
void AddDiffCommand(CommandLine& line);
void AddReportCommand(CommandLine& line);
void AddLookCommand(CommandLine& line);
void AddFlatCommand(CommandLine& line);
void AddTopCommand(CommandLine& line);
void AddTreeCommand(CommandLine& line);
void AddFindCommand(CommandLine& line);
void AddPrepareCommand(CommandLine& line);
void AddCheckCommand(CommandLine& line);
void AddClocksCommand(CommandLine& line);
void AddPowerCommand(CommandLine& line);
void AddExtractCommand(CommandLine& line);

/// Adds --mode of the timing report.
void AddModeOption(Command& command, int& mode);
/// Adds --quiet.
void AddQuietOption(Command& command, InputOptions& options);
/// Adds the dump and --quiet.
void AddDumpOptions(Command& command, InputOptions& options);
/// Adds --as-is and --quiet, of commands whose figures are those of hosts.
void AddReadingFlags(Command& command, InputOptions& options);
/// Adds --jobs.
void AddJobsOption(Command& command, InputOptions& options);
/// Adds --begin and --end.
void AddWindowOptions(Command& command, TimeWindow& window);
/// Adds the dump with all of these.
void AddFigureOptions(Command& command, FigureOptions& options);
/// Adds --digits, --wide and -o.
void AddLookOptions(Command& command, OutputOptions& options);
/// Adds --format and these.
void AddOutputOptions(Command& command, OutputOptions& options);

/// Throws Failure for a window that ends before it begins.
void CheckWindow(const TimeWindow& window);
/// The same, and for a window that a host's reading of the dump knows nothing of.
void CheckFigureOptions(const FigureOptions& options);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_COMMANDS_COMMANDS_H_
