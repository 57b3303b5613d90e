#include "fuzz/support.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

#include "kesncd/kesncd.h"
#include "tests/reader_state.h"

namespace fuzz {

void Require(bool holds, const std::string& message) {
  if (holds) return;
  std::fprintf(stderr, "fuzz target: %s\n", message.c_str());
  std::abort();
}

Input::Input(const std::uint8_t* data, std::size_t size) {
  const std::string all(reinterpret_cast<const char*>(data), size);
  const std::size_t mark = all.rfind('\xFF');
  text = all.substr(0, mark);
  if (mark != std::string::npos) options = Lines(std::string_view(all).substr(mark + 1));
}

std::string Input::Option(std::size_t number, const std::string& otherwise) const {
  return number < options.size() ? options[number] : otherwise;
}

std::set<std::string> Input::OptionsFrom(std::size_t number) const {
  const auto first = std::min(number, options.size());
  return {options.begin() + static_cast<std::ptrdiff_t>(first), options.end()};
}

std::vector<std::string> Lines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return lines;
}

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

std::string StateText() {
  using namespace orsa::kesncd;
  std::ostringstream text;
  text.precision(17);
  text << "name '" << topMod.GetName() << "' signals";
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    text << ' ' << topMod.GetSignalName(i) << '|' << topMod.GetSignalType(i) << '|'
         << topMod.GetSignalSymb(i) << '|' << topMod.GetSignalNbit(i) << '='
         << topMod.GetSignalChange(i);
  }
  text << " matched " << isTopModNameEverMatched << " scale " << timeScale << " recording "
       << recording << " span " << startCycle << ".." << endCycle;
  return text.str();
}

double PlainFrequency(int changes) {
  using namespace orsa::kesncd;
  if (changes == 0) return 0.0;
  const double cycles = (changes - 1) * 0.5;
  if (cycles == 0.0) return 0.0;
  const double period = ((endCycle - startCycle) * timeScale) / cycles;
  return period == 0.0 ? 0.0 : 1000.0 / period;
}

bool Same(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

}  // namespace fuzz
