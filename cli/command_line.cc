// The whole command line: what the program says of itself, and its commands.
#include "cli/command_line.h"

#include "cli/commands/commands.h"

namespace orsa::kesncd::cli {

namespace {

// The first line is the summary, which the man page's NAME takes; the rest is printed below it.
// Lines that are indented stand as they are on every page, the others are filled by roff.
constexpr char kProgramHelp[] =
    "Switching activity of a logic simulation, from its value change dump\n"
    "\n"
    "Examples:\n"
    "  kesncd sim.vcd                       a first look at a dump, and what to ask next\n"
    "  kesncd flat sim.vcd --top soc        toggle frequencies of module soc, in MHz\n"
    "  kesncd tree sim.vcd                  the module tree with its activity\n"
    "  kesncd find sim.vcd u1/q 'data_5_'   frequencies of signals by their design names\n"
    "  kesncd COMMAND --help                more of a command\n"
    "\n"
    // The numbers are those of ExitStatus and of EndWhenInterrupted (130 is 128 and SIGINT's 2).
    "Exit status: 0 done; 1 done, but nothing matched; 2 wrong use or unreadable input;\n"
    "3 the result could not be written; 130 interrupted; 141 nobody reads the result any more.\n";

}  // namespace

CommandLine MakeCommandLine() {
  // The parser answers these two itself, before it looks for a command.
  CommandLine line{Command("kesncd", kProgramHelp), {}};
  line.program.AddAnswered("-h,--help", "print this help");
  line.program.AddAnswered("--version", "print the version");
  // In the order in which --help lists them: what most users want first, exact figures before those
  // of hosts, and checks and conversions of dumps last.
  AddActivityCommand(line);
  AddProfileCommand(line);
  AddMergeCommand(line);
  AddDiffCommand(line);
  AddReportCommand(line);
  AddLookCommand(line);
  AddFlatCommand(line);
  AddTopCommand(line);
  AddTreeCommand(line);
  AddFindCommand(line);
  AddPrepareCommand(line);
  AddCheckCommand(line);
  AddClocksCommand(line);
  AddPowerCommand(line);
  AddExtractCommand(line);
  // Last, so that --help ends each command's list of options.
  for (Command& command : line.commands) {
    command.AddAnswered("-h,--help", "print this help").isHelp = true;
  }
  return line;
}

}  // namespace orsa::kesncd::cli
