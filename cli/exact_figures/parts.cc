// Counting a part, and adding parts up one after the other in the order of the dump.
#include "cli/exact_figures/parts.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

#include "activity/activity_run.h"
#include "activity/both_runs.h"
#include "activity/code_bits.h"
#include "activity/profile/profile_sum.h"
#include "cli/exact_figures/kept_profile.h"
#include "cli/exact_figures/profile_reading.h"
#include "cli/exact_figures/report_clocks.h"
#include "cli/input/database_input.h"
#include "cli/process/messages.h"
#include "cli/selection/scope_choice.h"
#include "database/database_reader.h"
#include "database/row_sum.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

/// Parts are of the whole time: no window, no tick of the user's.
ActivityOptions OptionsFor(const std::string& dump) {
  ActivityOptions options;
  options.dump = dump;
  options.mostBits = MostBitsInMemory();
  return options;
}

ProfileOptions OptionsFor(const ActivityOptions& counting, const PartWindows& windows) {
  ProfileOptions options;
  options.counting = counting;
  if (windows.parts != 0) options.parts = windows.parts;
  options.length = windows.length;
  options.last = windows.last;
  return options;
}

/// "part 3 of 16 (3.kact)", counting from 1 as users do.
std::string NameOf(const PartChoice& choice, const std::string& path) {
  return "part " + std::to_string(choice.first + 1) + " of " + std::to_string(choice.parts) + " (" +
         path + ")";
}

/// A dump that can be read in parts. Throws Failure with Unusable for one that cannot. No progress:
/// jobs have no terminal.
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
/// ever for another. Not a checksum of the whole file, which would take a reading as long as the
/// count. 64 blocks of 4 KiB, the first at the start and the last near the end: another run of the
/// same design differs in its values everywhere, in its date at the start and in its last stamps at
/// the end.
std::uint64_t SampleOf(ByteFile& file) {
  constexpr std::uint64_t kPlaces = 64;
  constexpr std::uint64_t kBlock = 4096;
  // Where the last block begins; 0 for a file that is smaller than a block.
  const std::uint64_t last = file.size() > kBlock ? file.size() - kBlock : 0;
  RowSum sum;
  std::string block;
  for (std::uint64_t place = 0; place < kPlaces; ++place) {
    block.resize(kBlock);
    // Shorter only in a file that is smaller than a block, or that was cut meanwhile.
    block.resize(file.ReadAt(last / (kPlaces - 1) * place, block.data(), block.size()));
    sum.Add(block);
  }
  return sum.value();
}

/// A part's file, as far as it has to be known to put it into its place. Without figures: of
/// thousands of parts only the one in hand is read whole.
struct PartFile {
  std::string path;
  StoredFacts facts;
  // A sum over all that is declared; the same for all parts of a dump.
  std::uint64_t declarations = 0;

  // From 0.
  std::uint32_t number() const { return facts.part->first; }
};

/// Reads what a part's file says of itself. Throws Failure with Unusable where it is none.
PartFile Look(const std::string& path) {
  const ActivityDatabase database(path, path);
  if (!database.facts().part) {
    throw Failure(FailureKind::Unusable,
                  path + ": is no part of a dump: parts are merged with parts only");
  }
  return {path, database.facts(), database.DeclarationsSum()};
}

/// What a part holds over time, for messages.
std::string HeldText(const std::optional<PartWindows>& windows) {
  if (!windows) return "no figures over time";
  // Of a dump that was still written its end differs too.
  const std::string end =
      windows->last ? " up to " + std::to_string(*windows->last) + " ticks" : "";
  return WindowsText(windows->parts, windows->length) + end;
}

/// Parts fit together only if every job saw the same bytes and cut them into as many parts. Times
/// of files and paths say nothing, as each machine has its own.
void CheckSameDump(const PartFile& first, const PartFile& other) {
  // Size and sample tell dumps apart, declarations those that were counted by programs that read
  // them differently.
  const bool isSame = other.facts.part->parts == first.facts.part->parts &&
                      other.facts.dumpBytes == first.facts.dumpBytes &&
                      other.facts.dumpSample == first.facts.dumpSample &&
                      other.declarations == first.declarations;
  if (!isSame) {
    throw Failure(FailureKind::Unusable, other.path + ": is a part of another dump than " +
                                             first.path + ", or was cut in another way");
  }
  if (other.facts.partWindows == first.facts.partWindows) return;
  throw Failure(FailureKind::Unusable, other.path + ": holds " + HeldText(other.facts.partWindows) +
                                           ", but " + first.path + " " +
                                           HeldText(first.facts.partWindows));
}

