#include "cli/byte_stream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cli/exit_status.h"

namespace kesncd_cli {

namespace {

[[noreturn]] void Fail(const std::string& path) {
  throw Failure(ExitStatus::Unusable, path + ": " + std::strerror(errno));
}

}  // namespace

FileSource::FileSource(const std::string& path)
    : path_(path), file_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (file_ < 0) Fail(path);
}

FileSource::~FileSource() {
  (void)close(file_);
}

std::size_t FileSource::Read(char* to, std::size_t most) {
  ssize_t got = 0;
  do {
    got = read(file_, to, most);
  } while (got < 0 && errno == EINTR);
  if (got < 0) Fail(path_);
  return static_cast<std::size_t>(got);
}

}  // namespace kesncd_cli
