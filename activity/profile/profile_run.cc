// From a dump's bytes to toggles over time.
//
// All runs have one shape. The declarations are read first, since the choice of a scope or of a
// signal depends on them and may end the run; then the body goes through one taker, or through one
// for each stretch of a file; at the end sums become figures. What differs is the taker: windows of
// time, windows with the activity of every bit, a clock, a signal's values, or the search for a
// peak.
//
// Any of them may read stretches of a file in threads, which add up to the same to the last toggle.
// Where a signal cuts time, a stretch may hold more than can be added: one thread reads then.
#include "activity/profile/profile_run.h"

#include <memory>
#include <utility>

#include "activity/activity_counter.h"
#include "activity/activity_start.h"
#include "activity/profile/bits_and_windows.h"
#include "activity/profile/peak_search.h"
#include "activity/profile/profile_counter.h"
#include "activity/profile/signal_cuts.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "free_format/parted_reading.h"

namespace orsa::kesncd {

namespace {

// What a taker of one thread keeps of each declared bit, about: it bounds how many threads fit into
// memory, and nothing else depends on it.
constexpr std::uint64_t kBytesPerBit = 64;  // of toggles, with what a stretch begins with
constexpr std::uint64_t kBytesPerBitWithActivity = 220;
constexpr std::uint64_t kBytesPerBitWithBoth = 250;
constexpr std::uint64_t kBytesPerSum = 16;  // of a module, beside those in rows

/// What all kinds of runs share. Calling order: construct, make a taker, Read or ReadParts, End.
/// The steps keep an order that a hostile dump cannot upset: what the declarations ask for in
/// memory is checked before anything is counted, an empty window after all is read, when it is
/// known where the dump ends.
///
/// A result does not depend on the number of threads or on where a file was cut: takers add up
/// exactly, and what was read under a wrong guess is dropped (see parted_reading.h).
class Run {
 public:
  /// Reads the declarations. `words` and `options` have to outlive the run.
  Run(DumpWords& words, const ProfileOptions& options)
      : start(ReadDeclarations(words, options.counting.dump), options.counting),
        tree(ModulesIn(
            start.result.declarations,
            options.scope ? options.scope(start.result.declarations) : Declarations::kDump,
            options.depth)),
        options_(options),
        words_(words) {}

  ActivityStart start;
  ModuleTree tree;  // the modules that have sums

  // Reads the whole body by one thread. What was passed over goes into the result's notes.
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
    // The first stamp is read beforehand, as it is the edge from which all stretches have to count
    // their windows. A body without a stamp has none, and nothing to share among threads either.
    ProfileWindows windows = WindowsFor(start, options_);
    const unsigned threads = dump == nullptr ? 1 : Threads(windows, sums, bytesOfBit);
    if (threads > 1) windows.first = FirstStampOf(*dump, start.result.declarations);
    if (dump == nullptr || !windows.first) {
      auto taker = make(windows);
      Read(*taker);
      return taker;
    }
    return ReadTogether(*dump, threads, [&] { return make(windows); });
  }

  /// The same for takers that need no windows, but know whether they begin the body:
  /// `make(isFirst, sharers)`. So many of them share the room that one has, but for the first, so
  /// that threads take no more than twice the memory of one.
  template <class Make>
  auto ReadCuts(FileDump* dump, Make make) {
    const std::uint64_t bytes = kBytesPerBit * start.codes.bits() + kBytesPerSum * tree.size();
    const bool isCut = dump != nullptr && !start.result.declarations.hasWord;
    const unsigned threads = isCut ? ThreadsWithin(bytes, options_.counting.jobs) : 1;
    if (dump == nullptr || threads == 1) {
      auto taker = make(true, 1);
      Read(*taker);
      return taker;
    }
    return ReadTogether(*dump, threads, [&](std::size_t stretch) {
      return make(stretch == 0, stretch == 0 ? 1 : threads);
    });
  }

  /// Takes what is known of time. Throws where the window is empty. The declarations move into the
  /// result, so a run ends once; its codes and its window stay.
  ActivityResult End(const CountedTime& time) {
    start.CheckWindow(time.hasStamps, time.firstStamp, time.lastStamp);
    ActivityResult result = std::move(start.result);
    result.notes.hasStamps = time.hasStamps;
    result.notes.backwardStamps = time.backward;
    // Without stamps nothing was counted, and a pause of no time is not worth a remark.
    result.notes.pauses = time.hasStamps ? time.pauses : 0;
    if (time.hasStamps) {
      result.firstTick = start.window.Clamp(time.firstStamp);
      result.lastTick = start.window.Clamp(time.lastStamp);
      result.observedTicks =
          result.lastTick - result.firstTick - time.UnobservedUpTo(result.lastTick);
    }
    return result;
  }

