// kesncd: switching activity of a simulation, from the command line.
#include <algorithm>
#include <csignal>
#include <exception>
#include <new>

#include "cli/command_line.h"
#include "cli/options/parse.h"
#include "cli/process/interrupt.h"
#include "cli/process/messages.h"
#include "cli/process/standard_streams.h"

namespace orsa::kesncd::cli {

namespace {

/// Two steps that fail differently: parsing touches no file but the list of options, so a wrong
/// command line leaves nothing behind; only the work that it returns opens dumps and writes
/// results. The command line lives until that work is done, since the work refers to its options.
ExitStatus RunProgram(int argc, char** argv) {
  const CommandLine line = MakeCommandLine();
  // A caller of exec may give no argument at all, not even the program's own name.
  return ParseWords(line, {argv + std::min(argc, 1), argv + argc})();
}

}  // namespace

}  // namespace orsa::kesncd::cli

/// Every command ends here: what was thrown on the way becomes one message on standard error and
/// the exit status that cli/process/exit_status.h lists.
int main(int argc, char** argv) {
  using namespace orsa::kesncd;
  using namespace orsa::kesncd::cli;
  // First of all, so that a Ctrl-C during the first file already removes what was being written.
  EndWhenInterrupted();
  (void)std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is a failed output like any other
  (void)std::signal(SIGXFSZ, SIG_IGN);  // and so is a file that may not grow further
  // Before anything is opened: with standard output closed, the dump would become descriptor 1, and
  // the result would be written into it.
  HoldStandardStreams();
  // Assume the worst until the work says otherwise; an exception that is no Failure (memory that
  // ran out, a fault of a library) leaves it so.
  ExitStatus status = ExitStatus::Unusable;
  try {
    status = RunProgram(argc, argv);
  } catch (const Failure& failure) {
    status = StatusOf(failure);
    // After "kesncd ... | head" nobody waits for an explanation: every program in such a pipe ends
    // in silence, with the status that a shell shows for SIGPIPE.
    if (status != ExitStatus::ReaderGone) Say("", failure.what());
  } catch (const std::bad_alloc&) {
    Say("", "memory ran out");
  } catch (const std::exception& error) {
    Say("", error.what());
  }
  return static_cast<int>(status);
}