/// The parts in their order. Throws where one is missing, foreign or there twice. `paths` may be in
/// any order and from any place; a message names the numbers that are missing as the user counts
/// them.
std::vector<PartFile> InOrder(const std::vector<std::string>& paths) {
  std::vector<PartFile> files;
  for (const std::string& path : paths) {
    // Looked at apart from Look, so that a dump among the parts gets this message too.
    if (!DumpOfPart(path)) {
      throw Failure(FailureKind::Unusable,
                    path + ": is no part of a dump: parts are merged with parts only");
    }
    files.push_back(Look(path));
    CheckSameDump(files.front(), files.back());
  }
  // By number; by path where two are the same, so that the message does not depend on the order.
  std::sort(files.begin(), files.end(), [](const PartFile& a, const PartFile& b) {
    return std::tuple(a.number(), a.path) < std::tuple(b.number(), b.path);
  });
  std::vector<std::string> missing;
  // The next number that is wanted.
  std::uint32_t expected = 0;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (i > 0 && files[i].number() == files[i - 1].number()) {
      throw Failure(FailureKind::Unusable,
                    files[i].path + ": holds the same part as " + files[i - 1].path);
    }
    // Numbers that were passed over, in the middle.
    for (; expected < files[i].number(); ++expected)
      missing.push_back(std::to_string(expected + 1));
    ++expected;
  }
  const std::uint32_t parts = files.front().facts.part->parts;
  // And those at the end.
  for (; expected < parts; ++expected) missing.push_back(std::to_string(expected + 1));
  if (missing.empty()) return files;
  throw Failure(FailureKind::Unusable, files.front().facts.dump + ": of its " +
                                           std::to_string(parts) + " parts there is no " +
                                           ShortList(missing));
}

/// Adds parts that are given in order. Calling order: construct, Add for each part in order,
/// Finish. The last part stays apart from the sum until it is known whether the next one can follow
/// it: if not, both are read again as one.
class PartSum {
 public:
  /// `dump` is where to read stretches again; empty: where the first part says the dump was.
  PartSum(const PartFile& first, std::string dump) : first_(first), dump_(std::move(dump)) {
    if (dump_.empty()) dump_ = first.facts.dump;
  }

  /// `file` is the next one in the dump's order.
  void Add(const PartFile& file) {
    // Declarations are the same in all, so those of the first part do.
    StoredRun run = ActivityDatabase(file.path, file.path).ReadPart(codes_ ? &*codes_ : nullptr);
    if (!last_) {
      declarations_ = std::move(run.exact.declarations);
      codes_.emplace(declarations_);
      last_ = std::move(run.part);
    } else if (!last_->CanPrecede(run.part)) {
      // Time does not grow at the cut, or a comment goes across it: from the start of the last part
      // on, both are read as one.
      const PartChoice both{last_->choice.first, run.part.choice.last, run.part.choice.parts};
      last_ = ReadAgain(both, file);
    } else if (run.part.IsEmpty()) {
      // No stamp begins in it: its stretch is part of the one before, so the last part stays the
      // last.
      last_->Add(*codes_, std::move(run.part));
    } else {
      Keep();
      last_ = std::move(run.part);
    }
  }

  /// Turns the sum into figures of a whole dump, both kinds. Once, last.
  StoredRun Finish() {
    Keep();
    StoredRun run;
    if (profile_) {
      run.profile = profile_->Finish();
      if (!run.profile) {
        Remark(first_.facts.dump,
               "its first or its last stamp is not where its parts looked them up: the result "
               "holds no figures over time");
      }
    }
    ActivityOptions options = OptionsFor(first_.facts.dump);
    BodyPart& whole = *sum_;
    // All parts are in the sum, which is what FinishBoth wants.
    BothRuns both = FinishBoth(std::move(declarations_), std::move(whole.activity),
                               std::move(whole.host), whole.items, options);
    run.facts.dump = first_.facts.dump;
    run.facts.program = first_.facts.program;
    run.exact = std::move(both.exact);
    run.host = std::move(both.host);
    return run;
  }

 private:
  /// Nothing can change the last part any more.
  void Keep() {
    if (first_.facts.partWindows) AddProfile();
    if (!sum_) {
      sum_ = std::move(last_);
    } else {
      sum_->Add(*codes_, std::move(*last_));
    }
    last_.reset();
  }

  /// Checksums say that a file holds what was written, not that it was written by this program.
  void AddProfile() {
    std::optional<ProfilePart>& part = last_->profile;
    if (part && !profile_) profile_.emplace(declarations_, first_.facts.dump, part->windows);
    if (part && profile_->Add(std::move(*part))) return;
    throw Failure(FailureKind::Unusable, first_.path +
                                             ": figures over time of this part and of the others "
                                             "do not add up: one of them is corrupt");
  }