 private:
  /// Reads with takers that `make` makes, as of ReadInParts, and adds them up.
  template <class Make>
  auto ReadTogether(FileDump& dump, unsigned threads, Make make) {
    // The first stretch's taker becomes the whole, and each further one adds to it. ReadInParts
    // gives them in the order of the dump, one at a time, when all have been read.
    decltype(MakeTaker(make, 0)) whole;
    const auto add = [&](auto taker) {
      if (whole) {
        whole->Add(*taker);
      } else {
        whole = std::move(taker);
      }
    };
    start.result.notes.items =
        ReadInParts(dump, start.result.declarations, dump.Cut(threads), make, add);
    return whole;
  }

  // How many threads read. One where the edges of windows follow from what is read (windows that
  // fold), or where the first word of the body was taken with the declarations, so that the body
  // does not begin at a known byte. Else as many as memory allows: beside its bits, each thread has
  // sums of its own.
  unsigned Threads(const ProfileWindows& windows, std::size_t sums,
                   std::uint64_t bytesOfBit) const {
    const bool hasGrid = windows.length != 0 || windows.last;
    if (!hasGrid || start.result.declarations.hasWord) return 1;
    // Windows of a length are not counted yet, so they are taken for as many as there may be.
    const std::uint64_t most = windows.mostCells;
    const bool isFew = windows.length == 0 && sums <= most / windows.parts;
    const std::uint64_t cells = isFew ? sums * windows.parts : most;
    return ThreadsWithin(bytesOfBit * start.codes.bits() + sizeof(std::uint64_t) * cells,
                         options_.counting.jobs);
  }

