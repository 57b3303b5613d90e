// The activity report's page, a file of HTML with its style and scripts. Whoever writes a report of
// a dump writes `before`, the figures as JSON, and `after`; report/data_format.md says what the
// figures are. Every '<' in the JSON must be written as \u003c, since a signal's name could end the
// element that holds the figures.
#pragma once

#include <string_view>

namespace orsa::kesncd {

struct ReportPage {
  std::string_view before;
  std::string_view after;
};

ReportPage GetReportPage();

}  // namespace orsa::kesncd
