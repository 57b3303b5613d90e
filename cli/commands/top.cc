// kesncd top: the module that a dump's header proposes.
#include <iostream>
#include <memory>

#include "cli/commands/commands.h"
#include "cli/input/dump_feed.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

namespace {

constexpr char kHelp[] =
    "The top module that the dump's header proposes\n"
    "\n"
    "Example:\n"
    "  kesncd top sim.vcd\n"
    "\n"
    "It is the innermost module of the first unbroken run of nested modules: the one that\n"
    "encloses the first declaration. Runs without --top take the outermost module that declares\n"
    "signals.\n";

ExitStatus Run(const InputOptions& options) {
  const std::string name = NameOf(options);
  const UnpackedSource dump = OpenDump(options);
  DumpFeed feed([&dump](ByteSink& to) { CopyBytes(*dump.bytes, to); });
  orsa::kesncd::KesNCD analyser;
  std::string top;
  std::string message;
  const bool isRead = analyser.GetTopModuleNameInVCD(feed.path(), top, message);
  feed.Finish();
  if (!isRead) throw Failure(FailureKind::Unusable, name + ": " + message);
  if (top.empty()) throw Failure(FailureKind::NothingMatched, name + ": no module to propose");
  std::cout << top << std::endl;
  if (!std::cout) throw Failure(FailureKind::OutputFailed, "standard output: cannot write");
  return ExitStatus::Done;
}

}  // namespace

void AddTopCommand(CommandLine& line) {
  Command& command = line.Add("top", kHelp);
  const auto options = std::make_shared<InputOptions>();
  AddDumpOptions(command, *options);
  command.run = [options] { return Run(*options); };
}

}  // namespace orsa::kesncd::cli
