// Writing the activity: a new file beside the old one where that can be, else in place.
#include "kesncd/model/activity_file.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string_view>
#include <utility>

#include "text/number.h"

namespace orsa::kesncd {

namespace {

// Bytes that are gathered before they are written.
constexpr std::size_t kFullBuffer = std::size_t{1} << 16;
// A run must end, even where somebody made the file a pipe that nobody reads.
constexpr int kPatienceMs = 1000;  // for a pipe's reader to take the next bytes
// The user's mask is taken off.
constexpr mode_t kPermissions = 0666;

/// An open file that closes itself.
class OpenFile {
 public:
  explicit OpenFile(int file) : file_(file) {}
  ~OpenFile() { Close(); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  bool isOpen() const { return file_ >= 0; }
  int get() const { return file_; }
  // False where the system finds only now that bytes were not written.
  bool Close() { return file_ < 0 || close(std::exchange(file_, -1)) == 0; }

 private:
  // -1: closed.
  int file_;
};

/// False, with errno set, when not all bytes were taken; what was taken stays written.
bool WriteAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(file, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      // Set not to wait, so that an unread pipe does not block the run.
      pollfd waiting{file, POLLOUT, 0};
      if (poll(&waiting, 1, kPatienceMs) == 0) return false;
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

/// Whether a file can take the place of what is there: of nothing, or of one's own file that is
/// known by this name only and may be written. A link is none, since it must go on leading to its
/// file.
bool IsReplaceable(const std::string& path) {
  struct stat found {};
  // Nothing there; whether the folder takes a file shows when it is made.
  if (lstat(path.c_str(), &found) != 0) return true;
  return S_ISREG(found.st_mode) && found.st_nlink == 1 && found.st_uid == geteuid() &&
         access(path.c_str(), W_OK) == 0;
}

/// A file that goes again unless it has been put in its place.
class FileBeside {
 public:
  explicit FileBeside(const std::string& path)
      // The process's number keeps two runs on one dump apart; a file of that name that is there
      // already is never opened.
      : path_(path + ".part" + std::to_string(getpid())),
        file_(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPermissions)),
        opened_(file_.isOpen()) {}
  ~FileBeside() {
    if (opened_) (void)std::remove(path_.c_str());
  }
  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;

  bool isOpen() const { return opened_; }
  int get() const { return file_.get(); }
  /// A file that was there stays as readable, and as private, as it was. Only a file that was
  /// closed without an error goes to its place.
  bool MoveTo(const std::string& place) {
    struct stat found {};
    // The bits of permissions, with the set-user, set-group and sticky bits.
    if (stat(place.c_str(), &found) == 0) (void)fchmod(file_.get(), found.st_mode & 07777);
    opened_ = !file_.Close() || std::rename(path_.c_str(), place.c_str()) != 0;
    return !opened_;
  }

 private:
  const std::string path_;
  OpenFile file_;
  bool opened_;  // and still to be removed
};

/// Writes "module | NAME" and a line "signal | NAME | MHZ" for each signal. False, with errno set,
/// when not all of it could be written.
bool WriteActivity(const Vmod& module, int file) {
  // Names go as far as a C string does.
  // NOLINTBEGIN(readability-redundant-string-cstr)
  std::string text = std::string("module | ") + module.GetName().c_str() + "\n";
  for (int i = 0; i < module.GetSignalSize(); ++i) {
    text.append("signal | ").append(module.GetSignalName(i).c_str());
    // NOLINTEND(readability-redundant-string-cstr)
    text.append(" | ").append(FixedText(module.GetSignalFreq(i)));
    text += '\n';
    if (text.size() < kFullBuffer) continue;
    if (!WriteAll(file, text)) return false;
    text.clear();
  }
  return WriteAll(file, text);
}

/// Replaces the file at `path`; false where it is to be written in place instead.
bool ReplaceFile(const Vmod& module, const std::string& path) {
  FileBeside beside(path);
  if (!beside.isOpen()) return false;
  // Where even the rename fails, the file is written in place.
  if (WriteActivity(module, beside.get())) return beside.MoveTo(path);
  // The room that the old text gives back may do. Where something else is wrong, a limit on the
  // size of files or memory, the old text stays.
  return errno != ENOSPC && errno != EDQUOT;
}

}  // namespace

void AppendActivity(const Vmod& module, const std::string& path) {
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
  const OpenFile file(open(path.c_str(), flags, kPermissions));
  if (file.isOpen()) (void)WriteActivity(module, file.get());
}

void ReplaceActivityFile(const Vmod& module, const std::string& path) {
  if (IsReplaceable(path) && ReplaceFile(module, path)) return;
  // Without waiting: a pipe may have no reader. O_NOCTTY, so that a terminal of that name does not
  // become the process's own.
  const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const OpenFile direct(open(path.c_str(), flags, kPermissions));
  if (direct.isOpen()) (void)WriteActivity(module, direct.get());
}

}  // namespace orsa::kesncd
