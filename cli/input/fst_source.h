// FST dumps, which simulators and wave viewers write to save space: read through the converter that
// comes with one of these viewers.
//
// FST is a packed binary format, ten to a hundred times smaller than VCD. Its reader is not part of
// this program: fst2vcd writes VCD to a pipe, and everything after that is as for any dump.
#ifndef KESNCD_CLI_INPUT_FST_SOURCE_H_
#define KESNCD_CLI_INPUT_FST_SOURCE_H_

#include <memory>
#include <string>
#include <string_view>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// Whether a file that begins so is an FST dump. `firstBytes` is what a file begins with.
bool IsFst(std::string_view firstBytes);

/// The dump as VCD, from a process of fst2vcd that is found on the PATH and reads the file.
/// Messages call it `name`. Reading throws Failure with Unusable where fst2vcd is not installed or
/// fails, and so does this for what is no file, since the process must move about in it. Memory is
/// that of fst2vcd; nothing is stored. Destroying the source early ends the process.
std::unique_ptr<ByteSource> MakeFstSource(const FileSource& file, const std::string& name);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_FST_SOURCE_H_
