// A timing report on its way to the library, wherever it comes from.
#ifndef KESNCD_CLI_INPUT_TIMING_REPORT_H_
#define KESNCD_CLI_INPUT_TIMING_REPORT_H_

#include <functional>
#include <string>

namespace orsa::kesncd::cli {

/// Calls `read` with a path under which the report's text can be opened. Throws Failure with
/// Unusable for a report that cannot be read to its end, where the library would not say so. The
/// path is good during the call only. Exceptions of `read` pass through.
void PassTimingReport(const std::string& report,
                      const std::function<void(const std::string& path)>& read);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_TIMING_REPORT_H_
