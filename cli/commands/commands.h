// The program's commands. Each adds itself to the command line, which runs what was asked for; what
// several of them take is added by the functions below.
//
// A command's file follows one pattern:
//
//   constexpr char kNameHelp[] = "summary\n\nExamples:\n...";   // what --help and the man page say
//   ExitStatus RunName(const NameOptions& options);             // the work
//   void AddNameCommand(CommandLine& line) {                    // puts it into the table
//     Command& command = line.Add("name", kNameHelp);
//     const auto options = std::make_shared<NameOptions>();
//     ... command.AddX("--flag", options->field, "help") ...
//     command.check = [options] { ... };                        // what does not go together
//     command.run = [options] { return RunName(*options); };
//   }
//
// The options live as long as the closures that hold them, so what an option writes into stays
// valid from parsing to the end of the work. `check` runs before any file is opened: a user who
// mistyped an option must not wait for a long reading to hear of it.
#ifndef KESNCD_CLI_COMMANDS_COMMANDS_H_
#define KESNCD_CLI_COMMANDS_COMMANDS_H_

#include "cli/host_figures/figures.h"
#include "cli/input/dump_input.h"
#include "cli/options/option_list.h"
#include "cli/output/output.h"
#include "cli/process/exit_status.h"
#include "cli/process/messages.h"

namespace orsa::kesncd::cli {

// Figures that are exact, bit by bit, and what is made of them: see cli/exact_figures.
void AddActivityCommand(CommandLine& line);
void AddProfileCommand(CommandLine& line);
void AddMergeCommand(CommandLine& line);
void AddDiffCommand(CommandLine& line);
void AddReportCommand(CommandLine& line);
// Figures as hosts of the library get them: see cli/host_figures.
void AddLookCommand(CommandLine& line);
void AddFlatCommand(CommandLine& line);
void AddTopCommand(CommandLine& line);
void AddTreeCommand(CommandLine& line);
void AddFindCommand(CommandLine& line);
// What is wrong with a dump, and how to get one that every reader understands.
void AddPrepareCommand(CommandLine& line);
void AddCheckCommand(CommandLine& line);
// Frequencies for a host's power tables, nets and timing reports.
void AddClocksCommand(CommandLine& line);
void AddPowerCommand(CommandLine& line);
void AddExtractCommand(CommandLine& line);

// What several commands take. The functions keep a reference to what they fill in, which therefore
// has to live as long as the command.

/// Adds --mode of the timing report, 0, 1 or 2: which of a clock's two frequencies counts, as
/// KesNCD::ReadTWR2 takes it.
void AddModeOption(Command& command, int& mode);
/// Adds --quiet. It works while the line is parsed already, so that nothing after it makes a
/// remark.
void AddQuietOption(Command& command, InputOptions& options);
/// Adds the dump and --quiet. For a command that reads a dump whole and in one way: no window, no
/// threads, no --as-is.
void AddDumpOptions(Command& command, InputOptions& options);
/// Adds --as-is and --quiet, of commands whose figures are those of hosts.
void AddReadingFlags(Command& command, InputOptions& options);
/// Adds --jobs. A number of threads never changes a result, only the time that it takes.
void AddJobsOption(Command& command, InputOptions& options);
/// Adds --begin and --end. Both bounds are inclusive times such as "1.5us", kept in femtoseconds.
void AddWindowOptions(Command& command, TimeWindow& window);
/// Adds the dump, --as-is, --quiet, --jobs, --begin and --end.
void AddFigureOptions(Command& command, FigureOptions& options);
/// Adds --digits, --wide and -o. For results that are always rows, or whose --format is the
/// command's own.
void AddLookOptions(Command& command, OutputOptions& options);
/// Adds --format, --digits, --wide and -o. Digits are those of a table: CSV and JSON keep every
/// one.
void AddOutputOptions(Command& command, OutputOptions& options);

/// Throws Failure for a window that ends before it begins. A window of one instant (--begin equal
/// to --end) is allowed here.
void CheckWindow(const TimeWindow& window);
/// The same, and for a window that a host's reading of the dump knows nothing of.
void CheckFigureOptions(const FigureOptions& options);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_COMMANDS_COMMANDS_H_
