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

bool BodyPart::CanPrecede(const BodyPart& next) const {
  if (next.IsEmpty()) return true;
  return end == next.begin && endsCleanly && !endsDump && !next.beginsBody && activity.hasStamps &&
         next.activity.hasStamps && activity.CanPrecede(next.activity) &&
         host.CanPrecede(next.host);
}

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

/// Reads to the end of the stretch and no further.
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

PartRun ReadBodyPart(ByteFile& file, const PartChoice& choice, const ActivityOptions& options) {
  FileDump dump(file, options.block);
  PartRun run;
  ActivityStart start(ReadDeclarations(dump.words(), options.dump), options);
  const Declarations& declarations = start.result.declarations;
  BothCounters counters(start.codes, start.window);
  BodyPart& part = run.part;
  part.choice = choice;
  part.dumpBytes = file.size();
  part.beginsBody = choice.first == 0;
  const BodyCuts cuts(file, dump.words().Offset(), choice.parts);
  const StretchRange stretch = StretchOf(cuts, choice);
  part.begin = stretch.begin;
  part.end = stretch.end == StretchSource::kFileEnd ? part.dumpBytes : stretch.end;
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
