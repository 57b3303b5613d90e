// The whole command line: what the program says of itself and its commands.
#include <memory>
#include <sstream>

#include "cli/commands/commands.h"

namespace orsa::kesncd::cli {

namespace {

constexpr char kHelp[] =
    "Switching activity of a logic simulation, from its value change dump\n"
    "\n"
    "Examples:\n"
    "  kesncd flat sim.vcd --top soc        toggle frequencies of module soc, in MHz\n"
    "  kesncd tree sim.vcd                  the module tree with its activity\n"
    "  kesncd find sim.vcd u1/q 'data_5_'   frequencies of signals by their design names\n"
    "  kesncd COMMAND --help                more of a command\n"
    "\n"
    "Exit status: 0 done; 1 done, but nothing matched; 2 wrong use or unreadable input;\n"
    "3 the result could not be written; 130 interrupted.\n";

/// Lists a command with the first line of its help; the rest shows when the command is asked.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_subcommand(const CLI::App* command) const override {
    const std::string help = command->get_description();
    std::ostringstream line;
    CLI::detail::format_help(line, command->get_display_name(true), help.substr(0, help.find('\n')),
                             get_column_width());
    return line.str();
  }
};

}  // namespace

void AddCommandLine(CLI::App& app, Action& chosen) {
  app.name("kesncd");
  app.description(kHelp);
  app.set_version_flag("--version", "kesncd " KESNCD_VERSION);
  app.formatter(std::make_shared<HelpFormatter>());
  app.require_subcommand(1);
  AddFlatCommand(app, chosen);
  AddTopCommand(app, chosen);
  AddTreeCommand(app, chosen);
  AddFindCommand(app, chosen);
  AddPrepareCommand(app, chosen);
  AddCheckCommand(app, chosen);
  AddClocksCommand(app, chosen);
  AddPowerCommand(app, chosen);
  AddExtractCommand(app, chosen);
}

}  // namespace orsa::kesncd::cli
