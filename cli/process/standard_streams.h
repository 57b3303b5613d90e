// The streams that the program was given.
#ifndef KESNCD_CLI_PROCESS_STANDARD_STREAMS_H_
#define KESNCD_CLI_PROCESS_STANDARD_STREAMS_H_

namespace orsa::kesncd::cli {

/// Keeps the places of streams that were closed before the program started: a dump that is opened
/// must not become the standard output. Writing to such a stream still fails. Called before
/// anything is opened. A closed stream is rare but real: daemons and some schedulers start programs
/// so.
void HoldStandardStreams();

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_STANDARD_STREAMS_H_
