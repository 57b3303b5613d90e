// Memory files and slow streams over a text.
#include "tests/support/streams.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "tests/support/require.h"

namespace support {

MemoryFile::MemoryFile(std::string_view text) : file_(memfd_create("fuzz", MFD_CLOEXEC)) {
  Require(file_ >= 0, "no memory file");
  const auto written = write(file_, text.data(), text.size());
  Require(written == static_cast<ssize_t>(text.size()), "memory file not written");
}

MemoryFile::~MemoryFile() {
  close(file_);
}

std::string MemoryFile::Path() const {
  return "/proc/self/fd/" + std::to_string(file_);
}

std::string MemoryFile::Text() const {
  std::ifstream file(Path(), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

DrippingStream::DrippingStream(std::string_view text)
    : text_(text), file_(fopencookie(this, "r", {Read, nullptr, nullptr, nullptr})) {
  Require(file_ != nullptr, "no stream");
}

DrippingStream::~DrippingStream() {
  std::fclose(file_);
}

ssize_t DrippingStream::Read(void* stream, char* to, std::size_t most) {
  auto& self = *static_cast<DrippingStream*>(stream);
  constexpr std::size_t kSteps = 7;
  const std::size_t bytes = std::min({most, 1 + self.step_++ % kSteps, self.text_.size()});
  self.text_.copy(to, bytes);
  self.text_.remove_prefix(bytes);
  return static_cast<ssize_t>(bytes);
}

Quiet::Quiet() : output_(stdout), error_(stderr) {
  static std::FILE* const nowhere = std::fopen("/dev/null", "w");
  Require(nowhere != nullptr, "/dev/null does not open");
  stdout = nowhere;
  stderr = nowhere;
}

Quiet::~Quiet() {
  stdout = output_;
  stderr = error_;
}

}  // namespace support
