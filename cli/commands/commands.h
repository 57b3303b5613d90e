// The program's commands. Each adds itself to the command line, which runs what was asked for.
#ifndef KESNCD_CLI_COMMANDS_COMMANDS_H_
#define KESNCD_CLI_COMMANDS_COMMANDS_H_

#include <set>
#include <string>

#include "cli/input/dump_input.h"
#include "cli/options/option_list.h"
#include "cli/output/output.h"
#include "cli/process/exit_status.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

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
/// Adds the dump and --quiet.
void AddDumpOptions(Command& command, InputOptions& options);
/// Adds --as-is and --quiet, of commands whose figures are the library's.
void AddReadingFlags(Command& command, InputOptions& options);
/// Adds the dump with these.
void AddInputOptions(Command& command, InputOptions& options);
/// Adds --format and -o.
void AddOutputOptions(Command& command, OutputOptions& options);

/// Throws Failure for a file that cannot be read to its end, where the library would not say so.
void CheckReadable(const std::string& path);

/// Says what keeps all frequencies of a run at 0.
void SayWhyZero(const DumpInput& input);

/// Reads the module tree, which then has a root. Says how much of the dump cannot be reached in it.
void ReadTree(orsa::kesncd::KesNCD& analyser, DumpInput& input);

/// Does the flat run of a module.
void ReadFlat(orsa::kesncd::KesNCD& analyser, DumpInput& input,
              const std::set<std::string>& signals, const std::string& top);

/// All names that a dump declares.
std::set<std::string> AllNames(const DumpInput& input);

/// The first of many names for a message, and how many more there are.
std::string ShortList(const std::vector<std::string>& names);

/// The library's message for a dump, with what helps behind it.
Failure RunFailure(const DumpInput& input, const std::string& libraryMessage);

/// Reads a file of names, one a line, blank lines and those that start with "#" left out.
std::vector<std::string> ReadNames(const std::string& path);

/// The facts that every run's report begins with.
std::vector<std::pair<std::string, Cell>> RunFacts(const std::string& dump, const std::string& top);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_COMMANDS_COMMANDS_H_
