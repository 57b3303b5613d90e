// Counting a part of a file by itself.
#include "activity/body_part.h"

#include <utility>

#include "activity/activity_start.h"
#include "activity/both_counters.h"
#include "activity/profile/bits_and_windows.h"
#include "activity/profile/module_shares.h"
#include "free_format/body_stretch.h"
#include "free_format/declaration_reader.h"
#include "free_format/parted_reading.h"

namespace orsa::kesncd {

/// Nothing in `next` can be wrong. Else it must begin right where this one ends, between two items,
/// with time growing at the cut, for both counts.
bool BodyPart::CanPrecede(const BodyPart& next) const {
  if (next.IsEmpty()) return true;
  return end == next.begin && endsCleanly && !endsDump && !next.beginsBody && activity.hasStamps &&
         next.activity.hasStamps && activity.CanPrecede(next.activity) &&
         host.CanPrecede(next.host) && profile.has_value() == next.profile.has_value() &&
         (!profile || profile->CanPrecede(*next.profile));
}

/// What is said of this part's end is now that of `next`; its begin stays.
void BodyPart::Add(const CodeBits& codes, BodyPart&& next) {
  choice.last = next.choice.last;
  if (next.IsEmpty()) return;
  items.Join(next.items, lines);
  lines += next.lines;
  end = next.end;
  endsCleanly = next.endsCleanly;
  endsDump = next.endsDump;
  activity.Add(codes, std::move(next.activity));
  host.Add({}, next.host);
}

namespace {

/// The stretch of all chosen parts.
StretchRange StretchOf(const BodyCuts& cuts, const PartChoice& choice) {
  StretchRange all;
  for (std::uint32_t part = choice.first; part <= choice.last; ++part) {
    const StretchRange one = cuts.Stretch(part);
    if (one.IsEmpty()) continue;
    if (all.IsEmpty()) all.begin = one.begin;
    all.end = one.end;
  }
  return all;
}

/// Reads to the end of the stretch and no further. What the part has to know of its end is asked
/// right after the reading.
template <class Taker>
void ReadStretch(StretchReader<Taker>& reader, BodyPart& part) {
  reader.Read();
  part.endsDump = reader.source().IsAtFileEnd();
  // A comment that has no end, or a value without its code, ends there with the dump.
  if (part.endsDump && !reader.EndsClean()) reader.GoOn();
  part.endsCleanly = reader.EndsClean();
  part.lines = reader.Lines();
  part.items = reader.tallies();
}

/// Finds the stretch and reads it with a taker.
template <class Taker>
void ReadChosen(FileDump& dump, const Declarations& declarations, const BodyCuts& cuts,
                Taker& taker, BodyPart& part) {
  const StretchRange stretch = StretchOf(cuts, part.choice);
  // A part without a stamp has begin and end in one place, and nothing is read for it.
  part.begin = stretch.begin;
  part.end = stretch.end == StretchSource::kFileEnd ? part.dumpBytes : stretch.end;
  // The first part goes on from the declarations; others look for their first stamp.
  if (part.beginsBody) {
    dump.EndAt({stretch.end});
    StretchReader<Taker> reader(dump, declarations, taker);
    ReadStretch(reader, part);
  } else if (!stretch.IsEmpty()) {
    StretchReader<Taker> reader(dump, declarations, taker, stretch.begin, {stretch.end});
    ReadStretch(reader, part);
  }
}

/// Nothing comes before the first part, and nothing after the last: what they know of these ends is
/// not needed.
void DropEnds(BodyPart& part) {
  if (part.beginsBody) part.profile->toggles.openings.clear();
  if (part.endsDump) part.profile->toggles.levels.clear();
}

/// Reads a part with bits, hosts' counts and windows.
void ReadWithWindows(FileDump& dump, const ActivityStart& start, const BodyCuts& cuts,
                     const ProfileOptions& options, BodyPart& part) {
  const Declarations& declarations = start.result.declarations;
  const ModuleTree tree = ModulesIn(declarations, Declarations::kDump, UINT32_MAX);
  const bool hasProfile = !declarations.hasWord && HasRoomFor(tree, options);
  ProfilePart profile;
  profile.windows.parts = options.length ? 0 : options.parts;
  profile.windows.length = options.length;
  profile.windows.first = FirstStampOf(dump, declarations);
  if (!options.length) profile.windows.last = options.last;
  if (options.counting.watch) profile.watched = options.counting.watch(declarations);
  const auto shares = hasProfile ? ModuleShares::ByBoth(declarations, start.codes, tree)
                                 : ModuleShares::None(start.codes);
  // Throws for a length that is none.
  (void)WindowLength(start, options);
  const ProfileWindows windows =
      StretchWindows(profile.windows, options.counting.dump, start.result.tick, options.mostCells);
  BitsAndWindows<BothCounters> taker(start, profile.watched, shares, KeptSums(tree), windows);
  ReadChosen(dump, declarations, cuts, taker, part);
  part.activity = std::move(taker.parts().activity);
  part.host = std::move(*taker.parts().host);
  if (!hasProfile) return;
  ProfilePart counted = taker.windows().TakePart();
  counted.windows = profile.windows;
  counted.watched = std::move(profile.watched);
  counted.watch = taker.TakeWatch();
  part.profile = std::move(counted);
  DropEnds(part);
}

/// Everybody who counts a part of the file does this, on whatever machine: the cuts depend on the
/// file and on the number of parts only.
PartRun ReadPart(ByteFile& file, const PartChoice& choice, const ActivityOptions& options,
                 const ProfileOptions* windows) {
  FileDump dump(file, options.block);
  PartRun run;
  ActivityStart start(ReadDeclarations(dump.words(), options.dump), options);
  BodyPart& part = run.part;
  part.choice = choice;
  part.dumpBytes = file.size();
  part.beginsBody = choice.first == 0;
  const BodyCuts cuts(file, dump.words().Offset(), choice.parts);
  if (windows != nullptr) {
    ReadWithWindows(dump, start, cuts, *windows, part);
  } else {
    // Exact figures of the window, hosts' figures of all time: see BothCounters.
    BothCounters counters(start.codes, start.window,
                          std::make_shared<CodeLines>(start.codes.codes()));
    ReadChosen(dump, start.result.declarations, cuts, counters, part);
    part.activity = counters.activity().TakePart();
    part.host = counters.host().TakePart();
  }
  run.declarations = std::move(start.result.declarations);
  return run;
}

}  // namespace

PartRun ReadBodyPart(ByteFile& file, const PartChoice& choice, const ActivityOptions& options) {
  return ReadPart(file, choice, options, nullptr);
}

PartRun ReadProfiledPart(ByteFile& file, const PartChoice& choice, const ProfileOptions& options) {
  return ReadPart(file, choice, options.counting, &options);
}

}  // namespace orsa::kesncd
