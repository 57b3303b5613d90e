// From a dump's bytes to toggles over time.
#include "activity/profile/profile_run.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "activity/activity_counter.h"
#include "activity/activity_start.h"
#include "activity/profile/bits_and_windows.h"
#include "activity/profile/profile_counter.h"
#include "activity/profile/signal_cuts.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "free_format/parted_reading.h"
#include "text/failure.h"

namespace orsa::kesncd {

namespace {

constexpr std::uint64_t kBytesPerBit = 64;  // of toggles, with what a stretch begins with
constexpr std::uint64_t kBytesPerBitWithActivity = 200;
constexpr std::uint64_t kBytesPerBitWithBoth = 240;

/// What all kinds of runs share. Calling order: construct, make a taker, Read or ReadParts, End.
class Run {
 public:
  Run(DumpWords& words, const ProfileOptions& options)
      : options_(options),
        words_(words),
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

  /// Reads stretches of a file, each with a taker that `make` makes of the windows, and adds them
  /// up. One taker reads all where nothing else is asked for, or the windows' edges are not known.
  template <class Make>
  auto ReadParts(FileDump* dump, std::size_t sums, std::uint64_t bytesOfBit, Make make) {
    ProfileWindows windows = WindowsFor(start, options_);
    const unsigned threads = dump == nullptr ? 1 : Threads(windows, sums, bytesOfBit);
    if (threads > 1) windows.first = FirstStampOf(*dump, start.result.declarations);
    if (!windows.first) {
      auto taker = make(windows);
      Read(*taker);
      return taker;
    }
    decltype(make(windows)) whole;
    const auto add = [&](auto taker) {
      if (whole) {
        whole->Add(*taker);
      } else {
        whole = std::move(taker);
      }
    };
    start.result.notes.items = ReadInParts(
        *dump, start.result.declarations, dump->Cut(threads), [&] { return make(windows); }, add);
    return whole;
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

  unsigned Threads(const ProfileWindows& windows, std::size_t sums,
                   std::uint64_t bytesOfBit) const {
    const bool hasGrid = windows.length != 0 || windows.last;
    if (!hasGrid || start.result.declarations.hasWord) return 1;
    const std::uint64_t most = windows.mostCells;
    const bool isFew = windows.length == 0 && sums <= most / windows.parts;
    const std::uint64_t cells = isFew ? sums * windows.parts : most;
    return ThreadsWithin(bytesOfBit * start.codes.bits() + sizeof(std::uint64_t) * cells,
                         options_.counting.jobs);
  }

 private:
  const ProfileOptions& options_;
  DumpWords& words_;

 public:
  ActivityStart start;
  ModuleTree tree;
};

/// Toggles by windows from a source, or from a file if it is given.
ProfileRun<Profile> ProfileOf(DumpWords& words, FileDump* file, const ProfileOptions& options) {
  Run run(words, options);
  const auto shares = ModuleShares::ByName(run.start.result.declarations, run.tree);
  const auto counter =
      run.ReadParts(file, run.tree.size(), kBytesPerBit, [&](const ProfileWindows& windows) {
        return std::make_unique<ProfileCounter>(run.start.codes, shares, run.tree.size(),
                                                run.start.window, windows);
      });
  ProfileRun<Profile> result{run.End(counter->time()), {}, counter->WasLastRight()};
  result.figures = counter->Finish(std::move(run.tree), ModuleSums::WithBelow);
  return result;
}

ProfileRun<Profile> ActivityAndProfileOf(DumpWords& words, FileDump* file,
                                         const ProfileOptions& options) {
  Run run(words, options);
  const ActivityStart& start = run.start;
  const Declarations& declarations = start.result.declarations;
  const auto shares = ModuleShares::ByOwner(declarations, start.codes, run.tree);
  std::vector<std::uint32_t> watched;
  if (options.counting.watch) watched = options.counting.watch(declarations);
  const auto counter = run.ReadParts(file, run.tree.size(), kBytesPerBitWithActivity,
                                     [&](const ProfileWindows& windows) {
                                       return std::make_unique<BitsAndWindows<ActivityCounter>>(
                                           start, watched, shares, run.tree.size(), windows);
                                     });
  ProfileCounter& windows = counter->windows();
  ProfileRun<Profile> result{run.End(windows.time()), {}, windows.WasLastRight()};
  std::move(counter->parts().activity).Finish(start.codes, start.window, result.base);
  result.base.watched = counter->watched();
  result.figures = windows.Finish(std::move(run.tree), ModuleSums::Own);
  return result;
}

ProfiledRuns BothAndProfileOf(DumpWords& words, FileDump* file, const ProfileOptions& options) {
  ProfileOptions all = options;
  all.scope = nullptr;
  all.depth = UINT32_MAX;
  Run run(words, all);
  const ActivityStart& start = run.start;
  const Declarations& declarations = start.result.declarations;
  const std::size_t sums = KeptSums(run.tree);
  const bool hasRoom = HasRoomFor(run.tree, options);
  const auto shares = hasRoom ? ModuleShares::ByBoth(declarations, start.codes, run.tree)
                              : ModuleShares::None(start.codes);
  std::vector<std::uint32_t> watched;
  if (options.counting.watch) watched = options.counting.watch(declarations);
  const auto counter =
      run.ReadParts(file, sums, kBytesPerBitWithBoth, [&](const ProfileWindows& windows) {
        return std::make_unique<BitsAndWindows<BothCounters>>(start, watched, shares, sums, windows,
                                                              start.ticks);
      });
  ProfileCounter& windows = counter->windows();
  ProfiledRuns result;
  result.wasLastRight = windows.WasLastRight() || !hasRoom;
  if (hasRoom) {
    result.profile.emplace();
    result.profile->parts = options.length ? 0 : options.parts;
    result.profile->length = options.length;
    result.profile->profile = windows.Finish(std::move(run.tree), ModuleSums::Both);
    const std::vector<ToggleSpan> spans = counter->watched();
    for (std::size_t i = 0; i < watched.size(); ++i) {
      result.profile->clocks.push_back({watched[i], spans[i]});
    }
  }
  BitParts parts = std::move(counter->parts());
  result.runs = FinishBoth(std::move(run.start.result.declarations), std::move(parts.activity),
                           std::move(*parts.host), run.start.result.notes.items, options.counting);
  return result;
}

template <class Count>
auto CountFile(ByteFile& file, const ProfileOptions& options, Count count) {
  FileDump dump(file, options.counting.block);
  return count(dump.words(), &dump, options);
}

/// The words of a dump whose bytes come one after the other.
DumpWords WordsOf(ByteSource& dump, const ActivityOptions& options) {
  return DumpWords(dump, options.block, options.block / 4);
}

}  // namespace

ProfileRun<Profile> CountProfile(ByteSource& dump, const ProfileOptions& options) {
  DumpWords words = WordsOf(dump, options.counting);
  return ProfileOf(words, nullptr, options);
}

ProfileRun<Profile> CountProfile(ByteFile& file, const ProfileOptions& options) {
  return CountFile(file, options, ProfileOf);
}

ProfileRun<Profile> CountActivityAndProfile(ByteSource& dump, const ProfileOptions& options) {
  DumpWords words = WordsOf(dump, options.counting);
  return ActivityAndProfileOf(words, nullptr, options);
}

ProfileRun<Profile> CountActivityAndProfile(ByteFile& file, const ProfileOptions& options) {
  return CountFile(file, options, ActivityAndProfileOf);
}

ProfiledRuns CountBothAndProfile(ByteSource& dump, const ProfileOptions& options) {
  DumpWords words = WordsOf(dump, options.counting);
  return BothAndProfileOf(words, nullptr, options);
}

ProfiledRuns CountBothAndProfile(ByteFile& file, const ProfileOptions& options) {
  return CountFile(file, options, BothAndProfileOf);
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
  DumpWords words = WordsOf(dump, options.counting);
  Run run(words, options);
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
  DumpWords words = WordsOf(dump, options.counting);
  Run run(words, options);
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
  DumpWords words = WordsOf(dump, options.counting);
  Run run(words, options);
  const auto shares = ModuleShares::ByName(run.start.result.declarations, run.tree);
  ToggleCounter toggles(run.start.codes, shares, run.tree.size(), run.start.window);
  PeakSearch search(toggles, WindowLength(run.start, options) / run.start.result.tick.value_or(1));
  run.Read(search);
  ProfileRun<Peak> result{run.End(toggles.time()), {}, true};
  result.figures = search.Finish();
  return result;
}

std::optional<std::uint64_t> LastStampOf(ByteSource& dump, const ActivityOptions& options) {
  DumpWords words = WordsOf(dump, options);
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
