// An interrupted program: it ends at once and removes the files that it was writing.
//
// A reading of many gigabytes is often interrupted. Nothing must be left of it: no half of a result
// under the result's name (WholeFile sees to that), and no temporary file beside it (this does).
#ifndef KESNCD_CLI_PROCESS_INTERRUPT_H_
#define KESNCD_CLI_PROCESS_INTERRUPT_H_

#include "text/whole_file.h"

namespace orsa::kesncd::cli {

/// From now on SIGINT, SIGTERM and SIGHUP, unless they are ignored, end the program with 128 and
/// the signal's number: 130 for Ctrl-C. Called once, first of all in main. The handler unlinks the
/// files that FilesOfThisRun holds at that moment and calls _exit: no destructors, no buffers, so
/// an interrupted result never shows.
void EndWhenInterrupted();

/// The files that such a signal removes. To be given to every WholeFile of the program (see
/// OutputFile). Lives as long as the process.
TemporaryFiles& FilesOfThisRun();

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_INTERRUPT_H_
