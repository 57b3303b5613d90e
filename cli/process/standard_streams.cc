// Fills closed standard streams with /dev/null, opened the wrong way round so that use still fails.
#include "cli/process/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace orsa::kesncd::cli {

void HoldStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // It is open, whatever it leads to.
    if (fcntl(stream, F_GETFD) >= 0) continue;
    // The lowest free descriptor is this one: those below it are held. Standard input gets a
    // descriptor that cannot be read, the others one that cannot be written: the first use then
    // fails with EBADF, as if the stream were still closed.
    (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace orsa::kesncd::cli
