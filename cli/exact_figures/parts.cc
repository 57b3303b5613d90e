// Counting a part, and adding parts up one after the other in the order of the dump.
#include "cli/exact_figures/parts.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

#include "activity/activity_run.h"
#include "activity/both_runs.h"
#include "cli/input/database_input.h"
#include "cli/process/messages.h"
#include "cli/selection/scope_choice.h"
#include "database/database_reader.h"
#include "database/row_sum.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

ActivityOptions OptionsFor(const std::string& dump) {
  ActivityOptions options;
  options.dump = dump;
  options.mostBits = MostBitsInMemory();
  return options;
}

std::string NameOf(const PartChoice& choice, const std::string& path) {
  return "part " + std::to_string(choice.first + 1) + " of " + std::to_string(choice.parts) + " (" +
         path + ")";
}

/// A dump that can be read in parts.
std::shared_ptr<ByteFile> OpenFile(const std::string& path) {
  InputOptions input;
  input.dump = path;
  input.quiet = true;
  std::shared_ptr<ByteFile> file = OpenDump(input).file;
  if (file != nullptr) return file;
  throw Failure(
      FailureKind::Unusable,
      NameOf(input) + ": only a plain file can be read in parts, no packed one and no pipe");
}

/// A number made of places all over a file: the same for the same dump on every machine, and hardly
/// ever for another.
std::uint64_t SampleOf(ByteFile& file) {
  constexpr std::uint64_t kPlaces = 64;
  constexpr std::uint64_t kBlock = 4096;
  const std::uint64_t last = file.size() > kBlock ? file.size() - kBlock : 0;
  RowSum sum;
  std::string block;
  for (std::uint64_t place = 0; place < kPlaces; ++place) {
    block.resize(kBlock);
    block.resize(file.ReadAt(last / (kPlaces - 1) * place, block.data(), block.size()));
    sum.Add(block);
  }
  return sum.value();
}

/// A part's file, as far as it has to be known to put it into its place.
struct PartFile {
  std::string path;
  StoredFacts facts;
  std::uint64_t declarations = 0;

  std::uint32_t number() const { return facts.part->first; }
};

PartFile Look(const std::string& path) {
  const ActivityDatabase database(path, path);
  if (!database.facts().part) {
    throw Failure(FailureKind::Unusable,
                  path + ": is no part of a dump: parts are merged with parts only");
  }
  return {path, database.facts(), database.DeclarationsSum()};
}

void CheckSameDump(const PartFile& first, const PartFile& other) {
  const bool isSame = other.facts.part->parts == first.facts.part->parts &&
                      other.facts.dumpBytes == first.facts.dumpBytes &&
                      other.facts.dumpSample == first.facts.dumpSample &&
                      other.declarations == first.declarations;
  if (isSame) return;
  throw Failure(FailureKind::Unusable, other.path + ": is a part of another dump than " +
                                           first.path + ", or was cut in another way");
}

/// The parts in their order. Throws where one is missing, foreign or there twice.
std::vector<PartFile> InOrder(const std::vector<std::string>& paths) {
  std::vector<PartFile> files;
  for (const std::string& path : paths) {
    if (!IsPart(path)) {
      throw Failure(FailureKind::Unusable,
                    path + ": is no part of a dump: parts are merged with parts only");
    }
    files.push_back(Look(path));
    CheckSameDump(files.front(), files.back());
  }
  std::sort(files.begin(), files.end(), [](const PartFile& a, const PartFile& b) {
    return std::tuple(a.number(), a.path) < std::tuple(b.number(), b.path);
  });
  std::vector<std::string> missing;
  std::uint32_t expected = 0;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (i > 0 && files[i].number() == files[i - 1].number()) {
      throw Failure(FailureKind::Unusable,
                    files[i].path + ": holds the same part as " + files[i - 1].path);
    }
    for (; expected < files[i].number(); ++expected)
      missing.push_back(std::to_string(expected + 1));
    ++expected;
  }
  const std::uint32_t parts = files.front().facts.part->parts;
  for (; expected < parts; ++expected) missing.push_back(std::to_string(expected + 1));
  if (missing.empty()) return files;
  throw Failure(FailureKind::Unusable, files.front().facts.dump + ": of its " +
                                           std::to_string(parts) + " parts there is no " +
                                           ShortList(missing));
}

