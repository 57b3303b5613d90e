// Reading lists whole: unlike dumps they fit into memory.
#include "cli/input/list_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "cli/input/dump_input.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

// 1 GiB holds all names of the largest designs; a device or a small packed file may have no end.
constexpr std::size_t kLongest = std::size_t{1} << 30;

/// Keeps what is written to it; `text` is taken when all is there.
class TextCollector : public ByteSink {
 public:
  explicit TextCollector(std::string name) : name_(std::move(name)) {}

  void Write(std::string_view bytes) override {
    if (text.size() + bytes.size() > kLongest) {
      throw Failure(FailureKind::Unusable, name_ + ": is longer than 1 GB, too long for memory");
    }
    text += bytes;
  }
  std::string text;

 private:
  const std::string name_;
};

/// Without blanks, tabs and the carriage returns of Windows files at either end.
std::string_view Trimmed(std::string_view line) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t start = line.find_first_not_of(kBlanks);
  if (start == std::string_view::npos) return {};
  return line.substr(start, line.find_last_not_of(kBlanks) - start + 1);
}

/// Takes the first line off a text. `text` is what is left; a last line may have no newline.
std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = text.find('\n');
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return line;
}

}  // namespace

/// As a dump is opened, so packed lists and standard input work too; without a progress line.
std::string ReadText(const std::string& path) {
  InputOptions options;
  options.dump = path;
  options.quiet = true;
  return ReadText(*OpenDump(options).bytes, NameOf(options));
}

std::string ReadText(ByteSource& source, const std::string& name) {
  // Editors on Windows put it there; it would become part of the first name.
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  TextCollector collector(name);
  CopyBytes(source, collector);
  if (collector.text.starts_with(kByteOrderMark)) collector.text.erase(0, kByteOrderMark.size());
  return std::move(collector.text);
}

std::vector<std::string> ReadNames(const std::string& path) {
  const std::string text = ReadText(path);
  std::vector<std::string> names;
  // Views into `text`, so that a list of a million names is copied once.
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view name = Trimmed(TakeLine(rest));
    if (!name.empty() && name.front() != '#') names.emplace_back(name);
  }
  return names;
}

std::string WithoutComments(const std::string& text) {
  std::string kept;
  // No longer than the text, except for a newline after a last line that has none.
  kept.reserve(text.size());
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view line = TakeLine(rest);
    const std::string_view trimmed = Trimmed(line);
    // The newline stays, or every later message would name a wrong line.
    if (trimmed.empty() || trimmed.front() != '#') kept += line;
    kept += '\n';
  }
  return kept;
}

/// A file without a name in memory. It is not inherited by exec, so others open it by
/// PathForOthers.
TextByPath::TextByPath(const std::string& text) : file_(memfd_create("text", MFD_CLOEXEC)) {
  std::string_view rest = text;
  // memfd_create may have failed; that is told below.
  while (file_ >= 0 && !rest.empty()) {
    const ssize_t written = write(file_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    // No memory, or a limit on the size of files.
    if (written < 0) break;
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  if (file_ >= 0 && rest.empty()) return;
  // Before close, which may set it anew.
  const std::string reason = std::strerror(errno);
  if (file_ >= 0) (void)close(file_);
  throw Failure(FailureKind::Unusable, "no memory for a list: " + reason);
}

TextByPath::~TextByPath() {
  (void)close(file_);
}

/// /proc/self would be the other process's own.
std::string TextByPath::PathForOthers() const {
  return "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(file_);
}

std::string TextByPath::path() const {
  return "/proc/self/fd/" + std::to_string(file_);
}

}  // namespace orsa::kesncd::cli
