#include "cli/input/dump_input.h"

#include <filesystem>
#include <optional>
#include <utility>

#include "cli/input/dump_feed.h"
#include "cli/process/messages.h"
#include "cli/process/progress.h"
#include "cli/process/terminal.h"
#include "free_format/dump_writer.h"
#include "free_format/prepare.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

constexpr int kErrors = 2;  // the stream of messages

bool ShowsProgress(const InputOptions& options) {
  return !options.quiet && IsTerminal(kErrors);
}

std::string ReasonText(const std::vector<Finding>& reasons) {
  std::string text(TextOf(reasons.front().kind).finding);
  const std::size_t more = reasons.size() - 1;
  if (more > 0) text += ", and " + std::to_string(more) + " more";
  return text;
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
  auto file = std::make_unique<FileSource>(options.dump);
  const std::uint64_t size = file->size();
  std::unique_ptr<ByteSource> bytes = std::move(file);
  if (ShowsProgress(options)) {
    bytes = std::make_unique<ShownSource>(std::move(bytes), NameOf(options), size);
  }
  return Unpack(std::move(bytes), NameOf(options));
}

DumpInput::DumpInput(const InputOptions& options, Reader reader)
    : options_(options), name_(NameOf(options)) {
  UnpackedSource dump = OpenDump(options);
  bytes_ = std::move(dump.bytes);
  packing_ = dump.packing;
  Look(reader);
  if (options.asIs) return;
  if (!lookFailure_.empty()) throw Failure(FailureKind::Unusable, lookFailure_);
  isPrepared_ = !look_.reasons.empty();
  if (!isPrepared_) return;
  Remark(name_, "read through prepare: " + ReasonText(look_.reasons) +
                    "; --as-is reads it untouched, kesncd check says more");
}

/// Looks at the dump's beginning, which then is there to be read again.
void DumpInput::Look(Reader reader) {
  KeptSource kept(*bytes_);
  try {
    look_ = LookAtDump(kept, name_, reader);
  } catch (const Failure& failure) {
    lookFailure_ = failure.what();
  }
  bytes_ = std::make_unique<ResumedSource>(kept.TakeKept(), std::move(bytes_));
}

const Declarations& DumpInput::declarations() const {
  if (!lookFailure_.empty()) throw Failure(FailureKind::Unusable, lookFailure_);
  return look_.declarations;
}

std::string DumpInput::ProposedTop() const {
  return declarations().scopes[OutermostWithVariables(declarations())].name;
}

std::string DumpInput::AddedRoot() const {
  return isPrepared_ ? AddedRootOf(look_.declarations) : "";
}

void DumpInput::Pass(ByteSink& to) {
  if (isPrepared_) {
    PrepareOptions options;
    options.dump = name_;
    (void)PrepareDump(*bytes_, to, options);
  } else {
    CopyBytes(*bytes_, to);
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
  if (!isPrepared_ && IsPlainFile()) return ReadFile(run);
  DumpFeed feed([this](ByteSink& to) { Pass(to); });
  const bool outcome = run(feed.path());
  feed.Finish();
  bytes_.reset();
  return outcome;
}

}  // namespace orsa::kesncd::cli