/// Adds parts that are given in order.
class PartSum {
 public:
  PartSum(const PartFile& first, std::string dump) : first_(first), dump_(std::move(dump)) {
    if (dump_.empty()) dump_ = first.facts.dump;
  }

  void Add(const PartFile& file) {
    StoredRun run = ActivityDatabase(file.path, file.path).ReadPart();
    if (!last_) {
      declarations_ = std::move(run.exact.declarations);
      last_ = std::move(run.part);
    } else if (!last_->CanPrecede(run.part)) {
      last_ = ReadAgain({last_->choice.first, run.part.choice.last, run.part.choice.parts}, file);
    } else if (run.part.IsEmpty()) {
      last_->Add(CodeBits(declarations_), std::move(run.part));
    } else {
      Keep();
      last_ = std::move(run.part);
    }
  }

  StoredRun Finish() {
    Keep();
    ActivityOptions options = OptionsFor(first_.facts.dump);
    BodyPart& whole = *sum_;
    BothRuns both = FinishBoth(std::move(declarations_), std::move(whole.activity),
                               std::move(whole.host), whole.items, options);
    StoredRun run;
    run.facts.dump = first_.facts.dump;
    run.facts.program = first_.facts.program;
    run.exact = std::move(both.exact);
    run.host = std::move(both.host);
    return run;
  }

 private:
  /// Nothing can change the last part any more.
  void Keep() {
    if (!sum_) {
      sum_ = std::move(last_);
    } else {
      sum_->Add(CodeBits(declarations_), std::move(*last_));
    }
    last_.reset();
  }

  BodyPart ReadAgain(const PartChoice& choice, const PartFile& file) {
    const std::string why =
        NameOf(*file.facts.part, file.path) + " cannot be told from what comes before it, and ";
    try {
      const std::shared_ptr<ByteFile> dump = OpenFile(dump_);
      if (dump->size() != first_.facts.dumpBytes || SampleOf(*dump) != first_.facts.dumpSample) {
        throw Failure(FailureKind::Unusable, "is not the dump that the parts were counted in");
      }
      return ReadBodyPart(*dump, choice, OptionsFor(dump_)).part;
    } catch (const Failure& failure) {
      throw Failure(failure.kind(), why + dump_ + " cannot be read for it: " + failure.what() +
                                        "; --dump FILE says where the dump is");
    }
  }

  const PartFile& first_;
  std::string dump_;
  Declarations declarations_;
  std::optional<BodyPart> sum_;   // of all parts before the last one
  std::optional<BodyPart> last_;  // which the next one may have to be read with
};

}  // namespace

StoredRun ReadPart(const InputOptions& input, const PartChoice& choice) {
  const std::shared_ptr<ByteFile> dump = OpenFile(input.dump);
  StoredRun run;
  PartRun part = ReadBodyPart(*dump, choice, OptionsFor(input.dump));
  run.facts.dump = input.dump;
  run.facts.program = KESNCD_VERSION;
  run.facts.hasHost = false;
  run.facts.part = choice;
  run.facts.dumpBytes = part.part.dumpBytes;
  run.facts.dumpSample = SampleOf(*dump);
  run.exact.declarations = std::move(part.declarations);
  run.exact.tick = run.exact.declarations.tick;
  run.exact.firstBit = CodeBits(run.exact.declarations).all();
  run.exact.notes.items = part.part.items;
  run.part = std::move(part.part);
  return run;
}

bool IsPart(const std::string& path) {
  InputOptions input;
  input.dump = path;
  const auto database = OpenDatabase(input, {});
  return database && database->facts().part;
}

StoredRun AddParts(const std::vector<std::string>& paths, const std::string& dump) {
  const std::vector<PartFile> files = InOrder(paths);
  PartSum sum(files.front(), dump);
  for (const PartFile& file : files) sum.Add(file);
  StoredRun run = sum.Finish();
  for (const std::string& remark : RemarksOn(run.exact)) Remark(run.facts.dump, remark);
  return run;
}

}  // namespace orsa::kesncd::cli
