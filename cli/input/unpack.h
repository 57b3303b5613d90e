// Dumps that were packed with gzip, zstd, xz or bzip2, known by their first bytes.
#ifndef KESNCD_CLI_INPUT_UNPACK_H_
#define KESNCD_CLI_INPUT_UNPACK_H_

#include <memory>
#include <string>
#include <string_view>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// The plain bytes of a dump, and what is known of where they come from.
struct UnpackedSource {
  std::unique_ptr<ByteSource> bytes;
  /// "gzip", "zstd", "xz", "bzip2" or "fst"; nothing for plain bytes.
  std::string_view packing;
  /// What became of the file, from when it was read to its end; null where nobody looks.
  std::shared_ptr<const FileChange> change;
  /// The same bytes where they stand in a plain file, to be read instead of `bytes`. Null for what
  /// is packed, comes through a pipe or is FST.
  std::shared_ptr<ByteFile> file;
  bool isRegularFile = false;  // plain or packed
};

/// The bytes of a source, unpacked while they are read where they are packed. Messages call the
/// source `name`. Known by the first bytes only, so a name's ending does not matter: x.vcd may be
/// packed. Throws what the source throws, std::bad_alloc, and while reading Failure with Unusable
/// for corrupt bytes.
UnpackedSource Unpack(std::unique_ptr<ByteSource> source, const std::string& name);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_UNPACK_H_
