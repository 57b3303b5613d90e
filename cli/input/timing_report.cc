// The report is read once, so that a pipe can be one.
#include "cli/input/timing_report.h"

#include "cli/input/list_file.h"

namespace orsa::kesncd::cli {

/// ReadText unpacks and fails for what it cannot read to its end; the library would take half a
/// report for a whole one.
void PassTimingReport(const std::string& report,
                      const std::function<void(const std::string& path)>& read) {
  const TextByPath text(ReadText(report));
  read(text.path());
}

}  // namespace orsa::kesncd::cli
