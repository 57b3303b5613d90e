// The check of a dump in one or in several threads.
#include "cli/input/dump_check.h"

#include "cli/input/reading_threads.h"

namespace orsa::kesncd::cli {

DumpCheck CheckDumpOf(const InputOptions& options, UnpackedSource& dump) {
  const std::string name = NameOf(options);
  const unsigned jobs = UseThreads(options, dump);
  DumpCheck check =
      jobs > 1 ? CheckDump(*dump.file, name, jobs) : CheckDump(*dump.bytes, name, dump.packing);
  // The line that shows how far the dump was read goes with it.
  dump.bytes.reset();
  dump.file.reset();
  return check;
}

}  // namespace orsa::kesncd::cli
