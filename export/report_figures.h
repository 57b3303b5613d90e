// The figures of an activity report as the page reads them; report/data_format.md says what each
// is, and what is left out of a large dump so that a browser can show the rest.
//
//   {"format":"kesncd-report","version":1,"program":"kesncd 1.0",
//    "dump":{"name":"sim.vcd",...},"time":{"tick_fs":1000000,"begin":0,"end":1000,...},
//    "counts":{...},"clocks":[...],"findings":[...],"reached":[...],"notes":[...],
//    "modules":{"name":["","tb","soc"],"depth":[0,1,2],"toggles":[...],...},
//    "activity":{"edges":[...],"module":[...],"toggles":[[...],...],"gaps":[]},
//    "signals":{...},"rest":{...},"hidden":{...}}
#ifndef KESNCD_EXPORT_REPORT_FIGURES_H_
#define KESNCD_EXPORT_REPORT_FIGURES_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "activity/activity_result.h"
#include "activity/profile/profile.h"

namespace orsa::kesncd {

/// What a report says beside the activity. Lists that are nothing, other than empty ones, are not
/// spoken of at all. Filled in by the command; the writer only puts it into the page.
struct ReportFacts {
  // A clock of constraints, of a timing report, or one that is only called so.
  struct Clock {
    std::string name;
    std::optional<double> mhz;       // in the dump
    std::optional<double> reported;  // in MHz, what the design's constraints or timing say
    // "SDC" or "timing report"; looked at only where `reported` is there.
    std::string reportedBy;
  };
  // One of what `kesncd check` finds.
  struct Finding {
    std::string severity;  // "error", "warning", "note"
    std::string text;
  };
  // How much of a netlist the dump reaches.
  struct Reached {
    std::string what;  // "pins", "nets"
    std::uint64_t reached = 0;
    std::uint64_t total = 0;
    std::string source;  // a file's name
  };

  std::string program;  // with its version
  std::string dump;     // the file's name
  // Nothing: the page has no list of clocks at all; empty: it says that there are none.
  std::optional<std::vector<Clock>> clocks;
  std::optional<std::vector<Finding>> findings;
  std::vector<Reached> reached;
  // What a user must know of the figures, in sentences.
  std::vector<std::string> notes;
};

/// How much a report holds at most. The defaults suit a browser.
struct ReportLimits {
  std::size_t modules = 40000;
  // How deep modules may be to be listed.
  std::uint32_t levels = 1000;
  // Modules with activity over time, each as long as there are windows.
  std::size_t courses = 500;
  std::size_t signals = 20000;
  std::size_t standOut = 200;  // signals of each of the page's lists that are there in any case
  // Of the whole JSON; lists are halved until it fits.
  std::size_t bytes = 4500000;
};

/// JSON in UTF-8 without a '<'. `profile` has all modules of the dump, each code in one of them
/// (see CountActivityAndProfile). `result` and `profile` must be of one reading of one dump.
std::string ReportJson(const ActivityResult& result, const Profile& profile,
                       const ReportFacts& facts, const ReportLimits& limits = {});

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_REPORT_FIGURES_H_
