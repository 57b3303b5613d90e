#include "kesncd/model/activity_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include "text/file.h"
#include "text/number.h"

namespace orsa::kesncd {

namespace {

/// Whether a file can take the place of what is there: of nothing, or of one's own file that is
/// known by this name only and may be written.
bool IsReplaceable(const std::string& path) {
  struct stat found {};
  if (lstat(path.c_str(), &found) != 0) return true;
  return S_ISREG(found.st_mode) && found.st_nlink == 1 && found.st_uid == geteuid() &&
         access(path.c_str(), W_OK) == 0;
}

/// A file that goes again unless it has been put in its place.
class FileBeside {
 public:
  explicit FileBeside(const std::string& path)
      : path_(path + ".part" + std::to_string(getpid())), file_(std::fopen(path_.c_str(), "wx")) {}
  ~FileBeside() {
    if (opened_) (void)std::remove(path_.c_str());
  }
  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;

  std::FILE* get() const { return file_.get(); }
  /// A file that was there stays as readable, and as private, as it was.
  void MoveTo(const std::string& place) {
    struct stat found {};
    if (stat(place.c_str(), &found) == 0) (void)fchmod(fileno(file_.get()), found.st_mode & 07777);
    opened_ = std::fclose(file_.release()) != 0 || std::rename(path_.c_str(), place.c_str()) != 0;
  }

 private:
  const std::string path_;
  File file_;
  bool opened_ = file_ != nullptr;  // and still to be removed
};

}  // namespace

bool WriteActivity(const Vmod& module, std::FILE* file) {
  const CLocaleScope scope;
  (void)std::fprintf(file, "module | %s\n", module.GetName().c_str());
  for (int i = 0; i < module.GetSignalSize(); ++i) {
    (void)std::fprintf(file, "signal | %s | %f\n", module.GetSignalName(i).c_str(),
                       module.GetSignalFreq(i));
  }
  return std::fflush(file) == 0 && std::ferror(file) == 0;
}

void ReplaceActivityFile(const Vmod& module, const std::string& path) {
  if (IsReplaceable(path)) {
    FileBeside beside(path);
    if (beside.get() != nullptr) {
      if (WriteActivity(module, beside.get())) beside.MoveTo(path);
      return;
    }
  }
  if (const File direct{std::fopen(path.c_str(), "w")}; direct != nullptr) {
    WriteActivity(module, direct.get());
  }
}

}  // namespace orsa::kesncd
