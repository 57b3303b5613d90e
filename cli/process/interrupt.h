// An interrupted program: it ends at once and takes back the file that it was writing.
#ifndef KESNCD_CLI_PROCESS_INTERRUPT_H_
#define KESNCD_CLI_PROCESS_INTERRUPT_H_

#include <string>

namespace orsa::kesncd::cli {

/// From now on SIGINT, SIGTERM and SIGHUP, unless they are ignored, end the program with 128 and
/// the signal's number: 130 for Ctrl-C.
void EndWhenInterrupted();

/// A file that an interrupt removes; one at a time. An empty path keeps all.
void RemoveWhenInterrupted(const std::string& path);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_INTERRUPT_H_
