// Dumps that were packed tightly, with xz and bzip2, as archives of simulations are.
#ifndef KESNCD_CLI_INPUT_TIGHT_PACKING_H_
#define KESNCD_CLI_INPUT_TIGHT_PACKING_H_

#include <memory>
#include <string>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// Each takes over the packed source and gives its plain bytes. Throws std::bad_alloc where there
/// is no memory; reading throws Failure with Unusable for bytes that are corrupt or cut off, which
/// messages call `name`.
std::unique_ptr<ByteSource> MakeXzSource(std::unique_ptr<ByteSource> packed,
                                         const std::string& name);
std::unique_ptr<ByteSource> MakeBzip2Source(std::unique_ptr<ByteSource> packed,
                                            const std::string& name);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_TIGHT_PACKING_H_
