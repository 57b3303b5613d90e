// From a dump's bytes to the activity of its bits.
#include "activity/activity_run.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

#include "activity/activity_counter.h"
#include "activity/activity_part.h"
#include "activity/activity_start.h"
#include "activity/toggle_watch.h"
#include "free_format/body_reader.h"
#include "free_format/remarks.h"

namespace orsa::kesncd {

namespace {

constexpr std::uint64_t kBytesPerBit = 120;

}  // namespace

ActivityResult CountActivity(ByteSource& dump, const ActivityOptions& options) {
  DumpWords words(dump, options.block, options.block / 4);
  ActivityStart start(words, options);
  ActivityResult& result = start.result;
  std::vector<std::uint32_t> watched;
  if (options.watch) watched = options.watch(result.declarations);
  ActivityPart part;
  {
    DumpItems items(words, result.declarations);
    ActivityCounter counter(start.codes, start.window);
    if (watched.empty()) {
      ReadBody(items, counter);
    } else {
      ToggleWatch watch(counter, watched, start.codes.codes(), start.window);
      ReadBody(items, watch);
      result.watched = watch.Take();
    }
    result.notes.items = items.tallies();
    part = counter.TakePart();
  }
  start.CheckWindow(part.hasStamps, part.first, part.last);
  std::move(part).Finish(start.codes, start.window, result);
  return std::move(start.result);
}

std::uint64_t MostBitsInMemory() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long page = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || page <= 0) return UINT64_MAX;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page) / kBytesPerBit;
}

std::vector<std::string> RemarksOn(const ActivityResult& result) {
  const ActivityNotes& notes = result.notes;
  std::vector<std::string> remarks = ReadingRemarks(result.declarations, notes.items);
  if (!notes.hasStamps) remarks.emplace_back("it has no time stamp: all its figures are 0");
  if (notes.isEndCutBack) {
    remarks.emplace_back("the window ends after the dump: it is cut back to the dump's end");
  }
  if (notes.pauses > 0) {
    const std::uint64_t span = result.lastTick - result.firstTick;
    remarks.push_back("dumping was off for " + std::to_string(span - result.observedTicks) +
                      " of " + std::to_string(span) + " ticks, which are left out");
  }
  if (notes.withoutBits) {
    remarks.push_back(
        RemarkOn("variables whose width is no positive number, left out", notes.withoutBits));
  }
  if (notes.typesWithoutBits) {
    remarks.push_back(
        RemarkOn("variables of types without bits, left out", notes.typesWithoutBits));
  }
  return remarks;
}

}  // namespace orsa::kesncd
