// From a dump's bytes to toggles over time.
#include "activity/profile/profile_run.h"

#include <algorithm>
#include <utility>

#include "activity/activity_counter.h"
#include "activity/activity_start.h"
#include "activity/profile/profile_counter.h"
#include "activity/profile/signal_cuts.h"
#include "activity/profile/toggle_watch.h"
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
        start(ReadDeclarations(words_, options.counting.dump), options.counting),
        tree(ModulesIn(
            start.result.declarations,
            options.scope ? options.scope(start.result.declarations) : Declarations::kDump,
            options.depth)) {}

  template <class Taker>
  void Read(Taker& taker) {
    DumpItems items(words_, start.result.declarations);
    ReadBody(items, taker);
    start.result.notes.items = items.tallies();
  }

  /// Takes what is known of time. Throws where the window is empty.
  ActivityResult End(const CountedTime& time) {
    start.CheckWindow(time.hasStamps, time.firstStamp, time.lastStamp);
    ActivityResult result = std::move(start.result);
    result.notes.hasStamps = time.hasStamps;
    result.notes.backwardStamps = time.backward;
    result.notes.pauses = time.hasStamps ? time.pauses : 0;
    if (time.hasStamps) {
      result.firstTick = start.window.Clamp(time.firstStamp);
      result.lastTick = start.window.Clamp(time.lastStamp);
      result.observedTicks =
          result.lastTick - result.firstTick - time.UnobservedUpTo(result.lastTick);
    }
    return result;
  }

  /// The length of a window in femtoseconds; 0 for none.
  std::uint64_t Length() const {
    if (!options_.length) return 0;
    const std::optional<std::uint64_t> tick = start.result.tick;
    const std::string& dump = options_.counting.dump;
    if (!tick) {
      throw Failure(FailureKind::Unusable,
                    dump +
                        ": has no time scale, which a window needs; kesncd prepare --timescale "
                        "gives one");
    }
    if (*options_.length < *tick) {
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
    windows.tick = start.result.tick.value_or(1);
    windows.mostCells = options_.mostCells;
    return windows;
  }

 private:
  const ProfileOptions& options_;
  DumpWords words_;

 public:
  ActivityStart start;
  ModuleTree tree;
};

}  // namespace

ProfileRun<Profile> CountProfile(ByteSource& dump, const ProfileOptions& options) {
  Run run(dump, options);
  const auto shares = ModuleShares::ByName(run.start.result.declarations, run.tree);
  ToggleCounter toggles(run.start.codes, shares, run.tree.size(), run.start.window);
  ProfileCounter counter(toggles, run.Windows());
  run.Read(counter);
  ProfileRun<Profile> result{run.End(toggles.time()), {}, counter.WasLastRight()};
  result.figures = counter.Finish(std::move(run.tree), true);
  return result;
}

ProfileRun<Profile> CountActivityAndProfile(ByteSource& dump, const ProfileOptions& options) {
  Run run(dump, options);
  const ActivityStart& start = run.start;
  const Declarations& declarations = start.result.declarations;
  const auto shares = ModuleShares::ByOwner(declarations, start.codes, run.tree);
  ToggleCounter toggles(start.codes, shares, run.tree.size(), start.window);
  ProfileCounter windows(toggles, run.Windows());
  std::vector<std::uint32_t> watched;
  if (options.counting.watch) watched = options.counting.watch(declarations);
  ActivityPart part;
  {
    ActivityCounter counter(start.codes, start.window);
    ToggleWatch watch(counter, watched, start.codes.codes(), start.window);
    BothTakers both(watch, windows);
    run.Read(both);
    run.start.result.watched = watch.Take();
    part = counter.TakePart();
  }
  ProfileRun<Profile> result{run.End(toggles.time()), {}, windows.WasLastRight()};
  std::move(part).Finish(start.codes, start.window, result.base);
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
  const CuttingSignal clock = options.signal(run.start.result.declarations);
  const auto shares = ModuleShares::ByName(run.start.result.declarations, run.tree);
  ToggleCounter toggles(run.start.codes, shares, run.tree.size(), run.start.window);
  ClockRows rows(toggles, options.counting.dump, options.mostCells);
  ReadWatched(run, toggles, rows, clock);
  ProfileRun<Profile> result{run.End(toggles.time()), {}, true};
  result.figures = rows.Finish(std::move(run.tree));
  return result;
}

ProfileRun<ValueSplit> CountByValue(ByteSource& dump, const ProfileOptions& options) {
  Run run(dump, options);
  const CuttingSignal signal = options.signal(run.start.result.declarations);
  const auto shares = ModuleShares::ByName(run.start.result.declarations, run.tree);
  ToggleCounter toggles(run.start.codes, shares, run.tree.size(), run.start.window);
  ValueParts parts(toggles, signal.width, options.mostCells);
  ReadWatched(run, toggles, parts, signal);
  ProfileRun<ValueSplit> result{run.End(toggles.time()), {}, true};
  result.figures = parts.Finish(std::move(run.tree), options.mostValues);
  return result;
}

ProfileRun<Peak> FindPeak(ByteSource& dump, const ProfileOptions& options) {
  Run run(dump, options);
  const auto shares = ModuleShares::ByName(run.start.result.declarations, run.tree);
  ToggleCounter toggles(run.start.codes, shares, run.tree.size(), run.start.window);
  PeakSearch search(toggles, run.Length() / run.start.result.tick.value_or(1));
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
