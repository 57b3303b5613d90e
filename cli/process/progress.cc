// One line on the terminal, renewed a few times a second: bytes read, and the share of the file.
#include "cli/process/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <fstream>

namespace orsa::kesncd::cli {

namespace {

using namespace std::chrono_literals;

// Before this much time a line would only flicker.
constexpr auto kPatience = 500ms;
// Between two changes of the line, and between two looks of ReadingWatch.
constexpr auto kBetween = 200ms;
// Characters of a name's end, so that name and figures fit on 80 columns.
constexpr std::size_t kNameShown = 40;
constexpr double kMega = 1e6;
constexpr double kPercent = 100;

/// Rounded to a whole number, as text.
std::string Whole(double value) {
  return std::to_string(std::llround(value));
}

/// All bytes that the process has read so far, whoever read them. Other threads' reads are among
/// them, and also what other files gave; the caller takes the difference over the reading. 0 where
/// /proc is not there: the line then says 0.
std::uint64_t BytesRead() {
  // The file's lines are "rchar: 12345"; this one is the first.
  std::ifstream counters("/proc/self/io");
  std::string name;
  std::uint64_t value = 0;
  while (counters >> name >> value && name != "rchar:") {
  }
  return value;
}

}  // namespace

std::string ProgressText(std::uint64_t done, std::uint64_t total, double seconds) {
  const auto bytes = static_cast<double>(done);
  const double speed = bytes / seconds;
  const std::string atSpeed = ", " + Whole(speed / kMega) + " MB/s";
  // A pipe has no size: neither a share nor an end can be told.
  if (total == 0) return Whole(bytes / kMega) + " MB" + atSpeed;
  // A file may grow while it is read.
  const double all = std::max(bytes, static_cast<double>(total));
  const double left = speed > 0 ? (all - bytes) / speed : 0;
  // Rounded down, so that 100 % is never said too early.
  return Whole(std::floor(kPercent * bytes / all)) + " %" + atSpeed + ", " +
         Whole(std::ceil(left)) + " s left";
}

ProgressLine::ProgressLine(const std::string& name, std::uint64_t total)
    : name_(name.substr(name.size() - std::min(name.size(), kNameShown))),
      total_(total),
      next_(start_ + kPatience) {}

ProgressLine::~ProgressLine() {
  if (columns_ > 0) Replace("");
}

void ProgressLine::Show(std::uint64_t done) {
  const auto now = Clock::now();
  if (now < next_) return;
  next_ = now + kBetween;
  const std::chrono::duration<double> gone = now - start_;
  // A line break never goes out, so the cursor stays on the line.
  Replace(name_ + ": " + ProgressText(done, total_, gone.count()));
}

/// Blanks take a text back on every terminal.
void ProgressLine::Replace(const std::string& text) {
  std::string line = "\r" + text;
  // The old text may be longer.
  if (columns_ > text.size()) line.append(columns_ - text.size(), ' ');
  // Back to the start of the line, where what comes next begins.
  if (text.empty()) line += '\r';
  columns_ = text.size();
  // Not through std::cerr: the line must not wait in a buffer.
  if (write(STDERR_FILENO, line.data(), line.size()) < 0) columns_ = 0;  // nothing to take back
}

std::size_t ShownSource::Read(char* to, std::size_t most) {
  // A failure passes through; the destructor of line_ then clears the terminal.
  const std::size_t got = source_->Read(to, most);
  done_ += got;
  line_.Show(done_);
  return got;
}

ReadingWatch::ReadingWatch(const std::string& name, std::uint64_t total)
    : line_(name, total), thread_([this] { Run(); }) {}

ReadingWatch::~ReadingWatch() {
  {
    // The thread holds the mutex except while it waits.
    const std::lock_guard<std::mutex> lock(mutex_);
    isOver_ = true;
  }
  over_.notify_one();
  thread_.join();
}

void ReadingWatch::Run() {
  // What the process had read before is none of the file's.
  const std::uint64_t before = BytesRead();
  std::unique_lock<std::mutex> lock(mutex_);
  // Ends at once when the destructor says so, not at the next look.
  while (!over_.wait_for(lock, kBetween, [this] { return isOver_; })) {
    line_.Show(BytesRead() - before);
  }
}

}  // namespace orsa::kesncd::cli
