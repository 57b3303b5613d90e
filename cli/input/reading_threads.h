// How many threads read a dump: what the user said, else as many as the process has cores, for a
// dump that is worth it.
#ifndef KESNCD_CLI_INPUT_READING_THREADS_H_
#define KESNCD_CLI_INPUT_READING_THREADS_H_

#include "cli/input/dump_input.h"
#include "cli/input/unpack.h"

namespace orsa::kesncd::cli {

/// Plain files from this size on are read in parts without being told to. 16 MiB take one thread
/// some tens of milliseconds: below that, starting threads costs as much as they save.
inline constexpr std::uint64_t kWorthCutting = std::uint64_t{16} << 20;

/// The cores that this process may use. Never 0. Not the cores of the machine: containers and batch
/// systems give a process fewer.
unsigned UsableCores();

/// The threads that may read the dump in parts: 1 where it is no plain file. A packed dump is
/// unpacked by a thread of its own from now on, unless there is to be but one. Called once, after
/// OpenDump and before `dump.bytes` is used: it may wrap the source.
unsigned UseThreads(const InputOptions& options, UnpackedSource& dump);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_READING_THREADS_H_
