// Opening dumps, and passing them on to the library.
#include "cli/input/dump_input.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <optional>
#include <utility>

#include "cli/input/dump_feed.h"
#include "cli/input/fst_source.h"
#include "cli/process/messages.h"
#include "cli/process/progress.h"
#include "cli/process/terminal.h"
#include "database/database_reader.h"
#include "free_format/declaration_reader.h"
#include "free_format/dump_words.h"
#include "free_format/prepare/prepare.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

constexpr int kErrors = 2;  // the stream of messages

bool ShowsProgress(const InputOptions& options) {
  return !options.quiet && IsTerminal(kErrors);
}

// Of a stream, which cannot be read twice. Few designs' declarations are longer, while a short
// packed file may hold no end of comments.
constexpr std::size_t kMostKept = std::size_t{1} << 28;

/// Keeps what is read of a source, so that it can be read again.
class KeptSource : public ByteSource {
 public:
  explicit KeptSource(ByteSource& source) : source_(source) {}

  std::size_t Read(char* to, std::size_t most) override {
    const std::size_t got = source_.Read(to, most);
    kept_.append(to, got);
    if (kept_.size() > kMostKept) {
      throw Failure(FailureKind::Unusable,
                    "the declarations are too long for a stream; give the dump as a file");
    }
    return got;
  }
  std::string TakeKept() { return std::move(kept_); }

 private:
  ByteSource& source_;
  std::string kept_;
};

/// Figures are those of what was there, so the user has to know that it was not the whole dump.
void SayChange(const std::string& name, FileChange change) {
  if (change == FileChange::Shrank) {
    Remark(name, "it became shorter while it was read: only a part of it was seen");
  } else if (change == FileChange::Changed) {
    Remark(name, "it changed while it was read and may still grow: what came later is not seen");
  }
}

/// A file that was opened. At its end it is looked at whether it still is what it was then.
class WatchedFile {
 public:
  WatchedFile(const std::string& path, std::string name) : file_(path), name_(std::move(name)) {}

  FileSource& file() { return file_; }
  /// The end was met.
  void LookAtEnd() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (*change_ != FileChange::None) return;
    *change_ = file_.Change();
    SayChange(name_, *change_);
  }
  std::shared_ptr<const FileChange> change() const { return change_; }

 private:
  FileSource file_;
  const std::string name_;
  std::mutex mutex_;
  const std::shared_ptr<FileChange> change_ = std::make_shared<FileChange>(FileChange::None);
};

class WatchedSource : public ByteSource {
 public:
  explicit WatchedSource(std::shared_ptr<WatchedFile> file) : file_(std::move(file)) {}

  std::size_t Read(char* to, std::size_t most) override {
    const std::size_t got = file_->file().Read(to, most);
    if (got == 0 && most > 0) file_->LookAtEnd();
    return got;
  }

 private:
  const std::shared_ptr<WatchedFile> file_;
};

/// A plain file whose parts are read at the same time.
class PlainFile : public ByteFile {
 public:
  PlainFile(std::shared_ptr<WatchedFile> file, const std::string& name, bool isShown)
      : file_(std::move(file)) {
    if (isShown) line_.emplace(name, size());
  }

  std::uint64_t size() const override { return file_->file().size(); }
  std::size_t ReadAt(std::uint64_t offset, char* to, std::size_t most) override {
    const std::size_t got = file_->file().ReadAt(offset, to, most);
    if (got == 0 && most > 0) file_->LookAtEnd();
    if (line_) {
      const std::lock_guard<std::mutex> lock(mutex_);
      line_->Show(done_ += got);
    }
    return got;
  }

 private:
  const std::shared_ptr<WatchedFile> file_;
  std::mutex mutex_;
  std::optional<ProgressLine> line_;
  std::uint64_t done_ = 0;  // bytes of all parts
};

/// A file that can be opened twice and read anywhere. Standard input cannot: it may stand behind
/// its file's start.
bool IsRegularFile(const InputOptions& options) {
  std::error_code ignored;
  return options.dump != "-" && std::filesystem::is_regular_file(options.dump, ignored);
}

/// Opening a path once more costs a descriptor, and the library does not say why it could not.
void CheckCanOpen(const std::string& path, const std::string& name) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) throw Failure(FailureKind::Unusable, name + ": " + std::strerror(errno));
  (void)close(file);
}

}  // namespace

