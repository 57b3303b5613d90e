// From a dump's bytes to toggles over time.
#include "activity/profile_run.h"

#include <algorithm>
#include <utility>

#include "activity/activity_counter.h"
#include "activity/profile_counter.h"
#include "activity/signal_cuts.h"
#include "activity/toggle_watch.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "text/failure.h"

namespace orsa::kesncd {

namespace {

/// Gives two takers what one gets.
template <class First, class Second>
class BothTakers {
 public:
  BothTakers(First& first, Second& second) : first_(first), second_(second) {}

  void Scalar(std::uint32_t codeId, char value) {
    first_.Scalar(codeId, value);
    second_.Scalar(codeId, value);
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    first_.Vector(codeId, value);
    second_.Vector(codeId, value);
  }
  void Real(std::uint32_t /*codeId*/, std::string_view /*value*/) {}
  void Stamp(std::uint64_t ticks) {
    first_.Stamp(ticks);
    second_.Stamp(ticks);
  }
  void Command(Keyword command) {
    first_.Command(command);
    second_.Command(command);
  }
  void SectionEnd() {}
  bool IsDone() const { return false; }

 private:
  First& first_;
  Second& second_;
};

/// Looks at stamps only.
class LargestStamp {
 public:
  void Scalar(std::uint32_t /*codeId*/, char /*value*/) {}
  void Vector(std::uint32_t /*codeId*/, std::string_view /*value*/) {}
  void Real(std::uint32_t /*codeId*/, std::string_view /*value*/) {}
  void Stamp(std::uint64_t ticks) { largest = std::max(largest.value_or(0), ticks); }
  void Command(Keyword /*command*/) {}
  void SectionEnd() {}
  bool IsDone() const { return false; }

  std::optional<std::uint64_t> largest;
};

/// What all kinds of runs share. Calling order: construct, make a taker, Read, End.
class Run {
 public:
  Run(ByteSource& dump, const ProfileOptions& options)
      : options_(options),
        words_(dump, options.counting.block, options.counting.block / 4),
        declarations(ReadDeclarations(words_, options.counting.dump)),
        window(ActivityWindowOf(declarations, options.counting)),
        codes(declarations),
        tree(ModulesIn(declarations,
                       options.scope ? options.scope(declarations) : Declarations::kDump,
                       options.depth)) {
    CheckMemory(codes, options.counting);
  }

  template <class Taker>
  void Read(Taker& taker) {
    DumpItems items(words_, declarations);
    ReadBody(items, taker);
    items_ = items.tallies();
  }

  /// The activity of a part. Throws where the window is empty.
  ActivityResult End(ActivityPart part) {
    return FinishActivity(std::move(declarations), std::move(part), std::move(items_),
                          options_.counting);
  }
  /// The same without figures of bits, from what is known of time.
  ActivityResult End(const CountedTime& time) {
    ActivityPart part;
    part.hasStamps = time.hasStamps;
    part.first = time.firstStamp;
    part.last = time.lastStamp;
    part.backward = time.backward;
    ActivityResult result = End(std::move(part));
    result.bits.clear();
    if (!time.hasStamps) return result;
    result.notes.pauses = time.pauses;
    result.observedTicks -= time.UnobservedUpTo(result.lastTick);
    return result;
  }

  ToggleCounter MakeCounter(const ModuleShares& shares) const {
    return {codes, shares, tree.size(), window};
  }

  std::optional<std::uint64_t> Tick() const {
    return declarations.tick ? declarations.tick : options_.counting.tick;
  }

  /// The length of a window in femtoseconds; 0 for none.
  std::uint64_t Length() const {
    if (!options_.length) return 0;
    const std::string& dump = options_.counting.dump;
    if (!Tick()) {
      throw Failure(FailureKind::Unusable,
                    dump +
                        ": has no time scale, which a window needs; kesncd prepare --timescale "
                        "gives one");
    }
    if (*options_.length < *Tick()) {
      throw Failure(FailureKind::Unusable, dump + ": a window of less than a tick shows nothing");
    }
    return *options_.length;
  }

  ProfileWindows Windows() const {
    ProfileWindows windows;
    windows.dump = options_.counting.dump;
    windows.parts = options_.parts;
    windows.length = Length();
    windows.last = options_.last;
    windows.tick = Tick().value_or(1);
    windows.mostCells = options_.mostCells;
    return windows;
  }

 private:
  const ProfileOptions& options_;
  DumpWords words_;
  ItemTallies items_;

