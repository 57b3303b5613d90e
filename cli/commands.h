// The program's commands. Each adds itself to the command line; what it parsed is run afterwards.
#ifndef KESNCD_CLI_COMMANDS_H_
#define KESNCD_CLI_COMMANDS_H_

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "cli/exit_status.h"
#include "cli/output.h"
#include "kesncd/kesncd.h"

namespace kesncd_cli {

/// What the chosen command does.
using Action = std::function<ExitStatus()>;

/// Makes an empty App the program's command line. Parsing it sets `chosen`.
void AddCommandLine(CLI::App& app, Action& chosen);

void AddFlatCommand(CLI::App& app, Action& chosen);
void AddTopCommand(CLI::App& app, Action& chosen);
void AddTreeCommand(CLI::App& app, Action& chosen);
void AddFindCommand(CLI::App& app, Action& chosen);
void AddPrepareCommand(CLI::App& app, Action& chosen);
void AddCheckCommand(CLI::App& app, Action& chosen);
void AddClocksCommand(CLI::App& app, Action& chosen);
void AddPowerCommand(CLI::App& app, Action& chosen);
void AddExtractCommand(CLI::App& app, Action& chosen);

/// Adds --mode of the timing report.
void AddModeOption(CLI::App& command, int& mode);
/// Adds --format and -o.
void AddOutputOptions(CLI::App& command, OutputOptions& options);

/// Throws Failure for an input that no command can use: a directory. The library reports the rest.
void CheckInput(const std::string& path);
/// Throws Failure for a file that cannot be read to its end, where the library would not say so.
void CheckReadable(const std::string& path);

/// Says what keeps all frequencies of a run at 0.
void SayWhyZero(const std::string& dump);

/// Reads the module tree, which then has a root. Says how much of the dump cannot be reached in it.
void ReadTree(orsa::kesncd::KesNCD& analyser, const std::string& dump);

/// The library's message for a dump, with what helps behind it.
Failure RunFailure(const std::string& dump, const std::string& libraryMessage);

/// Reads a file of names, one a line, blank lines and those that start with "#" left out.
std::vector<std::string> ReadNames(const std::string& path);

/// The facts that every run's report begins with.
std::vector<std::pair<std::string, Cell>> RunFacts(const std::string& dump, const std::string& top);

}  // namespace kesncd_cli

#endif  // KESNCD_CLI_COMMANDS_H_
