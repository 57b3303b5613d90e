// Counting by the rule of hosts: a taker for the body, and what is said about it.
#include "activity/host_run.h"

#include "activity/host_counter.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "free_format/host_rule.h"
#include "free_format/remarks.h"
#include "text/failure.h"
#include "vcd/time_text.h"

namespace orsa::kesncd {

namespace {

std::vector<std::string> RemarksOn(const Declarations& declarations, const ItemTallies& items,
                                   const BodyTime& time, const HostCounting& counter) {
  std::vector<std::string> remarks = ReadingRemarks(declarations, items);
  if (time.isEndCut) {
    remarks.emplace_back("the window ends after the dump: it is cut back to the dump's end");
  }
  if (counter.dumping().OffTicks() > 0) {
    remarks.push_back("dumping was off for " +
                      OffText(counter.dumping(), time.last - time.first, counter.repeated()));
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
  HostRun run;
  run.declarations = ReadDeclarations(words, name);
  const TickWindow ticks = WindowInTicks(window, run.declarations.tick, name);
  DumpItems items(words, run.declarations);
  HostCounting counting(run.declarations.codes.size(), ticks);
  ReadBody(items, counting);
  SetHostFigures(run.declarations, items.tallies(), counting, name, run);
  return run;
}

void SetHostFigures(const Declarations& declarations, const ItemTallies& items,
                    HostCounting& counting, const std::string& name, HostRun& run) {
  counting.Finish();
  const BodyTime& time = counting.time();
  if (!time.isOpen) {
    throw Failure(FailureKind::NothingMatched, name + ": nothing lies in the window");
  }
  run.changes = counting.TakeChanges();
  run.SetSpan(time.first, time.last);
  if (declarations.tick) run.nsPerTick = Nanoseconds(*declarations.tick);
  run.whyUnknown = WhyUnknown(declarations, time);
  run.remarks = RemarksOn(declarations, items, time, counting);
}

}  // namespace orsa::kesncd
