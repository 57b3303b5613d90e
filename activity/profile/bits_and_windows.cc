// Which windows are counted in, of a whole dump and of its parts alike.
#include "activity/profile/bits_and_windows.h"

#include "free_format/body_reader.h"
#include "text/failure.h"

namespace orsa::kesncd {

std::uint64_t WindowLength(const ActivityStart& start, const ProfileOptions& options) {
  if (!options.length) return 0;
  const std::optional<std::uint64_t> tick = start.result.tick;
  const std::string& dump = options.counting.dump;
  if (!tick) {
    throw Failure(FailureKind::Unusable,
                  dump +
                      ": has no time scale, which a window needs; kesncd prepare --timescale "
                      "gives one");
  }
  if (*options.length < *tick) {
    throw Failure(FailureKind::Unusable, dump + ": a window of less than a tick shows nothing");
  }
  return *options.length;
}

ProfileWindows WindowsFor(const ActivityStart& start, const ProfileOptions& options) {
  ProfileWindows windows;
  windows.dump = options.counting.dump;
  windows.parts = options.parts;
  windows.length = WindowLength(start, options);
  windows.last = options.last;
  windows.tick = start.result.tick.value_or(1);
  windows.mostCells = options.mostCells;
  return windows;
}

ProfileWindows StretchWindows(const PartWindows& windows, const std::string& dump,
                              std::optional<std::uint64_t> tick, std::uint64_t mostCells) {
  ProfileWindows stretch;
  stretch.dump = dump;
  stretch.tick = tick.value_or(1);
  stretch.mostCells = mostCells;
  stretch.length = windows.length.value_or(0);
  if (stretch.length == 0) {
    stretch.parts = windows.parts;
    stretch.last = windows.last.value_or(0);
  }
  stretch.first = windows.first.value_or(0);
  return stretch;
}

std::optional<std::uint64_t> FirstStampOf(FileDump& dump, const Declarations& declarations) {
  // A reader of its own: the words of `dump` stay where the body begins, for the counting to come.
  StretchSource source(dump.file(), dump.words().Offset(), {StretchSource::kFileEnd});
  DumpWords words(source, dump.block(), dump.block() / 4);
  DumpItems items(words, declarations, source, false);
  LargestStamp stamps;
  stamps.isFirstEnough = true;
  ReadBody(items, stamps);
  return stamps.first;
}

}  // namespace orsa::kesncd
