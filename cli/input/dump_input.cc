// Opening dumps, and passing them on to the library.
#include "cli/input/dump_input.h"

#include <filesystem>
#include <optional>
#include <utility>

#include "cli/input/dump_feed.h"
#include "cli/input/fst_source.h"
#include "cli/process/messages.h"
#include "cli/process/progress.h"
#include "cli/process/terminal.h"
#include "free_format/declaration_reader.h"
#include "free_format/dump_words.h"
#include "free_format/prepare.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

constexpr int kErrors = 2;  // the stream of messages

bool ShowsProgress(const InputOptions& options) {
  return !options.quiet && IsTerminal(kErrors);
}

// No design's declarations are longer; other files may hold no end of them.
constexpr std::size_t kMostKept = std::size_t{1} << 30;

/// Keeps what is read of a source, so that it can be read again.
class KeptSource : public ByteSource {
 public:
  explicit KeptSource(ByteSource& source) : source_(source) {}

  std::size_t Read(char* to, std::size_t most) override {
    const std::size_t got = source_.Read(to, most);
    kept_.append(to, got);
    if (kept_.size() > kMostKept) {
      throw Failure(FailureKind::Unusable, "the declarations do not end; is it a VCD file?");
    }
    return got;
  }
  std::string TakeKept() { return std::move(kept_); }

 private:
  ByteSource& source_;
  std::string kept_;
};

}  // namespace

std::string NameOf(const InputOptions& options) {
  return options.dump == "-" ? "standard input" : options.dump;
}

UnpackedSource OpenDump(const InputOptions& options) {
  std::error_code ignored;
  if (std::filesystem::is_directory(options.dump, ignored)) {
    throw Failure(FailureKind::Unusable, options.dump + ": is a directory");
  }
  auto file = std::make_unique<FileSource>(options.dump);
  std::uint64_t size = file->size();
  constexpr std::size_t kKnownBy = 16;
  std::string start(kKnownBy, '\0');
  start.resize(ReadFully(*file, start.data(), start.size()));
  const bool isFst = IsFst(start);
  std::unique_ptr<ByteSource> bytes;
  if (isFst) {
    bytes = MakeFstSource(*file, NameOf(options));
    size = 0;  // of the VCD
  } else {
    bytes = std::make_unique<ResumedSource>(std::move(start), std::move(file));
  }
  if (ShowsProgress(options)) {
    bytes = std::make_unique<ShownSource>(std::move(bytes), NameOf(options), size);
  }
  if (isFst) return {std::move(bytes), "fst"};
  return Unpack(std::move(bytes), NameOf(options));
}

DumpInput::DumpInput(const InputOptions& options, Passing passing)
    : options_(options), passing_(passing), name_(NameOf(options)) {
  UnpackedSource dump = OpenDump(options);
  bytes_ = std::move(dump.bytes);
  packing_ = dump.packing;
  ReadHeader();
  if (passing == Passing::Prepared) (void)declarations();
}

/// Reads the dump's beginning, which then is there to be read again.
void DumpInput::ReadHeader() {
  KeptSource kept(*bytes_);
  try {
    DumpWords words(kept);
    declarations_ = ReadDeclarations(words, name_);
  } catch (const Failure& failure) {
    headerFailure_ = failure.what();
  }
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

/// A file that can be opened twice. Standard input cannot: it may stand behind its file's start.
bool DumpInput::IsPlainFile() const {
  std::error_code ignored;
  return packing_.empty() && options_.dump != "-" &&
         std::filesystem::is_regular_file(options_.dump, ignored);
}

bool DumpInput::ReadFile(const std::function<bool(const std::string& path)>& run) {
  bytes_.reset();
  const FileSource file(options_.dump);
  std::optional<ReadingWatch> watch;
  if (ShowsProgress(options_)) watch.emplace(name_, file.size());
  return run(file.SecondPath());
}

bool DumpInput::Read(const std::function<bool(const std::string& path)>& run) {
  if (passing_ == Passing::AsIs && IsPlainFile()) return ReadFile(run);
  DumpFeed feed([this](ByteSink& to) { Pass(to); });
  const bool outcome = run(feed.path());
  feed.Finish();
  bytes_.reset();
  return outcome;
}

}  // namespace orsa::kesncd::cli
