// Where a command's result goes, in which format.
//
// Every result of the program passes through an OutputFile, whatever its format: tables by way of a
// ResultOutput, SAIF and Tcl by way of a SinkStream, databases directly. So these rules hold for
// all of them: a file appears only when it is complete, ".gz" packs it, a terminal sees no control
// characters, and a reader that went away (kesncd ... | head) ends the program in silence.
#ifndef KESNCD_CLI_OUTPUT_OUTPUT_H_
#define KESNCD_CLI_OUTPUT_OUTPUT_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/output/pack.h"
#include "export/result_writer.h"
#include "text/printable.h"
#include "text/whole_file.h"

namespace orsa::kesncd::cli {

/// The formats of rows. SAIF, Tcl and databases are ExactFormat's.
enum class Format { Table, Csv, Json };

/// The words for the formats of rows, which also are what names of files end in.
const std::vector<std::pair<std::string, Format>>& RowFormats();

/// What every command that prints a result is told about it. Filled in by AddOutputOptions; `look`
/// matters to tables only.
struct OutputOptions {
  std::optional<Format> format;  // else the path's ending says which, else it is a table
  TableLook look;
  std::string path;  // empty and "-": standard output
};

/// A file or stream of the program's: whole or as it was, removed by signals, and printable where
/// it leads to a terminal, packed where its path ends in ".gz". Throws Failure with OutputFailed,
/// or ReaderGone. Calling order: construct, Write any number of times, Commit once. An object that
/// is destroyed without Commit leaves what was there before.
class OutputFile : public ByteSink {
 public:
  /// An empty path and "-" are standard output. Opens or makes the file, so that one that cannot be
  /// written is told before a dump is read.
  explicit OutputFile(const std::string& path);

  void Write(std::string_view bytes) override;
  /// Puts the complete result in its place. Writes the end of what is packed, closes and renames;
  /// without it nothing was written.
  void Commit();

 private:
  // Where all bytes go in the end.
  WholeFile file_;
  // At most one of these two is in front of file_.
  std::optional<TerminalSink> terminal_;
  std::optional<GzipSink> packed_;
};

/// A result with rows: made when its head is known, then the rows, then the tail. Owns the writer
/// of the format and the file below it; `head` is used in the constructor and by the writer, so it
/// must live until End.
class ResultOutput {
 public:
  /// Throws Failure with Unusable for a path that ends in another format's name; see ChosenFormat.
  ResultOutput(const OutputOptions& options, const ResultHead& head);

  void Add(const Row& row);
  /// How many rows there were. May be asked before End too: a command tells by it whether anything
  /// was selected.
  std::size_t rows() const { return rows_; }
  /// Puts the complete result in its place. Once, last. The tail has what is known only now, such
  /// as counts over all rows.
  void End(const ResultTail& tail = {});

 private:
  OutputFile file_;
  std::unique_ptr<ResultWriter> writer_;
  std::size_t rows_ = 0;
};

/// Throws Failure with Unusable when an output is a regular file that is also an input, or another
/// output, under whatever names. Paths that are empty are none among the inputs, and standard
/// output among the outputs; "-" is standard input and output. Called before anything is opened: an
/// output that is opened would cut an input of that name to nothing. Inputs and outputs are
/// compared as files (device and inode), so links are seen through.
void CheckOutputs(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OUTPUT_OUTPUT_H_
