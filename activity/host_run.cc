// Counting by the rule of hosts: a taker for the body, and what is said about it.
#include "activity/host_run.h"

#include <memory>
#include <utility>

#include "activity/activity_run.h"
#include "activity/host_counter.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "free_format/host_rule.h"
#include "free_format/parted_reading.h"
#include "free_format/remarks.h"
#include "text/failure.h"
#include "vcd/time_text.h"

namespace orsa::kesncd {

namespace {

/// Memory of each thread. HostPart's two entries a code and what goes with them.
constexpr std::uint64_t kBytesPerCode = 24;

/// What a user must know, the gravest first.
std::vector<std::string> RemarksOn(const Declarations& declarations, const ItemTallies& items,
                                   const HostPart& part) {
  std::vector<std::string> remarks = ReadingRemarks(declarations, items);
  if (part.window.time.isEndCut) {
    remarks.emplace_back("the window ends after the dump: it is cut back to the dump's end");
  }
  // How long dumping was off, and whether values were repeated after it.
  const DumpingTime dumping(part.dumping);
  if (dumping.OffTicks() > 0) {
    const std::uint64_t span = part.window.time.last - part.window.time.first;
    remarks.push_back("dumping was off for " + OffText(dumping, span, part.repeated));
  }
  return remarks;
}

/// Why frequencies are unknown, in words that go on after "x.vcd: "; empty where they are known.
std::string WhyUnknown(const Declarations& declarations, const BodyTime& time) {
  constexpr char kRemedy[] = ", so no frequency is known; kesncd prepare --timescale gives one";
  // Not written at all, or written in a way that nobody reads: the user's remedy is the same.
  if (!declarations.tick && declarations.timescale.empty()) {
    return std::string("it has no time scale") + kRemedy;
  }
  // Of a hostile dump it may be megabytes long.
  if (!declarations.tick) {
    return "its time scale \"" + declarations.timescale.substr(0, 40) + "\" is not understood" +
           kRemedy;
  }
  if (time.stamps == 0) return "it has no time stamp, so no frequency is known";
  // One stamp, or the same one throughout.
  if (time.first == time.last) return "it spans no time, so no frequency is known";
  return "";
}

}  // namespace

/// In three steps: declarations, the body item by item, figures.
HostRun ReadHostRun(ByteSource& dump, const std::string& name, const TimeWindow& window,
                    std::size_t block) {
  // Of a word up to a quarter of a block is kept, so that a block may end in it.
  DumpWords words(dump, block, block / 4);
  Declarations declarations = ReadDeclarations(words, name);
  const TickWindow ticks = WindowInTicks(window, declarations.tick, name);
  // The window needs the tick, so it comes after the declarations.
  HostCounting counting(declarations.codes.size(), ticks);
  DumpItems items(words, declarations);
  ReadBody(items, counting);
  const ItemTallies tallies = items.tallies();
  return FinishHostRun(std::move(declarations), counting.TakePart(), tallies, name, window);
}

/// The same by threads, each with stretches of its own; the sum does not depend on how many.
HostRun ReadHostRun(ByteFile& file, const std::string& name, const TimeWindow& window,
                    unsigned jobs, std::size_t block) {
  FileDump dump(file, block);
  Declarations declarations = ReadDeclarations(dump.words(), name);
  const TickWindow ticks = WindowInTicks(window, declarations.tick, name);
  // Nothing until the first stretch is taken.
  std::optional<HostPart> whole;
  // Called for each stretch.
  const auto make = [&] {
    return std::make_unique<HostCounting>(declarations.codes.size(), ticks);
  };
  // Called in the order of the dump, when all is read.
  const auto take = [&](const std::unique_ptr<HostCounting> counting) {
    if (whole) {
      whole->Add(ticks, counting->TakePart());
    } else {
      whole = counting->TakePart();
    }
  };
  // Each thread has counts of all codes, so memory limits their number.
  const auto stretches = dump.Cut(ThreadsWithin(kBytesPerCode * declarations.codes.size(), jobs));
  const ItemTallies tallies = ReadInParts(dump, declarations, stretches, make, take);
  return FinishHostRun(std::move(declarations), std::move(*whole), tallies, name, window);
}

/// Called for one reading, for parts that were added up, and for what a database stored of a part.
HostRun FinishHostRun(Declarations declarations, HostPart part, const ItemTallies& items,
                      const std::string& name, const TimeWindow& window) {
  // Ends the window, which only the end of the dump can.
  HostCounting counting(std::move(part), WindowInTicks(window, declarations.tick, name));
  counting.Finish();
  part = counting.TakePart();
  const BodyTime& time = part.window.time;
  // The window's BEGIN was never reached.
  if (!time.isOpen) {
    throw Failure(FailureKind::NothingMatched, name + ": nothing lies in the window");
  }
  // Only plain numbers from here on: nothing refers to the part any more.
  HostRun run;
  run.declarations = std::move(declarations);
  run.changes.reserve(part.codes.size());
  for (const HostPart::Code& code : part.codes) run.changes.push_back(code.changes);
  // The span of the window, not of the dump.
  run.SetSpan(time.first, time.last);
  if (run.declarations.tick) run.nsPerTick = Nanoseconds(*run.declarations.tick);
  run.whyUnknown = WhyUnknown(run.declarations, time);
  run.remarks = RemarksOn(run.declarations, items, part);
  return run;
}

}  // namespace orsa::kesncd
