// How the program ends, and what it says of it.
#ifndef KESNCD_CLI_PROCESS_EXIT_STATUS_H_
#define KESNCD_CLI_PROCESS_EXIT_STATUS_H_

#include <string>

#include "text/failure.h"

namespace orsa::kesncd::cli {

enum class ExitStatus {
  Done = 0,
  NothingMatched = 1,  // the work was done, but nothing of what was asked for is in the input
  Findings = 1,        // of `check`
  Unusable = 2,        // wrong use, or an input that cannot be read
  OutputFailed = 3,    // the result could not be written
};

/// The status with which a failure ends the program.
inline ExitStatus StatusOf(const Failure& failure) {
  switch (failure.kind()) {
    case FailureKind::NothingMatched:
      return ExitStatus::NothingMatched;
    case FailureKind::Unusable:
      break;
    case FailureKind::OutputFailed:
      return ExitStatus::OutputFailed;
  }
  return ExitStatus::Unusable;
}

/// Writes "kesncd: SUBJECT: text" to standard error, for each line of the text.
void Say(const std::string& subject, const std::string& text);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_EXIT_STATUS_H_