  /// As the parts were counted, with the same clocks watched.
  BodyPart Read(ByteFile& dump, const PartChoice& choice) const {
    const ActivityOptions counting = OptionsFor(dump_);
    if (!first_.facts.partWindows) return ReadBodyPart(dump, choice, counting).part;
    ProfileOptions options = OptionsFor(counting, *first_.facts.partWindows);
    options.counting.watch = [this](const Declarations&) { return last_->profile->watched; };
    return ReadProfiledPart(dump, choice, options).part;
  }

  /// Reads several parts as one, from the dump, which must be the one that was counted.
  BodyPart ReadAgain(const PartChoice& choice, const PartFile& file) {
    const std::string why =
        NameOf(*file.facts.part, file.path) + " cannot be told from what comes before it, and ";
    // The reason first: a user must know why a dump is wanted at all.
    try {
      const std::shared_ptr<ByteFile> dump = OpenFile(dump_);
      // A file of that name may be another run's by now.
      if (dump->size() != first_.facts.dumpBytes || SampleOf(*dump) != first_.facts.dumpSample) {
        throw Failure(FailureKind::Unusable, "is not the dump that the parts were counted in");
      }
      return Read(*dump, choice);
    } catch (const Failure& failure) {
      // Its own kind (unreadable, not there), with what led to it.
      throw Failure(failure.kind(), why + dump_ + " cannot be read for it: " + failure.what() +
                                        "; --dump FILE says where the dump is");
    }
  }

  const PartFile& first_;  // whose facts the sum takes over
  std::string dump_;
  Declarations declarations_;
  std::optional<CodeBits> codes_;      // of these
  std::optional<BodyPart> sum_;        // of all parts before the last one
  std::optional<BodyPart> last_;       // which the next one may have to be read with
  std::optional<ProfileSum> profile_;  // of the parts in `sum_`
};

/// The end of the span is looked up at the dump's end, which every part sees.
PartRun CountProfiled(ByteFile& dump, const InputOptions& input, const PartChoice& choice,
                      const WindowsAsked& asked) {
  PartWindows windows;
  windows.parts = asked.PartsOrUsual();
  windows.length = asked.length;
  const ActivityOptions counting = OptionsFor(input.dump);
  InputOptions quiet = input;
  quiet.quiet = true;
  if (!windows.length) windows.last = ExpectedLast(quiet, counting);
  ProfileOptions options = OptionsFor(counting, windows);
  ReportClocks clocks;
  options.counting.watch = [&](const Declarations& declarations) {
    return clocks.FindIn(declarations, input.dump);
  };
  PartRun run = ReadProfiledPart(dump, choice, options);
  if (!run.part.profile) {
    Remark(input.dump, run.declarations.hasWord
                           ? "its definitions do not end, so its parts hold no figures over time"
                           : "it has too many modules for so many windows: the part holds no "
                             "figures over time");
  }
  return run;
}

}  // namespace

/// A packed dump cannot be cut: OpenFile says so.
StoredRun ReadPart(const InputOptions& input, const PartChoice& choice,
                   const std::optional<WindowsAsked>& windows) {
  const std::shared_ptr<ByteFile> dump = OpenFile(input.dump);
  StoredRun run;
  PartRun part = windows ? CountProfiled(*dump, input, choice, *windows)
                         : ReadBodyPart(*dump, choice, OptionsFor(input.dump));
  // What merging will compare with other parts, and where the dump is to be found.
  run.facts.dump = input.dump;
  run.facts.program = KESNCD_VERSION;
  run.facts.hasHost = false;
  run.facts.part = choice;
  run.facts.dumpBytes = part.part.dumpBytes;
  run.facts.dumpSample = SampleOf(*dump);
  // A part is no run: its figures stay empty, but a database stores these in any case.
  run.exact.declarations = std::move(part.declarations);
  run.exact.tick = run.exact.declarations.tick;
  run.exact.firstBit = CodeBits(run.exact.declarations).all();
  run.exact.notes.items = part.part.items;
  run.part = std::move(part.part);
  return run;
}

std::optional<std::string> DumpOfPart(const std::string& path) {
  InputOptions input;
  input.dump = path;
  // No window: a part is of the whole time.
  const auto database = OpenDatabase(input, {});
  if (!database || !database->facts().part) return {};
  return database->facts().dump;
}

/// All are looked at before the first is added: a missing part must not cost hours.
StoredRun AddParts(const std::vector<std::string>& paths, const std::string& dump) {
  const std::vector<PartFile> files = InOrder(paths);
  PartSum sum(files.front(), dump);
  for (const PartFile& file : files) sum.Add(file);
  StoredRun run = sum.Finish();
  for (const std::string& remark : RemarksOn(run.exact)) Remark(run.facts.dump, remark);
  return run;
}

}  // namespace orsa::kesncd::cli
