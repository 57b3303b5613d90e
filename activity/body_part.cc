// Counting a part of a file by itself.
#include "activity/body_part.h"

#include <utility>

#include "activity/activity_start.h"
#include "activity/both_counters.h"
#include "free_format/body_stretch.h"
#include "free_format/declaration_reader.h"
#include "free_format/parted_reading.h"
#include "text/failure.h"

namespace orsa::kesncd {

/// Nothing in `next` can be wrong. Else it must begin right where this one ends, between two items,
/// with time growing at the cut, for both counts.
bool BodyPart::CanPrecede(const BodyPart& next) const {
  if (next.IsEmpty()) return true;
  return end == next.begin && endsCleanly && !endsDump && !next.beginsBody && activity.hasStamps &&
         next.activity.hasStamps && activity.CanPrecede(next.activity) &&
         host.CanPrecede(next.host);
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
void ReadStretch(StretchReader<BothCounters>& reader, BodyPart& part) {
  reader.Read();
  part.endsDump = reader.source().IsAtFileEnd();
  // A comment that has no end, or a value without its code, ends there with the dump.
  if (part.endsDump && !reader.EndsClean()) reader.GoOn();
  part.endsCleanly = reader.EndsClean();
  part.lines = reader.Lines();
  part.items = reader.tallies();
}

}  // namespace

/// Everybody who counts a part of the file does this, on whatever machine: the cuts depend on the
/// file and on the number of parts only.
PartRun ReadBodyPart(ByteFile& file, const PartChoice& choice, const ActivityOptions& options) {
  FileDump dump(file, options.block);
  PartRun run;
  ActivityStart start(ReadDeclarations(dump.words(), options.dump), options);
  const Declarations& declarations = start.result.declarations;
  // Exact figures of the window, hosts' figures of all time: see BothCounters.
  BothCounters counters(start.codes, start.window);
  BodyPart& part = run.part;
  part.choice = choice;
  part.dumpBytes = file.size();
  part.beginsBody = choice.first == 0;
  const BodyCuts cuts(file, dump.words().Offset(), choice.parts);
  const StretchRange stretch = StretchOf(cuts, choice);
  // A part without a stamp has begin and end in one place, and nothing is read for it.
  part.begin = stretch.begin;
  part.end = stretch.end == StretchSource::kFileEnd ? part.dumpBytes : stretch.end;
  // The first part goes on from the declarations; others look for their first stamp.
  if (part.beginsBody) {
    dump.EndAt({stretch.end});
    StretchReader<BothCounters> reader(dump, declarations, counters);
    ReadStretch(reader, part);
  } else if (!stretch.IsEmpty()) {
    StretchReader<BothCounters> reader(dump, declarations, counters, stretch.begin, {stretch.end});
    ReadStretch(reader, part);
  }
  part.activity = counters.activity().TakePart();
  part.host = counters.host().TakePart();
  run.declarations = std::move(start.result.declarations);
  return run;
}

}  // namespace orsa::kesncd
