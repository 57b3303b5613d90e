// Counting by the rule of hosts: a taker for the body, and what is said about it.
#include "activity/host_run.h"

#include <algorithm>
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

/// Memory of each thread.
constexpr std::uint64_t kBytesPerCode = 24;

std::vector<std::string> RemarksOn(const Declarations& declarations, const ItemTallies& items,
                                   const HostPart& part) {
  std::vector<std::string> remarks = ReadingRemarks(declarations, items);
  if (part.window.time.isEndCut) {
    remarks.emplace_back("the window ends after the dump: it is cut back to the dump's end");
  }
  const DumpingTime dumping(part.dumping);
  if (dumping.OffTicks() > 0) {
    const std::uint64_t span = part.window.time.last - part.window.time.first;
    remarks.push_back("dumping was off for " + OffText(dumping, span, part.repeated));
  }
  return remarks;
}

std::string WhyUnknown(const Declarations& declarations, const BodyTime& time) {
  constexpr char kRemedy[] = ", so no frequency is known; kesncd prepare --timescale gives one";
  if (!declarations.tick && declarations.timescale.empty()) {
    return std::string("it has no time scale") + kRemedy;
  }
  if (!declarations.tick) {
    return "its time scale \"" + declarations.timescale.substr(0, 40) + "\" is not understood" +
           kRemedy;
  }
  if (time.stamps == 0) return "it has no time stamp, so no frequency is known";
  if (time.first == time.last) return "it spans no time, so no frequency is known";
  return "";
}

}  // namespace

HostRun ReadHostRun(ByteSource& dump, const std::string& name, const TimeWindow& window,
                    std::size_t block) {
  DumpWords words(dump, block, block / 4);
  Declarations declarations = ReadDeclarations(words, name);
  const TickWindow ticks = WindowInTicks(window, declarations.tick, name);
  HostCounting counting(declarations.codes.size(), ticks);
  DumpItems items(words, declarations);
  ReadBody(items, counting);
  const ItemTallies tallies = items.tallies();
  return FinishHostRun(std::move(declarations), counting.TakePart(), tallies, name, window);
}

HostRun ReadHostRun(ByteFile& file, const std::string& name, const TimeWindow& window,
                    unsigned jobs, std::size_t block) {
  FileDump dump(file, block);
  Declarations declarations = ReadDeclarations(dump.words(), name);
  const TickWindow ticks = WindowInTicks(window, declarations.tick, name);
  std::optional<HostPart> whole;
  const auto make = [&] {
    return std::make_unique<HostCounting>(declarations.codes.size(), ticks);
  };
  const auto take = [&](const std::unique_ptr<HostCounting> counting) {
    if (whole) {
      whole->Add(ticks, counting->TakePart());
    } else {
      whole = counting->TakePart();
    }
  };
  const auto stretches = dump.Cut(ThreadsWithin(kBytesPerCode * declarations.codes.size(), jobs));
  const ItemTallies tallies = ReadInParts(dump, declarations, stretches, make, take);
  return FinishHostRun(std::move(declarations), std::move(*whole), tallies, name, window);
}

HostRun FinishHostRun(Declarations declarations, HostPart part, const ItemTallies& items,
                      const std::string& name, const TimeWindow& window) {
  HostCounting counting(std::move(part), WindowInTicks(window, declarations.tick, name));
  counting.Finish();
  part = counting.TakePart();
  const BodyTime& time = part.window.time;
  if (!time.isOpen) {
    throw Failure(FailureKind::NothingMatched, name + ": nothing lies in the window");
  }
  HostRun run;
  run.declarations = std::move(declarations);
  run.changes.reserve(part.codes.size());
  for (const HostPart::Code& code : part.codes) run.changes.push_back(code.changes);
  run.SetSpan(time.first, time.last);
  if (run.declarations.tick) run.nsPerTick = Nanoseconds(*run.declarations.tick);
  run.whyUnknown = WhyUnknown(run.declarations, time);
  run.remarks = RemarksOn(run.declarations, items, part);
  return run;
}

}  // namespace orsa::kesncd
