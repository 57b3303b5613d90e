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

/// On the stream of messages: a result may be going to standard output.
bool ShowsProgress(const InputOptions& options) {
  return !options.quiet && IsTerminal(kErrors);
}

// Bytes that are kept of a stream, which cannot be read twice. Few designs' declarations are
// longer, while a short packed file may hold no end of comments.
constexpr std::size_t kMostKept = std::size_t{1} << 28;

/// Keeps what is read of a source, so that it can be read again. For the header of a stream: what
/// the declaration reader took, beyond the header's end by up to a block, is put back in front of
/// the rest. Throws Failure with Unusable where that is too much to keep.
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

/// Figures are those of what was there, so the user has to know that it was not the whole dump. Two
/// kinds: a shorter file has lost what was to be read, a longer or rewritten one has more.
void SayChange(const std::string& name, FileChange change) {
  if (change == FileChange::Shrank) {
    Remark(name, "it became shorter while it was read: only a part of it was seen");
  } else if (change == FileChange::Changed) {
    Remark(name, "it changed while it was read and may still grow: what came later is not seen");
  }
}

/// A file that was opened. At its end it is looked at whether it still is what it was then. Shared
/// by a source and a file over the same descriptor; several threads may meet the end.
class WatchedFile {
 public:
  WatchedFile(const std::string& path, std::string name) : file_(path), name_(std::move(name)) {}

  FileSource& file() { return file_; }
  /// The end was met. Says it once, however many threads meet the end.
  void LookAtEnd() {
    const std::lock_guard<std::mutex> lock(mutex_);
    // Once it is known that the file changed there is nothing to add.
    if (*change_ != FileChange::None) return;
    *change_ = file_.Change();
    SayChange(name_, *change_);
  }
  // A pointer, since UnpackedSource hands it on beyond the life of this.
  std::shared_ptr<const FileChange> change() const { return change_; }

 private:
  FileSource file_;
  const std::string name_;
  std::mutex mutex_;
  const std::shared_ptr<FileChange> change_ = std::make_shared<FileChange>(FileChange::None);
};

/// The bytes from first to last, as they stand in the file.
class WatchedSource : public ByteSource {
 public:
  explicit WatchedSource(std::shared_ptr<WatchedFile> file) : file_(std::move(file)) {}

  std::size_t Read(char* to, std::size_t most) override {
    const std::size_t got = file_->file().Read(to, most);
    // 0 bytes wanted, 0 bytes got is no end.
    if (got == 0 && most > 0) file_->LookAtEnd();
    return got;
  }

 private:
  const std::shared_ptr<WatchedFile> file_;
};

/// A plain file whose parts are read at the same time.
class PlainFile : public ByteFile {
 public:
  /// `isShown`: with a progress line of its own, as the bytes do not pass through a source.
  PlainFile(std::shared_ptr<WatchedFile> file, const std::string& name, bool isShown)
      : file_(std::move(file)) {
    if (isShown) line_.emplace(name, size());
  }

