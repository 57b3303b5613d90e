// kesncd top: the module that a dump's header proposes.
#include <iostream>
#include <memory>

#include "cli/commands.h"
#include "kesncd/kesncd.h"

namespace kesncd_cli {

namespace {

constexpr char kHelp[] =
    "The top module that the dump's header proposes\n"
    "\n"
    "Example:\n"
    "  kesncd top sim.vcd\n"
    "\n"
    "It is the innermost module of the first unbroken run of nested modules: the one that\n"
    "encloses the first declaration.\n";

ExitStatus Run(const std::string& dump) {
  CheckInput(dump);
  orsa::kesncd::KesNCD analyser;
  std::string top;
  std::string message;
  if (!analyser.GetTopModuleNameInVCD(dump, top, message)) throw RunFailure(dump, message);
  if (top.empty()) throw Failure(ExitStatus::NothingMatched, dump + ": no module to propose");
  std::cout << top << std::endl;
  if (!std::cout) throw Failure(ExitStatus::OutputFailed, "standard output: cannot write");
  return ExitStatus::Done;
}

}  // namespace

void AddTopCommand(CLI::App& app, Action& chosen) {
  CLI::App* command = app.add_subcommand("top", kHelp);
  const auto dump = std::make_shared<std::string>();
  command->add_option("DUMP", *dump, "value change dump")->required();
  command->callback([dump, &chosen] { chosen = [dump] { return Run(*dump); }; });
}

}  // namespace kesncd_cli
