// Toggles over time, by values and of a peak as rows.
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
  std::string cut;     // how time is cut, a word for programs: "parts", "length", "clock", "value"
  std::string signal;  // that cuts it; may be empty
};

ExitStatus WriteProfile(const ProfileRun<Profile>& run, const ProfileSubject& subject,
                        const OutputOptions& output);
ExitStatus WriteSplit(const ProfileRun<ValueSplit>& run, const ProfileSubject& subject,
                      const OutputOptions& output);

/// What toggles most in a peak, from the activity in it; `inPeak` is null where the dump could be
/// read only once.
ExitStatus WritePeak(const ProfileRun<Peak>& run, const ActivityResult* inPeak, std::uint32_t scope,
                     std::uint64_t limit, const std::string& dump, const OutputOptions& output);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_PROFILE_ROWS_H_
