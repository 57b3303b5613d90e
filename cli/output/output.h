// Where a command's result goes, in which format.
#ifndef KESNCD_CLI_OUTPUT_OUTPUT_H_
#define KESNCD_CLI_OUTPUT_OUTPUT_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/output/pack.h"
#include "export/result_writer.h"
#include "text/printable.h"
#include "text/whole_file.h"

namespace orsa::kesncd::cli {

enum class Format { Table, Csv, Json };

/// The words for the formats of rows, which also are what names of files end in.
const std::vector<std::pair<std::string, Format>>& RowFormats();

/// What every command that prints a result is told about it.
struct OutputOptions {
  std::optional<Format> format;  // else the path's ending says which, else it is a table
  TableLook look;
  std::string path;  // empty and "-": standard output
};

/// A file or stream of the program's: whole or as it was, removed by signals, and printable where
/// it leads to a terminal, packed where its path ends in ".gz". Throws Failure with OutputFailed,
/// or ReaderGone.
class OutputFile : public ByteSink {
 public:
  /// An empty path and "-" are standard output.
  explicit OutputFile(const std::string& path);

  void Write(std::string_view bytes) override;
  /// Puts the complete result in its place.
  void Commit();

 private:
  WholeFile file_;
  std::optional<TerminalSink> terminal_;
  std::optional<GzipSink> packed_;
};

/// A result with rows: made when its head is known, then the rows, then the tail.
class ResultOutput {
 public:
  ResultOutput(const OutputOptions& options, const ResultHead& head);

  void Add(const Row& row);
  /// How many rows there were.
  std::size_t rows() const { return rows_; }
  /// Puts the complete result in its place.
  void End(const ResultTail& tail = {});

 private:
  OutputFile file_;
  std::unique_ptr<ResultWriter> writer_;
  std::size_t rows_ = 0;
};

/// Throws Failure with Unusable when an output is a regular file that is also an input, or another
/// output, under whatever names. Paths that are empty are none among the inputs, and standard
/// output among the outputs; "-" is standard input and output.
void CheckOutputs(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OUTPUT_OUTPUT_H_