  const ProfileOptions& options_;
  DumpWords& words_;
};

/// Toggles by windows from a source, or from a file if it is given. The shares are by name, as
/// `kesncd activity` sums modules, and stay here while the counters refer to them.
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

/// Windows and the activity of every bit. Sums by owner, which share nothing, so that the page that
/// shows them may put modules together as it likes.
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

/// For a database, which answers for any scope and depth later: so all modules are counted,
/// whatever the options say, and each twice, by name and by owner. Without room for that many sums
/// the figures of bits are counted all the same.
ProfiledRuns BothAndProfileOf(DumpWords& words, FileDump* file, const ProfileOptions& options) {
  ProfileOptions all = options;
  all.scope = nullptr;
  all.depth = UINT32_MAX;
  Run run(words, all);
  const ActivityStart& start = run.start;
  const Declarations& declarations = start.result.declarations;
  // Own sums by name first, then what makes them sums by owner: see ModuleShares::ByBoth.
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
  // Without a profile there is nothing that another reading could set right.
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

// Lets `count` read a file, which FileDump can cut into stretches.
template <class Count>
auto CountFile(ByteFile& file, const ProfileOptions& options, Count count) {
  FileDump dump(file, options.counting.block);
  return count(dump.words(), &dump, options);
}

/// The words of a dump whose bytes come one after the other. A quarter of a block is kept of each
/// word, as FileDump does, so that results are the same for both.
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

/// Reads the dump by what the options' signal cuts it into. Steps that end with the dump are told
/// by Finish: there is no stamp after them.
template <class Listener>
auto ReadSignalCuts(Run& run, FileDump* file, const ModuleShares& shares,
                    const ProfileOptions& options) {
  const CuttingSignal signal = options.signal(run.start.result.declarations);
  auto cuts = run.ReadCuts(file, [&](bool isFirst, unsigned sharers) {
    return std::make_unique<SignalCuts<Listener>>(
        run.start, shares, run.tree.size(), signal.codeId, signal.width,
        CutRoom{options.counting.dump, options.mostCells / sharers, isFirst});
  });
  cuts->Finish();
  return cuts;
}

/// There is no span to be expected, so `wasLastRight` is always true.
ProfileRun<Profile> ClockProfileOf(DumpWords& words, FileDump* file,
                                   const ProfileOptions& options) {
  Run run(words, options);
  const auto shares = ModuleShares::ByName(run.start.result.declarations, run.tree);
  const auto cuts = ReadSignalCuts<ClockRows>(run, file, shares, options);
  ProfileRun<Profile> result{run.End(cuts->time()), {}, true};
  result.figures = cuts->listener().Finish(std::move(run.tree));
  return result;
}

ProfileRun<ValueSplit> ByValueOf(DumpWords& words, FileDump* file, const ProfileOptions& options) {
  Run run(words, options);
  const auto shares = ModuleShares::ByName(run.start.result.declarations, run.tree);
  const auto cuts = ReadSignalCuts<ValueParts>(run, file, shares, options);
  ProfileRun<ValueSplit> result{run.End(cuts->time()), {}, true};
  result.figures = cuts->listener().Finish(std::move(run.tree), options.mostValues);
  return result;
}

/// All of the scope is one module, whatever the options say.
ProfileRun<Peak> PeakOf(DumpWords& words, FileDump* file, const ProfileOptions& options) {
  ProfileOptions flat = options;
  flat.depth = 0;
  Run run(words, flat);
  const auto shares = ModuleShares::ByName(run.start.result.declarations, run.tree);
  // In whole ticks, rounded down; WindowLength has refused what is less than one.
  const std::uint64_t length = WindowLength(run.start, options) / run.start.result.tick.value_or(1);
  const auto search = run.ReadCuts(file, [&](bool isFirst, unsigned sharers) {
    return std::make_unique<PeakSearch>(run.start.codes, shares, run.start.window, length,
                                        options.mostSteps / sharers, isFirst);
  });
  ProfileRun<Peak> result{run.End(search->time()), {}, true};
  result.figures = search->Finish();
  return result;
}

/// Reads a file in stretches, and once more by one thread where one of them was too large.
template <class Count>
auto CountCuts(ByteFile& file, const ProfileOptions& options, Count count) {
  try {
    return CountFile(file, options, count);
  } catch (const StretchTooLarge&) {
    ProfileOptions once = options;
    once.counting.jobs = 1;
    return CountFile(file, once, count);
  }
}

}  // namespace

ProfileRun<Profile> CountClockProfile(ByteSource& dump, const ProfileOptions& options) {
  DumpWords words = WordsOf(dump, options.counting);
  return ClockProfileOf(words, nullptr, options);
}

ProfileRun<Profile> CountClockProfile(ByteFile& file, const ProfileOptions& options) {
  return CountCuts(file, options, ClockProfileOf);
}

ProfileRun<ValueSplit> CountByValue(ByteSource& dump, const ProfileOptions& options) {
  DumpWords words = WordsOf(dump, options.counting);
  return ByValueOf(words, nullptr, options);
}

ProfileRun<ValueSplit> CountByValue(ByteFile& file, const ProfileOptions& options) {
  return CountCuts(file, options, ByValueOf);
}

ProfileRun<Peak> FindPeak(ByteSource& dump, const ProfileOptions& options) {
  DumpWords words = WordsOf(dump, options.counting);
  return PeakOf(words, nullptr, options);
}

ProfileRun<Peak> FindPeak(ByteFile& file, const ProfileOptions& options) {
  return CountCuts(file, options, PeakOf);
}

// The whole body has to be read, because stamps may go back: the largest need not be the last.
std::optional<std::uint64_t> LastStampOf(ByteSource& dump, const ActivityOptions& options) {
  DumpWords words = WordsOf(dump, options);
  const Declarations declarations = ReadDeclarations(words, options.dump);
  DumpItems items(words, declarations);
  LargestStamp stamps;
  ReadBody(items, stamps);
  return stamps.largest;
}

std::optional<std::uint64_t> LastStampIn(std::string_view tail) {
  // From the end backwards, at begins of lines only. A comment that holds such a line may mislead
  // the search, which does no harm: this is what is expected of a dump, and
  // ProfileCounter::WasLastRight tells whether the dump kept to it.
  std::size_t start = tail.rfind("\n#");
  while (start != std::string_view::npos) {
    std::string_view digits = tail.substr(start + 2);
    digits = digits.substr(0, digits.find_first_not_of("0123456789"));
    std::uint64_t ticks = 0;
    // Digits that end the file may go on in what was cut off: such a stamp is not taken.
    const bool isCut = start + 2 + digits.size() == tail.size();
    if (!isCut && PlainNumber(digits.data(), digits.size(), ticks)) return ticks;
    tail = tail.substr(0, start + 1);
    start = tail.rfind("\n#");
  }
  return {};
}

}  // namespace orsa::kesncd
