// An interrupted program: it ends at once and removes the files that it was writing.
#ifndef KESNCD_CLI_PROCESS_INTERRUPT_H_
#define KESNCD_CLI_PROCESS_INTERRUPT_H_

#include "text/whole_file.h"

namespace orsa::kesncd::cli {

/// From now on SIGINT, SIGTERM and SIGHUP, unless they are ignored, end the program with 128 and
/// the signal's number: 130 for Ctrl-C.
void EndWhenInterrupted();

/// The files that such a signal removes.
TemporaryFiles& FilesOfThisRun();

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_INTERRUPT_H_
