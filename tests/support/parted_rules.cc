// One reading of a dump against threads, and against parts that are added up as by a merge.
#include "tests/support/reading_rules.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "activity/body_part.h"
#include "activity/host_run.h"
#include "activity/profile/profile_run.h"
#include "activity/profile/profile_sum.h"
#include "free_format/declaration_reader.h"
#include "free_format/dump_words.h"
#include "free_format/findings/dump_findings.h"
#include "tests/support/dump_figures.h"
#include "tests/support/require.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"
#include "vcd/time_text.h"

using namespace orsa::kesncd;

namespace support {

namespace {

const std::string& TextOf(const std::string& text) {
  return text;
}

std::string TextOf(const ActivityResult& result) {
  std::ostringstream text;
  text << "activity of " << result.observedTicks << " in " << result.firstTick << " to "
       << result.lastTick << ", " << result.notes.pauses << " pauses";
  for (const BitFigures& bit : result.bits) {
    text << '\n'
         << bit.t0 << ' ' << bit.t1 << ' ' << bit.tx << ' ' << bit.tz << ' ' << bit.tc << ' '
         << bit.ig;
  }
  for (const std::string& remark : RemarksOn(result)) text << "\n! " << remark;
  return text.str();
}

std::string TextOf(const HostRun& run) {
  std::ostringstream text;
  text << "changes from " << run.firstTick << " to " << run.lastTick << ", " << run.spanTicks;
  for (const std::uint32_t changes : run.changes) text << '\n' << changes;
  for (const std::string& remark : run.remarks) text << "\n! " << remark;
  text << '\n' << run.whyUnknown;
  return text.str();
}

std::string TextOf(const DumpCheck& check) {
  std::ostringstream text;
  const BodyFacts& body = check.body;
  text << "found in " << body.changes << " changes, " << body.unknown << " unknown, " << body.stamps
       << " stamps from " << body.firstTick << " to " << body.lastTick;
  for (const Finding& finding : check.findings) {
    text << '\n'
         << TextOf(finding.kind).finding << ": " << finding.tally.count << " from line "
         << finding.tally.line << ", " << finding.tally.example;
  }
  return text.str();
}

std::string WatchedText(const ActivityResult& result) {
  std::ostringstream text;
  for (const ToggleSpan& span : result.watched) {
    text << "\nwatched " << span.first << ' ' << span.last << ' ' << span.toggles;
  }
  return text.str();
}

std::string TextOf(const ProfileRun<Profile>& run) {
  const Profile& profile = run.figures;
  std::ostringstream text;
  text << "profile of " << run.base.observedTicks << " in " << run.base.firstTick << " to "
       << run.base.lastTick << ", " << run.base.notes.pauses << " pauses, as expected "
       << run.wasLastRight << "\nedges";
  for (const std::uint64_t edge : profile.edges) text << ' ' << edge;
  text << "\nobserved";
  for (const std::uint64_t observed : profile.observed) text << ' ' << observed;
  for (const auto& [begin, end] : profile.gaps) text << "\ngap " << begin << ' ' << end;
  for (const std::vector<std::uint64_t>& row : profile.toggles) {
    text << "\nmodule";
    for (const std::uint64_t toggles : row) text << ' ' << toggles;
  }
  for (const std::vector<std::uint64_t>& row : profile.own) {
    text << "\nown";
    for (const std::uint64_t toggles : row) text << ' ' << toggles;
  }
  text << WatchedText(run.base);
  for (const BitFigures& bit : run.base.bits) text << "\nbit " << bit.t1 << ' ' << bit.tc;
  for (const std::string& remark : RemarksOn(run.base)) text << "\n! " << remark;
  return text.str();
}

std::string TextOf(const ProfileRun<ValueSplit>& run) {
  std::ostringstream text;
  text << "split of " << run.base.observedTicks << ", " << run.figures.others << " put together";
  for (const ValueSplit::Part& part : run.figures.parts) {
    text << "\nvalue " << part.value << ' ' << part.observed;
    for (const std::uint64_t toggles : part.toggles) text << ' ' << toggles;
  }
  for (const std::string& remark : RemarksOn(run.base)) text << "\n! " << remark;
  return text.str();
}

std::string TextOf(const ProfileRun<Peak>& run) {
  const Peak& peak = run.figures;
  std::ostringstream text;
  text << "peak of " << peak.toggles << " from " << peak.begin << " to " << peak.end << ", by "
       << peak.grain;
  for (const std::string& remark : RemarksOn(run.base)) text << "\n! " << remark;
  return text.str();
}

std::string TextOf(const ProfiledRuns& run) {
  std::string text = TextOf(run.runs.exact) + TextOf(run.runs.host);
  if (!run.profile) return text;
  ProfileRun<Profile> kept;
  kept.figures = run.profile->profile;
  for (const KeptProfile::Clock& clock : run.profile->clocks) {
    kept.base.watched.push_back(clock.span);
  }
  return text + TextOf(kept);
}

/// What becomes of a reading, be it a failure.
template <class Read>
std::string Outcome(Read read) {
  try {
    return TextOf(read());
  } catch (const Failure& failure) {
    return failure.what();
  }
}

/// Reads every part by itself by `read(choice)`, and again with the ones before it where it does
/// not add up.
template <class Read>
std::vector<BodyPart> PartsOf(std::uint32_t parts, Declarations& declarations, Read read) {
  std::vector<BodyPart> sums;
  for (std::uint32_t part = 0; part < parts; ++part) {
    PartRun run = read(PartChoice{part, part, parts});
    declarations = std::move(run.declarations);
    while (!sums.empty() && !sums.back().CanPrecede(run.part)) {
      run = read(PartChoice{sums.back().choice.first, part, parts});
      sums.pop_back();
    }
    if (sums.empty() || !run.part.IsEmpty()) {
      sums.push_back(std::move(run.part));
    } else {
      sums.back().Add(CodeBits(declarations), std::move(run.part));
    }
  }
  return sums;
}

BodyPart Merged(TextFile& file, const ActivityOptions& options, std::uint32_t parts,
                Declarations& declarations) {
  std::vector<BodyPart> sums = PartsOf(parts, declarations, [&](const PartChoice& choice) {
    return ReadBodyPart(file, choice, options);
  });
  const CodeBits codes(declarations);
  while (sums.size() > 1) {
    BodyPart last = std::move(sums.back());
    sums.pop_back();
    sums.back().Add(codes, std::move(last));
  }
  return std::move(sums.front());
}

/// The same with what was counted over time.
ProfiledRuns MergedWithProfile(TextFile& file, const ProfileOptions& options, std::uint32_t parts) {
  Declarations declarations;
  std::vector<BodyPart> sums = PartsOf(parts, declarations, [&](const PartChoice& choice) {
    return ReadProfiledPart(file, choice, options);
  });
  ProfiledRuns runs;
  BodyPart& sum = sums.front();
  if (sum.profile) {
    ProfileSum profile(declarations, "", sum.profile->windows, options.mostCells);
    for (BodyPart& part : sums) {
      Require(profile.Add(std::move(*part.profile)), [] { return "a part is not of its dump"; });
    }
    runs.profile = profile.Finish();
  }
  const CodeBits codes(declarations);
  for (std::size_t i = 1; i < sums.size(); ++i) sum.Add(codes, std::move(sums[i]));
  runs.runs = FinishBoth(std::move(declarations), std::move(sum.activity), std::move(sum.host),
                         sum.items, options.counting);
  return runs;
}

/// In a dump whose definitions do not end parts have no profile.
bool HasEnd(const std::string& dump) {
  try {
    TextSource source(dump, kSmallBlock);
    DumpWords words(source, kSmallBlock, kSmallBlock / 4);
    return !ReadDeclarations(words, "").hasWord;
  } catch (const Failure&) {
    return true;
  }
}

/// The codes of signals of one bit, a few of them.
std::vector<std::uint32_t> SomeCodes(const Declarations& declarations) {
  std::vector<std::uint32_t> codes;
  for (const DumpVariable& variable : declarations.variables) {
    const bool isNew = std::find(codes.begin(), codes.end(), variable.codeId) == codes.end();
    if (variable.width == 1 && isNew && codes.size() < 4) codes.push_back(variable.codeId);
  }
  return codes;
}

void RequireSame(const std::string& parted, const std::string& whole, const std::string& how) {
  Require(parted == whole, [&] { return how + ":\n" + parted + "\nin one reading:\n" + whole; });
}

/// What `count` gives of a dump by so many threads and in one reading.
template <class Count>
void CompareByThreads(const std::string& dump, ProfileOptions options,
                      const std::vector<std::uint32_t>& numbers, Count count,
                      const std::string& what) {
  TextFile file(dump);
  TextSource whole(dump, kSmallBlock / 3);
  const std::string expected = Outcome([&] { return count(whole, options); });
  for (const std::uint32_t threads : numbers) {
    options.counting.jobs = threads;
    RequireSame(Outcome([&] { return count(file, options); }), expected,
                what + " by " + std::to_string(threads) + " threads");
  }
}

/// Toggles by windows: equal parts of the span, and windows of a few ticks.
void CheckProfilesInParts(const std::string& dump, const ActivityOptions& counting,
                          const std::vector<std::uint32_t>& numbers) {
  TextFile file(dump);
  ProfileOptions options;
  options.counting = counting;
  options.counting.watch = SomeCodes;
  options.depth = 2;
  options.mostCells = 5000;
  try {
    TextSource stamps(dump, kSmallBlock / 3);
    options.last = LastStampOf(stamps, counting);
  } catch (const Failure&) {  // which each reading gives too
  }
  for (const std::uint64_t femtoseconds : {0, 7000, 7000000}) {
    if (femtoseconds > 0) options.length = femtoseconds;
    const auto compare = [&](auto count, const std::string& what) {
      CompareByThreads(dump, options, numbers, count, what);
    };
    options.parts = 5;
    compare([](auto& from, const ProfileOptions& how) { return CountProfile(from, how); },
            "profile");
    compare(
        [](auto& from, const ProfileOptions& how) { return CountActivityAndProfile(from, how); },
        "profile with activity");
    compare([](auto& from, const ProfileOptions& how) { return CountBothAndProfile(from, how); },
            "profile with both figures");
    if (counting.window.begin || counting.window.end || !HasEnd(dump)) continue;
    TextSource whole(dump, kSmallBlock / 3);
    const std::string expected = Outcome([&] { return CountBothAndProfile(whole, options); });
    for (const std::uint32_t parts : numbers) {
      RequireSame(Outcome([&] { return MergedWithProfile(file, options, parts); }), expected,
                  "profile of " + std::to_string(parts) + " parts");
    }
  }
}

/// The declared variable of a number, with a width that it may have.
CuttingSignal SignalAt(const Declarations& declarations, std::size_t number) {
  const std::vector<DumpVariable>& variables = declarations.variables;
  const DumpVariable& variable = variables[number % variables.size()];
  return {variable.codeId, std::clamp<std::uint32_t>(variable.width, 1, 100)};
}

/// Rows of a clock, parts of values and the peak. With much room or, by the dump's length, with so
/// little that threads or even one reading have too little.
void CheckCutsInParts(const std::string& dump, const ActivityOptions& counting,
                      const std::vector<std::uint32_t>& numbers) {
  static constexpr std::uint64_t kRooms[] = {5000, 300, 9};
  ProfileOptions options;
  options.counting = counting;
  options.mostCells = kRooms[dump.size() % std::size(kRooms)];
  options.mostSteps = std::max<std::uint64_t>(options.mostCells / 3, 8);
  const auto compare = [&](auto count, const std::string& what) {
    CompareByThreads(dump, options, numbers, count, what);
  };
  for (const std::uint64_t ticks : {3, 40}) {
    options.length = ticks * 1000;  // of a picosecond, which small dumps mostly have
    compare([](auto& from, const ProfileOptions& how) { return FindPeak(from, how); },
            "peak of " + std::to_string(ticks));
  }
  options.depth = 2;
  options.mostValues = 3;
  for (const std::size_t number : {0, 1}) {
    options.signal = [number](const Declarations& declarations) {
      return SignalAt(declarations, number);
    };
    const std::string which = " of signal " + std::to_string(number);
    compare([](auto& from, const ProfileOptions& how) { return CountClockProfile(from, how); },
            "clock rows" + which);
    compare([](auto& from, const ProfileOptions& how) { return CountByValue(from, how); },
            "values" + which);
  }
}

}  // namespace

void CheckReadingInParts(const Input& input) {
  ActivityOptions options;
  options.block = kSmallBlock;
  options.window.begin = Femtoseconds(input.Option(0));
  options.window.end = Femtoseconds(input.Option(1));
  TextSource whole(input.text, kSmallBlock / 3);
  const std::string activity = Outcome([&] { return CountActivity(whole, options); });
  ActivityOptions watching = options;
  watching.watch = SomeCodes;
  const auto watch = [&](auto& dump) {
    return Outcome([&] { return WatchedText(CountActivity(dump, watching)); });
  };
  TextSource seen(input.text, kSmallBlock / 3);
  const std::string watched = watch(seen);
  TextSource again(input.text, kSmallBlock / 3);
  const std::string changes =
      Outcome([&] { return ReadHostRun(again, "", options.window, kSmallBlock); });

  TextSource checked(input.text, kSmallBlock / 3);
  const std::string findings = Outcome([&] { return CheckDump(checked, "", "", kSmallBlock); });

  constexpr std::uint32_t kMostParts = 64;
  const auto asked = static_cast<std::uint32_t>(std::strtoul(input.Option(2).c_str(), nullptr, 10));
  std::vector<std::uint32_t> numbers{2, 3, 7, 40};
  if (asked > 0) numbers = {std::min(asked, kMostParts)};
  CheckProfilesInParts(input.text, options, asked > 0 ? numbers : std::vector<std::uint32_t>{7});
  CheckCutsInParts(input.text, options, asked > 0 ? numbers : std::vector<std::uint32_t>{7});
  TextFile file(input.text);
  for (const std::uint32_t parts : numbers) {
    const std::string by = std::to_string(parts);
    options.jobs = watching.jobs = parts;
    RequireSame(Outcome([&] { return CountActivity(file, options); }), activity, by + " threads");
    RequireSame(watch(file), watched, by + " threads that watch");
    RequireSame(Outcome([&] { return CheckDump(file, "", parts, kSmallBlock); }), findings,
                by + " threads");
    RequireSame(Outcome([&] { return ReadHostRun(file, "", options.window, parts, kSmallBlock); }),
                changes, by + " threads");
    RequireSame(Outcome([&] {
                  Declarations declarations;
                  BodyPart sum = Merged(file, options, parts, declarations);
                  return FinishActivity(std::move(declarations), std::move(sum.activity), sum.items,
                                        options);
                }),
                activity, by + " parts");
    if (options.window.begin || options.window.end) continue;
    RequireSame(Outcome([&] {
                  Declarations declarations;
                  BodyPart sum = Merged(file, options, parts, declarations);
                  return FinishHostRun(std::move(declarations), std::move(sum.host), sum.items, "");
                }),
                changes, by + " parts");
  }
}

}  // namespace support