  std::uint64_t size() const override { return file_->file().size(); }
  std::size_t ReadAt(std::uint64_t offset, char* to, std::size_t most) override {
    const std::size_t got = file_->file().ReadAt(offset, to, most);
    if (got == 0 && most > 0) file_->LookAtEnd();
    if (line_) {
      // Threads read at the same time, and the line is for one at a time.
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

/// A file that can be opened twice and read anywhere. Standard input cannot: a part of it may have
/// been read already.
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
  // open() of a directory succeeds, and reading it fails with a text that helps nobody.
  if (std::filesystem::is_directory(options.dump, ignored)) {
    throw Failure(FailureKind::Unusable, options.dump + ": is a directory");
  }
  // Its first bytes tell what kind of file it is.
  const std::string name = NameOf(options);
  const auto file = std::make_shared<WatchedFile>(options.dump, name);
  // As many as a database's, the longest, needs.
  constexpr std::size_t kKnownBy = 16;
  std::string start(kKnownBy, '\0');
  start.resize(ReadFully(file->file(), start.data(), start.size()));
  // Otherwise SQLite's pages would be read as a dump full of errors.
  if (IsSqlite(start) && !std::filesystem::is_regular_file(options.dump, ignored)) {
    throw Failure(FailureKind::Unusable, name + ": is a database, which has to be a plain file");
  }
  if (IsSqlite(start)) {
    throw Failure(FailureKind::Unusable,
                  name + ": is a database, which holds counts and no values by time: this needs " +
                      "the dump itself");
  }
  // `size` is 0 where it is not known. Around the packed bytes, whose number is known beforehand.
  const auto shown = [&](std::unique_ptr<ByteSource> bytes, std::uint64_t size) {
    if (ShowsProgress(options)) {
      bytes = std::make_unique<ShownSource>(std::move(bytes), name, size);
    }
    return bytes;
  };
  // fst2vcd reads the file by itself; its output is what is counted here.
  if (IsFst(start)) return {shown(MakeFstSource(file->file(), name), 0), "fst", {}, {}};
  // From inside out: the file, watched; the 16 bytes that were read already, in front of it; shown;
  // unpacked.
  UnpackedSource dump = Unpack(shown(std::make_unique<ResumedSource>(
                                         std::move(start), std::make_unique<WatchedSource>(file)),
                                     file->file().size()),
                               name);
  dump.change = file->change();
  dump.isRegularFile = IsRegularFile(options);
  // Only plain bytes can be read from the middle.
  if (dump.isRegularFile && dump.packing.empty()) {
    dump.file = std::make_shared<PlainFile>(file, name, ShowsProgress(options));
  }
  return dump;
}

DumpInput::DumpInput(const InputOptions& options, Passing passing)
    : options_(options), passing_(passing), name_(NameOf(options)) {
  // `file` of the opened dump is not used: the library reads from front to end.
  UnpackedSource dump = OpenDump(options);
  bytes_ = std::move(dump.bytes);
  packing_ = dump.packing;
  // Before anything is passed on: the caller may ask for the module to propose.
  ReadHeader();
  if (passing == Passing::Prepared) (void)declarations();
}

void DumpInput::ReadDeclarationsFrom(ByteSource& bytes) {
  // Kept as a text, since an AsIs dump without declarations is not wrong yet.
  try {
    DumpWords words(bytes);
    declarations_ = ReadDeclarations(words, name_);
  } catch (const Failure& failure) {
    headerFailure_ = failure.what();
  }
}

/// Reads the dump's beginning, which then is there to be read again.
void DumpInput::ReadHeader() {
  // A file is simply opened again; nothing of bytes_ is used up.
  if (IsRegularFile(options_)) {
    const UnpackedSource again = Unpack(std::make_unique<FileSource>(options_.dump), name_);
    ReadDeclarationsFrom(*again.bytes);
    return;
  }
  // A stream is read once: its beginning is put back.
  KeptSource kept(*bytes_);
  ReadDeclarationsFrom(kept);
  bytes_ = std::make_unique<ResumedSource>(kept.TakeKept(), std::move(bytes_));
}

const Declarations& DumpInput::declarations() const {
  // The text has the dump's name already.
  if (!headerFailure_.empty()) throw Failure(FailureKind::Unusable, headerFailure_);
  return declarations_;
}

std::string DumpInput::ProposedTop() const {
  // The path of the proposed scope may be long; a host can only use the last part.
  return declarations().scopes[OutermostWithVariables(declarations())].name;
}

void DumpInput::Pass(ByteSink& to) {
  if (passing_ == Passing::AsIs) return CopyBytes(*bytes_, to);
  // Prepared: what the rewriting could not read has to be said, since the library will not see it.
  PrepareOptions options;
  options.dump = name_;
  for (const std::string& remark : PrepareDump(*bytes_, to, options).unread) {
    Remark(name_, remark);
  }
}

bool DumpInput::ReadFile(const std::function<bool(const std::string& path)>& run) {
  // The library opens the file itself; one descriptor less.
  bytes_.reset();
  const FileSource file(options_.dump);
  // No bytes pass through the program, so the kernel is asked how many were read.
  std::optional<ReadingWatch> watch;
  if (ShowsProgress(options_)) watch.emplace(name_, file.size());
  // The path of the descriptor: whatever the user's path leads to meanwhile, it is the same file.
  CheckCanOpen(file.SecondPath(), name_);
  const bool outcome = run(file.SecondPath());
  SayChange(name_, file.Change());
  return outcome;
}

bool DumpInput::Read(const std::function<bool(const std::string& path)>& run) {
  // The usual way of --as-is: a plain file that the library opens as a host would have it do.
  if (passing_ == Passing::AsIs && packing_.empty() && IsRegularFile(options_))
    return ReadFile(run);
  DumpFeed feed([this](ByteSink& to) { Pass(to); });
  // In the caller's thread, while the feed's thread writes.
  CheckCanOpen(feed.path(), name_);
  const bool outcome = run(feed.path());
  // Throws where the dump could not be read, which goes before what the library made of it.
  feed.Finish();
  bytes_.reset();
  return outcome;
}

}  // namespace orsa::kesncd::cli
