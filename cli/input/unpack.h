// Dumps that were packed with gzip, zstd, xz or bzip2, known by their first bytes.
#ifndef KESNCD_CLI_INPUT_UNPACK_H_
#define KESNCD_CLI_INPUT_UNPACK_H_

#include <memory>
#include <string>
#include <string_view>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// A source with what it holds already: "gzip", "zstd", "xz", "bzip2" or "fst", or nothing for
/// plain bytes.
struct UnpackedSource {
  std::unique_ptr<ByteSource> bytes;
  std::string_view packing;
  /// What became of the file, once it was read to its end; null where nobody looked.
  std::shared_ptr<const FileChange> change;
  /// The same bytes where they stand in a plain file, to be read instead of `bytes`.
  std::shared_ptr<ByteFile> file;
  bool isRegularFile = false;  // plain or packed
};

/// The bytes of a source, unpacked while they are read where they are packed. Messages call the
/// source `name`.
UnpackedSource Unpack(std::unique_ptr<ByteSource> source, const std::string& name);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_UNPACK_H_
