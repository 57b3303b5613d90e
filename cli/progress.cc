#include "cli/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>

namespace kesncd_cli {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 500ms;
constexpr auto kBetween = 200ms;
constexpr double kMega = 1e6;
constexpr double kPercent = 100;

std::string Whole(double value) {
  return std::to_string(std::llround(value));
}

}  // namespace

std::string ProgressText(std::uint64_t done, std::uint64_t total, double seconds) {
  const auto bytes = static_cast<double>(done);
  const double speed = bytes / seconds;
  const std::string atSpeed = ", " + Whole(speed / kMega) + " MB/s";
  if (total == 0) return Whole(bytes / kMega) + " MB" + atSpeed;
  // A file may grow while it is read.
  const double all = std::max(bytes, static_cast<double>(total));
  const double left = speed > 0 ? (all - bytes) / speed : 0;
  return Whole(std::floor(kPercent * bytes / all)) + " %" + atSpeed + ", " +
         Whole(std::ceil(left)) + " s left";
}

ShownSource::ShownSource(std::unique_ptr<ByteSource> source, std::string name, std::uint64_t total)
    : source_(std::move(source)),
      name_(std::move(name)),
      total_(total),
      next_(start_ + kPatience) {}

ShownSource::~ShownSource() {
  if (shown_ > 0) Show("");
}

std::size_t ShownSource::Read(char* to, std::size_t most) {
  const std::size_t got = source_->Read(to, most);
  done_ += got;
  const auto now = Clock::now();
  if (now >= next_) {
    next_ = now + kBetween;
    const std::chrono::duration<double> gone = now - start_;
    Show(name_ + ": " + ProgressText(done_, total_, gone.count()));
  }
  return got;
}

/// Replaces the line. Blanks do it on every terminal.
void ShownSource::Show(const std::string& text) {
  std::string line = "\r" + text;
  if (shown_ > text.size()) line.append(shown_ - text.size(), ' ');
  if (text.empty()) line += '\r';
  shown_ = text.size();
  (void)!write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace kesncd_cli
