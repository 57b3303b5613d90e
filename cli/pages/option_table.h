// The command line as a table: what the man page and the shells' completions are written from.
#ifndef KESNCD_CLI_PAGES_OPTION_TABLE_H_
#define KESNCD_CLI_PAGES_OPTION_TABLE_H_

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace orsa::kesncd::cli {

/// An option, or an operand when it has no flags.
struct OptionRow {
  std::vector<std::string> flags;    // "-o", "--output"
  std::string argument;              // what its value is called; empty when it takes none
  std::vector<std::string> choices;  // the values it may have, where they are few
  std::string help;
  bool required = false;
  bool repeats = false;

  /// Whether its value is the path of a file.
  bool TakesFile() const;
};

/// A command, or the program itself.
struct CommandRow {
  std::string name;
  std::string summary;  // one line
  std::string text;     // the rest of its description
  std::vector<OptionRow> options;
  std::vector<OptionRow> operands;
};

struct OptionTable {
  CommandRow program;
  std::vector<CommandRow> commands;
};

OptionTable ReadOptionTable(const CLI::App& app);

/// All flags of a command's options.
std::vector<std::string> FlagsOf(const CommandRow& command);

/// The parts with a separator between them.
std::string Join(const std::vector<std::string>& parts, const std::string& separator);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PAGES_OPTION_TABLE_H_
