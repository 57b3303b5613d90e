// The way of a result out of the program.
#include "cli/output/output.h"

#include <unistd.h>

#include "cli/output/path_ending.h"
#include "cli/process/interrupt.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

/// Temporary files are told to the handler of signals, which removes them.
WholeFileRules Rules() {
  WholeFileRules rules;
  rules.watch = &FilesOfThisRun();
  return rules;
}

/// `out` has to outlive the writer, as has `head`.
std::unique_ptr<ResultWriter> MakeWriter(const OutputOptions& options, const ResultHead& head,
                                         ByteSink& out) {
  switch (ChosenFormat(options.format, options.path, RowFormats(), Format::Table)) {
    case Format::Csv:
      return MakeCsvWriter(head, out);
    case Format::Json:
      return MakeJsonWriter(head, out);
    case Format::Table:
      // Out of the switch, so that a compiler that sees no default still sees a return.
      break;
  }
  return MakeTableWriter(head, options.look, out);
}

/// "-" among inputs is whatever standard input leads to, perhaps a file (kesncd flat - < x.vcd).
Place InputPlace(const std::string& path) {
  if (path != "-") return PlaceOf(path);
  // PlaceOf would take "-" for standard output.
  Place place;
  place.descriptor = STDIN_FILENO;
  place.exists = fstat(STDIN_FILENO, &place.status) == 0;
  return place;
}

/// For messages.
std::string NameOf(const std::string& output) {
  return output.empty() || output == "-" ? "standard output" : output;
}

/// A file that one descriptor reads and another writes is one file too, as in "kesncd prepare - <
/// x.vcd >> x.vcd": the descriptor, by which two streams are told apart, must not count.
bool IsInput(const Place& output, const Place& input) {
  Place byName = output;
  byName.descriptor = -1;
  return input.exists && IsSameFile(byName, input);
}

}  // namespace

const std::vector<std::pair<std::string, Format>>& RowFormats() {
  static const std::vector<std::pair<std::string, Format>> kFormats{
      {"table", Format::Table}, {"csv", Format::Csv}, {"json", Format::Json}};
  return kFormats;
}

OutputFile::OutputFile(const std::string& path) : file_(path, Rules()) {
  // What is packed is no text, so nothing in it could be made printable.
  if (EndingOf(path).isPacked) {
    packed_.emplace(file_);
  } else if (file_.IsTerminal()) {
    terminal_.emplace(file_);
  }
}

void OutputFile::Write(std::string_view bytes) {
  // The order of these three is that of the bytes' way: at most one stage before the file.
  if (packed_) return packed_->Write(bytes);
  if (terminal_) return terminal_->Write(bytes);
  file_.Write(bytes);
}

void OutputFile::Commit() {
  // What a stage still holds back has to go out before the file is complete.
  if (packed_) packed_->Finish();
  if (terminal_) terminal_->Finish();
  file_.Commit();
}

ResultOutput::ResultOutput(const OutputOptions& options, const ResultHead& head)
    : file_(options.path), writer_(MakeWriter(options, head, file_)) {}

void ResultOutput::Add(const Row& row) {
  // Counted whether or not the writer shows it at once: a table waits for the last row.
  ++rows_;
  writer_->Add(row);
}

void ResultOutput::End(const ResultTail& tail) {
  writer_->End(tail);
  file_.Commit();
}

void CheckOutputs(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs) {
  std::vector<Place> places;  // of the outputs that were looked at so far
  for (const std::string& output : outputs) {
    const Place place = PlaceOf(output);
    for (const std::string& input : inputs) {
      // Several inputs may be one file, which harms nobody.
      if (!input.empty() && IsInput(place, InputPlace(input))) {
        throw Failure(FailureKind::Unusable, NameOf(output) + ": is an input too");
      }
    }
    // "-o x --unmatched x": each would replace the other's content.
    for (const Place& other : places) {
      if (IsSameFile(place, other)) {
        throw Failure(FailureKind::Unusable, NameOf(output) + ": is named for two outputs");
      }
    }
    places.push_back(place);
  }
}

}  // namespace orsa::kesncd::cli
