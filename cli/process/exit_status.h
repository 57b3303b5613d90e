// How the program ends.
//
// The numbers are part of the program's interface: scripts and regressions go by them, and the help
// lists them. 0 and 1 both mean that the work was done.
#ifndef KESNCD_CLI_PROCESS_EXIT_STATUS_H_
#define KESNCD_CLI_PROCESS_EXIT_STATUS_H_

#include "text/failure.h"

namespace orsa::kesncd::cli {

/// As the process's status; a signal adds its own (see interrupt.h).
enum class ExitStatus {
  Done = 0,
  NothingMatched = 1,  // the work was done, but nothing of what was asked for is in the input
  // Of `check` and `diff`, the same number: something was found that a user should look at.
  Findings = 1,
  Unusable = 2,      // wrong use, or an input that cannot be read
  OutputFailed = 3,  // the result could not be written
  ReaderGone = 141,  // nobody wants the rest, as after "| head": what a shell shows for SIGPIPE
};

/// The status with which a failure ends the program. A FailureKind says what went wrong, wherever
/// that was; only the program turns it into a number.
inline ExitStatus StatusOf(const Failure& failure) {
  switch (failure.kind()) {
    case FailureKind::NothingMatched:
      return ExitStatus::NothingMatched;
    case FailureKind::Unusable:
      break;
    case FailureKind::OutputFailed:
      return ExitStatus::OutputFailed;
    case FailureKind::ReaderGone:
      return ExitStatus::ReaderGone;
  }
  return ExitStatus::Unusable;
}

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_EXIT_STATUS_H_
