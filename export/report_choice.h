// What of a dump goes into an activity report: modules with their sums and signals with theirs, as
// many as the page has room for, and what stands in for the others.
//
// A page of some megabytes is what a browser opens at once, and a chip has a million signals. So a
// report lists the most active modules and signals; what is not listed is summed up in the nearest
// module above that is, so that sums on the page stay those of the whole dump.
//
// Three numberings meet here. "Module" is a number in the profile's ModuleTree, "place" a position
// in the page's list of modules, and an index in `signals` is one in ReportSource::signals.
#ifndef KESNCD_EXPORT_REPORT_CHOICE_H_
#define KESNCD_EXPORT_REPORT_CHOICE_H_

#include <cstdint>
#include <vector>

#include "activity/activity_result.h"
#include "activity/activity_rows.h"
#include "activity/profile/profile.h"
#include "export/report_figures.h"

namespace orsa::kesncd {

/// Sums over bits. They may be below 0, wrapped around, until all is added up: a code that is in
/// two modules is taken off in the one around both.
struct ReportSums {
  std::uint64_t bits = 0;
  std::uint64_t still = 0;  // bits that never toggle
  WideCount t1 = 0, tx = 0, tz = 0, tc = 0, ig = 0;

  /// `times` is 1 to add the bit and -1 to take it off.
  void Add(const BitFigures& bit, std::int64_t times);
  ReportSums& operator+=(const ReportSums& other);
};

/// A row of the page's list of signals: a name with the sums over its bits. Aliases are rows of
/// their own.
struct ReportSignal {
  std::uint32_t variable = 0;
  std::uint32_t module = 0;
  ReportSums sums;
};

/// All that the dump has. Made once for a report, while the choice may be made several times, with
/// smaller limits each time. Result and profile have to outlive it.
struct ReportSource {
  ReportSource(const ActivityResult& counted, const Profile& windows);

  const ActivityResult& result;
  const Profile& profile;
  std::vector<ReportSums> totals;     // by module, with all below
  std::vector<ReportSums> own;        // by module, of the codes that belong to it
  std::vector<ReportSignal> signals;  // in the order of modules
  std::vector<std::uint32_t> order;   // modules with bits, those to be kept the first
};

/// What is listed under limits. Made in the constructor, then read. The members are lists of the
/// same length where they are by place.
struct ReportChoice {
  ReportChoice(const ReportSource& source, const ReportLimits& limits);

  // In the order of the tree, so parents come before what is in them.
  std::vector<std::uint32_t> modules;  // listed ones
  std::vector<std::uint32_t> places;   // by module: its place in the list, or that of the lowest
                                       // listed module above it
  // The next five are by place in the list. Signals whose nearest listed module is this one.
  std::vector<std::uint64_t> names;
  // Modules with bits that stand under this one and are not listed.
  std::vector<std::uint64_t> hidden;
  // Own sums of this module and of the hidden ones below it.
  std::vector<ReportSums> own;
  // Signals that are not listed, and their toggles.
  std::vector<std::uint64_t> restSignals;
  std::vector<WideCount> restToggles;
  // Modules whose activity over time is drawn by itself; others add to the nearest one above.
  std::vector<std::uint32_t> withCourse;  // places
  std::vector<std::uint32_t> courseOf;    // by place, an index in withCourse
  std::vector<std::uint32_t> signals;     // in the source's

 private:
  /// In this order: each goes by the lists before it.
  void ListModules(const ReportSource& source, const ReportLimits& limits);
  void ListCourses(const ReportSource& source, const ReportLimits& limits);
  void ListSignals(const ReportSource& source, const ReportLimits& limits);
};

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_REPORT_CHOICE_H_
