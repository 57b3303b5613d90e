// kesncd: switching activity of a simulation, from the command line.
#include <csignal>
#include <exception>

#include "cli/commands/commands.h"
#include "cli/process/interrupt.h"
#include "cli/process/standard_streams.h"

namespace orsa::kesncd::cli {

namespace {

ExitStatus RunProgram(int argc, char** argv) {
  CLI::App app;
  Action chosen;
  AddCommandLine(app, chosen);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // Help and version are no errors, whatever the parser calls them.
    if (error.get_exit_code() == 0) return static_cast<ExitStatus>(app.exit(error));
    Say("", std::string(error.what()) + "\n--help tells how it is used");
    return ExitStatus::Unusable;
  }
  return chosen();
}

}  // namespace

}  // namespace orsa::kesncd::cli

int main(int argc, char** argv) {
  using namespace orsa::kesncd;
  using namespace orsa::kesncd::cli;
  EndWhenInterrupted();
  (void)std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is a failed output like any other
  (void)std::signal(SIGXFSZ, SIG_IGN);  // and so is a file that may not grow further
  HoldStandardStreams();
  ExitStatus status = ExitStatus::Unusable;
  try {
    status = RunProgram(argc, argv);
    FlushStandardOutput();
  } catch (const Failure& failure) {
    Say("", failure.what());
    status = StatusOf(failure);
  } catch (const std::exception& error) {
    Say("", error.what());
  }
  return static_cast<int>(status);
}
