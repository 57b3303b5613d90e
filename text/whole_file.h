// Results that are there whole or not at all. A simulation's figures feed other programs, and half
// a file of them looks like a whole one; what was there before a run that failed must still be
// there after it.
#ifndef KESNCD_TEXT_WHOLE_FILE_H_
#define KESNCD_TEXT_WHOLE_FILE_H_

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "text/byte_stream.h"

namespace orsa::kesncd {

/// What the path of a result leads to, through all symbolic links.
struct Place {
  std::string path;     // of the file itself, not of a link to it
  int descriptor = -1;  // of a stream that is open already: "-", "/dev/stdout"; else -1
  bool exists = false;
  struct stat status {};  // when it exists
  int error = 0;          // why that is not known

  bool IsRegular() const { return exists && S_ISREG(status.st_mode); }
};

/// An empty path and "-" are standard output. Nothing is opened or made. A path that cannot be
/// examined gives a Place with `error`.
Place PlaceOf(const std::string& path);

/// Whether what is written to one place would show in the other. Two streams that are open already
/// take turns.
bool IsSameFile(const Place& one, const Place& other);

/// Is told of temporary files, so that a program that a signal ends can remove them. Made comes
/// before the file exists and Gone after it is removed or renamed; a path told gone may never have
/// existed.
class TemporaryFiles {
 public:
  TemporaryFiles() = default;
  virtual ~TemporaryFiles() = default;
  TemporaryFiles(const TemporaryFiles&) = delete;
  TemporaryFiles& operator=(const TemporaryFiles&) = delete;

  virtual void Made(const std::string& path) = 0;
  virtual void Gone(const std::string& path) = 0;
};

/// What the user of a result wants besides the usual; see the class for that.
struct WholeFileRules {
  // Null: nobody has to know. Else it must outlive the file.
  TemporaryFiles* watch = nullptr;
  bool onlyRegular = false;  // a pipe or a device of that name is refused, not written to
  // Where the old and the new file do not both fit, the old one is written over, at its risk.
  bool inPlaceIfFull = false;
};

/// A result on its way: constructed, written, committed. Every step throws Failure with
/// OutputFailed.
///
/// It is written under a name that nobody can guess, in the folder of its place, and renamed. The
/// new file has the old one's mode, owner and group; a symbolic link goes on leading to it. Where
/// renaming would lose something (further hard links, an owner, a list of permissions) or the
/// folder takes no new file, it is made whole elsewhere and then copied over the old file's bytes;
/// should that fail, the message says that the file may be corrupt. What is no regular file is
/// written directly. A Failure from Write leaves the old file as it was, and so does the destructor
/// without Commit.
class WholeFile : public ByteSink {
 public:
  /// Opens right away, so that a result that cannot be written is known before a dump of hours is
  /// read.
  explicit WholeFile(const std::string& path, const WholeFileRules& rules = {});
  /// Takes back what was not committed.
  ~WholeFile() override;

  void Write(std::string_view bytes) override;
  /// Puts the whole result in its place. Call it once, last; Write may not follow.
  void Commit();
  /// Whether a person may be looking.
  bool IsTerminal() const;

 private:
  void Open();
  void OpenBesideOld();
  bool OpenBeside(mode_t mode);
  void OpenElsewhere();
  void MoveElsewhere();
  void CopyOverOld();
  void RemoveTemporary();
  [[noreturn]] void Fail(int reason) const;

  const std::string name_;  // for messages
  const WholeFileRules rules_;
  // What the path led to at construction.
  const Place place_;
  std::string temporary_;  // in the folder of the place; empty for none
  // Bytes go to their place at once: to a stream, a pipe or a device.
  bool isDirect_ = false;
  // The descriptor that is written to; -1 after Commit.
  int file_ = -1;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_WHOLE_FILE_H_
