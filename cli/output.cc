#include "cli/output.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace kesncd_cli {

namespace {

namespace fs = std::filesystem;

void Write(const Report& report, Format format, std::ostream& out) {
  errno = 0;
  switch (format) {
    case Format::Table:
      WriteTable(report, out);
      break;
    case Format::Csv:
      WriteCsv(report, out);
      break;
    case Format::Json:
      WriteJson(report, out);
      break;
  }
  out.flush();
}

[[noreturn]] void Fail(const std::string& where) {
  const std::string reason = errno != 0 ? std::string(": ") + std::strerror(errno) : "";
  throw Failure(ExitStatus::OutputFailed, where + ": cannot write the result" + reason);
}

/// Writes a file straight to its place; false when not all of it could be written.
bool WriteFile(const Report& report, Format format, const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  if (!file) return false;
  Write(report, format, file);
  file.close();
  return !file.fail();
}

/// Writes beside the file and renames, so that a result is never half there.
bool ReplaceFile(const Report& report, Format format, const std::string& path) {
  const std::string beside = path + ".part" + std::to_string(getpid());
  std::error_code error;
  const bool written = WriteFile(report, format, beside);
  if (written) fs::rename(beside, path, error);
  if (written && !error) return true;
  if (error) errno = error.value();
  const int reason = errno;
  fs::remove(beside, error);
  errno = reason;
  return false;
}

}  // namespace

void WriteReport(const Report& report, const OutputOptions& options) {
  if (options.path.empty()) {
    Write(report, options.format, std::cout);
    if (!std::cout) Fail("standard output");
    return;
  }
  std::error_code ignored;
  const fs::file_status status = fs::status(options.path, ignored);
  if (fs::exists(status) && !fs::is_regular_file(status)) {  // a device or a pipe
    if (!WriteFile(report, options.format, options.path)) Fail(options.path);
  } else if (!ReplaceFile(report, options.format, options.path)) {
    Fail(options.path);
  }
}

}  // namespace kesncd_cli
