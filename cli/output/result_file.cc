#include "cli/output/result_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "cli/process/exit_status.h"
#include "cli/process/interrupt.h"

namespace orsa::kesncd::cli {

namespace {

constexpr mode_t kMode = 0666;  // less the user's mask

bool IsDirect(const std::string& path) {
  std::error_code ignored;
  const auto status = std::filesystem::status(path, ignored);
  return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

}  // namespace

ResultFile::ResultFile(const std::string& path) : path_(path) {
  if (path.empty()) {
    file_ = STDOUT_FILENO;
    return;
  }
  if (!IsDirect(path)) beside_ = path + ".part" + std::to_string(getpid());
  RemoveWhenInterrupted(beside_);
  const std::string& name = beside_.empty() ? path : beside_;
  file_ = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kMode);
  if (file_ < 0) Fail(errno);
}

ResultFile::~ResultFile() {
  if (!path_.empty() && file_ >= 0) (void)close(file_);
  if (!beside_.empty()) (void)std::remove(beside_.c_str());
  RemoveWhenInterrupted("");
}

void ResultFile::Fail(int reason) const {
  throw Failure(FailureKind::OutputFailed, (path_.empty() ? "standard output" : path_) +
                                               ": cannot write: " + std::strerror(reason));
}

void ResultFile::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file_, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      Fail(errno);
    }
  }
}

void ResultFile::Commit() {
  if (path_.empty()) return;
  const bool closed = close(file_) == 0;
  file_ = -1;
  if (!closed) Fail(errno);
  if (beside_.empty()) return;
  if (std::rename(beside_.c_str(), path_.c_str()) != 0) Fail(errno);
  beside_.clear();
}

}  // namespace orsa::kesncd::cli
