// Where a result is written, and how it comes to its place.
#include "text/whole_file.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/resource.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

#include "text/failure.h"

namespace orsa::kesncd {

namespace {

constexpr mode_t kNewMode = 0666;  // less the user's mask
// While it is being written a result is nobody else's business.
constexpr mode_t kPrivate = 0600;
// The permissions, with the set-user, set-group and sticky bits.
constexpr mode_t kModeBits = 07777;

/// The number of the process's own open stream that a path such as /proc/self/fd/1 stands for.
/// Writing to such a path means the stream itself: opening it anew would write over the start of a
/// file where the open stream goes on at its own place.
int DescriptorOf(const std::filesystem::path& folder, const std::string& name) {
  std::error_code ignored;
  if (folder != std::filesystem::canonical("/proc/self/fd", ignored)) return -1;
  // The whole name must be a number of an open stream: "1x" and "99" are none.
  int number = -1;
  const char* const end = name.data() + name.size();
  const auto result = std::from_chars(name.data(), end, number);
  const bool isOpen = result.ec == std::errc() && result.ptr == end && fcntl(number, F_GETFD) >= 0;
  return isOpen ? number : -1;
}

/// What a symbolic link says; empty for what is none.
std::string LinkText(const std::string& path) {
  std::array<char, PATH_MAX> text{};
  const ssize_t size = readlink(path.c_str(), text.data(), text.size());
  return size <= 0 ? "" : std::string(text.data(), static_cast<std::size_t>(size));
}

/// Follows links to where a file is or would be made. Opening the link itself would do for a file
/// that exists, but a temporary file must lie beside the file that it names. Dangling links count
/// as well: the file that they name is made by the first run.
void FollowLinks(const std::string& path, Place& place) {
  constexpr int kMostLinks = 40;  // as the system
  std::filesystem::path at = path;
  for (int links = 0; links < kMostLinks; ++links) {
    std::error_code error;
    // The folder's own links are followed by canonical, the last part's here, one by one.
    const std::filesystem::path named = at.has_parent_path() ? at.parent_path() : ".";
    std::filesystem::path folder = std::filesystem::canonical(named, error);
    if (error) folder = named;
    place.path = (folder / at.filename()).string();
    place.descriptor = DescriptorOf(folder, at.filename().string());
    const std::string link = LinkText(place.path);
    // An open stream, or no link any more: this is the place.
    if (place.descriptor >= 0 || link.empty()) return;
    at = folder / link;  // an absolute text replaces the folder
  }
}

/// Writes all bytes, however slow the reader; 0 or the reason why not. A stream shared with another
/// program may be set not to wait; then poll waits for its reader.
int WriteAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd ready{file, POLLOUT, 0};
      (void)poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

/// Copies all of a file, from its start to the other's present place.
int CopyAll(int from, int to) {
  constexpr std::size_t kBlock = std::size_t{1} << 17U;
  std::vector<char> block(kBlock);
  off_t at = 0;
  while (true) {
    const ssize_t got = pread(from, block.data(), block.size(), at);
    if (got == 0) return 0;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return errno;
    const int error = WriteAll(to, {block.data(), static_cast<std::size_t>(got)});
    if (error != 0) return error;
    at += got;
  }
}

/// 128 bits that nobody can foresee, so that nobody can lay a link there beforehand. Empty where
/// the system gives no random bytes.
std::string UnguessableName() {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::array<unsigned char, 16> bytes{};
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) return "";
  std::string name = ".kesncd-";
  for (const unsigned char byte : bytes) {
    name += kDigits[byte >> 4U];
    name += kDigits[byte & 0xfU];
  }
  return name;
}

/// Whether so many bytes could be written over a file; 0 or the reason why not. To know that before
/// the first byte is written spares the old ones.
int RoomFor(int file, off_t size, off_t oldSize) {
  // A limit of the process would end it by a signal in the middle of the writing.
  rlimit limit{};
  const bool isLimited = getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
  if (isLimited && static_cast<rlim_t>(size) > limit.rlim_cur) return EFBIG;
  // Reserves the blocks without changing the size; file systems that cannot do so are trusted.
  if (size <= oldSize || fallocate(file, FALLOC_FL_KEEP_SIZE, 0, size) == 0) return 0;
  return errno == ENOSPC || errno == EDQUOT || errno == EFBIG ? errno : 0;
}

}  // namespace