 public:
  Declarations declarations;
  const ActivityWindow window;
  const CodeBits codes;
  ModuleTree tree;
};

}  // namespace

ProfileRun<Profile> CountProfile(ByteSource& dump, const ProfileOptions& options) {
  Run run(dump, options);
  const auto shares = ModuleShares::ByName(run.declarations, run.tree);
  ToggleCounter toggles = run.MakeCounter(shares);
  ProfileCounter counter(toggles, run.Windows());
  run.Read(counter);
  ProfileRun<Profile> result{run.End(toggles.time()), {}, counter.WasLastRight()};
  result.figures = counter.Finish(std::move(run.tree), true);
  return result;
}

ProfileRun<Profile> CountActivityAndProfile(ByteSource& dump, const ProfileOptions& options) {
  Run run(dump, options);
  const auto shares = ModuleShares::ByOwner(run.declarations, run.codes, run.tree);
  ToggleCounter toggles = run.MakeCounter(shares);
  ProfileCounter windows(toggles, run.Windows());
  std::vector<std::uint32_t> watched;
  if (options.counting.watch) watched = options.counting.watch(run.declarations);
  ActivityCounter counter(run.codes, run.window);
  ToggleWatch watch(counter, watched, run.codes.codes(), run.window);
  BothTakers both(watch, windows);
  run.Read(both);
  ProfileRun<Profile> result{run.End(counter.TakePart()), {}, windows.WasLastRight()};
  result.base.watched = watch.Take();
  result.figures = windows.Finish(std::move(run.tree), false);
  return result;
}

namespace {

/// Reads the dump with one listener to the signal of the options.
template <class Listener>
void ReadWatched(Run& run, ToggleCounter& toggles, Listener& listener,
                 const CuttingSignal& signal) {
  SignalWatch watch(toggles, signal.codeId, signal.width, listener);
  run.Read(watch);
  watch.Finish();
}

}  // namespace

ProfileRun<Profile> CountClockProfile(ByteSource& dump, const ProfileOptions& options) {
  Run run(dump, options);
  const CuttingSignal clock = options.signal(run.declarations);
  const auto shares = ModuleShares::ByName(run.declarations, run.tree);
  ToggleCounter toggles = run.MakeCounter(shares);
  ClockRows rows(toggles, options.counting.dump, options.mostCells);
  ReadWatched(run, toggles, rows, clock);
  ProfileRun<Profile> result{run.End(toggles.time()), {}, true};
  result.figures = rows.Finish(std::move(run.tree));
  return result;
}

ProfileRun<ValueSplit> CountByValue(ByteSource& dump, const ProfileOptions& options) {
  Run run(dump, options);
  const CuttingSignal signal = options.signal(run.declarations);
  const auto shares = ModuleShares::ByName(run.declarations, run.tree);
  ToggleCounter toggles = run.MakeCounter(shares);
  ValueParts parts(toggles, signal.width, options.mostCells);
  ReadWatched(run, toggles, parts, signal);
  ProfileRun<ValueSplit> result{run.End(toggles.time()), {}, true};
  result.figures = parts.Finish(std::move(run.tree), options.mostValues);
  return result;
}

ProfileRun<Peak> FindPeak(ByteSource& dump, const ProfileOptions& options) {
  Run run(dump, options);
  const auto shares = ModuleShares::ByName(run.declarations, run.tree);
  ToggleCounter toggles = run.MakeCounter(shares);
  PeakSearch search(toggles, run.Length() / run.Tick().value_or(1));
  run.Read(search);
  ProfileRun<Peak> result{run.End(toggles.time()), {}, true};
  result.figures = search.Finish();
  return result;
}

std::optional<std::uint64_t> LastStampOf(ByteSource& dump, const ActivityOptions& options) {
  DumpWords words(dump, options.block, options.block / 4);
  const Declarations declarations = ReadDeclarations(words, options.dump);
  DumpItems items(words, declarations);
  LargestStamp stamps;
  ReadBody(items, stamps);
  return stamps.largest;
}

std::optional<std::uint64_t> LastStampIn(std::string_view tail) {
  std::size_t start = tail.rfind("\n#");
  while (start != std::string_view::npos) {
    std::string_view digits = tail.substr(start + 2);
    digits = digits.substr(0, digits.find_first_not_of("0123456789"));
    std::uint64_t ticks = 0;
    const bool isCut = start + 2 + digits.size() == tail.size();
    if (!isCut && PlainNumber(digits.data(), digits.size(), ticks)) return ticks;
    tail = tail.substr(0, start + 1);
    start = tail.rfind("\n#");
  }
  return {};
}

}  // namespace orsa::kesncd
