// Toggles over time, by values and of a peak as rows.
//
// What a user sees of a profile, of values and of a peak:
//
//   begin  end    toggles  toggles_per_us  tb/soc  bar
//   250ns  500ns      100             400      80  ########
//
//   value  observed  share  toggles  toggles_per_us  tb/soc  bar
//   00     500ns       0.5       20              40      10  ##
//
//   what    path    toggles  share
//   module  tb/soc       80    0.8
//
// CSV and JSON have times in ticks, a column for every module, and no bar.
#ifndef KESNCD_CLI_EXACT_FIGURES_PROFILE_ROWS_H_
#define KESNCD_CLI_EXACT_FIGURES_PROFILE_ROWS_H_

#include <cstdint>
#include <string>

#include "activity/profile/profile_run.h"
#include "cli/output/output.h"
#include "cli/process/exit_status.h"

namespace orsa::kesncd::cli {

/// What rows are of.
struct ProfileSubject {
  std::string dump;    // what messages call it
  std::string cut;     // how time is cut, a word for programs: "part", "length", "clock", "value"
  std::string signal;  // that cuts it; may be empty
};

/// A row a window; always Done.
ExitStatus WriteProfile(const ProfileRun<Profile>& run, const ProfileSubject& subject,
                        const OutputOptions& output);
/// A row a value, "others" for those that were put together.
ExitStatus WriteSplit(const ProfileRun<ValueSplit>& run, const ProfileSubject& subject,
                      const OutputOptions& output);

/// What toggles most in a peak, from the activity in it; `inPeak` is null where the dump could be
/// read only once. `limit` is how many modules and how many signals there are at most.
ExitStatus WritePeak(const ProfileRun<Peak>& run, const ActivityResult* inPeak, std::uint32_t scope,
                     std::uint64_t limit, const std::string& dump, const OutputOptions& output);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_PROFILE_ROWS_H_
