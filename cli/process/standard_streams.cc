// Fills closed standard streams with /dev/null, opened the wrong way round so that use still fails.
#include "cli/process/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace orsa::kesncd::cli {

void HoldStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    // The lowest free descriptor is this one: those below it are held.
    (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace orsa::kesncd::cli
