#include "cli/commands/activity_output.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "cli/output/output.h"
#include "cli/process/exit_status.h"
#include "kesncd/kesncd.h"
#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

namespace {

/// A file in memory that the library can write by a path. What the library writes says nothing of a
/// full disk; what is then passed on does.
class MemoryFile {
 public:
  MemoryFile() : file_(memfd_create("activity", MFD_CLOEXEC)) {
    if (file_ < 0) {
      throw Failure(FailureKind::OutputFailed, std::string("activity: ") + std::strerror(errno));
    }
  }
  ~MemoryFile() { (void)close(file_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  const int file_;
};

}  // namespace

std::string ActivityPathOf(const std::string& dump) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(dump, ignored) ? dump + ".txt" : "";
}

void RequireActivityFile(const std::string& path) {
  constexpr std::string_view kStart = "module | ";
  if (!PlaceOf(path).IsRegular()) return;
  std::array<char, kStart.size()> start{};
  FileSource file(path);
  const std::size_t size = ReadFully(file, start.data(), start.size());
  if (std::string_view(start.data(), size) == kStart) return;
  throw Failure(FailureKind::Unusable,
                path + ": is there already and is no activity file; it is left as it is");
}

void SaveActivity(const std::string& path) {
  const MemoryFile memory;
  orsa::kesncd::topMod.DumpIntoFile(memory.path());
  FileSource text(memory.path());
  OutputFile file(path);
  CopyBytes(text, file);
  file.Commit();
}

}  // namespace orsa::kesncd::cli
