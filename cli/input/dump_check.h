// What a check finds in the dump that a command was given.
#ifndef KESNCD_CLI_INPUT_DUMP_CHECK_H_
#define KESNCD_CLI_INPUT_DUMP_CHECK_H_

#include "cli/input/dump_input.h"
#include "cli/input/unpack.h"
#include "free_format/findings/dump_findings.h"

namespace orsa::kesncd::cli {

/// Reads the dump, which was opened as `options` say, to its end, with as many threads as they
/// allow; it is closed then. Throws as CheckDump does.
DumpCheck CheckDumpOf(const InputOptions& options, UnpackedSource& dump);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_DUMP_CHECK_H_
