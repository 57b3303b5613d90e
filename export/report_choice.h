// What of a dump goes into an activity report: modules with their sums and signals with theirs, as
// many as the page has room for, and what stands in for the others.
#ifndef KESNCD_EXPORT_REPORT_CHOICE_H_
#define KESNCD_EXPORT_REPORT_CHOICE_H_

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "activity/activity_result.h"
#include "activity/activity_rows.h"
#include "activity/profile/module_shares.h"
#include "activity/profile/profile.h"
#include "export/report_figures.h"

namespace orsa::kesncd {

/// Sums over bits. Differences of sums add up to sums again, so all may wrap around.
struct ReportSums {
  std::uint64_t bits = 0;
  std::uint64_t still = 0;  // bits that never toggle
  WideCount t1 = 0, tx = 0, tz = 0, tc = 0, ig = 0;

  void Add(const BitFigures& bit, std::int64_t times);
  ReportSums& operator+=(const ReportSums& other);
};

/// A name with the sums over its bits.
struct ReportSignal {
  std::uint32_t variable = 0;
  std::uint32_t module = 0;
  ReportSums sums;
};

/// All that the dump has: once a report.
struct ReportSource {
  ReportSource(const ActivityResult& counted, const Profile& windows);

  const ActivityResult& result;
  const Profile& profile;
  std::vector<ReportSums> totals;     // by module, with all below
  std::vector<ReportSums> own;        // by module, of the codes that belong to it
  std::vector<ReportSignal> signals;  // in the order of modules
  std::vector<std::uint32_t> order;   // modules with bits, those to be kept the first
};

/// What is listed under limits.
struct ReportChoice {
  ReportChoice(const ReportSource& source, const ReportLimits& limits);

  static constexpr std::uint32_t kNone = UINT32_MAX;

  std::vector<std::uint32_t> modules;  // listed ones
  std::vector<std::uint32_t> places;   // by module: its place in the list, or that of the lowest
                                       // listed module above it
  // By place in the list.
  std::vector<std::uint64_t> names;
  std::vector<std::uint64_t> hidden;
  std::vector<ReportSums> own;
  std::vector<std::uint64_t> restSignals;
  std::vector<WideCount> restToggles;
  std::vector<std::uint32_t> withCourse;  // places
  std::vector<std::uint32_t> courseOf;    // by place, an index in withCourse
  std::vector<std::uint32_t> signals;     // in the source's

 private:
  void ListModules(const ReportSource& source, const ReportLimits& limits);
  void ListCourses(const ReportSource& source, const ReportLimits& limits);
  void ListSignals(const ReportSource& source, const ReportLimits& limits);
};

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_REPORT_CHOICE_H_
