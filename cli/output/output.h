// Where a result goes: standard output, or a file that appears only when it is complete.
#ifndef KESNCD_CLI_OUTPUT_OUTPUT_H_
#define KESNCD_CLI_OUTPUT_OUTPUT_H_

#include <string>

#include "cli/process/exit_status.h"
#include "export/report.h"

namespace orsa::kesncd::cli {

enum class Format { Table, Csv, Json };

/// What every command that prints a result is told about it.
struct OutputOptions {
  Format format = Format::Table;
  std::string path;  // empty: standard output
};

/// Writes the report. Throws Failure with OutputFailed when not all of it could be written; a file
/// that was there then keeps its old content.
void WriteReport(const Report& report, const OutputOptions& options);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OUTPUT_OUTPUT_H_
