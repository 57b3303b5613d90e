// What files can be read in parts, and how they are known again.
#include "cli/input/plain_file.h"

#include <filesystem>

#include "database/row_sum.h"
#include "free_format/dump_format.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

PlainFile::PlainFile(const std::string& path) : file_(path) {
  std::error_code ignored;
  if (path == "-" || !std::filesystem::is_regular_file(path, ignored)) {
    throw Failure(FailureKind::Unusable, path + ": only a file can be read in parts");
  }
  std::string start(16, '\0');
  start.resize(ReadAt(0, start.data(), start.size()));
  const ForeignFormat format = ForeignFormatOf(start);
  if (format.name.empty()) return;
  throw Failure(FailureKind::Unusable,
                path + ": cannot be read in parts: it " + ForeignText(format));
}

std::uint64_t PlainFile::Sample() {
  constexpr std::uint64_t kPlaces = 64;
  constexpr std::uint64_t kBlock = 4096;
  RowSum sum;
  std::string block;
  for (std::uint64_t place = 0; place < kPlaces; ++place) {
    const std::uint64_t last = size() > kBlock ? size() - kBlock : 0;
    block.resize(kBlock);
    block.resize(ReadAt(last / (kPlaces - 1) * place, block.data(), block.size()));
    sum.Add(block);
  }
  return sum.value();
}

}  // namespace orsa::kesncd::cli
