// Files read in blocks, and how a file that changes while it is read is noticed.
#include "text/byte_stream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "text/failure.h"

namespace orsa::kesncd {

namespace {

/// To be called right after the system call that failed, while errno still holds its reason.
[[noreturn]] void Fail(const std::string& path) {
  throw Failure(FailureKind::Unusable, path + ": " + std::strerror(errno));
}

/// "-" is the standard input, duplicated so that closing the source leaves the process its own.
int Open(const std::string& path) {
  if (path == "-") return fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
  return open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

}  // namespace

FileSource::FileSource(const std::string& path) : path_(path), file_(Open(path)) {
  if (file_ < 0) Fail(path);
  // A file without a status is taken for a pipe: its size is unknown and it never changes.
  if (fstat(file_, &opened_) != 0) opened_ = {};
}

FileSource::~FileSource() {
  (void)close(file_);
}

/// A signal may interrupt a read of a slow pipe or network file; that is no end and no error.
std::size_t FileSource::Read(char* to, std::size_t most) {
  ssize_t got = 0;
  do {
    got = read(file_, to, most);
  } while (got < 0 && errno == EINTR);
  if (got < 0) Fail(path_);
  return static_cast<std::size_t>(got);
}

/// As Read. pread leaves the file's own place alone, so threads may read different parts of a dump
/// at the same time.
std::size_t FileSource::ReadAt(std::uint64_t offset, char* to, std::size_t most) const {
  ssize_t got = 0;
  do {
    got = pread(file_, to, most, static_cast<off_t>(offset));
  } while (got < 0 && errno == EINTR);
  if (got < 0) Fail(path_);
  return static_cast<std::size_t>(got);
}

std::uint64_t FileSource::size() const {
  // Pipes and devices report a size too, but one that says nothing about what will arrive.
  return S_ISREG(opened_.st_mode) ? static_cast<std::uint64_t>(opened_.st_size) : 0;
}

/// A file that only grows is changed, not shrunk: a simulation may still be writing it.
FileChange FileSource::Change() const {
  struct stat now {};
  // What can no longer be asked is not reported: a reading that worked must not fail for it.
  if (!S_ISREG(opened_.st_mode) || fstat(file_, &now) != 0) return FileChange::None;
  if (now.st_size < opened_.st_size) return FileChange::Shrank;
  // An editor or a second simulation may write as many bytes again, so the time decides as well.
  const bool isSame = now.st_size == opened_.st_size &&
                      now.st_mtim.tv_sec == opened_.st_mtim.tv_sec &&
                      now.st_mtim.tv_nsec == opened_.st_mtim.tv_nsec;
  return isSame ? FileChange::None : FileChange::Changed;
}

std::size_t ResumedSource::Read(char* to, std::size_t most) {
  if (given_ == start_.size()) return rest_->Read(to, most);
  const std::size_t got = start_.copy(to, most, given_);
  given_ += got;
  // The start may be a block of a large file: its memory is released as soon as it is used up.
  if (given_ == start_.size()) {
    start_ = {};
    given_ = 0;
  }
  return got;
}

std::size_t ReadFully(ByteSource& source, char* to, std::size_t most) {
  std::size_t held = 0;
  while (held < most) {
    const std::size_t got = source.Read(to + held, most - held);
    if (got == 0) break;
    held += got;
  }
  return held;
}

void CopyBytes(ByteSource& from, ByteSink& to) {
  // A call for so many bytes costs next to nothing beside the bytes, and they stay in the cache.
  constexpr std::size_t kBlock = std::size_t{1} << 17;
  std::vector<char> block(kBlock);
  while (const std::size_t got = from.Read(block.data(), block.size())) {
    to.Write({block.data(), got});
  }
}

}  // namespace orsa::kesncd