std::string NameOf(const InputOptions& options) {
  return options.dump == "-" ? "standard input" : options.dump;
}

UnpackedSource OpenDump(const InputOptions& options) {
  std::error_code ignored;
  if (std::filesystem::is_directory(options.dump, ignored)) {
    throw Failure(FailureKind::Unusable, options.dump + ": is a directory");
  }
  const std::string name = NameOf(options);
  const auto file = std::make_shared<WatchedFile>(options.dump, name);
  constexpr std::size_t kKnownBy = 16;
  std::string start(kKnownBy, '\0');
  start.resize(ReadFully(file->file(), start.data(), start.size()));
  if (IsSqlite(start)) {
    throw Failure(FailureKind::Unusable,
                  name + ": is a database, which holds counts and no values by time: this needs " +
                      "the dump itself");
  }
  const auto shown = [&](std::unique_ptr<ByteSource> bytes, std::uint64_t size) {
    if (ShowsProgress(options)) {
      bytes = std::make_unique<ShownSource>(std::move(bytes), name, size);
    }
    return bytes;
  };
  if (IsFst(start)) return {shown(MakeFstSource(file->file(), name), 0), "fst", {}, {}};
  UnpackedSource dump = Unpack(shown(std::make_unique<ResumedSource>(
                                         std::move(start), std::make_unique<WatchedSource>(file)),
                                     file->file().size()),
                               name);
  dump.change = file->change();
  dump.isRegularFile = IsRegularFile(options);
  if (dump.isRegularFile && dump.packing.empty()) {
    dump.file = std::make_shared<PlainFile>(file, name, ShowsProgress(options));
  }
  return dump;
}

DumpInput::DumpInput(const InputOptions& options, Passing passing)
    : options_(options), passing_(passing), name_(NameOf(options)) {
  UnpackedSource dump = OpenDump(options);
  bytes_ = std::move(dump.bytes);
  packing_ = dump.packing;
  ReadHeader();
  if (passing == Passing::Prepared) (void)declarations();
}

void DumpInput::ReadDeclarationsFrom(ByteSource& bytes) {
  try {
    DumpWords words(bytes);
    declarations_ = ReadDeclarations(words, name_);
  } catch (const Failure& failure) {
    headerFailure_ = failure.what();
  }
}

/// Reads the dump's beginning, which then is there to be read again.
void DumpInput::ReadHeader() {
  if (IsRegularFile(options_)) {
    const UnpackedSource again = Unpack(std::make_unique<FileSource>(options_.dump), name_);
    ReadDeclarationsFrom(*again.bytes);
    return;
  }
  KeptSource kept(*bytes_);
  ReadDeclarationsFrom(kept);
  bytes_ = std::make_unique<ResumedSource>(kept.TakeKept(), std::move(bytes_));
}

const Declarations& DumpInput::declarations() const {
  if (!headerFailure_.empty()) throw Failure(FailureKind::Unusable, headerFailure_);
  return declarations_;
}

std::string DumpInput::ProposedTop() const {
  return declarations().scopes[OutermostWithVariables(declarations())].name;
}

void DumpInput::Pass(ByteSink& to) {
  if (passing_ == Passing::AsIs) return CopyBytes(*bytes_, to);
  PrepareOptions options;
  options.dump = name_;
  for (const std::string& remark : PrepareDump(*bytes_, to, options).unread) {
    Remark(name_, remark);
  }
}

bool DumpInput::ReadFile(const std::function<bool(const std::string& path)>& run) {
  bytes_.reset();
  const FileSource file(options_.dump);
  std::optional<ReadingWatch> watch;
  if (ShowsProgress(options_)) watch.emplace(name_, file.size());
  CheckCanOpen(file.SecondPath(), name_);
  const bool outcome = run(file.SecondPath());
  SayChange(name_, file.Change());
  return outcome;
}

bool DumpInput::Read(const std::function<bool(const std::string& path)>& run) {
  if (passing_ == Passing::AsIs && packing_.empty() && IsRegularFile(options_))
    return ReadFile(run);
  DumpFeed feed([this](ByteSink& to) { Pass(to); });
  CheckCanOpen(feed.path(), name_);
  const bool outcome = run(feed.path());
  feed.Finish();
  bytes_.reset();
  return outcome;
}

}  // namespace orsa::kesncd::cli
