// Options that several commands take.
//
// They are here so that an option has one name, one help text and one meaning in all commands: a
// user who knows --begin of one knows it of all.
#include "cli/commands/commands.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

/// The first operand of every command that reads a dump: a path, or "-" for standard input. Whether
/// it can be read is seen when it is opened, after all options are known.
void AddDump(Command& command, InputOptions& options) {
  command
      .AddFileOperand("DUMP", options.dump,
                      "value change dump, plain or packed; - for standard input")
      .Required();
}

}  // namespace

void AddQuietOption(Command& command, InputOptions& options) {
  Option& option = command.AddFlag("-q,--quiet", options.quiet, "no remarks and no progress");
  // Replaces what AddFlag set: remarks come from deep inside (how a dump is unpacked, what its
  // declarations lack), where no options are at hand, so they are silenced for the whole process.
  option.take = [&options](const std::string&) {
    options.quiet = true;
    SilenceRemarks();
  };
}

void AddOutputOptions(Command& command, OutputOptions& options) {
  command
      .AddChoice("--format", {RowFormats().begin(), RowFormats().end()}, options.format,
                 "how the result is written")
      // "-o soc.csv" needs no --format; see ChosenFormat.
      .Initially("what FILE ends in, else table");
  AddLookOptions(command, options);
}

void AddLookOptions(Command& command, OutputOptions& options) {
  // 17 significant digits tell any two doubles apart, so more would show nothing new.
  command.AddCount("--digits", "N", {1, 17}, options.look.digits, "significant digits in a table")
      .Initially(std::to_string(options.look.digits));
  command.AddFlag("--wide", options.look.isWide, "show long names whole in a table");
  command.AddFile("-o,--output", "FILE", options.path,
                  "write the result to FILE, packed if it ends in .gz; - for standard output");
}

void AddDumpOptions(Command& command, InputOptions& options) {
  AddDump(command, options);
  AddQuietOption(command, options);
}

void AddReadingFlags(Command& command, InputOptions& options) {
  command.AddFlag("--as-is", options.asIs,
                  "read the dump untouched, as a host does, also where that gives wrong figures");
  AddQuietOption(command, options);
}

void AddJobsOption(Command& command, InputOptions& options) {
  // The upper bound keeps a slip such as --jobs 100000 from exhausting the process's threads.
  command
      .AddCount("--jobs", "N", {1, 4096}, options.jobs,
                "threads that may read the dump; the result is the same")
      // See kWorthCutting, from which the 16 MB come.
      .Initially("one a core for a file from 16 MB on");
}

void AddWindowOptions(Command& command, TimeWindow& window) {
  // Windows that touch add up: what happens exactly at BEGIN is the initial state and no toggle,
  // what happens exactly at END still counts.
  command.AddTime("--begin", window.begin,
                  "leave out what happens before; values at TIME are initial");
  command.AddTime("--end", window.end, "leave out what happens after");
}

void AddFigureOptions(Command& command, FigureOptions& options) {
  AddDump(command, options.input);
  AddReadingFlags(command, options.input);
  AddWindowOptions(command, options.window);
  AddJobsOption(command, options.input);
}

void CheckWindow(const TimeWindow& window) {
  // Equal bounds pass: what such a window holds depends on the dump and is told after reading it.
  if (window.begin && window.end && *window.begin > *window.end) {
    throw Failure(FailureKind::Unusable, "--end: lies before --begin");
  }
}

void CheckFigureOptions(const FigureOptions& options) {
  CheckWindow(options.window);
  if (options.input.asIs && (options.window.begin || options.window.end)) {
    // A host's readers have no window. Counting all of the dump instead would give wrong figures
    // without a word.
    throw Failure(FailureKind::Unusable,
                  "--begin and --end: a host, and so --as-is, reads the whole dump");
  }
}

}  // namespace orsa::kesncd::cli