Place PlaceOf(const std::string& path) {
  Place place;
  if (path.empty() || path == "-") {
    place.descriptor = STDOUT_FILENO;
    place.exists = fstat(STDOUT_FILENO, &place.status) == 0;
    return place;
  }
  // With stat, not lstat: what matters is what the links lead to.
  place.exists = stat(path.c_str(), &place.status) == 0;
  if (!place.exists && errno != ENOENT) place.error = errno;
  FollowLinks(path, place);
  return place;
}

bool IsSameFile(const Place& one, const Place& other) {
  if (one.descriptor >= 0 && other.descriptor >= 0) return false;
  // Two files that do not exist yet are told apart by their paths, which are without links here.
  if (!one.exists && !other.exists) return one.path == other.path;
  return one.IsRegular() && other.IsRegular() && one.status.st_dev == other.status.st_dev &&
         one.status.st_ino == other.status.st_ino;
}

WholeFile::WholeFile(const std::string& path, const WholeFileRules& rules)
    : name_(path.empty() || path == "-" ? "standard output" : path),
      rules_(rules),
      place_(PlaceOf(path)) {
  Open();
}

WholeFile::~WholeFile() {
  if (file_ >= 0) (void)close(file_);
  RemoveTemporary();
}

/// Chooses one of three ways: directly to a stream or device, beside the old file, or into a folder
/// that has no file of the name yet.
void WholeFile::Open() {
  if (place_.error != 0) Fail(place_.error);
  isDirect_ = place_.descriptor >= 0 || (place_.exists && !place_.IsRegular());
  if (isDirect_ && rules_.onlyRegular && !place_.IsRegular()) Fail(EINVAL);
  if (place_.descriptor >= 0) {
    // A duplicate: closing the result must leave the process its standard output.
    file_ = fcntl(place_.descriptor, F_DUPFD_CLOEXEC, 0);
  } else if (isDirect_) {
    // A pipe waits for its reader here. A terminal must not become the process's own.
    file_ = open(place_.path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
  } else if (place_.exists) {
    OpenBesideOld();
  } else {
    (void)OpenBeside(kNewMode);
  }
  if (file_ < 0) Fail(errno);
}

/// A file that its user made read-only stays, also where its folder would let it be replaced.
void WholeFile::OpenBesideOld() {
  const char* const path = place_.path.c_str();
  // A rename does not ask whether the old file may be written.
  if (faccessat(AT_FDCWD, path, W_OK, AT_EACCESS) != 0) Fail(errno);
  // A rename would part the file from its other names or from its list of permissions.
  const bool hasMore =
      place_.status.st_nlink > 1 || getxattr(path, "system.posix_acl_access", nullptr, 0) > 0;
  if (hasMore || !OpenBeside(kPrivate)) return OpenElsewhere();
  // The new file gets owner and mode at once, before a byte is in it: nobody who could not read the
  // old one can read the new one while it is written.
  const struct stat& old = place_.status;
  struct stat own {};
  const bool isOwned =
      fstat(file_, &own) == 0 && ((own.st_uid == old.st_uid && own.st_gid == old.st_gid) ||
                                  fchown(file_, old.st_uid, old.st_gid) == 0);
  if (!isOwned || fchmod(file_, old.st_mode & kModeBits) != 0) MoveElsewhere();
}

/// Makes the temporary file; false, with errno set, where the folder takes none.
bool WholeFile::OpenBeside(mode_t mode) {
  const std::string name = UnguessableName();
  if (name.empty()) return false;
  temporary_ = (std::filesystem::path(place_.path).parent_path() / name).string();
  // Announced before it exists: a signal between the two steps would leave it for good otherwise.
  if (rules_.watch != nullptr) rules_.watch->Made(temporary_);
  file_ = open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
  if (file_ >= 0) return true;
  const int error = errno;
  if (rules_.watch != nullptr) rules_.watch->Gone(temporary_);
  temporary_.clear();
  errno = error;
  return false;
}

/// A file without a name, which goes with the process; in memory where there is no folder for it.
/// Such a file cannot be renamed; Commit copies it over the old one.
void WholeFile::OpenElsewhere() {
  const char* const wanted = std::getenv("TMPDIR");
  file_ = open(wanted == nullptr ? "/tmp" : wanted, O_RDWR | O_TMPFILE | O_CLOEXEC, kPrivate);
  if (file_ < 0) file_ = memfd_create("kesncd", MFD_CLOEXEC);
  if (file_ < 0) Fail(errno);
}

/// Leaves the old file's folder, with what has been written so far.
void WholeFile::MoveElsewhere() {
  struct Closing {
    const int file;
    ~Closing() { (void)close(file); }  // also where there is no place elsewhere
  };
  const Closing beside{std::exchange(file_, -1)};
  OpenElsewhere();
  const int error = CopyAll(beside.file, file_);
  RemoveTemporary();
  if (error != 0) Fail(error);
}

void WholeFile::RemoveTemporary() {
  if (temporary_.empty()) return;
  (void)unlink(temporary_.c_str());
  if (rules_.watch != nullptr) rules_.watch->Gone(temporary_);
  temporary_.clear();
}

void WholeFile::Fail(int reason) const {
  // A reader such as `head` that has seen enough is no error of the output, and needs no message.
  if (reason == EPIPE && place_.descriptor == STDOUT_FILENO) {
    throw Failure(FailureKind::ReaderGone, name_ + ": nobody reads it any more");
  }
  throw Failure(FailureKind::OutputFailed, name_ + ": cannot write: " + std::strerror(reason));
}

/// A full disk may still hold one of the two files: where the user accepts the risk, what was
/// written so far moves to where there is room, and Commit copies it over the old one.
void WholeFile::Write(std::string_view bytes) {
  const off_t before = temporary_.empty() ? 0 : lseek(file_, 0, SEEK_CUR);
  int error = WriteAll(file_, bytes);
  // Part of the bytes may have been written when the disk got full; they are cut off again.
  const bool isFull = error == ENOSPC || error == EDQUOT;
  if (isFull && rules_.inPlaceIfFull && place_.exists && !temporary_.empty() &&
      ftruncate(file_, before) == 0) {
    MoveElsewhere();
    error = WriteAll(file_, bytes);
  }
  if (error != 0) Fail(error);
}

/// The last resort of Commit, where no rename is possible. Nothing is changed before it is known
/// that the old file is still a regular one and that there is room.
void WholeFile::CopyOverOld() {
  // Not through a link that somebody laid there meanwhile, and not waiting for a pipe's reader.
  const int old = open(place_.path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (old < 0) Fail(errno);
  struct stat found {};
  struct stat made {};
  const bool isKnown = fstat(old, &found) == 0 && fstat(file_, &made) == 0;
  int error = !isKnown                  ? errno
              : !S_ISREG(found.st_mode) ? EINVAL
                                        : RoomFor(old, made.st_size, found.st_size);
  const bool isUntouched = error != 0;
  if (error == 0) error = CopyAll(file_, old);
  // A longer old result would show after the new one.
  if (error == 0 && ftruncate(old, made.st_size) != 0) error = errno;
  // Network file systems report here what they could not write.
  if (close(old) != 0 && error == 0) error = errno;
  if (error == 0) return;
  if (isUntouched) Fail(error);
  throw Failure(FailureKind::OutputFailed, name_ + ": cannot write: " + std::strerror(error) +
                                               "; the file may be corrupt now");
}

bool WholeFile::IsTerminal() const {
  return isDirect_ && isatty(file_) == 1;
}

/// Three endings: the temporary file is renamed, or its bytes are copied over the old file's, or
/// the bytes went directly to their place and nothing is left to do.
void WholeFile::Commit() {
  // Some file systems tell only when a file is closed that it could not be written. The file itself
  // is still needed where it cannot be renamed.
  const int closed = fcntl(file_, F_DUPFD_CLOEXEC, 0);
  if (closed < 0 || close(closed) != 0) Fail(errno);
  if (!temporary_.empty() && std::rename(temporary_.c_str(), place_.path.c_str()) == 0) {
    if (rules_.watch != nullptr) rules_.watch->Gone(temporary_);
    temporary_.clear();
  } else if (!isDirect_) {
    // The rename failed, or there is no temporary file beside: only an old file can take the bytes.
    if (!place_.exists) Fail(errno);
    CopyOverOld();
    RemoveTemporary();
  }
  (void)close(file_);
  file_ = -1;
}

}  // namespace orsa::kesncd
