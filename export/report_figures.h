// The figures of an activity report as the page reads them; report/data_format.md says what each
// is, and what is left out of a large dump so that a browser can show the rest.
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
/// spoken of at all.
struct ReportFacts {
  struct Clock {
    std::string name;
    std::optional<double> mhz;       // in the dump
    std::optional<double> reported;  // in MHz, what the design's constraints or timing say
    std::string reportedBy;
  };
  struct Finding {
    std::string severity;  // "error", "warning", "note"
    std::string text;
  };
  struct Reached {
    std::string what;  // "pins", "nets"
    std::uint64_t reached = 0;
    std::uint64_t total = 0;
    std::string source;  // a file's name
  };

  std::string program;  // with its version
  std::string dump;     // the file's name
  std::optional<std::vector<Clock>> clocks;
  std::optional<std::vector<Finding>> findings;
  std::vector<Reached> reached;
  std::vector<std::string> notes;
};

/// How much a report holds at most.
struct ReportLimits {
  std::size_t modules = 40000;
  std::uint32_t levels = 1000;
  std::size_t courses = 500;
  std::size_t signals = 20000;
  std::size_t standOut = 200;  // signals of each of the page's lists that are there in any case
  std::size_t bytes = 4500000;
};

/// JSON in UTF-8 without a '<'. `profile` has all modules of the dump, each code in one of them
/// (see CountActivityAndProfile).
std::string ReportJson(const ActivityResult& result, const Profile& profile,
                       const ReportFacts& facts, const ReportLimits& limits = {});

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_REPORT_FIGURES_H_
