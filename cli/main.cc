// kesncd: switching activity of a simulation, from the command line.
#include <algorithm>
#include <csignal>
#include <exception>

#include "cli/command_line.h"
#include "cli/options/parse.h"
#include "cli/process/interrupt.h"
#include "cli/process/messages.h"
#include "cli/process/standard_streams.h"

namespace orsa::kesncd::cli {

namespace {

ExitStatus RunProgram(int argc, char** argv) {
  const CommandLine line = MakeCommandLine();
  return ParseWords(line, {argv + std::min(argc, 1), argv + argc})();
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
  } catch (const Failure& failure) {
    status = StatusOf(failure);
    if (status != ExitStatus::ReaderGone) Say("", failure.what());
  } catch (const std::exception& error) {
    Say("", error.what());
  }
  return static_cast<int>(status);
}
