#include "cli/output/output.h"

#include <sstream>

#include "cli/output/result_file.h"

namespace orsa::kesncd::cli {

namespace {

void Write(const Report& report, Format format, std::ostream& out) {
  switch (format) {
    case Format::Table:
      WriteTable(report, out);
      break;
    case Format::Csv:
      WriteCsv(report, out);
      break;
    case Format::Json:
      WriteJson(report, out);
      break;
  }
}

}  // namespace

void WriteReport(const Report& report, const OutputOptions& options) {
  std::ostringstream text;
  Write(report, options.format, text);
  ResultFile file(options.path);
  file.Write(text.view());
  file.Commit();
}

}  // namespace orsa::kesncd::cli
